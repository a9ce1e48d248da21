// The registers behind each kind of parameter: what reads and writes at every offset do.
#include <gtest/gtest.h>

#include <bit>
#include <sstream>

#include "fakenode.h"
#include "parameteradapter/multiparameterportdemultiplexer.h"
#include "parameteradapter/nodemapports.h"

namespace AnythingToNodeMapAdapter::Test {
namespace {

using namespace Detail;

constexpr std::uint64_t untouched = 0xEEEEEEEEEEEEEEEE;

std::uint64_t bits(double value)
{
    return std::bit_cast<std::uint64_t>(value);
}

class Registers : public testing::Test
{
protected:
    static constexpr PortFlags readOnly{.available = true, .writable = false};

    FakeNode node;
    CIntegerNodeMapPort integer{node.makeGain(readOnly), 0};
    CFloatNodeMapPort floating{node.makeFactor(readOnly), 0};
    CBooleanNodeMapPort boolean{node.makeFlag(readOnly), 0};
    CEnumNodeMapPort enumeration{node.makeMode(readOnly), 0};
    CCommandNodeMapPort command{node.makeGo(false, readOnly), 0};
    CStringNodeMapPort string{node.makeText(readOnly), 0};
    CEnumEntryNodeMapPort entry{FakeNode::makeEntry("A", Mode::A), 0};
    CCategoryNodeMapPort category{std::make_shared<CategoryParameterPort>("C", "", "", "", ""), 0};
    CIntegerNodeMapPort noInteger{nullptr, 0};
    CStringNodeMapPort noString{nullptr, 0};
    CCategoryNodeMapPort noCategory{nullptr, 0};
};

TEST_F(Registers, ReadWordsByOffset)
{
    node.gain = -5;
    node.flag = true;
    node.mode = Mode::Negative;
    node.executing = true;
    struct Row
    {
        const char* kind;
        CBasicNodeMapPort* port;
        std::vector<std::pair<std::int64_t, std::uint64_t>> words;
        std::int64_t end;  ///< The first offset behind the registers.
    };
    const Row rows[] = {
        {"integer", &integer, {{0, -5}, {8, 90}, {16, -10}, {24, 5}, {32, 1}, {40, 1}}, 48},
        {"float", &floating, {{0, bits(0.5)}, {8, bits(1e9)}, {16, bits(-1.5)}, {24, 1}, {32, 1}}, 40},
        {"boolean", &boolean, {{0, 1}, {8, 1}, {16, 1}}, 24},
        {"enumeration", &enumeration, {{0, 0xFFFFFFFF}, {8, 1}, {16, 1}}, 24},
        {"command", &command, {{0, 1}, {8, 1}, {16, 1}}, 24},
        {"entry", &entry, {{0, 1}}, 8},
        {"category", &category, {{0, untouched}}, 0},
        {"integer without parameter", &noInteger, {{0, 0}, {8, 0}, {48, 0}}, -1},
        {"string without parameter", &noString, {{0, 0}, {8, 0}}, -1},
        {"category without parameter", &noCategory, {{0, untouched}}, 0},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.kind);
        for (const auto& [offset, expected] : row.words) {
            std::uint64_t word = untouched;
            row.port->read(&word, offset, 8);
            EXPECT_EQ(word, expected) << "at " << offset;
        }
        if (row.end < 0) continue;
        for (const std::int64_t offset : {row.end, row.end + 4, std::int64_t{4}, std::int64_t{-8}}) {
            std::uint64_t word = untouched;
            row.port->read(&word, offset, 8);
            EXPECT_EQ(word, untouched) << "at " << offset;
        }
    }
}

TEST_F(Registers, ReadZerosForAWrongLength)
{
    for (CBasicNodeMapPort* port :
         std::initializer_list<CBasicNodeMapPort*>{&integer, &floating, &boolean, &enumeration, &command, &entry})
    {
        for (const std::int64_t length : {0, 1, 4, 7, 9, 16}) {
            std::uint8_t buffer[17];
            std::memset(buffer, 0xEE, sizeof(buffer));
            port->read(buffer, 0, length);
            for (std::int64_t i = 0; i < 17; ++i)
                EXPECT_EQ(buffer[i], i < length ? 0 : 0xEE) << length << " " << i;
        }
    }
}

TEST_F(Registers, WriteOnlyWholeWordsToTheValue)
{
    const auto write = [](CBasicNodeMapPort& port, std::uint64_t word, std::int64_t offset = 0,
                          std::int64_t length = 8) {
        const std::uint64_t words[] = {word, word};
        port.write(words, offset, length);
    };
    for (const auto& [offset, length] : std::initializer_list<std::pair<std::int64_t, std::int64_t>>{
             {8, 8}, {16, 8}, {24, 8}, {32, 8}, {40, 8}, {-8, 8}, {0, 4}, {0, 16}, {0, 0}})
    {
        for (CBasicNodeMapPort* port : std::initializer_list<CBasicNodeMapPort*>{
                 &integer, &floating, &boolean, &enumeration, &command, &entry, &category, &noInteger})
            write(*port, 1, offset, length);
    }
    EXPECT_EQ(node.gain, 5);
    EXPECT_EQ(node.factor, 0.5);
    EXPECT_FALSE(node.flag);
    EXPECT_EQ(node.mode, Mode::A);
    EXPECT_EQ(node.executed, 0);

    write(integer, static_cast<std::uint64_t>(-7));
    EXPECT_EQ(node.gain, -7);
    write(floating, bits(-0.25));
    EXPECT_EQ(node.factor, -0.25);
    write(boolean, 0x100000000);
    EXPECT_TRUE(node.flag);
    write(boolean, 0);
    EXPECT_FALSE(node.flag);
    write(enumeration, 1);
    EXPECT_EQ(node.mode, Mode::B);
    write(command, 0);
    EXPECT_EQ(node.executed, 0);
    write(command, 2);
    EXPECT_EQ(node.executed, 1);
    node.refuse = true;
    EXPECT_THROW(write(integer, 1), std::runtime_error);
}

TEST_F(Registers, ReadStringsAndTheirCompanions)
{
    struct Row
    {
        std::int64_t offset;
        std::int64_t length;
        std::string expected;
    };
    const std::string one("\1\0\0\0\0\0\0\0", 8);
    const Row rows[] = {
        {0, 4, "init"},
        {0, 10, std::string("initial\0\0\0", 10)},
        {0, 20, "initial" + std::string(13, '\0')},
        {0, 21, std::string(21, '\0')},
        {0, 0, ""},
        {1, 4, std::string(4, '\0')},
        {20, 8, one},
        {28, 8, one},
        {20, 4, std::string(4, '\0')},
        {36, 8, std::string(8, '\0')},
    };
    for (const Row& row : rows) {
        std::string buffer(static_cast<std::size_t>(row.length), 'x');
        string.read(buffer.data(), row.offset, row.length);
        EXPECT_EQ(buffer, row.expected) << row.offset << " " << row.length;
    }
}

TEST_F(Registers, AreServedOnceSortedAndNotAddedAfterwards)
{
    std::ostringstream text;
    std::int64_t address = 0;
    CMultiParameterPortDemultiplexer demultiplexer;
    const auto read = [&](std::int64_t at) {
        std::int64_t word = -1;
        demultiplexer.read(&word, at, 8);
        return word;
    };
    for (CBasicNodeMapPort* port : std::initializer_list<CBasicNodeMapPort*>{&integer, &boolean})
        port->placeAndDescribe(text, false, "Port", "", address);
    node.flag = true;
    demultiplexer.connect(nullptr);
    demultiplexer.connect(&integer);
    EXPECT_EQ(read(0), 0);
    demultiplexer.sort();
    demultiplexer.connect(&boolean);
    EXPECT_EQ(read(0), 5);
    EXPECT_EQ(read(48), 0);
}

TEST_F(Registers, WriteStrings)
{
    const std::string full = "12345678901234567890";
    struct Row
    {
        std::string bytes;
        std::int64_t offset;
        const char* expected;
    };
    const Row rows[] = {
        {std::string("ab\0cd", 5), 0, "ab"},
        {"abcd", 0, "abcd"},
        {full, 0, full.c_str()},
        {full + "1", 0, "unchanged"},
        {"abcd", 1, "unchanged"},
        {"abcdefgh", 20, "unchanged"},
        {"", 0, ""},
    };
    for (const Row& row : rows) {
        node.text = "unchanged";
        string.write(row.bytes.data(), row.offset, static_cast<std::int64_t>(row.bytes.size()));
        EXPECT_EQ(node.text, row.expected);
    }
}

}  // namespace
}  // namespace AnythingToNodeMapAdapter::Test

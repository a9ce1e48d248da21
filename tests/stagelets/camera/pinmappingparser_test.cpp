#include "camera/pinmappingparser.h"

#include <gtest/gtest.h>

#include <stdexcept>

#include "gcbase/exception.h"

namespace Plugin::NivexStageletPackageBase::Test {
namespace {

using Lines = GenICam::gcstring_vector;

constexpr PinMappingType event = PinMappingType::Event;
constexpr PinMappingType chunk = PinMappingType::ChunkData;

/// "A:Integer(EventName=X ValueName=Y,Z) B:..." of what was read.
std::string render(const PinMappings& pins)
{
    std::string text;
    for (const auto& [name, pin] : pins) {
        EXPECT_EQ(pin.properties.at(PinProperty::Type), Lines{toText(pin.valueType)});
        text += (text.empty() ? "" : " ") + pin.name.str() + ":" + toText(pin.valueType) + "(";
        const std::size_t start = text.size();
        for (const auto& [property, values] : pin.properties) {
            if (property == PinProperty::Type) continue;
            text += (text.size() == start ? "" : " ") + std::string(toText(property));
            for (const auto& value : values) {
                text += (&value == values.data() ? "=" : ",") + value.str();
            }
        }
        text += ")";
    }
    return text;
}

TEST(PinMappingParserTest, ReadsPins)
{
    struct Row
    {
        PinMappingType type;
        Lines lines;
        const char* expected;
    };
    const Row rows[] = {
        {event, {}, ""},
        {event, {"", " \t\v\f\r\n "}, ""},
        {event, {"Pin.Type=Integer.EventName=X.ValueName=Y"}, "Pin:Integer(EventName=X ValueName=Y)"},
        // What is said of a pin without a type is dropped, even if it could not be said.
        {event, {"A.EventName=X", "A.SelectorName=1.ValueName=X.ValueName=X"}, ""},
        {chunk, {"A.Type=Integer", "", " .ValueName=V"}, "A:Integer(ValueName=V)"},
        {chunk, {"A.ValueName=V", "A.Type=Float"}, "A:Float(ValueName=V)"},
        {chunk, {"B.Type=String A.Type=Boolean", "a_1.Type=Float"}, "A:Boolean() B:String() a_1:Float()"},
        {chunk, {"  A \t. Type =Integer  .  ValueName  =V  "}, "A:Integer(ValueName=V)"},
        {chunk,
         {"A.Type=Float.SelectorValue=\"X\"3.SelectorName=S"},
         "A:Float(SelectorName=S SelectorValue=\"X\"3)"},
        // The same value may stand at two pins and in two properties.
        {chunk,
         {"A.Type=Float B.Type=Float B.ValueName=Y.ValueName=Z A.ValueName=Y"},
         "A:Float(ValueName=Y) B:Float(ValueName=Y,Z)"},
        {event, {"A.Type=Float.EventName=V.ValueName=V"}, "A:Float(EventName=V ValueName=V)"},
    };
    PinMappingParser parser;
    PinMappings pins;
    for (const Row& row : rows) {
        SCOPED_TRACE(row.expected);
        parser.parse(row.type, row.lines, pins);
        EXPECT_EQ(render(pins), row.expected);
        for (const auto& [name, pin] : pins) {
            EXPECT_EQ(pin.mappingType, row.type);
        }
    }
}

// Lines count from 0, columns from 1. The text of a plain std::runtime_error stands behind "plain: ".
TEST(PinMappingParserTest, RefusesWithTextAndPosition)
{
    struct Row
    {
        Lines lines;
        std::string text;
        std::uint64_t line;
        std::uint64_t column;
        PinMappingType type = chunk;
    };
    const GenICam::gcstring a = "A.Type=Float";
    const std::string notFound = "Expected valid name not found.";
    const std::string noPayload = "Expected valid pin property payload not found.";
    const std::string underscore = "A pin name must not start with an underscore.";
    const std::string digit = "A pin name must not start with a digit.";
    const auto notWith = [](const std::string& property, const std::string& type) {
        return "Pin property '" + property + "' cannot be combined with pin mapping type '" + type + "'.";
    };
    const auto tooMany = [](const std::string& property) {
        return "Pin property '" + property + "' found too many times.";
    };
    const Row rows[] = {
        {{".Type=Integer"}, "Pin name cannot be determined.", 0, 1},
        {{"", "A.Type=Integer", "  .Foo=X"}, "Unknown pin property name 'Foo' found.", 2, 7},
        {{"=X"}, notFound, 0, 1},
        {{"A.Type=Integer;"}, notFound, 0, 15},
        {{"\xC3\x84.Type=Integer"}, notFound, 0, 1},
        {{"_A.Type=Integer"}, underscore, 0, 3},
        {{"1A.Type=Integer"}, digit, 0, 3},
        {{"A  "}, "Unexpected end of line. Expected dot.", 0, 4},
        {{"A B.Type=Float"}, "Unexpected content. Expected dot.", 0, 3},
        {{"A. 1=X"}, "Expected valid property pin name not found.", 0, 4},
        {{"A.type=Integer"}, "Unknown pin property name 'type' found.", 0, 7},
        {{"A.Invalid=X"}, "Unknown pin property name 'Invalid' found.", 0, 10},
        {{"A.Type "}, "Unexpected end of line. Expected =.", 0, 8},
        {{"A.Type2=Integer"}, "Unexpected content. Expected =.", 0, 7},
        {{"A.Type="}, noPayload, 0, 8},
        {{"A.Type = Integer"}, noPayload, 0, 9},
        {{"A.Type=integer"}, "Pin type 'integer' is not valid", 0, 15},
        {{"A.Type=Invalid"}, "Pin type 'Invalid' is not valid", 0, 15},
        {{a, "A.Type=Integer "}, "Pin type of 'A' has been declared twice.", 1, 15},
        {{"A.SelectorValue=Foo_Bar"}, underscore, 0, 24},
        {{a, "A.SelectorName=S"}, notWith("SelectorName", "Event"), 1, 17, event},
        {{a, "A.SelectorValue=S"}, notWith("SelectorValue", "Event"), 1, 18, event},
        {{a, "A.EventName=S"}, notWith("EventName", "ChunkData"), 1, 14},
        {{a, ".SelectorName=S", ".SelectorName=\"\""}, tooMany("SelectorName"), 2, 17},
        {{a, ".SelectorValue=S.SelectorValue=S"}, tooMany("SelectorValue"), 1, 33},
        {{a, ".EventName=X.EventName=Y"}, tooMany("EventName"), 1, 25, event},
        {{a, ".EventName=\"X\""}, "A pin name '\"X\"' contains invalid characters.", 1, 15, event},
        {{a, ".ValueName=1"}, digit, 1, 13},
        {{a, ".ValueName=X.ValueName=X B"}, "Unexpected end of line. Expected dot.", 1, 27},
        {{a, ".ValueName=X.ValueName=X"}, "plain: Value 'X' cannot be applied multiple times.", 1, 25},
        // Errors of syntax and of types come first, wherever they stand.
        {{a, ".ValueName=1", "B.Type=X"}, "Pin type 'X' is not valid", 2, 9},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.lines.back().str());
        PinMappingParser parser;
        PinMappings pins;
        std::string text = "no exception";
        try {
            parser.parse(row.type, row.lines, pins);
        } catch (const GenICam::RuntimeException& e) {
            text = e.GetDescription();
        } catch (const std::runtime_error& e) {
            text = std::string("plain: ") + e.what();
        }
        EXPECT_EQ(text, row.text);
        EXPECT_EQ(parser.getLine(), row.line);
        EXPECT_EQ(parser.getColumn(), row.column);
    }
}

TEST(PinMappingParserTest, KeepsWhatCameBeforeAnErrorAndCanBeUsedAgain)
{
    PinMappingParser parser;
    PinMappings pins;
    const Lines wrong = {"A.Type=Float.ValueName=V", "A.SelectorName=1", "A.ValueName=W"};
    EXPECT_THROW(parser.parse(chunk, wrong, pins), GenICam::RuntimeException);
    EXPECT_EQ(pins.at("A").properties.at(PinProperty::ValueName), Lines{"V"});
    // Neither the result nor the current pin is left over.
    EXPECT_THROW(parser.parse(chunk, {".Type=Float"}, pins), GenICam::RuntimeException);
    EXPECT_TRUE(pins.empty());
}

// Quadratic time in the number of values would take minutes here.
TEST(PinMappingParserTest, ReadsLongConfigurations)
{
    constexpr std::size_t count = 200000;
    std::string line = "A.Type=Float";
    for (std::size_t i = 0; i < count; ++i) {
        line += ".ValueName=CommonPrefixOfAllTheValues" + std::to_string(i);
    }
    PinMappings pins;
    PinMappingParser().parse(chunk, {line}, pins);
    EXPECT_EQ(pins.at("A").properties.at(PinProperty::ValueName).size(), count);
}

}  // namespace
}  // namespace Plugin::NivexStageletPackageBase::Test

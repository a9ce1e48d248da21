// The template engine: tokens, both formatters, the printers of all value types, and names.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <time.h>

#include <regex>
#include <sstream>

#include "../../framework/refusal.h"
#include "datawriter/NameRendering.h"
#include "valuecases.h"

namespace DataWriterTest {
namespace {

using namespace Core;

std::string structural(const char* text)
{
    std::ostringstream stream;
    TimeSnapshot time = someTime();
    formatStructuralText(tokens, text, time, stream, someIndices);
    return stream.str();
}

struct TextCase
{
    const char* text;
    const char* expected;
};

/// What both formatters make of texts without data tokens.
constexpr TextCase commonCases[] = {
    {"", ""},
    {"plain; text\nwith line", "plain; text\nwith line"},
    {"{_Year_} {_Month_} {_Day_} {_Hour_} {_Minute_} {_Second_} {_Millisecond_}", "2024 3 9 5 6 7 89"},
    {"{SessionIndex}{PinIndex}{RecordIndex}{UpdateIndex}{ArrayIndex}{ArraySize}{MediaWriterIndex}", "1274568"},
    // Escapes
    {"\\n\\t\\\\\\{\\}", "\n\t\\{}"},
    {"\\x\\", "\\x\\"},
    {"\\\\n", "\\n"},
    {"\\{Width\\}", "{Width}"},
    // What is no token
    {"{Foo} {} { } {width} {Radius", "{Foo} {} { } {width} {Radius"},
    {"{{RecordIndex}}", "{7}"},
    {"{RecordIndex", "{RecordIndex"},
    // Arguments
    {"a{_Width_}{5}{RecordIndex}", "a    7"},
    {"{_Fill_}{0}{_Width_}{5}{RecordIndex}", "00007"},
    {"{_Width_}{4}text{RecordIndex}{RecordIndex}", "text   77"},
    {"{_Width_}{4}\\n{RecordIndex}", "\n   7"},
    {"{_Width_}{0003}{RecordIndex}", "  7"},
    {"{_Width_}{300}{RecordIndex}", "{300}7"},
    {"{_Width_}{}{RecordIndex}", "{}7"},
    {"{_Width_}{ 3}{RecordIndex}", "{ 3}7"},
    {"{_Width_}{3{RecordIndex}", "{37"},
    {"{_Width_}{-1}", "{-1}"},
    {"{_Width_}{99999999999999999999}", "{99999999999999999999}"},
    {"{_Precision_}{256}", "{256}"},
    {"{_Precision_}3", "3"},
    {"{_Fill_}{}}{_Width_}{3}{RecordIndex}", "}}7"},
    {"{_Fill_}{ab}{_Width_}{3}{RecordIndex}", "{ab}  7"},
    {"{_Fill_}", ""},
    {"{_Fill_}{", "{"},
    {"{_Fill_}{x", "{x"},
    {"{_Fill_}{RecordIndex}", "7"},
    // Stream flags
    {"{_Hex_}{_Day_}{_Millisecond_}{_UpperCase_}{_Millisecond_}{_Dec_}{_Millisecond_}", "9595989"},
    {"{_Oct_}{_Millisecond_}", "131"},
    {"{_Hex_}{_UpperCase_}{_Width_}{4}{_Year_}{_NoUpperCase_}{_Year_}", " 7E87e8"},
    {"{_Left_}{_Width_}{3}{_Day_}|{_Right_}{_Width_}{3}{_Day_}|", "9  |  9|"},
    {"{_ShowPos_}{_Internal_}{_Width_}{4}{_Day_}", "+  9"},
};

TEST(Templates, ReadAllThatIsNotDataAlike)
{
    for (const TextCase& row : commonCases) {
        EXPECT_EQ(structural(row.text), row.expected) << row.text;
        EXPECT_EQ(ofValue(row.text, Integer(3)), row.expected) << row.text;
    }
    std::string broken;
    while (broken.size() < 10000)
        broken += "{_Width_{Center_X{{}\\{Radius1";
    EXPECT_EQ(structural(broken.c_str()), std::regex_replace(broken, std::regex("\\\\\\{"), "{"));
    std::ostringstream stream;
    TimeSnapshot time;
    formatStructuralText(tokens, nullptr, time, stream, someIndices);
    formatValueText(tokens, nullptr, time, stream, someIndices, Integer(3));
    EXPECT_EQ(stream.str(), "");
    EXPECT_FALSE(time.valid);
}

TEST(Templates, FormatNumbersAndTruthValues)
{
    for (const TextCase& row :
         {TextCase{"{Default}", "3.14159"},
          {"{_Fixed_}{_Precision_}{2}{Default}", "3.14"},
          {"{_Scientific_}{_Precision_}{1}{_UpperCase_}{Default}", "3.1E+00"},
          {"{_Scientific_}{_Precision_}{1}{Default}", "3.1e+00"},
          {"{_ShowPoint_}{_Precision_}{1}{Default}", "3."},
          {"{_ShowPos_}{Default}", "+3.14159"},
          {"{_Width_}{9}{Default}", "  3.14159"},
          {"{HasError}{_BoolAlpha_}{HasError}{_NoBoolAlpha_}{HasErrorRecursive}", "0false0"}})
    {
        EXPECT_EQ(ofValue(row.text, Float(3.14159265)), row.expected) << row.text;
    }
    const std::string longest = ofValue("{_Precision_}{255}{_Fixed_}{Default}", Float(0.5));
    EXPECT_EQ(longest.size(), 2 + 255u);
}

const std::vector<std::string> dataTokens = words(
    "{Center_X} {Center_Y} {Radius} {Radius1} {Radius2} {Rotation} {RotationDeg} {PointA_X} {PointA_Y} "
    "{PointB_X} {PointB_Y} {X} {Y} {Width} {Height} {ReferenceSize_Width} {ReferenceSize_Height} "
    "{BoundingBox_TopLeftX} {BoundingBox_TopLeftY} {BoundingBox_Width} {BoundingBox_Height} {PixelFormat} "
    "{LinePadding}");

TEST(Templates, HaveNoValueInNames)
{
    for (const std::string& token : dataTokens)
        EXPECT_EQ(structural(token.c_str()), token);
    EXPECT_EQ(structural("{Default}"), "{Default}");
    EXPECT_EQ(structural("[{ErrorMessage}{ErrorMessageRecursive}]"), "[]");
    EXPECT_EQ(structural("{HasError}{_BoolAlpha_}{HasErrorRecursive}"), "0false");
}

TEST(Templates, PrintEveryTokenOfEveryType)
{
    for (const ValueCase& row : valueCases()) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(row.render("{Default}"), row.byDefault);
        EXPECT_EQ(row.render("[{ErrorMessage}{ErrorMessageRecursive}]{HasError}{HasErrorRecursive}"), "[]00");
        EXPECT_EQ(row.renderWithError("{Default};{ErrorMessage};{ErrorMessageRecursive}"), "broken;broken;broken");
        EXPECT_EQ(row.renderWithError("{HasError}{HasErrorRecursive}"), "11");
        for (const std::string& token : dataTokens) {
            const auto known = row.known.find(token);
            EXPECT_EQ(row.render(token), known == row.known.end() ? token : known->second);
            EXPECT_EQ(row.renderWithError(token), "na") << token;
        }
    }
}

TEST(Templates, RepeatTheTopMessageForEachNestedError)
{
    const Integer value(error("top", {error("first"), nullptr, error("second")}));
    const char* text = "{Default}|{X}|{ErrorMessage}|{ErrorMessageRecursive}|{HasError}{HasErrorRecursive}";
    EXPECT_EQ(ofValue(text, value), "top|na|top|top; top; top|11");
    EXPECT_EQ(ofValue<Integer>(text, Unexplained()), "|na|||11");
    EXPECT_EQ(ofValue<Integer>(text, ErrorBelow()), "0|{X}||below; below|01");
}

TEST(TextTokenTable, FindsTheLeftmostLongestToken)
{
    TextTokenTable table;
    table.addToken("ab", 100);
    table.addToken("abcd", 101);
    table.addToken("bcde", 102);
    struct Case
    {
        const char* text;
        std::int32_t id;
        const char* found;
    };
    for (const Case& row : {Case{"xabce", 100, "ab"},
                            {"xabcde", 101, "abcd"},
                            {"abc", 100, "ab"},
                            {"bcde", 102, "bcde"},
                            {"{Radius1}", 9, "{Radius1}"},
                            {"{Radius}1", 8, "{Radius}"}})
    {
        const TextTokenTable::Match match = table.find(row.text);
        EXPECT_EQ(match.id, row.id) << row.text;
        EXPECT_EQ(match.text(), row.found);
    }
    EXPECT_FALSE(table.find("bcd"));
}

TEST(TextTokenTable, RefusesWhatIsNoNewToken)
{
    struct Case
    {
        const char* text;
        std::int32_t id;
        const char* refusal;
    };
    TextTokenTable table;
    for (const Case& row : {Case{nullptr, 100, "Failed to add token. The token string is null."},
                            {"", 100, "Failed to add token. The token string is empty."},
                            {"new", -1, "Failed to add token. Its token id is invalid."},
                            {"{Width}", 100, "Failed to add token. It has already been added."}})
        EXPECT_EQ(refusal<std::invalid_argument>([&] { table.addToken(row.text, row.id); }), row.refusal);
}

TEST(TimeSnapshot, ShowsLocalTimeAndStaysOnceFilled)
{
    setenv("TZ", "UTC-2", 1);
    tzset();
    using std::chrono::milliseconds;
    TimeSnapshot time;
    time.fill(std::chrono::system_clock::time_point(milliseconds(1709960767089)));
    const auto fields = [](const TimeSnapshot& t) {
        return std::vector{t.year, t.month, t.day, t.hour, t.minute, t.second, t.millisecond};
    };
    EXPECT_THAT(fields(time), testing::ElementsAre(2024, 3, 9, 7, 6, 7, 89));
    time.require();
    EXPECT_EQ(time.hour, 7);
    TimeSnapshot early;
    early.fill(std::chrono::system_clock::time_point(milliseconds(-1)));
    EXPECT_THAT(fields(early), testing::ElementsAre(1970, 1, 1, 1, 59, 59, 999));
    unsetenv("TZ");
    tzset();
}

TEST(Names, DoNotDependOnTheHostsLocale)
{
    const std::locale before = std::locale::global(std::locale(std::locale::classic(), new Grouping));
    TimeSnapshot time = someTime();
    const std::string name = renderName(tokens, "{_Year_}", time, someIndices);
    std::locale::global(before);
    EXPECT_EQ(name, "2024");
}

TEST(Names, HoldNoSeparator)
{
    EXPECT_EQ(sanitizeFileName("a\\b/c:d*e?f\"g<h>i|j{k} l"), "a_b_c_d_e_f_g_h_i_j{k} l");
    const auto name = [](const char* text) {
        TimeSnapshot time = someTime();
        return renderName(tokens, text, time, someIndices);
    };
    EXPECT_EQ(name("../{RecordIndex}/{_Fill_}{/}{_Width_}{3}{RecordIndex}"), ".._7___7");
    EXPECT_EQ(name("{Width}"), "{Width}");
    EXPECT_EQ(name("{ErrorMessage}"), "");
}

}  // namespace
}  // namespace DataWriterTest

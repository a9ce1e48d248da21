#include "camera/pinmappingparser.h"

#include <gtest/gtest.h>

#include <stdexcept>

#include "gcbase/exception.h"

namespace Plugin::NivexStageletPackageBase::Test {
namespace {

using Lines = GenICam::gcstring_vector;

/// "A:Integer{EventName=X;ValueName=Y,Z} B:..." of what was read.
std::string render(const PinMappings& pins)
{
    std::string text;
    for (const auto& [key, pin] : pins) {
        EXPECT_EQ(key, pin.name);
        text += (text.empty() ? "" : " ") + pin.name.str() + ":" + toText(pin.valueType) + "{";
        const char* separator = "";
        for (const auto& [property, values] : pin.properties) {
            if (property == PinProperty::Type) {
                EXPECT_EQ(values, Lines{toText(pin.valueType)});
                continue;
            }
            text += separator + std::string(toText(property)) + "=";
            for (const auto& value : values) {
                text += (&value == values.data() ? "" : ",") + value.str();
            }
            separator = ";";
        }
        text += "}";
    }
    return text;
}

TEST(PinMappingParserTest, ReadsPins)
{
    struct Row
    {
        const char* name;
        PinMappingType type;
        Lines lines;
        const char* expected;
    };
    const PinMappingType event = PinMappingType::Event;
    const PinMappingType chunk = PinMappingType::ChunkData;
    const Row rows[] = {
        {"no lines", event, {}, ""},
        {"blank lines", event, {"", " \t\v\f\r\n "}, ""},
        {"one line",
         event,
         {"MyPinName.Type=Integer.EventName=X.ValueName=Y"},
         "MyPinName:Integer{EventName=X;ValueName=Y}"},
        {"a pin without a type is dropped", event, {"A.EventName=X"}, ""},
        {"so is what could not be said of it", event, {"A.SelectorName=1", "A.ValueName=X.ValueName=X"}, ""},
        {"a pin goes on in the next line",
         chunk,
         {"A.Type=Integer", "", " .ValueName=V"},
         "A:Integer{ValueName=V}"},
        {"the type may come last", chunk, {"A.ValueName=V", "A.Type=Float"}, "A:Float{ValueName=V}"},
        {"pins are ordered by name",
         chunk,
         {"B.Type=String A.Type=Boolean", "a_1.Type=Float"},
         "A:Boolean{} B:String{} a_1:Float{}"},
        {"blanks around dot and property",
         chunk,
         {"  A \t. Type =Integer  .  ValueName  =V  "},
         "A:Integer{ValueName=V}"},
        {"a pin per statement",
         chunk,
         {"A.Type=Integer B.Type=Float A.ValueName=X B.ValueName=Y.ValueName=Z"},
         "A:Integer{ValueName=X} B:Float{ValueName=Y,Z}"},
        {"quotes stay", chunk, {"A.SelectorValue=\"X\".Type=String"}, "A:String{SelectorValue=\"X\"}"},
        {"all of a chunk pin",
         chunk,
         {"A.Type=Float.SelectorName=S.SelectorValue=3x.ValueName=V.ValueName=W"},
         "A:Float{SelectorName=S;SelectorValue=3x;ValueName=V,W}"},
        {"the same value on two pins",
         chunk,
         {"A.Type=Float.ValueName=V", "B.Type=Float.ValueName=V"},
         "A:Float{ValueName=V} B:Float{ValueName=V}"},
        {"the same value of two properties",
         event,
         {"A.Type=Float.EventName=V.ValueName=V"},
         "A:Float{EventName=V;ValueName=V}"},
    };
    PinMappingParser parser;
    PinMappings pins;
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
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
        const char* text;
        std::uint64_t line;
        std::uint64_t column;
        PinMappingType type = PinMappingType::ChunkData;
    };
    const PinMappingType event = PinMappingType::Event;
    const Row rows[] = {
        {{".Type=Integer"}, "Pin name cannot be determined.", 0, 1},
        {{"", "A.Type=Integer", "  .Foo=X"}, "Unknown pin property name 'Foo' found.", 2, 7},
        {{"=X"}, "Expected valid name not found.", 0, 1},
        {{"A.Type=Integer;"}, "Expected valid name not found.", 0, 15},
        {{"_A.Type=Integer"}, "A pin name must not start with an underscore.", 0, 3},
        {{"1A.Type=Integer"}, "A pin name must not start with a digit.", 0, 3},
        {{"\xC3\x84.Type=Integer"}, "Expected valid name not found.", 0, 1},
        {{"A"}, "Unexpected end of line. Expected dot.", 0, 2},
        {{"A  "}, "Unexpected end of line. Expected dot.", 0, 4},
        {{"A B.Type=Float"}, "Unexpected content. Expected dot.", 0, 3},
        {{"A."}, "Expected valid property pin name not found.", 0, 3},
        {{"A. 1=X"}, "Expected valid property pin name not found.", 0, 4},
        {{"A.Typ=Integer"}, "Unknown pin property name 'Typ' found.", 0, 6},
        {{"A.type=Integer"}, "Unknown pin property name 'type' found.", 0, 7},
        {{"A.Invalid=X"}, "Unknown pin property name 'Invalid' found.", 0, 10},
        {{"A.Type "}, "Unexpected end of line. Expected =.", 0, 8},
        {{"A.Type2=Integer"}, "Unexpected content. Expected =.", 0, 7},
        {{"A.Type="}, "Expected valid pin property payload not found.", 0, 8},
        {{"A.Type = Integer"}, "Expected valid pin property payload not found.", 0, 9},
        {{"A.Type=integer"}, "Pin type 'integer' is not valid", 0, 15},
        {{"A.Type=Invalid"}, "Pin type 'Invalid' is not valid", 0, 15},
        {{"A.Type=Integer", "A.Type=Float "}, "Pin type of 'A' has been declared twice.", 1, 13},
        {{"A.SelectorValue=Foo_Bar"}, "A pin name must not start with an underscore.", 0, 24},
        {{"A.Type=Float.SelectorName=S"},
         "Pin property 'SelectorName' cannot be combined with pin mapping type 'Event'.",
         0,
         28,
         event},
        {{"A.Type=Float.SelectorValue=S"},
         "Pin property 'SelectorValue' cannot be combined with pin mapping type 'Event'.",
         0,
         29,
         event},
        {{"A.Type=Float.EventName=S"},
         "Pin property 'EventName' cannot be combined with pin mapping type 'ChunkData'.",
         0,
         25},
        {{"A.Type=Float.SelectorName=S.SelectorName=\"\""},
         "Pin property 'SelectorName' found too many times.",
         0,
         44},
        {{"A.Type=Float.SelectorValue=S", ".SelectorValue=S"},
         "Pin property 'SelectorValue' found too many times.",
         1,
         17},
        {{"A.Type=Float.EventName=X.EventName=Y"}, "Pin property 'EventName' found too many times.", 0, 37, event},
        {{"A.Type=Float.EventName=\"X\""}, "A pin name '\"X\"' contains invalid characters.", 0, 27, event},
        {{"A.Type=Float.ValueName=1"}, "A pin name must not start with a digit.", 0, 25},
        {{"A.Type=Float.ValueName=X.ValueName=X B.Type=Float"},
         "plain: Value 'X' cannot be applied multiple times.",
         0,
         37},
        // Errors of syntax and of types come first, wherever they stand.
        {{"A.Type=Float.ValueName=1", "B.ValueName"}, "Unexpected end of line. Expected =.", 1, 12},
        {{"A.Type=Float.ValueName=1", "B.Type=X"}, "Pin type 'X' is not valid", 1, 9},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.lines.front().str() + " ... " + row.lines.back().str());
        PinMappingParser parser;
        PinMappings pins;
        std::string text = "no exception";
        try {
            parser.parse(row.type, row.lines, pins);
        } catch (const GenICam::RuntimeException& e) {
            text = e.GetDescription();
            EXPECT_STREQ(e.GetSourceFileName(), "camera/pinmappingparser");
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
    EXPECT_THROW(parser.parse(PinMappingType::ChunkData,
                              {"A.Type=Float.ValueName=V", "A.SelectorName=1", "A.ValueName=W"}, pins),
                 GenICam::RuntimeException);
    EXPECT_EQ(pins.at("A").properties.at(PinProperty::ValueName), Lines{"V"});
    // Neither the result nor the current pin is left over.
    EXPECT_THROW(parser.parse(PinMappingType::ChunkData, {".Type=Float"}, pins), GenICam::RuntimeException);
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
    PinMappingParser().parse(PinMappingType::ChunkData, {line}, pins);
    EXPECT_EQ(pins.at("A").properties.at(PinProperty::ValueName).size(), count);
}

}  // namespace
}  // namespace Plugin::NivexStageletPackageBase::Test

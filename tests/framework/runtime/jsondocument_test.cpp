#include "runtime/jsondocument.h"

#include <gmock/gmock.h>

#include "framework/refusal.h"

namespace Nivex::DataProcessing::Runtime {

namespace {

using testing::HasSubstr;

std::string at(TextPosition position)
{
    return std::to_string(position.line) + ":" + std::to_string(position.column);
}

/// Every value with its place and its names with theirs, in the order of the text.
void listPlaces(const JsonValue& value, std::string& text)
{
    text += at(value.position) + " " + value.describe() + "\n";
    if (const auto* list = value.as<JsonArray>()) {
        for (const auto& item : list->items)
            listPlaces(*item, text);
    }
    if (const auto* object = value.as<JsonObject>()) {
        for (const auto& member : object->members) {
            text += at(member.namePosition) + " " + member.name + ": ";
            listPlaces(*member.value, text);
        }
    }
}

}  // namespace

// Columns count characters, not bytes; escaped quotes and backslashes do not end a text.
TEST(JsonDocument, KnowsThePlaceOfEveryValueAndName)
{
    const JsonDocument document = parseJson(
        "\xEF\xBB\xBF{\"a\" : [1,-2, 2.5e3],\r\n"
        "\t\"\xC3\xBC\\\"\\\\\": \"\xE2\x82\xAC\\\\\", \"b\":true ,\n"
        "\n  \"c\": {\"d\": [ ], \"e\": null}}\n ");
    ASSERT_TRUE(document.root);
    EXPECT_TRUE(document.faults.empty());
    std::string places;
    listPlaces(*document.root, places);
    EXPECT_EQ(places,
              "1:1 an object\n"
              "1:2 a: 1:8 a list\n1:9 1\n1:11 -2\n1:15 2500.0\n"
              "2:2 \xC3\xBC\"\\: 2:11 \"\\u20ac\\\\\"\n"
              "2:18 b: 2:22 true\n"
              "4:3 c: 4:8 an object\n4:9 d: 4:14 a list\n4:19 e: 4:24 null\n");
}

TEST(JsonDocument, RefusesWithThePlace)
{
    const std::string deep = std::string(64, '[') + "1" + std::string(64, ']');
    const struct
    {
        std::string text;
        const char* place;
        const char* message;
    } cases[] = {
        {"", "1:1", "end of input"},
        {"{\"a\": 1,}", "1:9", "comma before it is one too many"},
        {"{\"a\": 1}\n x", "2:2", "invalid literal"},
        {"[1,\n2 3]", "2:3", "comma is missing before it"},
        {"[1,,2]", "1:4", "unexpected ','"},
        {"[1, // one\n2]", "1:5", "no comments"},
        {"[1 /* one */]", "1:4", "no comments"},
        {"{'a': 1}", "1:2", "double quotes"},
        {"{\"a\" 1}", "1:6", "expected ':'"},
        {"{\"a\": {} \"b\": 1}", "1:10", "comma is missing before it"},
        {"{\"a\":]", "1:6", "unexpected ']'"},
        {"[tru]", "1:2", "invalid literal"},
        {"[01]", "1:3", "expected ']'"},
        {"[1e400]", "1:2", "too large"},
        {"[NaN]", "1:2", "invalid literal"},
        {"[\"a\tb\"]", "1:4", "control character"},
        {"[\"ab", "1:2", "missing closing quote"},
        {"[\"a\xFF\"]", "1:4", "ill-formed UTF-8"},
        {"[\"\\uD800\"]", "1:9", "surrogate"},
        {"[" + deep + "]", "1:65", "deeper than 64"},
        {std::string(maxJsonSize + 1, ' '), "1:1", "bytes"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.text.substr(0, 80));
        const JsonDocument document = parseJson(c.text);
        EXPECT_FALSE(document.root);
        ASSERT_EQ(document.faults.size(), 1U);
        EXPECT_EQ(at(document.faults[0].position), c.place);
        EXPECT_THAT(document.faults[0].message, HasSubstr(c.message));
    }
    EXPECT_TRUE(parseJson(deep).root);
}

// A second value under one name is a fault, but not the end: what follows is read, and the first value stays.
TEST(JsonDocument, TellsAllNamesThatStandTwice)
{
    const JsonDocument document = parseJson("{\"a\": 1,\n \"a\": {\"b\": 2, \"b\": 3}, \"c\": 4}");
    ASSERT_TRUE(document.root);
    ASSERT_EQ(document.faults.size(), 2U);
    EXPECT_EQ(at(document.faults[0].position), "2:2");
    EXPECT_THAT(document.faults[0].message, HasSubstr("\"a\""));
    EXPECT_EQ(at(document.faults[1].position), "2:16");
    EXPECT_EQ(document.root->as<JsonObject>()->find("a")->describe(), "1");
    EXPECT_EQ(document.root->as<JsonObject>()->find("c")->describe(), "4");
}

TEST(JsonDocument, KeepsIntegersExactlyAndDoublesShortly)
{
    const std::string text = "[\n    18446744073709551615,\n    -9223372036854775808,\n    0.1,\n    25.0\n]\n";
    EXPECT_EQ(formatJson(*parseJson(text).root), text);
    EXPECT_TRUE(parseJson("18446744073709551616").root->as<double>());
}

TEST(JsonDocument, FilesThatCannotBeReadAreNamed)
{
    for (const char* path : {"/nowhere/at/all.json", "/"}) {
        EXPECT_THAT(refusal<GenICam::RuntimeException>([&] { readTextFile(path); }),
                    HasSubstr(std::string("\"") + path + "\""));
    }
}

}  // namespace Nivex::DataProcessing::Runtime

#include "runtime/jsonsettings.h"

#include <gmock/gmock.h>

#include <cmath>
#include <functional>
#include <limits>

#include "framework/refusal.h"

namespace Nivex::DataProcessing::Runtime {

namespace {

using Core::SettingsPath;
using testing::HasSubstr;

constexpr const char* text = R"({
  "name": "x", "small": 5, "minus": -5, "ratio": 0.5, "on": true, "nothing": null,
  "most": 18446744073709551615,
  "list": [1, {"deep": 7}], "child": {"inner": {"key": "y"}, "none": {}}
})";

class JsonSettingsTest : public testing::Test
{
protected:
    JsonSettings store{parseJson(text).root, "/recipes"};

    void expectRefused(const std::function<void()>& access, const std::string& part)
    {
        EXPECT_THAT(refusal<GenICam::RuntimeException>(access), HasSubstr(part));
    }
};

SettingsPath listItem(std::size_t index)
{
    return SettingsPath("list").addElement(index);
}

}  // namespace

TEST_F(JsonSettingsTest, ReadsWhatIsThere)
{
    EXPECT_EQ(store.getString("name"), "x");
    EXPECT_EQ(store.getSigned("small"), 5);
    EXPECT_EQ(store.getSigned("minus"), -5);
    EXPECT_EQ(store.getUnsigned("most"), std::numeric_limits<std::uint64_t>::max());
    EXPECT_EQ(store.getDouble("ratio"), 0.5);
    EXPECT_EQ(store.getDouble("small"), 5.0);
    EXPECT_EQ(store.getDouble("minus"), -5.0);
    EXPECT_TRUE(store.getBool("on"));
    EXPECT_EQ(store.getSigned(listItem(1).addElement("deep")), 7);
    EXPECT_EQ(store.openChild("child")->openChild("inner")->getString("key"), "y");
    EXPECT_EQ(store.openChild("child")->getLocation(), "/recipes");
    EXPECT_EQ(store.getSize("list"), 2U);
    EXPECT_EQ(store.openChild("child")->getSize("none"), 0U);
    EXPECT_TRUE(store.hasKey(listItem(0)));
    EXPECT_FALSE(store.hasKey(listItem(2)));
    EXPECT_FALSE(store.hasKey("absent"));
    EXPECT_FALSE(store.hasKey(SettingsPath("name").addElement("x")));
    EXPECT_FALSE(JsonSettings().hasLocation());
}

// Nothing but an integer read as double is converted; the text names the whole path, the value and what is wanted.
TEST_F(JsonSettingsTest, RefusalsNameThePathAndItsPlace)
{
    expectRefused([&] { store.getSigned("absent"); }, "\"absent\" is missing");
    EXPECT_EQ(*store.getRefusalPosition(), (TextPosition{1, 1}));
    expectRefused([&] { store.openChild("child")->openChild("inner")->getBool("no"); }, "\"child.inner.no\"");
    EXPECT_EQ(*store.getRefusalPosition(), (TextPosition{4, 48}));
    expectRefused([&] { store.getString(listItem(1).addElement("deep")); },
                  "\"list[1].deep\" is 7; wanted is a text");
    EXPECT_EQ(*store.getRefusalPosition(), (TextPosition{4, 24}));
    expectRefused([&] { store.getSigned(listItem(9)); }, "\"list[9]\"");
    expectRefused([&] { store.getUnsigned("minus"); }, "is -5; wanted is an integer from 0");
    expectRefused([&] { store.getSigned("most"); }, "18446744073709551615");
    expectRefused([&] { store.getSigned("ratio"); }, "is 0.5");
    expectRefused([&] { store.getDouble("name"); }, "is \"x\"; wanted is a number");
    expectRefused([&] { store.getBool("small"); }, "wanted is true or false");
    expectRefused([&] { store.getString("nothing"); }, "is null");
    expectRefused([&] { store.openChild("list"); }, "wanted is an object");
    expectRefused([&] { store.getSize("child"); }, "\"child\" is an object; wanted is a list");
    expectRefused([&] { store.getSize("name"); }, "\"name\" is \"x\"; wanted is a list");
    expectRefused([&] { store.getSize("nothing"); }, "is null; wanted is a list");
    expectRefused([&] { store.getSize("absent"); }, "is missing");
}

TEST_F(JsonSettingsTest, WhatWasRefusedIsReplacedSoThatTheRestCanBeRead)
{
    const JsonSettings instead(
        parseJson(R"({"name": 1, "child": {"inner": {"more": {"deep": true}}}, "list": {}})").root);
    EXPECT_FALSE(store.replaceRefused(instead)) << "nothing was refused";
    expectRefused([&] { store.getSigned("name"); }, "\"name\"");
    EXPECT_TRUE(store.replaceRefused(instead));
    EXPECT_EQ(store.getSigned("name"), 1);
    expectRefused([&] { store.openChild("child")->openChild("inner")->openChild("more"); }, "is missing");
    EXPECT_TRUE(store.replaceRefused(instead));
    EXPECT_TRUE(store.openChild("child")->openChild("inner")->openChild("more")->getBool("deep"));
    expectRefused([&] { store.getSigned("absent"); }, "is missing");
    EXPECT_FALSE(store.replaceRefused(instead)) << "there is nothing to take";
}

TEST_F(JsonSettingsTest, ListsWhatNobodyAskedFor)
{
    for (const char* key : {"name", "smal", "minus", "most", "nothing", "list"})
        store.hasKey(key);
    store.hasKey(SettingsPath("minus").addElement(std::size_t{0}));
    store.hasKey(listItem(1).addElement("depp"));
    store.openChild("child")->hasKey("outer");
    std::string told;
    for (const auto& unread : store.listUnread()) {
        told += std::to_string(unread.position.line) + " " + unread.path + " (" + unread.name + ")";
        for (const std::string& missed : unread.missed)
            told += " " + missed;
        told += "; ";
    }
    EXPECT_EQ(told,
              "2 small (small) smal; 2 minus (minus) smal; 2 ratio (ratio) smal; 2 on (on) smal; 4 list[0] ([0]); "
              "4 list[1].deep (deep) depp; 4 child.inner (inner) outer; "
              "4 child.none (none) outer; ");
}

TEST_F(JsonSettingsTest, WritesInTheOrderOfSetting)
{
    JsonSettings fresh;
    fresh.setString("b", "\xC3\xBC");
    const auto child = fresh.createChild("a");
    child->setUnsigned("most", std::numeric_limits<std::uint64_t>::max());
    // The store grows while the child is in use.
    for (int i = 0; i < 9; ++i)
        fresh.setSigned(SettingsPath("list").addElement(static_cast<std::size_t>(i)), -i);
    child->setDouble("ratio", 25);
    child->setBool("on", false);
    fresh.setSigned("b", -1);
    fresh.createList("none");
    fresh.createList("list");  // which leaves it as it is
    EXPECT_EQ(
        fresh.toText(),
        "{\n    \"b\": -1,\n    \"a\": {\n        \"most\": 18446744073709551615,\n        \"ratio\": 25.0,\n"
        "        \"on\": false\n    },\n    \"list\": [\n        0,\n        -1,\n        -2,\n        -3,\n"
        "        -4,\n        -5,\n        -6,\n        -7,\n        -8\n    ],\n    \"none\": []\n}\n");
    EXPECT_EQ(fresh.createChild("a")->getBool("on"), false);
}

TEST_F(JsonSettingsTest, RefusesToWriteWhatJsonCannotHold)
{
    expectRefused([&] { store.setDouble("ratio", std::nan("")); }, "\"ratio\"");
    expectRefused([&] { store.setString("name", "\xFF"); }, "no UTF-8");
    expectRefused([&] { store.setSigned(listItem(3), 1); }, "\"list[3]\" cannot be made");
    expectRefused([&] { store.setSigned(SettingsPath("name").addElement("x"), 1); }, "\"name.x\" cannot be made");
    expectRefused([&] { store.setSigned("child", 1); }, "an object");
    expectRefused([&] { store.createChild("name"); }, "wanted is an object");
    expectRefused([&] { store.createList("child"); }, "wanted is a list");
    EXPECT_THROW(JsonSettings(parseJson("[]").root), GenICam::InvalidArgumentException);
}

}  // namespace Nivex::DataProcessing::Runtime

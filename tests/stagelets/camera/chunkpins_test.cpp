#include "camera/chunkpins.h"

#include <gtest/gtest.h>

#include "core/values.h"
#include "fakeresult.h"
#include "framework/logcapture.h"
#include "genicam/genapi/world.h"

namespace Plugin::NivexStageletPackageBase::Test {
namespace {

namespace Core = Nivex::DataProcessing::Core;
namespace Utils = Nivex::DataProcessing::Utils;
using Texts = std::vector<std::string>;

template <typename T>
std::string plainText(const T& value)
{
    if constexpr (std::is_same_v<T, Core::Integer>) return std::to_string(value.getSigned());
    if constexpr (std::is_same_v<T, Core::Float>) return GenICam::formatText("%.2f", value.get());
    if constexpr (std::is_same_v<T, Core::Boolean>) return value.get() ? "true" : "false";
    if constexpr (std::is_same_v<T, Core::String>) return "\"" + value.get().str() + "\"";
}

template <typename T>
std::string textOf(const T& value)
{
    if (!value.hasError()) return plainText(value);
    const bool hasCause = !value.getError()->getParentErrors().empty();
    return value.getError()->getDescription().str() + (hasCause ? " With cause." : "");
}

template <typename T>
void appendText(std::string& text, const Utils::Variant& value)
{
    if (const auto* scalar = value.tryGet<T>()) text += textOf(*scalar);
    const auto* array = value.tryGet<Core::Array<T>>();
    for (std::size_t i = 0; array && i < array->getSize(); ++i) {
        text += "|" + textOf(array->at(i));
    }
}

/// "A=1 B=|2.00|0.00 C=", for a value, an array and nothing.
std::string render(const Core::PinValues& values)
{
    std::string text;
    for (const auto& [name, value] : values) {
        text += (text.empty() ? "" : " ") + name.str() + "=";
        appendText<Core::Integer>(text, value);
        appendText<Core::Float>(text, value);
        appendText<Core::Boolean>(text, value);
        appendText<Core::String>(text, value);
    }
    return text;
}

const std::string nodes = R"(
<Integer Name="Int"><Value>-7</Value></Integer>
<Float Name="Float"><Value>2.5</Value></Float>
<Boolean Name="Bool"><Value>1</Value></Boolean>
<StringReg Name="Text"><Address>0</Address><Length>8</Length><AccessMode>RO</AccessMode><pPort>Device</pPort></StringReg>
<Enumeration Name="Selector"><EnumEntry Name="One"><Value>1</Value></EnumEntry>
    <EnumEntry Name="Two"><Value>2</Value></EnumEntry><Value>1</Value></Enumeration>
<IntSwissKnife Name="Selected"><pVariable Name="S">Selector</pVariable><Formula>S*10</Formula></IntSwissKnife>
<Integer Name="Never"><Value>0</Value></Integer>
<Integer Name="Absent"><pIsAvailable>Never</pIsAvailable><Value>1</Value></Integer>
<IntSwissKnife Name="Broken"><pVariable Name="N">Never</pVariable><Formula>1/N</Formula></IntSwissKnife>
)";

class ChunkPinsTest : public testing::Test
{
protected:
    ChunkPinsTest()
    {
        world.device.Put(0, {'a', 'b', 'c'});
        result->chunkMap = [this] { return world.map; };
    }

    std::string read(const GenICam::gcstring_vector& lines)
    {
        PinMappings pins;
        try {
            PinMappingParser().parse(PinMappingType::ChunkData, lines, pins);
        } catch (const GenICam::RuntimeException&) {  // What was read until then makes pins.
        }
        Core::PinValues values;
        readChunkPins(pins, *result, values, this);
        return render(values);
    }
    std::string failure(const char* pin) const
    {
        return GenICam::formatText("Camera %p: Failed to get chunk data value for \"%s\" pin.",
                                   static_cast<const void*>(this), pin);
    }
    /// The one entry for all pins, without its cause.
    std::string summary(int failed) const
    {
        return GenICam::formatText(
            "Camera %p: %d of 2 chunk pins got no value. Message: ", static_cast<const void*>(this), failed);
    }

    ScopedLogCapture log;
    GenApiTest::World world{nodes};
    std::shared_ptr<FakeResult> result = std::make_shared<FakeResult>(16);
    const GenICam::gcstring good = "B.Type=Integer.ValueName=Int";
};

TEST_F(ChunkPinsTest, PutsValuesUnderTheirPins)
{
    const std::string noValue = "Failed to get chunk data value.";
    const std::pair<GenICam::gcstring_vector, std::string> rows[] = {
        {{good, "A.Type=Float.ValueName=Float"}, "A=2.50 B=-7"},
        {{"A.Type=Boolean.ValueName=Bool B.Type=String.ValueName=Text"}, "A=true B=\"abc\""},
        // Each pin sets its selector.
        {{"A.Type=Integer.SelectorName=Selector.SelectorValue=Two.ValueName=Selected",
          "B.Type=Integer.SelectorName=Selector.SelectorValue=One.ValueName=Selected"},
         "A=20 B=10"},
        {{"A.Type=Integer.SelectorValue=Two.ValueName=Selected"}, "A=10"},
        // What the node is counts, not what the pin was declared as.
        {{"A.Type=String.ValueName=Int"}, "A=-7"},
        {{"A.Type=Integer.ValueName=None"}, "A="},
        {{"A.Type=Integer.ValueName=None.ValueName=Selector"}, "A="},
        // Of several names the last one counts, and only the first element is ever set.
        {{"A.Type=Integer.ValueName=Int.ValueName=Selected.ValueName=None"}, "A=|10|0|0"},
        {{"A.Type=Integer.ValueName=Int.ValueName=Float"}, "A=|2.50|0.00"},
        {{"A.Type=Integer.ValueName=Absent", good}, "A=" + noValue + " B=-7"},
        {{"A.Type=Integer.ValueName=Int.ValueName=Absent"}, "A=|" + noValue + "|0"},
        {{"A.Type=Integer.ValueName=Broken"}, "A=" + noValue + " With cause."},
    };
    for (const auto& [lines, expected] : rows) {
        world.Value("Selector").FromString("One");
        EXPECT_EQ(read(lines), expected) << lines.front();
    }
    EXPECT_EQ(log.messages(), Texts());
}

TEST_F(ChunkPinsTest, AFailureEndsItsPinOnly)
{
    for (const char* line : {"A.Type=Integer", "A.Type=Integer.SelectorName=Selector.ValueName=Int",
                             "A.Type=Integer.SelectorName=Selector.SelectorValue=Three.ValueName=Int",
                             "A.Type=Integer.SelectorName=Int.SelectorValue=1.ValueName=Int",
                             "A.Type=Integer.ValueName=Int.SelectorValue=Two.SelectorName=1"})
    {
        log.clear();
        EXPECT_EQ(read({good, line}), "B=-7") << line;
        const Texts entries = log.messages("nivex.dataprocessing.stagelet.Camera");
        ASSERT_EQ(entries.size(), 2u);
        EXPECT_EQ(entries[0], failure("A"));
        EXPECT_EQ(log.lines()[0].severity, 5);
        EXPECT_TRUE(entries[1].starts_with(summary(1))) << entries[1];
        EXPECT_EQ(log.lines()[1].severity, 4);
    }
    log.clear();
    result->chunkMap = []() -> GenApi::NodeMapPtr { GENICAM_THROW(RuntimeException, "The chunks are damaged."); };
    EXPECT_EQ(read({"A.Type=Integer.ValueName=Int", good}), "");
    EXPECT_EQ(log.messages(), (Texts{failure("A"), failure("B"), summary(2) + "The chunks are damaged."}));
}

TEST_F(ChunkPinsTest, WhatAnErrorOfTheConfigurationLeavesOutIsNamed)
{
    const std::pair<const char*, const char*> rows[] = {
        {"A.Type=Integer.EventName=E.ValueName=Int", "ValueName"},
        {"A.Type=Integer.ValueName=1", "ValueName"},
        {"A.Type=Integer.SelectorName=Selector.ValueName=Int", "SelectorValue"},
    };
    for (const auto& [line, missing] : rows) {
        log.clear();
        EXPECT_EQ(read({good, line}), "B=-7") << line;
        EXPECT_EQ(log.messages().at(1), summary(1) + "The pin has no " + missing +
                                            ". What stands behind an error of the chunk pin configuration is not "
                                            "read.")
            << line;
    }
}

TEST_F(ChunkPinsTest, PinsThatNoFrameBringsValuesForAreToldBeforehand)
{
    const auto told = [this](const GenApiTest::World& camera, const GenICam::gcstring_vector& lines) {
        PinMappings pins;
        PinMappingParser().parse(PinMappingType::ChunkData, lines, pins);
        log.clear();
        logSilentChunkPins(pins, camera.map, this);
        Texts texts;
        for (const auto& line : log.lines()) {
            EXPECT_EQ(line.severity, 4);
            EXPECT_EQ(
                line.message.find(GenICam::formatText("Camera %p: Chunk pin", static_cast<const void*>(this))),
                0U);
            texts.push_back(line.message.substr(line.message.find(": ") + 2));
        }
        return texts;
    };
    const std::string a = "Chunk pin \"A\" is without values. Message: ";
    EXPECT_EQ(told(world, {good, "A.Type=Integer.ValueName=None.ValueName=Int", "C.Type=Integer"}), Texts());
    EXPECT_EQ(told(world, {good, "A.Type=Integer.ValueName=None.ValueName=Selector"}),
              Texts{a + "The camera has no parameter \"None\"."});
    EXPECT_EQ(told(world, {"A.Type=Integer.ValueName=Selector"}),
              Texts{a + "The camera's parameter \"Selector\" is of a kind that pins don't put out."});
    GenApiTest::World chunky(nodes + R"(<Boolean Name="ChunkModeActive"><Value>0</Value></Boolean>)");
    const std::string off = "Chunk pins are without values: ChunkModeActive of the camera is off.";
    EXPECT_EQ(told(chunky, {good}), Texts{off});
    EXPECT_EQ(told(chunky, {}), Texts());
    chunky.Value("ChunkModeActive").FromString("true");
    EXPECT_EQ(told(chunky, {good}), Texts());
}

}  // namespace
}  // namespace Plugin::NivexStageletPackageBase::Test

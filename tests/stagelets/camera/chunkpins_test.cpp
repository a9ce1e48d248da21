#include "camera/chunkpins.h"

#include <gtest/gtest.h>

#include "core/array.h"
#include "core/boolean.h"
#include "core/float.h"
#include "core/integer.h"
#include "core/string.h"
#include "fakeresult.h"
#include "framework/logcapture.h"
#include "genicam/genapi/world.h"

namespace Plugin::NivexStageletPackageBase::Test {
namespace {

namespace Core = Nivex::DataProcessing::Core;
namespace Utils = Nivex::DataProcessing::Utils;

template <typename T, typename Print>
std::string valueText(const T& value, const Print& print)
{
    if (!value.hasError()) return print(value);
    const auto causes = value.getError()->getParentErrors();
    return "error: " + value.getError()->getDescription().str() + (causes.empty() ? "" : " with cause");
}

std::string textOf(const Core::Integer& value)
{
    return valueText(value, [](const auto& number) { return std::to_string(number.getSigned()); });
}
std::string textOf(const Core::Float& value)
{
    return valueText(value, [](const auto& number) { return GenICam::formatText("%.2f", number.get()); });
}
std::string textOf(const Core::Boolean& value)
{
    return valueText(value, [](const auto& flag) { return std::string(flag.get() ? "true" : "false"); });
}
std::string textOf(const Core::String& value)
{
    return valueText(value, [](const auto& text) { return "\"" + text.get().str() + "\""; });
}

template <typename T>
bool appendText(std::string& text, const Utils::Variant& value)
{
    if (const auto* scalar = value.tryGet<T>()) {
        text += textOf(*scalar);
    } else if (const auto* array = value.tryGet<Core::Array<T>>()) {
        for (std::size_t i = 0; i < array->getSize(); ++i) {
            text += (i == 0 ? "[" : ", ") + textOf(array->at(i));
        }
        text += "]";
    } else {
        return false;
    }
    return true;
}

/// "A=1 B=[2.00, 0.00] C=none".
std::string render(const Core::PinValues& values)
{
    std::string text;
    for (const auto& [name, value] : values) {
        text += (text.empty() ? "" : " ") + name.str() + "=";
        if (!value.isValid()) {
            text += "none";
        } else if (!appendText<Core::Integer>(text, value) && !appendText<Core::Float>(text, value) &&
                   !appendText<Core::Boolean>(text, value) && !appendText<Core::String>(text, value))
        {
            text += "a value of another type";
        }
    }
    return text;
}

const std::string nodes = R"(
    <Integer Name="Int"><Value>-7</Value></Integer>
    <Float Name="Float"><Value>2.5</Value></Float>
    <Boolean Name="Bool"><Value>1</Value></Boolean>
    <StringReg Name="Text"><Address>0</Address><Length>8</Length><AccessMode>RO</AccessMode><pPort>Device</pPort></StringReg>
    <Enumeration Name="Selector">
        <EnumEntry Name="One"><Value>1</Value></EnumEntry>
        <EnumEntry Name="Two"><Value>2</Value></EnumEntry>
        <Value>1</Value>
    </Enumeration>
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
        PinMappingParser().parse(PinMappingType::ChunkData, lines, pins);
        Core::PinValues values;
        readChunkPins(pins, *result, values, this);
        return render(values);
    }
    std::string failure(const std::string& pin) const
    {
        return GenICam::formatText("Camera %p: Failed to get chunk data value for \"%s\" pin.",
                                   static_cast<const void*>(this), pin.c_str());
    }

    ScopedLogCapture log;
    GenApiTest::World world{nodes};
    std::shared_ptr<FakeResult> result = std::make_shared<FakeResult>(16);
};

using Texts = std::vector<std::string>;

TEST_F(ChunkPinsTest, PutsValuesUnderTheirPins)
{
    const std::string noValue = "error: Failed to get chunk data value.";
    struct Row
    {
        GenICam::gcstring_vector lines;
        std::string expected;
    };
    const Row rows[] = {
        {{}, ""},
        {{"B.Type=Integer.ValueName=Int", "A.Type=Float.ValueName=Float"}, "A=2.50 B=-7"},
        {{"A.Type=Boolean.ValueName=Bool B.Type=String.ValueName=Text"}, "A=true B=\"abc\""},
        // Each pin sets its selector.
        {{"A.Type=Integer.SelectorName=Selector.SelectorValue=Two.ValueName=Selected",
          "B.Type=Integer.SelectorName=Selector.SelectorValue=One.ValueName=Selected"},
         "A=20 B=10"},
        {{"A.Type=Integer.SelectorValue=Two.ValueName=Selected"}, "A=10"},
        // What the node is counts, not what the pin was declared as.
        {{"A.Type=String.ValueName=Int"}, "A=-7"},
        {{"A.Type=Integer.ValueName=None"}, "A=none"},
        {{"A.Type=Integer.ValueName=Selector"}, "A=none"},
        {{"A.Type=Integer.ValueName=None.ValueName=Selector"}, "A=none"},
        // Of several names the last one counts, and only the first element is ever set.
        {{"A.Type=Integer.ValueName=Int.ValueName=Selected.ValueName=None"}, "A=[10, 0, 0]"},
        {{"A.Type=Integer.ValueName=Int.ValueName=Float"}, "A=[2.50, 0.00]"},
        {{"A.Type=String.ValueName=Text.ValueName=Selector"}, "A=[\"abc\", \"\"]"},
        {{"A.Type=Integer.ValueName=Absent B.Type=Integer.ValueName=Int"}, "A=" + noValue + " B=-7"},
        {{"A.Type=Integer.ValueName=Int.ValueName=Absent"}, "A=[" + noValue + ", 0]"},
        {{"A.Type=Integer.ValueName=Broken"}, "A=" + noValue + " with cause"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.lines.empty() ? "" : row.lines.front().str());
        world.Value("Selector").FromString("One");
        EXPECT_EQ(read(row.lines), row.expected);
    }
    EXPECT_EQ(log.messages(), Texts());
}

TEST_F(ChunkPinsTest, AFailureEndsItsPinOnly)
{
    for (const char* failing : {"A.Type=Integer", "A.Type=Integer.SelectorName=Selector.ValueName=Int",
                                "A.Type=Integer.SelectorName=Selector.SelectorValue=Three.ValueName=Int",
                                "A.Type=Integer.SelectorName=None.SelectorValue=One.ValueName=Int",
                                "A.Type=Integer.SelectorName=Int.SelectorValue=1.ValueName=Int"})
    {
        SCOPED_TRACE(failing);
        log.clear();
        EXPECT_EQ(read({failing, "B.Type=Integer.ValueName=Int"}), "B=-7");
        ASSERT_EQ(log.messages("nivex.dataprocessing.stagelet.Camera"), Texts{failure("A")});
        EXPECT_EQ(log.lines().front().severity, 5);
    }
}

TEST_F(ChunkPinsTest, DamagedChunksCostAllPinsButNothingElse)
{
    result->chunkMap = []() -> GenApi::NodeMapPtr { GENICAM_THROW(RuntimeException, "The chunks are damaged."); };
    EXPECT_EQ(read({"A.Type=Integer.ValueName=Int", "B.Type=Float.ValueName=Float"}), "");
    EXPECT_EQ(log.messages(), (Texts{failure("A"), failure("B")}));
}

}  // namespace
}  // namespace Plugin::NivexStageletPackageBase::Test

// Event pins: their configuration, their registration with a camera, and the way of a value.
#include "camera/eventpins.h"

#include <gmock/gmock.h>

#include <stdexcept>

#include "base/instantcamera.h"

#include "camera/eventdatanames.h"
#include "core/values.h"
#include "framework/logcapture.h"
#include "sdk/camera/fakebackend.h"

namespace Plugin::NivexStageletPackageBase::Test {
namespace {

namespace Core = Nivex::DataProcessing::Core;
namespace Utils = Nivex::DataProcessing::Utils;
using GenICam::gcstring;
using Texts = std::vector<std::string>;
using testing::Contains;
using testing::HasSubstr;

/// The event A001 has 4 bytes, which the nodes show in their ways.
const std::string nodes = R"(
<FloatReg Name="Float"><Address>0</Address><Length>4</Length><AccessMode>RO</AccessMode><pPort>EventPort</pPort>
    <Endianess>LittleEndian</Endianess></FloatReg>
<StringReg Name="Text"><Address>2</Address><Length>2</Length><AccessMode>RO</AccessMode><pPort>EventPort</pPort></StringReg>
<Boolean Name="Bool"><pValue>EventDataReg</pValue><OnValue>1075838976</OnValue><OffValue>0</OffValue></Boolean>
<Register Name="Bytes"><Address>0</Address><Length>4</Length><AccessMode>RO</AccessMode><pPort>EventPort</pPort></Register>
<IntReg Name="Beyond"><Address>9</Address><Length>1</Length><AccessMode>RO</AccessMode><pPort>EventPort</pPort></IntReg>
)";
const std::string notification = R"(
<Enumeration Name="EventNotification"><EnumEntry Name="Off"><Value>0</Value></EnumEntry>
    <EnumEntry Name="On"><Value>1</Value></EnumEntry><Value>0</Value></Enumeration>
)";
/// A notification for each event, as cameras have it.
const std::string notifications = R"(
<Enumeration Name="EventSelector"><EnumEntry Name="End"><Value>1</Value></EnumEntry>
    <EnumEntry Name="Start"><Value>2</Value></EnumEntry><Value>2</Value></Enumeration>
<Integer Name="OfEnd"><Value>0</Value></Integer>
<Integer Name="OfStart"><Value>0</Value></Integer>
<Integer Name="OfSelected"><pIndex>EventSelector</pIndex><pValueIndexed Index="1">OfEnd</pValueIndexed>
    <pValueDefault>OfStart</pValueDefault></Integer>
<Enumeration Name="EventNotification"><EnumEntry Name="Off"><Value>0</Value></EnumEntry>
    <EnumEntry Name="On"><Value>1</Value></EnumEntry><pValue>OfSelected</pValue></Enumeration>
)";
constexpr std::uint64_t eventId = 0xA001;
constexpr std::uint32_t eventData = 0x40200000;  ///< 2.5 as a number with a fraction.

/// Keeps "PIN=VALUE" and "PIN lost".
class KeepingOutput : public IEventPinOutput
{
public:
    void outputEventValue(const gcstring& pinName, Utils::Variant value) override
    {
        std::string text = "none";
        if (const auto* number = value.tryGet<Core::Integer>()) text = std::to_string(number->getSigned());
        if (const auto* number = value.tryGet<Core::Float>()) text = GenICam::formatText("%.2f", number->get());
        if (const auto* flag = value.tryGet<Core::Boolean>()) text = flag->get() ? "true" : "false";
        if (const auto* string = value.tryGet<Core::String>()) text = "\"" + string->get().str() + "\"";
        outputs.push_back(pinName.str() + "=" + text);
        if (fails) throw std::length_error("no space");
    }
    void onEventValueLost(const gcstring& pinName) noexcept override
    {
        outputs.push_back(pinName.str() + " lost");
    }
    void onEventsMissed(const gcstring& pinName, std::uint64_t count) noexcept override
    {
        outputs.push_back(pinName.str() + " missed " + std::to_string(count));
    }

    Texts outputs;
    bool fails = false;
};

class EventPinsTest : public testing::Test
{
protected:
    void open(const std::string& moreNodes)
    {
        const auto state = std::make_shared<CameraTest::FakeState>();
        state->description = CameraTest::FakeDescription(nodes + moreNodes);
        device = new CameraTest::FakeDevice(state);
        camera.Attach(device);
        camera.Open();
    }
    void registerLines(const GenICam::gcstring_vector& lines) { registrations.registerAll(camera, lines, output); }
    std::string textOf(const char* node) const
    {
        return dynamic_cast<GenApi::IValue&>(*camera.GetNodeMap()->GetNode(node)).ToString().str();
    }
    Texts logged() const { return log.messages("nivex.dataprocessing.stagelet.Camera"); }

    ScopedLogCapture log;
    KeepingOutput output;
    EventPinRegistrations registrations;
    Nivex::CInstantCamera camera;
    CameraTest::FakeDevice* device = nullptr;
    const gcstring good = "B.Type=Integer.EventName=End.ValueName=EventData";
    const std::string goodValue = "B=1075838976";
};

TEST(EventDataNamesTest, KnowsTheCamerasSpellings)
{
    EXPECT_EQ(eventDataCode("EventAcquistionWaitData"), 3U);
    EXPECT_EQ(eventDataCode("EventFrameTimeouTimestamp"), 15U);
    EXPECT_EQ(eventDataCode("EventVirtualLine4RisingEdgeTimestamp"), 32U);
    for (const char* name : {"EventFrameTimeoutTimestamp", "eventTestData", "EventTestDat", ""})
        EXPECT_EQ(eventDataCode(name), std::nullopt) << name;
}

TEST_F(EventPinsTest, ReadsOnePinPerLine)
{
    const EventPinDescription pin = readEventPin("Pin.Type=Integer.EventName=X.ValueName=Y");
    EXPECT_TRUE(pin.valid);
    EXPECT_EQ(pin.pinName + pin.eventName + pin.valueName + toText(pin.valueType), "PinXYInteger");
    EXPECT_EQ(logged(), Texts());

    const std::string incomplete = "Camera: Incomplete event configuration found";
    const std::pair<const char*, std::string> refusals[] = {
        {"A.Type=Int", "Camera: (0,11): Error : Pin type 'Int' is not valid"},
        {"", "Camera: Wrong number of event configurations found:0"},
        {"A.Type=Integer B.Type=Float", "Camera: Wrong number of event configurations found:2"},
        {"A.Type=Integer.EventName=X", incomplete},
        {"A.Type=Integer.ValueName=X", incomplete},
        {"A.Type=Integer.EventName=X.ValueName=Y.ValueName=Z", incomplete},
    };
    for (const auto& [line, message] : refusals) {
        log.clear();
        const EventPinDescription refused = readEventPin(line);
        EXPECT_TRUE(!refused.valid && refused.pinName.empty() && refused.eventName.empty()) << line;
        EXPECT_EQ(logged(), Texts{message});
        EXPECT_EQ(log.lines().back().severity, 3);
    }
    log.clear();
    EXPECT_THROW(readEventPin("A.Type=Integer.EventName=X.ValueName=Y.ValueName=Y"), std::runtime_error);
    PinMappings chunks;
    PinMappingParser().parse(PinMappingType::ChunkData, {"A.Type=Integer.ValueName=X"}, chunks);
    EXPECT_FALSE(describeEventPin(chunks).valid);
    EXPECT_EQ(logged(), Texts{"Camera: Unexpected mapping type found in configuration"});
}

TEST_F(EventPinsTest, TurnsOnTheNotificationOfEachEvent)
{
    open(notifications);
    registerLines({good});
    EXPECT_EQ(textOf("OfEnd") + textOf("OfStart"), "10");
    EXPECT_EQ(logged(), (Texts{"Camera: Try to register event \"End\" and output \"EventData\" as pin \"B\"",
                               "Camera: Set enumeration selector to 'End'", "Camera: Turn event notification on",
                               "Camera: RegisterCameraEventHandler"}));
    EXPECT_EQ(log.lines().back().severity, 6);
}

TEST_F(EventPinsTest, OpeningAgainLeavesOneHandlerForEachPin)
{
    open(notification);
    registerLines({good});
    EXPECT_EQ(textOf("EventNotification"), "On");
    EXPECT_THAT(logged(), testing::Not(Contains(HasSubstr("selector"))));
    camera.Close();
    camera.Open();
    registerLines({good});
    device->PushEvent(eventId, eventData);
    EXPECT_EQ(output.outputs, Texts{goodValue});
    registrations.deregisterAll(camera);
    device->PushEvent(eventId, eventData);
    EXPECT_EQ(output.outputs, Texts{goodValue});
}

TEST_F(EventPinsTest, WhatFailsCostsItsPinOnly)
{
    const std::string unexpected = "Camera: Unexpected error in Camera::OnOpened()";
    const std::string without = "Camera: Event pin \"A\" is without values. Message: The camera ";
    const std::pair<const char*, Texts> rows[] = {
        {"A.Type=Integer", {"Camera: Incomplete event configuration found"}},
        {"A.Type=Integer.EventName=No.ValueName=EventData",
         {"Camera: Unable to turn on event notification for \"No\"", without + "can't send the event \"No\"."}},
        {"A.Type=Integer.EventName=End.ValueName=No",
         {without + "has no parameter \"No\".", "Camera: RegisterCameraEventHandler"}},
        {"A.Type=Integer.EventName=End.ValueName=X.ValueName=X", {unexpected}},
    };
    open(notifications);
    for (const auto& [line, messages] : rows) {
        log.clear();
        output.outputs.clear();
        registerLines({line, good});
        EXPECT_THAT(logged(), testing::IsSupersetOf(messages));
        device->PushEvent(eventId, eventData);
        EXPECT_EQ(output.outputs, Texts{goodValue}) << line;
    }
    camera.Close();
    log.clear();
    registerLines({good});
    EXPECT_THAT(logged(), Contains(unexpected));
    open("");  // a camera without notifications
    registerLines({good});
    EXPECT_THAT(logged(), Contains("Camera: Unable to turn on event notification for \"End\""));
}

TEST_F(EventPinsTest, ValuesGoToTheirPins)
{
    open(notifications);
    GenICam::gcstring_vector lines = {good};
    for (const char* name : {"Float", "Text", "Bool", "Bytes", "Beyond"}) {
        lines.push_back(gcstring("On") + name + ".Type=String.EventName=End.ValueName=" + name);
    }
    registerLines(lines);
    log.clear();
    device->PushEvent(eventId, eventData);
    device->PushEvent(eventId + 1, eventData);  // another event
    EXPECT_THAT(output.outputs, testing::UnorderedElementsAre(goodValue, "OnFloat=2.50", "OnText=\" @\"",
                                                              "OnBool=true", "OnBytes=none", "OnBeyond lost"));
    EXPECT_THAT(logged(),
                testing::ElementsAre(HasSubstr("Failed to get event value of \"OnBeyond\" pin. Message: ")));

    output = {};
    registerLines({good});
    device->LoseEvents(eventId, 3);
    EXPECT_THAT(output.outputs, testing::ElementsAre(testing::EndsWith(" missed 3")));

    log.clear();
    output = {};
    output.fails = true;
    EventHandler("A", "NoSuchNode", &output).OnCameraEvent(camera, 0, nullptr);
    EXPECT_EQ(output.outputs, Texts{"A=none"});
    EXPECT_EQ(logged(), Texts{"Camera: Failed to output event value of \"A\" pin. Message: no space"});
}

}  // namespace
}  // namespace Plugin::NivexStageletPackageBase::Test

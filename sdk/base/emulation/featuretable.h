#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "base/emulation/feature.h"
#include "base/emulation/frametables.h"
#include "base/emulation/scene.h"

// Everything that the emulated camera's node maps show, but for chunk and event data. A row is a feature and the
// register behind it at once: the description, the register bank and its checks are made from it.
namespace Nivex::Emulation {

inline constexpr std::uint32_t sensorWidth = 4096;
inline constexpr std::uint32_t sensorHeight = 3000;
inline constexpr double criticalTemperature = 85;
inline constexpr std::size_t textSize = 256;  ///< Bytes of a text register, its end included.

inline constexpr Choice offOn[] = {{"Off", 0}, {"On", 1}};
inline constexpr Choice acquisitionModes[] = {{"SingleFrame", 0, "One frame."},
                                              {"MultiFrame", 1, "AcquisitionFrameCount frames."},
                                              {"Continuous", 2, "Frames until AcquisitionStop."}};
inline constexpr Choice triggerSelectors[] = {{"FrameStart", 0}};
inline constexpr Choice triggerSources[] = {{"Software", 0, "The command TriggerSoftware."},
                                            {"Line1", 1, "A line that nothing is connected to."}};
inline constexpr Choice imageSources[] = {{"TestPattern", 0, "What TestPattern says."},
                                          {"Folder", 1, "The pictures of ImageFolder, over and over."}};
inline constexpr Choice scanTypes[] = {{"Areascan", 0}};
inline constexpr Choice userSets[] = {{"Default", 0}};
inline constexpr Choice connectionStates[] = {{"Connected", 0}, {"Lost", 1}};
inline constexpr Choice deviceTypes[] = {{"Emulated", 0}};

enum class EAcquisitionMode : std::int64_t
{
    SingleFrame,
    MultiFrame,
    Continuous
};

using enum EKind;
using enum ELevel;

inline constexpr Feature deviceControl[] = {
    {.name = "DeviceVendorName",
     .kind = Text,
     .toolTip = "Who makes the camera.",
     .text = "Nivex",
     .readOnly = true},
    {.name = "DeviceModelName",
     .kind = Text,
     .toolTip = "What camera it is.",
     .text = "Emulated Camera",
     .readOnly = true},
    {.name = "DeviceSerialNumber", .kind = Text, .toolTip = "Tells one camera from another.", .readOnly = true},
    {.name = "DeviceUserID", .kind = Text, .toolTip = "A name of your own."},
    {.name = "DeviceVersion", .kind = Text, .toolTip = "Version of the camera.", .text = "1.0", .readOnly = true},
    {.name = "DeviceScanType",
     .kind = Enumeration,
     .toolTip = "How the sensor scans.",
     .choices = scanTypes,
     .readOnly = true},
    {.name = "DeviceTemperature",
     .kind = Float,
     .toolTip = "Temperature of the camera.",
     .initial = 42,
     .unit = "C",
     .readOnly = true},
    {.name = "TimestampLatch",
     .kind = Command,
     .toolTip = "Notes the time in TimestampLatchValue.",
     .level = Expert},
    {.name = "TimestampLatchValue", .toolTip = "The noted time.", .unit = "ns", .readOnly = true, .level = Expert},
    {.name = "TimestampReset", .kind = Command, .toolTip = "Sets the clock to zero.", .level = Expert},
};

inline constexpr Feature imageFormatControl[] = {
    {.name = "SensorWidth",
     .toolTip = "Pixels in a row of the sensor.",
     .initial = sensorWidth,
     .unit = "px",
     .readOnly = true},
    {.name = "SensorHeight",
     .toolTip = "Rows of the sensor.",
     .initial = sensorHeight,
     .unit = "px",
     .readOnly = true},
    {.name = "WidthMax", .kind = Node, .xml = R"(<IntSwissKnife Name="WidthMax" NameSpace="Standard">
  <ToolTip>Widest picture at this binning.</ToolTip>
  <pVariable Name="SENSOR">SensorWidthReg</pVariable>
  <pVariable Name="BINNING">BinningHorizontalReg</pVariable>
  <Formula>SENSOR / BINNING</Formula>
  <Unit>px</Unit>
</IntSwissKnife>)"},
    {.name = "HeightMax", .kind = Node, .xml = R"(<IntSwissKnife Name="HeightMax" NameSpace="Standard">
  <ToolTip>Highest picture at this binning.</ToolTip>
  <pVariable Name="SENSOR">SensorHeightReg</pVariable>
  <pVariable Name="BINNING">BinningVerticalReg</pVariable>
  <Formula>SENSOR / BINNING</Formula>
  <Unit>px</Unit>
</IntSwissKnife>)"},
    {.name = "BinningHorizontal",
     .toolTip = "Columns of the sensor that make one of the picture.",
     .initial = 1,
     .min = 1,
     .max = 4,
     .locked = true},
    {.name = "BinningVertical",
     .toolTip = "Rows of the sensor that make one of the picture.",
     .initial = 1,
     .min = 1,
     .max = 4,
     .locked = true},
    {.name = "Width",
     .toolTip = "Width of the picture.",
     .initial = 640,
     .min = 1,
     .max = sensorWidth,
     .unit = "px",
     .maxNode = "WidthLimit",
     .locked = true},
    {.name = "Height",
     .toolTip = "Height of the picture.",
     .initial = 480,
     .min = 1,
     .max = sensorHeight,
     .unit = "px",
     .maxNode = "HeightLimit",
     .locked = true},
    {.name = "OffsetX",
     .toolTip = "Left edge of the picture on the sensor.",
     .max = sensorWidth - 1,
     .unit = "px",
     .maxNode = "OffsetXLimit",
     .locked = true},
    {.name = "OffsetY",
     .toolTip = "Upper edge of the picture on the sensor.",
     .max = sensorHeight - 1,
     .unit = "px",
     .maxNode = "OffsetYLimit",
     .locked = true},
    {.name = "WidthLimit",
     .kind = Node,
     .xml = R"(<IntSwissKnife Name="WidthLimit" NameSpace="Custom">
  <pVariable Name="MOST">WidthMax</pVariable>
  <pVariable Name="OTHER">OffsetXReg</pVariable>
  <Formula>MOST - OTHER</Formula>
</IntSwissKnife>)",
     .raw = true},
    {.name = "HeightLimit",
     .kind = Node,
     .xml = R"(<IntSwissKnife Name="HeightLimit" NameSpace="Custom">
  <pVariable Name="MOST">HeightMax</pVariable>
  <pVariable Name="OTHER">OffsetYReg</pVariable>
  <Formula>MOST - OTHER</Formula>
</IntSwissKnife>)",
     .raw = true},
    {.name = "OffsetXLimit",
     .kind = Node,
     .xml = R"(<IntSwissKnife Name="OffsetXLimit" NameSpace="Custom">
  <pVariable Name="MOST">WidthMax</pVariable>
  <pVariable Name="OTHER">WidthReg</pVariable>
  <Formula>MOST - OTHER</Formula>
</IntSwissKnife>)",
     .raw = true},
    {.name = "OffsetYLimit",
     .kind = Node,
     .xml = R"(<IntSwissKnife Name="OffsetYLimit" NameSpace="Custom">
  <pVariable Name="MOST">HeightMax</pVariable>
  <pVariable Name="OTHER">HeightReg</pVariable>
  <Formula>MOST - OTHER</Formula>
</IntSwissKnife>)",
     .raw = true},
    {.name = "ReverseX", .kind = Boolean, .toolTip = "Mirrors left and right.", .locked = true},
    {.name = "ReverseY", .kind = Boolean, .toolTip = "Mirrors top and bottom.", .locked = true},
    {.name = "PixelFormat",
     .kind = FormatChoice,
     .toolTip = "Format of the pixels.",
     .initial = 0x01080001,
     .locked = true},
    {.name = "ImageSource",
     .kind = Enumeration,
     .toolTip = "Where pictures come from.",
     .choices = imageSources,
     .locked = true},
    {.name = "ImageFolder",
     .kind = Text,
     .toolTip = "Folder of BMP, JPEG, PNG and TIFF files, shown in the order of their names.",
     .locked = true},
    {.name = "TestPattern",
     .kind = Enumeration,
     .toolTip = "What the pictures show.",
     .choices = testPatternChoices},
    {.name = "ComponentSelector",
     .kind = Enumeration,
     .toolTip = "The component that ComponentEnable is about.",
     .choices = componentChoices},
    {.name = "ComponentEnable",
     .kind = Boolean,
     .toolTip = "Whether frames have that component. Several, or another one than Intensity alone, make frames of "
                "several components.",
     .selector = "ComponentSelector",
     .locked = true},
    {.name = "ComponentIDValue",
     .toolTip = "Number of that component.",
     .selector = "ComponentSelector",
     .readOnly = true,
     .level = Expert},
};

inline constexpr Feature acquisitionControl[] = {
    {.name = "AcquisitionMode",
     .kind = Enumeration,
     .toolTip = "How many frames AcquisitionStart asks for.",
     .initial = 2,
     .choices = acquisitionModes,
     .locked = true},
    {.name = "AcquisitionStart", .kind = Command, .toolTip = "Starts taking frames."},
    {.name = "AcquisitionStop", .kind = Command, .toolTip = "Stops taking frames."},
    {.name = "AcquisitionFrameCount",
     .toolTip = "Frames of the mode MultiFrame.",
     .initial = 1,
     .min = 1,
     .max = 65535,
     .locked = true},
    {.name = "AcquisitionFrameRateEnable",
     .kind = Boolean,
     .toolTip = "Off: as fast as buffers come back; the exposure takes no time then.",
     .initial = 1},
    {.name = "AcquisitionFrameRate",
     .kind = Float,
     .toolTip = "Frames per second.",
     .initial = 30,
     .min = 0.01,
     .max = 10000,
     .unit = "Hz"},
    {.name = "ResultingFrameRate",
     .kind = Node,
     .xml = R"(<SwissKnife Name="ResultingFrameRate" NameSpace="Standard">
  <ToolTip>The rate that the exposure time leaves room for.</ToolTip>
  <pIsAvailable>AcquisitionFrameRateEnable</pIsAvailable>
  <pVariable Name="RATE">AcquisitionFrameRateReg</pVariable>
  <pVariable Name="EXPOSURE">ExposureTime</pVariable>
  <Formula>1E6 / EXPOSURE &lt; RATE ? 1E6 / EXPOSURE : RATE</Formula>
  <Unit>Hz</Unit>
</SwissKnife>)"},
    {.name = "ExposureTimeRaw",
     .toolTip = "Exposure time in steps of 0.1 us.",
     .initial = 100000,
     .min = 10,
     .max = 100000000,
     .level = Invisible},
    {.name = "ExposureTime", .kind = Node, .xml = R"(<Converter Name="ExposureTime" NameSpace="Standard">
  <ToolTip>Pictures are brighter the longer it is; 10000 shows them as they are.</ToolTip>
  <Streamable>Yes</Streamable>
  <FormulaTo>FROM * 10</FormulaTo>
  <FormulaFrom>TO / 10</FormulaFrom>
  <pValue>ExposureTimeRaw</pValue>
  <Unit>us</Unit>
  <Slope>Increasing</Slope>
</Converter>)"},
    {.name = "TriggerSelector",
     .kind = Enumeration,
     .toolTip = "The trigger that is set up.",
     .choices = triggerSelectors},
    {.name = "TriggerMode",
     .kind = Enumeration,
     .toolTip = "Whether a frame waits for a trigger.",
     .choices = offOn,
     .selector = "TriggerSelector"},
    {.name = "TriggerSource",
     .kind = Enumeration,
     .toolTip = "What triggers.",
     .choices = triggerSources,
     .selector = "TriggerSelector"},
    {.name = "TriggerSoftware",
     .kind = Command,
     .toolTip = "Triggers a frame. Up to 255 triggers wait for their turn."},
};

inline constexpr Feature analogControl[] = {
    {.name = "GainSelector",
     .kind = Enumeration,
     .toolTip = "The colours that Gain is about.",
     .choices = gainChoices},
    {.name = "Gain",
     .kind = Float,
     .toolTip = "Makes pictures brighter; that of a colour comes on top of that of all.",
     .min = -24,
     .max = 24,
     .unit = "dB",
     .selector = "GainSelector"},
    {.name = "BlackLevel",
     .kind = Float,
     .toolTip = "Added to all pixels, in steps of 8 bits.",
     .max = 255,
     .unit = "DN"},
};

inline constexpr Feature digitalIOControl[] = {
    {.name = "LineStatusAll",
     .toolTip = "State of the lines, one bit each: they count the frames.",
     .readOnly = true},
};

inline constexpr Feature chunkDataControl[] = {
    {.name = "ChunkModeActive", .kind = Boolean, .toolTip = "Whether frames carry chunks.", .locked = true},
    {.name = "ChunkSelector",
     .kind = Enumeration,
     .toolTip = "The chunk that ChunkEnable is about.",
     .choices = chunkChoices},
    {.name = "ChunkEnable",
     .kind = Boolean,
     .toolTip = "Whether frames carry that chunk.",
     .selector = "ChunkSelector",
     .locked = true},
};

inline constexpr Feature eventControl[] = {
    {.name = "EventSelector",
     .kind = Enumeration,
     .toolTip = "The event that EventNotification is about.",
     .choices = eventChoices},
    {.name = "EventNotification",
     .kind = Enumeration,
     .toolTip = "Whether that event is sent.",
     .choices = offOn,
     .selector = "EventSelector"},
    {.name = "TestEventGenerate", .kind = Command, .toolTip = "Sends the event Test."},
};

inline constexpr Feature userSetControl[] = {
    {.name = "UserSetSelector",
     .kind = Enumeration,
     .toolTip = "The settings that UserSetLoad loads.",
     .choices = userSets},
    {.name = "UserSetLoad",
     .kind = Command,
     .toolTip = "Puts all settings back, but for DeviceUserID.",
     .locked = true},
};

inline constexpr Feature transportLayerControl[] = {
    {.name = "TLParamsLocked",
     .toolTip = "1 while a stream is up: what would change the frame's size can't be written.",
     .max = 1,
     .isVolatile = true,
     .level = Invisible},
};

inline constexpr Feature faultInjection[] = {
    {.name = "FailedFramesEvery",
     .toolTip = "Each frame whose number divides by this fails. 0: none.",
     .max = 1000000},
    {.name = "FailedFramesCause",
     .kind = Enumeration,
     .toolTip = "The error code and text that they fail with.",
     .choices = frameFaultChoices},
    {.name = "LostFramesEvery",
     .toolTip = "After so many frames some get lost: their numbers are missing. 0: none.",
     .max = 1000000},
    {.name = "LostFramesNumber",
     .toolTip = "How many get lost each time.",
     .initial = 1,
     .min = 1,
     .max = 1000000},
    {.name = "DamagedChunksEvery",
     .toolTip =
         "Each frame whose number divides by this has chunks that are shorter than their trailer says. 0: none.",
     .max = 1000000},
    {.name = "RegisterAccessDelay",
     .toolTip = "Time that each access to a feature takes: a slow camera.",
     .max = 1000,
     .unit = "ms"},
    {.name = "UnknownEventGenerate", .kind = Command, .toolTip = "Sends an event whose number no feature has."},
    {.name = "EmulatedTemperature",
     .kind = Float,
     .toolTip = "What DeviceTemperature shows. Rising to 85 or above sends the event OverTemperature.",
     .initial = 42,
     .min = -40,
     .max = 150,
     .unit = "C"},
    {.name = "UnplugAfterFrames",
     .toolTip = "Pulls the cable when so many frames were taken, once. 0: never.",
     .max = 1000000000,
     .isVolatile = true},
    {.name = "UnplugNow", .kind = Command, .toolTip = "Pulls the cable."},
    {.name = "ReplugDelay",
     .toolTip = "The cable is back so long after it was pulled. 0: never.",
     .max = 3600000,
     .unit = "ms"},
};

inline constexpr Feature transportConnection[] = {
    {.name = "DeviceID", .kind = Text, .toolTip = "Full name of the camera.", .readOnly = true},
    {.name = "DeviceType",
     .kind = Enumeration,
     .toolTip = "How the camera is reached.",
     .choices = deviceTypes,
     .readOnly = true},
    {.name = "ConnectionStatus",
     .kind = Enumeration,
     .toolTip = "Whether the cable is in.",
     .choices = connectionStates,
     .readOnly = true},
    {.name = "HeartbeatTimeout",
     .toolTip = "Kept for programs that set it; an emulated cable is missed at once.",
     .initial = 3000,
     .min = 500,
     .max = 3600000,
     .unit = "ms",
     .level = Expert},
    {.name = "RegisterReadCount",
     .toolTip = "Reads of the camera's registers.",
     .readOnly = true,
     .level = Expert},
    {.name = "RegisterWriteCount",
     .toolTip = "Writes of the camera's registers.",
     .readOnly = true,
     .level = Expert},
    {.name = "EventLostCount",
     .toolTip = "Events dropped because too many were waiting.",
     .readOnly = true,
     .level = Expert},
};

inline constexpr Feature streamStatistics[] = {
    {.name = "StreamDeliveredFrameCount",
     .toolTip = "Frames delivered since the stream was started, failed ones included.",
     .readOnly = true},
    {.name = "StreamFailedFrameCount", .toolTip = "Those of them that failed.", .readOnly = true},
    {.name = "StreamLostFrameCount",
     .toolTip = "Frames lost because no buffer was free, or on demand.",
     .readOnly = true},
    {.name = "StreamInputBufferCount",
     .toolTip = "Buffers that wait for a frame.",
     .readOnly = true,
     .level = Expert},
    {.name = "StreamIsGrabbing", .kind = Boolean, .toolTip = "Whether a stream is up.", .readOnly = true},
};
inline constexpr Feature streamBuffers[] = {
    {.name = "StreamPayloadSize", .toolTip = "Bytes of a frame.", .readOnly = true, .raw = true},
    {.name = "PayloadSize", .kind = Node, .xml = R"(<Integer Name="PayloadSize" NameSpace="Standard">
  <ToolTip>Bytes of a frame.</ToolTip>
  <pValue>StreamPayloadSizeReg</pValue>
  <Unit>B</Unit>
</Integer>)"},
};

inline constexpr Category categories[] = {
    {"DeviceControl", EMap::Camera, "The camera itself.", true, deviceControl},
    {"ImageFormatControl", EMap::Camera, "Size, format and content of pictures.", true, imageFormatControl},
    {"AcquisitionControl", EMap::Camera, "When frames are taken.", true, acquisitionControl},
    {"AnalogControl", EMap::Camera, "Brightness.", true, analogControl},
    {"DigitalIOControl", EMap::Camera, "Lines.", true, digitalIOControl},
    {"ChunkDataControl", EMap::Camera, "Data that travel with a frame.", true, chunkDataControl},
    {"EventControl", EMap::Camera, "Messages of the camera.", true, eventControl},
    {"UserSetControl", EMap::Camera, "Sets of settings.", true, userSetControl},
    {"TransportLayerControl", EMap::Camera, "Data for the transport.", true, transportLayerControl},
    {"FaultInjection", EMap::Camera, "Faults on demand, to see what a recipe does about them.", false,
     faultInjection},
    {"DeviceConnection", EMap::Transport, "The way to the camera.", false, transportConnection},
    {"StreamStatistics", EMap::Stream, "What became of the frames.", false, streamStatistics},
    {"StreamBuffers", EMap::Stream, "Buffers of frames.", false, streamBuffers},
};

/// A feature's place among all, and its registers' in the camera's memory.
struct Placed
{
    const Feature* feature = nullptr;
    const Category* category = nullptr;
    std::uint32_t address = 0;
    std::uint32_t count = 0;  ///< Registers in a row.

    constexpr std::uint32_t ElementSize() const { return feature->kind == Text ? textSize : 8; }
};

constexpr std::size_t featureCount()
{
    std::size_t count = 0;
    for (const Category& category : categories)
        count += category.features.size();
    return count;
}

constexpr const Feature* findFeature(std::string_view name)
{
    for (const Category& category : categories)
        for (const Feature& feature : category.features)
            if (name == feature.name) return &feature;
    return nullptr;
}

/// All features in the order of the tables, each behind the one before.
inline constexpr auto placedFeatures = [] {
    std::array<Placed, featureCount()> placed{};
    std::uint32_t address = 0x1000;
    std::size_t index = 0;
    for (const Category& category : categories) {
        for (const Feature& feature : category.features) {
            const bool hasRegister = feature.kind != Node;
            const std::size_t elements = feature.selector ? findFeature(feature.selector)->choices.size() : 1;
            Placed& place = placed[index++];
            place = {&feature, &category, address, hasRegister ? static_cast<std::uint32_t>(elements) : 0};
            address += place.count * place.ElementSize();
        }
    }
    return placed;
}();

/// The register, or row of registers, behind a feature.
struct Register
{
    std::size_t index;  ///< In placedFeatures.

    constexpr const Placed& Place() const { return placedFeatures[index]; }
    constexpr bool operator==(const Register&) const = default;
};

/// The register of the feature of that name; does not compile for a name that is not in the tables.
consteval Register operator""_reg(const char* name, std::size_t length)
{
    std::size_t index = 0;
    while (std::string_view(name, length) != placedFeatures[index].feature->name)
        ++index;
    return {index};
}

}  // namespace Nivex::Emulation

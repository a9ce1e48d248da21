#include "camera/eventdatanames.h"

#include <algorithm>
#include <iterator>

namespace Plugin::NivexStageletPackageBase {

namespace {

struct EventDataName
{
    std::uint32_t code;
    std::string_view name;
};

// The spellings are those of the cameras, sic.
constexpr EventDataName names[] = {
    {0, "EventAcquisitionStartData"},
    {0, "EventAcquisitionStartFrameID"},
    {0, "EventAcquisitionStartTimestamp"},
    {1, "EventAcquisitionStartOvertriggerData"},
    {2, "EventAcquistionStartWaitData"},
    {3, "EventAcquistionWaitData"},
    {4, "EventActionLateData"},
    {5, "EventCriticalTemperatureData"},
    {6, "EventOverrunEventData"},
    {6, "EventOverrunEventTimestamp"},
    {7, "EventExposureEndData"},
    {7, "EventExposureEndTimestamp"},
    {7, "EventExposureEndFrameID"},
    {9, "EventFrameBurstStartData"},
    {9, "EventFrameBurstTimestamp"},
    {10, "EventFrameBurstStartOvertriggerData"},
    {11, "EventFrameBurstStartWaitData"},
    {11, "EventFrameBurstStartWaitTimestamp"},
    {12, "EventFrameStartData"},
    {12, "EventFrameStartTimestamp"},
    {13, "EventFrameStartOvertriggerData"},
    {13, "EventFrameStartOvertriggerTimestamp"},
    {14, "EventFrameStartWaitData"},
    {14, "EventFrameStartWaitTimestamp"},
    {15, "EventFrameTimeoutData"},
    {15, "EventFrameTimeouTimestamp"},
    {16, "EventFrameTriggerMissedData"},
    {16, "EventFrameTriggerMissedTimestamp"},
    {17, "EventFrameWaitData"},
    {17, "EventFrameWaitTimestamp"},
    {18, "EventLine1RisingEdgeData"},
    {18, "EventLine1RisingEdgeTimestamp"},
    {19, "EventLine2RisingEdgeData"},
    {19, "EventLine2RisingEdgeTimestamp"},
    {20, "EventLine3RisingEdgeData"},
    {20, "EventLine3RisingEdgeTimestamp"},
    {21, "EventLine4RisingEdgeData"},
    {21, "EventLine4RisingEdgeTimestamp"},
    {22, "EventLineStartOvertriggerData"},
    {22, "EventLineStartOvertriggrTimestamp"},
    {25, "EventOverTemperatureData"},
    {25, "EventOverTemperatureTimestamp"},
    {26, "EventOverrunData"},
    {26, "EventOverrunTimestamp"},
    {27, "EventTemperatureStatusChangedData"},
    {27, "EventTemperatureStatusChangedTimestamp"},
    {28, "EventTestData"},
    {28, "EventTestTimestamp"},
    {29, "EventVirtualLine1RisingEdgeData"},
    {29, "EventVirtualLine1RisingEdgeTimestamp"},
    {30, "EventVirtualLine2RisingEdgeTimestamp"},
    {31, "EventVirtualLine3RisingEdgeData"},
    {31, "EventVirtualLine3RisingEdgeTimestamp"},
    {32, "EventVirtualLine4RisingEdgeData"},
    {32, "EventVirtualLine4RisingEdgeTimestamp"},
};

}  // namespace

std::optional<std::uint32_t> eventDataCode(std::string_view name) noexcept
{
    const auto* row = std::find_if(std::begin(names), std::end(names),
                                   [name](const EventDataName& candidate) { return candidate.name == name; });
    if (row == std::end(names)) return std::nullopt;
    return row->code;
}

}  // namespace Plugin::NivexStageletPackageBase

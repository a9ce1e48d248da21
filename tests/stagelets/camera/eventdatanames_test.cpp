#include "camera/eventdatanames.h"

#include <gtest/gtest.h>

namespace Plugin::NivexStageletPackageBase::Test {
namespace {

TEST(EventDataNamesTest, KnowsTheCamerasSpellingsOnly)
{
    struct Row
    {
        const char* name;
        std::optional<std::uint32_t> code;
    };
    const Row rows[] = {
        {"EventAcquisitionStartData", 0U},
        {"EventExposureEndFrameID", 7U},
        {"EventVirtualLine4RisingEdgeTimestamp", 32U},
        {"EventAcquistionStartWaitData", 2U},
        {"EventAcquisitionStartWaitData", {}},
        {"EventAcquistionWaitData", 3U},
        {"EventFrameTimeouTimestamp", 15U},
        {"EventFrameTimeoutTimestamp", {}},
        {"EventLineStartOvertriggrTimestamp", 22U},
        {"EventLineStartOvertriggerTimestamp", {}},
        {"EventVirtualLine2RisingEdgeTimestamp", 30U},
        {"EventVirtualLine2RisingEdgeData", {}},
        {"EventOverrunEventData", 6U},
        {"EventOverrunData", 26U},
        {"eventTestData", {}},
        {"EventTestDat", {}},
        {"", {}},
    };
    for (const Row& row : rows) {
        EXPECT_EQ(eventDataCode(row.name), row.code) << row.name;
    }
}

}  // namespace
}  // namespace Plugin::NivexStageletPackageBase::Test

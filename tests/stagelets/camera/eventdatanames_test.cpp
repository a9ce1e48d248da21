#include "camera/eventdatanames.h"

#include <gtest/gtest.h>

namespace Plugin::NivexStageletPackageBase::Test {
namespace {

TEST(EventDataNamesTest, KnowsTheCamerasSpellings)
{
    const std::pair<const char*, std::uint32_t> rows[] = {
        {"EventAcquisitionStartData", 0},
        {"EventAcquistionStartWaitData", 2},
        {"EventAcquistionWaitData", 3},
        {"EventExposureEndFrameID", 7},
        {"EventFrameTimeouTimestamp", 15},
        {"EventLineStartOvertriggrTimestamp", 22},
        {"EventVirtualLine4RisingEdgeTimestamp", 32},
    };
    for (const auto& [name, code] : rows) {
        EXPECT_EQ(eventDataCode(name), code) << name;
    }
    for (const char* name : {"EventAcquisitionWaitData", "EventFrameTimeoutTimestamp", "eventTestData",
                             "EventTestDat", "EventVirtualLine2RisingEdgeData", ""})
    {
        EXPECT_EQ(eventDataCode(name), std::nullopt) << name;
    }
}

}  // namespace
}  // namespace Plugin::NivexStageletPackageBase::Test

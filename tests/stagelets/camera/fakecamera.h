#pragma once

#include <memory>
#include <vector>

#include "base/camerabackend.h"

#include "sdk/camera/fakebackend.h"

namespace Plugin::NivexStageletPackageBase::Test {

/// One camera that does what the test tells it.
class FakeBackend : public Nivex::ICameraBackend
{
public:
    std::vector<Nivex::CDeviceInfo> EnumerateDevices() override
    {
        return {CameraTest::FakeDevice(std::make_shared<CameraTest::FakeState>()).GetDeviceInfo()};
    }
    bool IsDeviceAccessible(const Nivex::CDeviceInfo&) override { return !state->isAlive; }
    std::unique_ptr<Nivex::INivexDevice> CreateDevice(const Nivex::CDeviceInfo&) override
    {
        auto made = std::make_unique<CameraTest::FakeDevice>(state);
        device = made.get();
        return made;
    }

    const std::shared_ptr<CameraTest::FakeState> state = std::make_shared<CameraTest::FakeState>();
    CameraTest::FakeDevice* device = nullptr;  ///< The one that was made last.
};

}  // namespace Plugin::NivexStageletPackageBase::Test

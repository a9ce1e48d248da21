#include "base/emulation/emulatedbackend.h"

#include <algorithm>

#include "gcbase/exception.h"

#include "base/emulation/camera.h"
#include "base/emulation/device.h"

namespace Nivex {

using Emulation::Camera;

/// Never changes after it is made; the cameras have locks of their own.
class CEmulatedCameraBackend::Impl
{
public:
    explicit Impl(std::size_t cameraCount)
    {
        for (std::size_t i = 0; i < cameraCount; ++i)
            cameras.push_back(std::make_shared<Camera>(GenICam::formatText("0815-%04zu", i)));
    }

    /// Null if there is none.
    std::shared_ptr<Camera> Find(const char* key, const GenICam::gcstring& value) const
    {
        const auto found = std::ranges::find_if(cameras, [&](const auto& camera) {
            GenICam::gcstring own;
            return camera->Info().GetPropertyValue(key, own) && own == value;
        });
        return found != cameras.end() ? *found : nullptr;
    }

    Camera& Get(const GenICam::gcstring& serialNumber) const
    {
        if (const auto camera = Find(Key::SerialNumber, serialNumber)) return *camera;
        GENICAM_THROW(InvalidArgumentException, "There is no emulated camera with the serial number \"%s\".",
                      serialNumber.c_str());
    }

    std::vector<std::shared_ptr<Camera>> cameras;  // in the order of their names
};

CEmulatedCameraBackend::CEmulatedCameraBackend(std::size_t cameraCount)
{
    if (cameraCount > maxCameras)
        GENICAM_THROW(InvalidArgumentException, "%zu emulated cameras are too many; allowed are 0 to %zu.",
                      cameraCount, maxCameras);
    impl_ = std::make_unique<Impl>(cameraCount);
}

CEmulatedCameraBackend::~CEmulatedCameraBackend() = default;

std::vector<CDeviceInfo> CEmulatedCameraBackend::EnumerateDevices()
{
    std::vector<CDeviceInfo> devices;
    for (const auto& camera : impl_->cameras)
        if (camera->IsPlugged()) devices.push_back(camera->Info());
    return devices;
}

bool CEmulatedCameraBackend::IsDeviceAccessible(const CDeviceInfo& device)
{
    const auto camera = impl_->Find(Key::FullName, device.GetFullName());
    return camera && camera->IsFree();
}

std::unique_ptr<INivexDevice> CEmulatedCameraBackend::CreateDevice(const CDeviceInfo& device)
{
    auto camera = impl_->Find(Key::FullName, device.GetFullName());
    return camera ? Emulation::Device::Reserve(std::move(camera)) : nullptr;
}

void CEmulatedCameraBackend::Unplug(const GenICam::gcstring& serialNumber)
{
    impl_->Get(serialNumber).Unplug();
}

void CEmulatedCameraBackend::Plug(const GenICam::gcstring& serialNumber)
{
    impl_->Get(serialNumber).Plug();
}

}  // namespace Nivex

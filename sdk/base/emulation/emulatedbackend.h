#pragma once

#include <cstddef>
#include <memory>

#include "base/camerabackend.h"

namespace Nivex {

/// Cameras inside the process, for developing and testing recipes without hardware. Serial numbers run from
/// "0815-0000" on; the device class is "Emulated". Each has the standard features of an area scan camera, test
/// pictures or pictures from a folder, chunks, events, multi-component payloads, and faults on demand, all through
/// its node map. A camera's settings live as long as the back end or its devices, over opening and closing.
class GENICAM_API CEmulatedCameraBackend : public ICameraBackend
{
public:
    static constexpr std::size_t maxCameras = 64;

    /// InvalidArgumentException for more than maxCameras.
    explicit CEmulatedCameraBackend(std::size_t cameraCount);
    ~CEmulatedCameraBackend() override;

    std::vector<CDeviceInfo> EnumerateDevices() override;
    bool IsDeviceAccessible(const CDeviceInfo& device) override;
    std::unique_ptr<INivexDevice> CreateDevice(const CDeviceInfo& device) override;

    /// Pulls the cable of the camera of that serial number, or puts it back; what is so already stays.
    /// InvalidArgumentException for an unknown serial number.
    void Unplug(const GenICam::gcstring& serialNumber);
    void Plug(const GenICam::gcstring& serialNumber);

private:
    class Impl;
    std::unique_ptr<Impl> impl_;
};

}  // namespace Nivex

#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <vector>

#include "base/camerabackend.h"

#include "core/ideviceresource.h"

namespace Nivex::DataProcessing::Runtime {

/// The cameras that back ends found at the latest look. Any thread may call any operation; no lock is held while a
/// back end is asked.
class CameraList
{
public:
    using Resources = std::map<Core::ResourceInfo, std::shared_ptr<Core::IResource>>;

    /// None of the back ends may be null.
    explicit CameraList(std::vector<std::shared_ptr<ICameraBackend>> backends);

    /// Asks all back ends. True if the list is another one now.
    bool look();
    /// False until the first look has ended.
    bool hasLooked() const;
    /// Those whose properties hold all of `wanted`.
    Resources find(const CInfoBase& wanted) const;

private:
    struct Camera
    {
        CDeviceInfo info;
        std::shared_ptr<Core::IDeviceResource> resource;
    };
    using Cameras = std::vector<Camera>;

    bool replace(std::size_t number, const std::vector<CDeviceInfo>& found);  // with mutex_ held

    const std::vector<std::shared_ptr<ICameraBackend>> backends_;
    mutable std::mutex mutex_;      // guards the members below
    std::vector<Cameras> cameras_;  ///< Of each back end.
    std::uint64_t begunLooks_ = 0;
    std::uint64_t latestLook_ = 0;  ///< The one that cameras_ is of; 0 for none.
};

}  // namespace Nivex::DataProcessing::Runtime

#include "runtime/cameralist.h"

#include <algorithm>
#include <optional>

#include "gcbase/exception.h"

#include "utils/log.h"
#include "utils/typeregistrar.h"

namespace Nivex::DataProcessing::Runtime {

namespace {

const Utils::TypeRegistrar<Core::IResource> resourceRegistrar;
const Utils::TypeRegistrar<Core::IDeviceResource, Core::IResource> deviceResourceRegistrar;

Utils::CatId poolCategory()
{
    static const Utils::CatId category = Utils::getCatId("nivex.dataprocessing.runtime.ResourcePool");
    return category;
}

/// Back ends look at nothing of the description but the full name, so that an old one will do.
class DeviceResource : public Core::IDeviceResource
{
public:
    DeviceResource(std::shared_ptr<ICameraBackend> backend, const CDeviceInfo& device)
        : backend_(std::move(backend)), device_(device)
    {}

    bool isFree() override
    {
        try {
            return backend_->IsDeviceAccessible(device_);
        } catch (...) {
            Utils::createLogEntry(Utils::SeverityFailure, poolCategory(),
                                  "ResourcePool: Could not find out if camera \"%s\" is free. Message: %s",
                                  device_.GetFullName().c_str(), GenICam::describeCurrentException().c_str());
            return false;
        }
    }
    std::unique_ptr<INivexDevice> getDevice() override { return backend_->CreateDevice(device_); }

private:
    const std::shared_ptr<ICameraBackend> backend_;
    const CDeviceInfo device_;
};

/// Nothing if the back end fails.
std::optional<std::vector<CDeviceInfo>> enumerate(ICameraBackend& backend)
{
    try {
        return backend.EnumerateDevices();
    } catch (...) {
        Utils::createLogEntry(Utils::SeverityFailure, poolCategory(),
                              "ResourcePool: Could not look for cameras. Message: %s",
                              GenICam::describeCurrentException().c_str());
        return std::nullopt;
    }
}

}  // namespace

CameraList::CameraList(std::vector<std::shared_ptr<ICameraBackend>> backends)
    : backends_(std::move(backends)), cameras_(backends_.size())
{}

bool CameraList::look()
{
    std::uint64_t number = 0;
    {
        const std::lock_guard guard(mutex_);
        number = ++begunLooks_;
    }
    std::vector<std::optional<std::vector<CDeviceInfo>>> answers;
    for (const auto& backend : backends_)
        answers.push_back(enumerate(*backend));

    const std::lock_guard guard(mutex_);
    if (number < latestLook_) return false;
    latestLook_ = number;
    bool isChanged = false;
    for (std::size_t i = 0; i < answers.size(); ++i) {
        if (answers[i] && replace(i, *answers[i])) isChanged = true;
    }
    return isChanged;
}

bool CameraList::replace(std::size_t number, const std::vector<CDeviceInfo>& found)
{
    const Cameras known = std::move(cameras_[number]);
    Cameras& cameras = cameras_[number];
    cameras.clear();
    for (const CDeviceInfo& info : found) {
        const auto stayed = std::find_if(known.begin(), known.end(), [&](const Camera& camera) {
            return camera.info.GetFullName() == info.GetFullName();
        });
        cameras.push_back({info, stayed != known.end()
                                     ? stayed->resource
                                     : std::make_shared<DeviceResource>(backends_[number], info)});
    }
    return !std::equal(cameras.begin(), cameras.end(), known.begin(), known.end(),
                       [](const Camera& a, const Camera& b) { return a.info == b.info; });
}

bool CameraList::hasLooked() const
{
    const std::lock_guard guard(mutex_);
    return latestLook_ != 0;
}

CameraList::Resources CameraList::find(const CInfoBase& wanted) const
{
    Resources resources;
    const std::lock_guard guard(mutex_);
    for (const Cameras& cameras : cameras_) {
        for (const Camera& camera : cameras) {
            if (camera.info.IsSubset(wanted)) resources.emplace(Core::ResourceInfo(camera.info), camera.resource);
        }
    }
    return resources;
}

}  // namespace Nivex::DataProcessing::Runtime

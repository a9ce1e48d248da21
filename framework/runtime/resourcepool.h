#pragma once

#include <cstddef>
#include <memory>
#include <vector>

#include "base/camerabackend.h"

#include "core/iresourcepool.h"

namespace Nivex::DataProcessing::Runtime {

/// The resources of one recipe: its threads, its memory for pictures, and the cameras of some back ends, which are
/// resources of the type IDeviceResource.
///
/// Back ends are asked when cameras are first queried, which fires no signal since nobody knew another list, and
/// at each refresh. One that fails is logged, and its cameras stay in the list as they were. Several threads may
/// look at once; of these looks the one that began last counts. A camera is known by its back end and full name:
/// while these stay, it keeps its object, whatever else changes.
class GENICAM_API ResourcePool : public Core::IResourcePool
{
public:
    using CameraBackends = std::vector<std::shared_ptr<ICameraBackend>>;

    /// `threadCount` as for ThreadPool. Raises InvalidArgumentException for a null back end.
    explicit ResourcePool(std::size_t threadCount = 0, CameraBackends backends = {});
    ~ResourcePool() override;

    std::shared_ptr<Threading::ThreadPool> getThreadPool() override;
    std::shared_ptr<Core::IBufferProvider> getBufferProvider() override;
    std::map<Core::ResourceInfo, std::shared_ptr<Core::IResource>> query(
        const Utils::TypeInfo& type, const Core::ResourceInfo& wanted) override;
    void refresh(const Utils::TypeInfo& type) override;
    Utils::ISignal<void()>& getResourcesChangedSignal() override;

private:
    struct Private;
    std::unique_ptr<Private> private_;
};

}  // namespace Nivex::DataProcessing::Runtime

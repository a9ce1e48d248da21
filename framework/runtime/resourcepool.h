#pragma once

#include <memory>

#include "core/iresourcepool.h"

namespace Nivex::DataProcessing::Runtime {

/// The resources of one recipe: its threads and its memory for pictures. It knows no further resources.
class GENICAM_API ResourcePool : public Core::IResourcePool
{
public:
    /// `threadCount` as for ThreadPool.
    explicit ResourcePool(std::size_t threadCount = 0);
    ~ResourcePool() override;

    std::shared_ptr<Threading::ThreadPool> getThreadPool() override;
    std::shared_ptr<Core::IBufferProvider> getBufferProvider() override;
    /// Always empty.
    std::map<Core::ResourceInfo, std::shared_ptr<Core::IResource>> query(
        const Utils::TypeInfo& type, const Core::ResourceInfo& wanted) override;
    void refresh(const Utils::TypeInfo& type) override;
    Utils::ISignal<void()>& getResourcesChangedSignal() override;

private:
    struct Private;
    std::unique_ptr<Private> private_;
};

}  // namespace Nivex::DataProcessing::Runtime

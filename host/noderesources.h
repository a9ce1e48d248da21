#pragma once

#include <atomic>
#include <memory>

#include "core/iresourcepool.h"

namespace Host {

/// What one node sees of the resource pool. It tells whether the node works with devices, which the host can't
/// know from the module: such a node gets further node maps with its device, and its failure to allocate resources
/// is a missing device. Any thread may call any operation.
class NodeResources : public Nivex::DataProcessing::Core::IResourcePool
{
public:
    explicit NodeResources(std::shared_ptr<IResourcePool> pool) : pool_(std::move(pool)) {}

    std::shared_ptr<Nivex::DataProcessing::Threading::ThreadPool> getThreadPool() override
    {
        return pool_->getThreadPool();
    }
    std::shared_ptr<Nivex::DataProcessing::Core::IBufferProvider> getBufferProvider() override
    {
        return pool_->getBufferProvider();
    }
    std::map<Nivex::DataProcessing::Core::ResourceInfo, std::shared_ptr<Nivex::DataProcessing::Core::IResource>>
    query(const Nivex::DataProcessing::Utils::TypeInfo& type,
          const Nivex::DataProcessing::Core::ResourceInfo& wanted) override
    {
        usesDevices_ = true;
        return pool_->query(type, wanted);
    }
    void refresh(const Nivex::DataProcessing::Utils::TypeInfo& type) override
    {
        usesDevices_ = true;
        pool_->refresh(type);
    }
    Nivex::DataProcessing::Utils::ISignal<void()>& getResourcesChangedSignal() override
    {
        usesDevices_ = true;
        return pool_->getResourcesChangedSignal();
    }

    /// True once the node asked for devices, or to be told of them.
    bool usesDevices() const { return usesDevices_; }

private:
    const std::shared_ptr<IResourcePool> pool_;
    std::atomic<bool> usesDevices_{false};
};

}  // namespace Host

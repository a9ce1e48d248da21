#include "runtime/resourcepool.h"

#include "core/bufferprovider.h"

namespace Nivex::DataProcessing::Runtime {

struct ResourcePool::Private
{
    std::shared_ptr<Threading::ThreadPool> threads;
    std::shared_ptr<Core::IBufferProvider> buffers = std::make_shared<Core::BufferProvider>();
    Utils::Signal<void(), Utils::VoidCombiner> changed;
};

ResourcePool::ResourcePool(std::size_t threadCount) : private_(std::make_unique<Private>())
{
    private_->threads = std::make_shared<Threading::ThreadPool>(threadCount);
}

ResourcePool::~ResourcePool() = default;

std::shared_ptr<Threading::ThreadPool> ResourcePool::getThreadPool()
{
    return private_->threads;
}

std::shared_ptr<Core::IBufferProvider> ResourcePool::getBufferProvider()
{
    return private_->buffers;
}

std::map<Core::ResourceInfo, std::shared_ptr<Core::IResource>> ResourcePool::query(const Utils::TypeInfo&,
                                                                                   const Core::ResourceInfo&)
{
    return {};
}

void ResourcePool::refresh(const Utils::TypeInfo&) {}

Utils::ISignal<void()>& ResourcePool::getResourcesChangedSignal()
{
    return private_->changed;
}

}  // namespace Nivex::DataProcessing::Runtime

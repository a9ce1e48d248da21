#include "runtime/resourcepool.h"

#include <algorithm>

#include "gcbase/exception.h"

#include "core/bufferprovider.h"
#include "runtime/cameralist.h"

namespace Nivex::DataProcessing::Runtime {

struct ResourcePool::Private
{
    Private(std::size_t threadCount, CameraBackends backends)
        : threads(std::make_shared<Threading::ThreadPool>(threadCount)), cameras(std::move(backends))
    {}

    std::shared_ptr<Threading::ThreadPool> threads;
    std::shared_ptr<Core::IBufferProvider> buffers = std::make_shared<Core::BufferProvider>();
    CameraList cameras;
    Utils::Signal<void(), Utils::VoidCombiner> changed;
};

namespace {

bool isTypeOfCameras(const Utils::TypeInfo& type)
{
    return Utils::TypeInfo::get<Core::IDeviceResource>().canConvert(type);
}

}  // namespace

ResourcePool::ResourcePool(std::size_t threadCount, CameraBackends backends)
{
    if (std::find(backends.begin(), backends.end(), nullptr) != backends.end()) {
        GENICAM_THROW(InvalidArgumentException, "A camera back end must not be null.");
    }
    private_ = std::make_unique<Private>(threadCount, std::move(backends));
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

std::map<Core::ResourceInfo, std::shared_ptr<Core::IResource>> ResourcePool::query(
    const Utils::TypeInfo& type, const Core::ResourceInfo& wanted)
{
    if (!isTypeOfCameras(type)) return {};
    if (!private_->cameras.hasLooked()) private_->cameras.look();
    return private_->cameras.find(wanted.getInfo());
}

void ResourcePool::refresh(const Utils::TypeInfo& type)
{
    if (isTypeOfCameras(type) && private_->cameras.look()) private_->changed();
}

Utils::ISignal<void()>& ResourcePool::getResourcesChangedSignal()
{
    return private_->changed;
}

}  // namespace Nivex::DataProcessing::Runtime

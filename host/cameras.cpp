#include "cameras.h"

#include "base/emulation/emulatedbackend.h"

#include "runtime/resourcepool.h"

namespace Host {

using Nivex::DataProcessing::Runtime::ResourcePool;

std::shared_ptr<Nivex::DataProcessing::Core::IResourcePool> makeResourcePool(std::size_t emulatedCount)
{
    ResourcePool::CameraBackends backends;
    if (emulatedCount != 0) {
        backends.push_back(std::make_shared<Nivex::CEmulatedCameraBackend>(emulatedCount));
    }
    return std::make_shared<ResourcePool>(0, std::move(backends));
}

}  // namespace Host

#pragma once

#include <cstddef>
#include <memory>

#include "core/iresourcepool.h"

namespace Host {

/// A pool with the cameras of all back ends, `emulatedCount` emulated ones among them (at most
/// CEmulatedCameraBackend::maxCameras).
std::shared_ptr<Nivex::DataProcessing::Core::IResourcePool> makeResourcePool(std::size_t emulatedCount);

}  // namespace Host

#pragma once

#include <memory>

#include "base/camerabackend.h"

#include "core/iresourcepool.h"

namespace Nivex::DataProcessing::Core {

/// A camera in the pool. Its ResourceInfo holds the properties of the camera's CDeviceInfo. The object outlives
/// the pool if someone keeps it. Any thread may call any operation.
class GENICAM_API IDeviceResource : public IResource
{
public:
    /// True if the camera is connected and nobody, of this or another recipe, has reserved it. False, after a log
    /// entry, if its back end cannot tell.
    virtual bool isFree() = 0;
    /// Reserves the camera for as long as the device object lives; null if somebody was faster or the camera
    /// is gone. What the back end raises passes on.
    virtual std::unique_ptr<INivexDevice> getDevice() = 0;
};

}  // namespace Nivex::DataProcessing::Core

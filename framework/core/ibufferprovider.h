#pragma once

#include <cstddef>
#include <memory>

#include "gcbase/export.h"

namespace Nivex::DataProcessing::Core {

/// Gives memory for images. For any thread.
class GENICAM_API IBufferProvider
{
public:
    virtual ~IBufferProvider() = default;

    /// Memory of at least `size` bytes, aligned to 64 bytes, with undefined content. It goes back when the last
    /// copy of the pointer dies, which may be on any thread and after the provider's death. Raises
    /// InvalidArgumentException for a size of 0, BadAllocException (naming the size) without memory or
    /// for 512 GiB and more.
    virtual std::shared_ptr<std::byte> getBuffer(std::size_t size) = 0;
};

}  // namespace Nivex::DataProcessing::Core

#pragma once

#include "core/ibufferprovider.h"

namespace Nivex::DataProcessing::Core {

/// Keeps memory that came back for the next request of the same size class, up to a limit, since the pictures of a
/// recipe are mostly of one size and fresh memory costs a page fault every 4 KiB.
class GENICAM_API BufferProvider : public IBufferProvider
{
public:
    static constexpr std::size_t defaultMaxIdleBytes = std::size_t{256} << 20;

    /// @param maxIdleBytes is how much memory may be kept unused; what comes back beyond it is freed.
    explicit BufferProvider(std::size_t maxIdleBytes = defaultMaxIdleBytes);
    ~BufferProvider() override;
    BufferProvider(const BufferProvider&) = delete;
    BufferProvider& operator=(const BufferProvider&) = delete;

    std::shared_ptr<std::byte> getBuffer(std::size_t size) override;

    std::size_t getIdleBytes() const;  ///< Kept for reuse at this moment.
    /// Frees all that is idle.
    void trim();

private:
    class Pool;

    std::shared_ptr<Pool> pool_;
};

}  // namespace Nivex::DataProcessing::Core

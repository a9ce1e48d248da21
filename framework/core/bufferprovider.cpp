#include "core/bufferprovider.h"

#include <algorithm>
#include <bit>
#include <map>
#include <mutex>
#include <new>
#include <utility>
#include <vector>

#include "gcbase/exception.h"

namespace Nivex::DataProcessing::Core {

namespace {

constexpr std::align_val_t alignment{64};
/// Far beyond any picture; more is refused without asking the allocator.
constexpr std::size_t tooLarge = std::size_t{1} << 39;

struct AlignedDelete
{
    void operator()(std::byte* memory) const { ::operator delete(memory, alignment); }
};
using Memory = std::unique_ptr<std::byte, AlignedDelete>;

/// Sizes are rounded up to an eighth of their power of two, so that a class wastes at most an eighth.
std::size_t sizeClassOf(std::size_t size)
{
    constexpr std::size_t smallest = 4096;
    if (size <= smallest) return smallest;
    const std::size_t step = std::max<std::size_t>(std::bit_floor(size - 1) / 8, 1);
    return (size + step - 1) / step * step;
}

Memory allocate(std::size_t bytes)
{
    return Memory(static_cast<std::byte*>(::operator new(bytes, alignment, std::nothrow)));
}

}  // namespace

class BufferProvider::Pool
{
public:
    explicit Pool(std::size_t maxIdleBytes) : maxIdleBytes_(maxIdleBytes) {}

    /// Idle memory of that class, or fresh; null without memory.
    Memory take(std::size_t sizeClass)
    {
        {
            const std::lock_guard lock(mutex_);
            const auto found = idle_.find(sizeClass);
            if (found != idle_.end() && !found->second.empty()) {
                Memory memory = std::move(found->second.back());
                found->second.pop_back();
                idleBytes_ -= sizeClass;
                return memory;
            }
        }
        return allocate(sizeClass);
    }

    void giveBack(Memory memory, std::size_t sizeClass) noexcept
    {
        const std::lock_guard lock(mutex_);
        if (closed_ || sizeClass > maxIdleBytes_ - idleBytes_) return;
        try {
            idle_[sizeClass].push_back(std::move(memory));
            idleBytes_ += sizeClass;
        } catch (const std::bad_alloc&) {
            return;  // Freed instead of kept.
        }
    }

    void drop(bool close)
    {
        std::map<std::size_t, std::vector<Memory>> dropped;
        const std::lock_guard lock(mutex_);
        closed_ = closed_ || close;
        dropped.swap(idle_);
        idleBytes_ = 0;
    }

    std::size_t getIdleBytes() const
    {
        const std::lock_guard lock(mutex_);
        return idleBytes_;
    }

private:
    const std::size_t maxIdleBytes_;
    mutable std::mutex mutex_;
    std::map<std::size_t, std::vector<Memory>> idle_;
    std::size_t idleBytes_ = 0;
    bool closed_ = false;
};

BufferProvider::BufferProvider(std::size_t maxIdleBytes) : pool_(std::make_shared<Pool>(maxIdleBytes)) {}

BufferProvider::~BufferProvider()
{
    pool_->drop(true);
}

std::shared_ptr<std::byte> BufferProvider::getBuffer(std::size_t size)
{
    if (size == 0) GENICAM_THROW(InvalidArgumentException, "Cannot provide a buffer of 0 bytes.");
    Memory memory;
    const std::size_t sizeClass = size < tooLarge ? sizeClassOf(size) : 0;
    if (sizeClass != 0) memory = pool_->take(sizeClass);
    if (!memory) GENICAM_THROW(BadAllocException, "Could not provide a buffer of %zu bytes.", size);
    std::byte* const address = memory.release();
    return std::shared_ptr<std::byte>(
        address, [pool = pool_, sizeClass](std::byte* returned) { pool->giveBack(Memory(returned), sizeClass); });
}

std::size_t BufferProvider::getIdleBytes() const
{
    return pool_->getIdleBytes();
}

void BufferProvider::trim()
{
    pool_->drop(false);
}

}  // namespace Nivex::DataProcessing::Core

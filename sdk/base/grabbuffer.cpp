#include "base/grabbuffer.h"

#include <algorithm>
#include <new>

#include "gcbase/exception.h"

#include "base/grabqueue.h"

namespace Nivex {

namespace {

/// Of a cache line, and of the widest vectors of the converters.
constexpr std::align_val_t alignment{64};

}  // namespace

/// Places the users' counter in the buffer. Its memory is given back as the very last step of a result's life,
/// after the deleter: only then may the next result begin in the same place.
template <typename T>
class GrabBuffer::ControlAllocator
{
public:
    using value_type = T;

    ControlAllocator(GrabBuffer& buffer, std::shared_ptr<GrabQueue> queue)
        : buffer_(&buffer), queue_(std::move(queue))
    {}
    template <typename U>
    ControlAllocator(const ControlAllocator<U>& other)  // NOLINT: allocators convert implicitly
        : buffer_(other.buffer_), queue_(other.queue_)
    {}

    T* allocate(std::size_t)
    {
        static_assert(sizeof(T) <= sizeof(GrabBuffer::control_));
        static_assert(alignof(T) <= alignof(std::max_align_t));
        return reinterpret_cast<T*>(buffer_->control_.data());
    }
    void deallocate(T*, std::size_t) noexcept { queue_->GiveBack(*buffer_); }

    template <typename U>
    bool operator==(const ControlAllocator<U>& other) const
    {
        return buffer_ == other.buffer_;
    }

private:
    template <typename U>
    friend class ControlAllocator;

    GrabBuffer* buffer_;
    std::shared_ptr<GrabQueue> queue_;
};

void GrabBuffer::FreeMemory::operator()(std::byte* memory) const
{
    ::operator delete(memory, alignment);
}

GrabBuffer::GrabBuffer(std::size_t size)
    : memory_(static_cast<std::byte*>(::operator new(size, alignment))), size_(size)
{}

GrabBuffer::~GrabBuffer() = default;

void GrabBuffer::Fill(const SFrame& frame, std::uint64_t imageNumber)
{
    frame_ = frame;
    frame_.buffer = {Data(), size_, 0};
    if (!frame_.errorDescription) frame_.errorDescription = "";
    frame_.componentCount = std::min(frame_.componentCount, SFrame::maxComponents);
    if (frame_.payloadSize > size_) {
        frame_.payloadSize = size_;
        frame_.isComplete = false;
        frame_.errorDescription = "The device stated more bytes than the buffer can hold.";
    }
    frame_.imageSize = std::min(frame_.imageSize, size_);
    imageNumber_ = imageNumber;
    skipped_ = 0;
}

CGrabResultPtr GrabBuffer::HandOut(std::shared_ptr<GrabQueue> queue)
{
    const ControlAllocator<std::byte> allocator(*this, std::move(queue));
    std::shared_ptr<const CGrabResultData> result(
        this, [](GrabBuffer* buffer) { buffer->Retire(); }, allocator);
    self_ = result;
    return CGrabResultPtr(std::move(result));
}

void GrabBuffer::SetChunkMap(std::unique_ptr<ChunkMap> chunks, std::string whyNone)
{
    chunks_ = std::move(chunks);
    whyNoChunks_ = std::move(whyNone);
}

void GrabBuffer::Retire() noexcept
{
    if (chunks_ && !chunks_->Detach()) chunks_.reset();
    self_.reset();
}

CGrabResultPtr GrabBuffer::Share() const
{
    return CGrabResultPtr(self_.lock());
}

GenApi::NodeMapPtr GrabBuffer::GetChunkDataNodeMap() const
{
    const auto block = static_cast<unsigned long long>(frame_.blockId);
    if (!frame_.hasChunks) GENICAM_THROW(RuntimeException, "Frame %llu carries no chunks.", block);
    if (!chunks_)
        GENICAM_THROW(RuntimeException, "Frame %llu has no chunk node map: %s", block, whyNoChunks_.c_str());
    return chunks_->Show(frame_);
}

}  // namespace Nivex

#include "base/chunkmaps.h"

#include "gcbase/exception.h"

namespace Nivex {

namespace {

GenApi::CChunkAdapter::ByteOrder adapterOrder(ETrailerByteOrder order)
{
    using ByteOrder = GenApi::CChunkAdapter::ByteOrder;
    return order == ETrailerByteOrder::BigEndian ? ByteOrder::BigEndian : ByteOrder::LittleEndian;
}

}  // namespace

ChunkMap::ChunkMap(GenApi::NodeMapPtr map, ETrailerByteOrder order)
    : map_(std::move(map)), order_(adapterOrder(order)), adapter_(*map_), ownUses_(map_.use_count())
{}

GenApi::NodeMapPtr ChunkMap::Show(const SFrame& frame)
{
    const std::lock_guard lock(mutex_);
    if (state_ == State::Detached) Attach(frame);
    if (state_ == State::Damaged)
        GENICAM_THROW(RuntimeException, "The chunks of frame %llu are damaged: %s",
                      static_cast<unsigned long long>(frame.blockId), damage_.c_str());
    return map_;
}

void ChunkMap::Attach(const SFrame& frame)
{
    const auto* bytes = reinterpret_cast<const std::uint8_t*>(frame.buffer.data);
    state_ = State::Attached;
    try {
        adapter_.AttachBuffer(bytes, frame.payloadSize, order_);
    } catch (const GenICam::InvalidArgumentException& failure) {
        state_ = State::Damaged;
        damage_ = failure.GetDescription();
    }
}

bool ChunkMap::Detach() noexcept
{
    {
        const std::lock_guard lock(mutex_);
        if (state_ == State::Detached) return true;
        state_ = State::Detached;
    }
    try {
        adapter_.DetachBuffer();
    } catch (...) {
        // A callback of some node failed. The buffer is detached, and who let go of the result is not to blame.
        return false;
    }
    return map_.use_count() <= ownUses_;
}

void ChunkMapSource::Open(INivexDevice& device)
{
    const std::lock_guard lock(mutex_);
    device_ = &device;
}

void ChunkMapSource::Close()
{
    const std::lock_guard lock(mutex_);
    device_ = nullptr;
}

std::unique_ptr<ChunkMap> ChunkMapSource::Make()
{
    const std::lock_guard lock(mutex_);
    if (!device_) return nullptr;
    GenApi::NodeMapPtr map = device_->CreateChunkNodeMap();
    if (!map) return nullptr;
    return std::make_unique<ChunkMap>(std::move(map), device_->GetTrailerByteOrder());
}

}  // namespace Nivex

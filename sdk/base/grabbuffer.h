#pragma once

#include <array>
#include <memory>
#include <string>

#include "base/chunkmaps.h"
#include "base/grabresult.h"

namespace Nivex {

class GrabQueue;

/// A buffer of a GrabQueue, and the grab result in it. It has the memory of all that a result needs, so that a
/// frame costs no allocation.
class GrabBuffer final : public CGrabResultData
{
public:
    enum class State
    {
        Idle,      ///< Nobody has it.
        AtDevice,  ///< Lent to the device.
        Ready,     ///< Holds a result that waits.
        InUse      ///< Shared by the users of a result.
    };

    /// std::bad_alloc if there is no such memory.
    explicit GrabBuffer(std::size_t size);
    ~GrabBuffer() override;

    std::size_t Size() const { return size_; }
    std::byte* Data() const { return memory_.get(); }

    /// Takes over what the device says of the frame, as far as it can be true.
    void Fill(const SFrame& frame, std::uint64_t imageNumber);
    void AddSkipped(std::uint64_t count) { skipped_ += count; }

    /// The result, for its first user; when the last one lets go, the buffer goes back to `queue`.
    CGrabResultPtr HandOut(std::shared_ptr<GrabQueue> queue);
    bool HasChunkMap() const { return chunks_ != nullptr; }
    /// The map for this buffer's results, or null with the cause, for a person. Only while nobody shares the
    /// result.
    void SetChunkMap(std::unique_ptr<ChunkMap> chunks, std::string whyNone);

    GenApi::NodeMapPtr GetChunkDataNodeMap() const override;

    // The queue's, guarded by its lock.
    State state = State::Idle;
    std::size_t index = 0;  ///< Its place among the queue's buffers.
    bool isOrphan = false;  ///< In use, of an earlier grabbing: ends instead of going back.

private:
    template <typename T>
    class ControlAllocator;

    struct FreeMemory
    {
        void operator()(std::byte* memory) const;
    };

    CGrabResultPtr Share() const override;
    /// The last user let go.
    void Retire() noexcept;

    std::unique_ptr<std::byte, FreeMemory> memory_;
    std::size_t size_;
    std::weak_ptr<const CGrabResultData> self_;  ///< Set while in use.
    std::unique_ptr<ChunkMap> chunks_;
    std::string whyNoChunks_;
    /// Where the counter of the users lives.
    alignas(std::max_align_t) std::array<std::byte, 128> control_;
};

}  // namespace Nivex

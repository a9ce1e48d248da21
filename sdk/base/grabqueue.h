#pragma once

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <thread>
#include <vector>

#include "base/camerabackend.h"
#include "base/chunkmaps.h"
#include "base/grabbuffer.h"
#include "base/instantcamera.h"

namespace Nivex {

/// What a grabbing is started with.
struct GrabPlan
{
    std::size_t bufferCount;
    std::size_t bufferSize;  ///< In bytes.
    std::size_t maxImages;
    std::size_t outputQueueSize;  ///< Of EGrabStrategy::LatestImages.
    EGrabStrategy strategy;
    EGrabLoop loop;
    bool makesChunkMaps;  ///< Results with chunks get a map.
    bool expectsChunks;   ///< Better to make the maps at once than for the first results.
};

/// A result on its way to the handlers.
struct Delivery
{
    CGrabResultPtr result;
    std::uint64_t grabbing = 0;  ///< Which one it belongs to.
    bool isLast = false;         ///< Of its grabbing.
};

/// The way of the frames: the buffers of a camera, the results that wait, and who is at work with one.
///
/// A buffer goes Idle -> AtDevice -> Ready -> InUse -> AtDevice and so on, and becomes Idle when the grabbing has
/// ended. Results keep the queue alive; buffers in use when a grabbing's buffers are given up end with their last
/// user.
///
///     queue->Prepare(plan); device.StartStream(*queue); queue->Begin(device);
///     ... Take..., EndDelivery ...
///     queue->End(); device.StopStream(); queue->Finish();
///
/// These control operations come from one thread at a time; all others from any thread. One lock guards all. It is
/// the last one to be taken but for the device's own in QueueBuffer, and no handler runs under it.
class GrabQueue : public IStreamSink, public std::enable_shared_from_this<GrabQueue>
{
public:
    enum class Outcome
    {
        Result,
        Timeout,
        Ended
    };

    struct Counts
    {
        std::size_t atDevice;
        std::size_t ready;
        std::size_t idle;
    };

    explicit GrabQueue(std::shared_ptr<ChunkMapSource> chunkMaps) : chunkMaps_(std::move(chunkMaps)) {}

    /// @name Control
    /// Makes the buffers, of which those that fit and are idle stay. Raises RuntimeException if there is not
    /// enough memory.
    void Prepare(const GrabPlan& plan);
    /// Lends all buffers to the device; results are ready from now on.
    void Begin(INivexDevice& device);
    /// No result is ready any more; those that wait are dropped and counted. Any thread may call it, again too.
    void End();
    /// The stream has stopped: no buffer is at the device any more.
    void Finish();
    /// Gives up all buffers.
    void Clear();
    /// Ends the waiting of TakeForLoop for good.
    void ShutDown();

    void OnFrame(const SFrame& frame) noexcept override;

    /// @name Results: each Delivery must be followed by EndDelivery on the same thread
    /// For the camera's own thread: waits for a result of a grabbing whose loop the camera provides. Empty after
    /// ShutDown.
    std::optional<Delivery> TakeForLoop();
    /// Ended: not grabbing, or the grabbing ended while waiting. LogicalErrorException if the camera provides the
    /// loop.
    Outcome TakeForUser(std::chrono::milliseconds timeout, Delivery& delivery);
    void EndDelivery();
    /// Waits until all deliveries of grabbings that have ended are over. Returns at once within a delivery.
    void WaitForDeliveries();

    /// A user's last pointer to the result in `buffer` is gone.
    void GiveBack(GrabBuffer& buffer) noexcept;

    bool IsActive() const;
    /// The number of the grabbing that Prepare was called for last.
    std::uint64_t Grabbing() const;
    std::uint64_t Discarded() const;
    Counts Count() const;

private:
    /// The results that wait, first in first out.
    class ReadyRing
    {
    public:
        void Reset(std::size_t capacity);
        bool Empty() const { return count_ == 0; }
        std::size_t Count() const { return count_; }
        GrabBuffer& Front() const { return *slots_[first_]; }
        void Push(GrabBuffer& buffer) { slots_[(first_ + count_++) % slots_.size()] = &buffer; }
        GrabBuffer& Pop();

    private:
        std::vector<GrabBuffer*> slots_;
        std::size_t first_ = 0;
        std::size_t count_ = 0;
    };

    struct Running
    {
        std::uint64_t grabbing;
        std::thread::id thread;
    };

    // Under the lock, as `lock` proves.
    using Lock = std::unique_lock<std::mutex>;
    void Adopt(const GrabPlan& plan, const Lock& lock);
    void Orphan(std::unique_ptr<GrabBuffer>& buffer, const Lock& lock);
    void Empty(bool counts, const Lock& lock);
    bool IsSurplus(const Lock& lock) const;
    void Lend(std::size_t index, const Lock& lock);
    void Reuse(GrabBuffer& buffer, const Lock& lock);
    GrabBuffer* FindLent(const SStreamBuffer& lent, const Lock& lock) const;
    /// Puts the result in line; the grab strategy may drop the oldest one for it.
    void Line(GrabBuffer& buffer, const Lock& lock);
    bool RunsDelivery(const Lock& lock) const;
    bool RunsOldDelivery(const Lock& lock) const;
    /// Takes the first result that is ready, and unlocks.
    Delivery Take(Lock lock);
    void ProvideChunkMap(GrabBuffer& buffer, bool wanted) const;

    const std::shared_ptr<ChunkMapSource> chunkMaps_;

    mutable std::mutex mutex_;  ///< Guards all below.
    std::condition_variable readyForLoop_;
    std::condition_variable readyForUser_;
    std::condition_variable deliveryEnded_;

    GrabPlan plan_{};
    std::vector<std::unique_ptr<GrabBuffer>> buffers_;
    ReadyRing ready_;
    std::size_t readyLimit_ = 0;
    std::size_t atDevice_ = 0;
    INivexDevice* device_ = nullptr;  ///< Set from Begin to End.
    std::uint64_t grabbing_ = 0;
    bool active_ = false;
    bool shutDown_ = false;
    std::size_t received_ = 0;
    std::size_t handedOut_ = 0;
    std::uint64_t discarded_ = 0;
    std::vector<Running> running_;
};

}  // namespace Nivex

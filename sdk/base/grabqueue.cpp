#include "base/grabqueue.h"

#include <algorithm>
#include <new>

#include "gcbase/exception.h"

namespace Nivex {

namespace {

using State = GrabBuffer::State;

/// Beyond any run of the program, and far from the end of the clock.
constexpr std::chrono::milliseconds longestWait = std::chrono::hours(24 * 365);

/// More than any machine has: an address space may be promised that is not there.
constexpr std::size_t maxBytes = std::size_t{1} << 40;

std::size_t readyLimitOf(const GrabPlan& plan)
{
    switch (plan.strategy) {
        case EGrabStrategy::OneByOne:
            return plan.bufferCount;
        case EGrabStrategy::LatestImageOnly:
            return 1;
        case EGrabStrategy::LatestImages:
            break;
    }
    return std::clamp(plan.outputQueueSize, std::size_t{1}, plan.bufferCount);
}

}  // namespace

void GrabQueue::ReadyRing::Reset(std::size_t capacity)
{
    slots_.assign(capacity, nullptr);
    first_ = count_ = 0;
}

GrabBuffer& GrabQueue::ReadyRing::Pop()
{
    GrabBuffer& front = Front();
    first_ = (first_ + 1) % slots_.size();
    --count_;
    return front;
}

void GrabQueue::Prepare(const GrabPlan& plan)
{
    {
        const Lock lock(mutex_);
        try {
            if (plan.bufferSize > maxBytes / plan.bufferCount) throw std::bad_alloc();
            Adopt(plan, lock);
        } catch (const std::bad_alloc&) {
            buffers_.clear();
            GENICAM_THROW(RuntimeException,
                          "There is not enough memory for %zu buffers (MaxNumBuffer) of %zu bytes.",
                          plan.bufferCount, plan.bufferSize);
        }
        plan_ = plan;
        readyLimit_ = readyLimitOf(plan);
        received_ = handedOut_ = 0;
        ++grabbing_;
    }
    // All buffers are idle, and only this thread changes that: no lock is needed, and device code runs here.
    if (!plan.expectsChunks) return;
    for (const auto& buffer : buffers_)
        ProvideChunkMap(*buffer, plan.makesChunkMaps);
}

void GrabQueue::Adopt(const GrabPlan& plan, const Lock& lock)
{
    std::erase_if(buffers_, [&](std::unique_ptr<GrabBuffer>& buffer) {
        Orphan(buffer, lock);
        return !buffer || buffer->Size() != plan.bufferSize;
    });
    if (buffers_.size() > plan.bufferCount) buffers_.resize(plan.bufferCount);
    buffers_.reserve(plan.bufferCount);
    while (buffers_.size() < plan.bufferCount)
        buffers_.push_back(std::make_unique<GrabBuffer>(plan.bufferSize));
    for (std::size_t i = 0; i < buffers_.size(); ++i)
        buffers_[i]->index = i;
    ready_.Reset(plan.bufferCount);
}

void GrabQueue::Orphan(std::unique_ptr<GrabBuffer>& buffer, const Lock&)
{
    if (buffer->state != State::InUse) return;
    buffer->isOrphan = true;
    static_cast<void>(buffer.release());
}

void GrabQueue::Begin(INivexDevice& device)
{
    const Lock lock(mutex_);
    device_ = &device;
    active_ = true;
    for (const auto& buffer : buffers_)
        Reuse(*buffer, lock);
}

void GrabQueue::Reuse(GrabBuffer& buffer, const Lock&)
{
    buffer.state = State::Idle;
    if (!device_) return;
    device_->QueueBuffer({buffer.Data(), buffer.Size(), buffer.index});
    buffer.state = State::AtDevice;
    ++atDevice_;
}

void GrabQueue::End()
{
    {
        const Lock lock(mutex_);
        Empty(active_, lock);
        active_ = false;
        device_ = nullptr;
    }
    readyForUser_.notify_all();
    deliveryEnded_.notify_all();
}

void GrabQueue::Empty(bool counts, const Lock&)
{
    while (!ready_.Empty()) {
        GrabBuffer& buffer = ready_.Pop();
        buffer.state = State::Idle;
        if (counts) discarded_ += 1 + buffer.GetNumberOfSkippedImages();
    }
}

void GrabQueue::Finish()
{
    const Lock lock(mutex_);
    for (const auto& buffer : buffers_)
        if (buffer->state == State::AtDevice) buffer->state = State::Idle;
    atDevice_ = 0;
}

void GrabQueue::Clear()
{
    const Lock lock(mutex_);
    for (auto& buffer : buffers_)
        Orphan(buffer, lock);
    buffers_.clear();
}

void GrabQueue::ShutDown()
{
    {
        const Lock lock(mutex_);
        shutDown_ = true;
    }
    readyForLoop_.notify_all();
}

GrabBuffer* GrabQueue::FindLent(const SStreamBuffer& lent, const Lock&) const
{
    if (lent.context >= buffers_.size()) return nullptr;
    GrabBuffer* buffer = buffers_[lent.context].get();
    return buffer->state == State::AtDevice && buffer->Data() == lent.data ? buffer : nullptr;
}

bool GrabQueue::IsSurplus(const Lock&) const
{
    const std::size_t taken = plan_.strategy == EGrabStrategy::OneByOne ? received_ : handedOut_;
    return taken >= plan_.maxImages;
}

void GrabQueue::OnFrame(const SFrame& frame) noexcept
{
    {
        const Lock lock(mutex_);
        GrabBuffer* buffer = FindLent(frame.buffer, lock);
        if (!buffer) return;
        --atDevice_;
        if (!active_ || IsSurplus(lock)) {
            if (!IsSurplus(lock)) ++discarded_;
            Reuse(*buffer, lock);
            return;
        }
        buffer->Fill(frame, ++received_);
        Line(*buffer, lock);
    }
    (plan_.loop == EGrabLoop::ProvidedByUser ? readyForUser_ : readyForLoop_).notify_one();
}

void GrabQueue::Line(GrabBuffer& buffer, const Lock& lock)
{
    std::uint64_t skipped = 0;
    if (ready_.Count() == readyLimit_) {
        GrabBuffer& oldest = ready_.Pop();
        skipped = oldest.GetNumberOfSkippedImages() + 1;
        Reuse(oldest, lock);
    }
    buffer.state = State::Ready;
    ready_.Push(buffer);
    ready_.Front().AddSkipped(skipped);
}

std::optional<Delivery> GrabQueue::TakeForLoop()
{
    Lock lock(mutex_);
    readyForLoop_.wait(lock, [this] {
        return shutDown_ || (plan_.loop == EGrabLoop::ProvidedByInstantCamera && !ready_.Empty());
    });
    if (shutDown_) return std::nullopt;
    return Take(std::move(lock));
}

GrabQueue::Outcome GrabQueue::TakeForUser(std::chrono::milliseconds timeout, Delivery& delivery)
{
    Lock lock(mutex_);
    if (!active_) return Outcome::Ended;
    if (plan_.loop == EGrabLoop::ProvidedByInstantCamera)
        GENICAM_THROW(LogicalErrorException,
                      "RetrieveResult: the camera's own thread retrieves the results of this grabbing.");
    const std::uint64_t grabbing = grabbing_;
    const auto hasEnded = [&] { return !active_ || grabbing_ != grabbing; };
    const auto end = std::chrono::steady_clock::now() + std::min(timeout, longestWait);
    if (!readyForUser_.wait_until(lock, end, [&] { return hasEnded() || !ready_.Empty(); }))
        return Outcome::Timeout;
    if (hasEnded()) return Outcome::Ended;
    delivery = Take(std::move(lock));
    return Outcome::Result;
}

Delivery GrabQueue::Take(Lock lock)
{
    GrabBuffer& buffer = ready_.Pop();
    buffer.state = State::InUse;
    Delivery delivery{.result = {}, .grabbing = grabbing_, .isLast = ++handedOut_ == plan_.maxImages};
    running_.push_back({grabbing_, std::this_thread::get_id()});
    const bool makesChunkMaps = plan_.makesChunkMaps;
    if (delivery.isLast) {
        Empty(false, lock);
        active_ = false;
        device_ = nullptr;
    }
    lock.unlock();
    if (delivery.isLast) readyForUser_.notify_all();
    if (buffer.IsChunkDataAvailable()) ProvideChunkMap(buffer, makesChunkMaps);
    delivery.result = buffer.HandOut(shared_from_this());
    return delivery;
}

void GrabQueue::ProvideChunkMap(GrabBuffer& buffer, bool wanted) const
{
    if (!wanted) return buffer.SetChunkMap(nullptr, "ChunkNodeMapsEnable is off.");
    if (buffer.HasChunkMap()) return;
    try {
        buffer.SetChunkMap(chunkMaps_->Make(), "the camera describes no chunks, or was closed too early.");
    } catch (...) {
        buffer.SetChunkMap(nullptr, GenICam::describeCurrentException());
    }
}

void GrabQueue::EndDelivery()
{
    {
        const Lock lock(mutex_);
        const auto own = std::find_if(running_.rbegin(), running_.rend(), [](const Running& running) {
            return running.thread == std::this_thread::get_id();
        });
        if (own != running_.rend()) running_.erase(std::next(own).base());
    }
    deliveryEnded_.notify_all();
}

bool GrabQueue::RunsDelivery(const Lock&) const
{
    return std::any_of(running_.begin(), running_.end(),
                       [](const Running& running) { return running.thread == std::this_thread::get_id(); });
}

bool GrabQueue::RunsOldDelivery(const Lock&) const
{
    return std::any_of(running_.begin(), running_.end(),
                       [this](const Running& running) { return !active_ || running.grabbing != grabbing_; });
}

void GrabQueue::WaitForDeliveries()
{
    Lock lock(mutex_);
    if (RunsDelivery(lock)) return;
    deliveryEnded_.wait(lock, [&] { return !RunsOldDelivery(lock); });
}

void GrabQueue::GiveBack(GrabBuffer& buffer) noexcept
{
    std::unique_ptr<GrabBuffer> orphan;
    const Lock lock(mutex_);
    if (buffer.isOrphan)
        orphan.reset(&buffer);
    else
        Reuse(buffer, lock);
}

bool GrabQueue::IsActive() const
{
    const Lock lock(mutex_);
    return active_;
}

std::uint64_t GrabQueue::Grabbing() const
{
    const Lock lock(mutex_);
    return grabbing_;
}

std::uint64_t GrabQueue::Discarded() const
{
    const Lock lock(mutex_);
    return discarded_;
}

GrabQueue::Counts GrabQueue::Count() const
{
    const Lock lock(mutex_);
    const auto isIdle = [](const auto& buffer) { return buffer->state == State::Idle; };
    return {.atDevice = atDevice_,
            .ready = ready_.Count(),
            .idle = static_cast<std::size_t>(std::count_if(buffers_.begin(), buffers_.end(), isIdle))};
}

}  // namespace Nivex

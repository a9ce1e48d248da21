#pragma once

#include <array>
#include <atomic>
#include <condition_variable>
#include <exception>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "base/cameraevents.h"
#include "base/cameraparameters.h"
#include "base/chunkmaps.h"
#include "base/grabqueue.h"
#include "base/handlerlist.h"
#include "base/instantcamera.h"

namespace Nivex {

/// What failed during a step that had to go on.
class Failures
{
public:
    /// Runs `action`; what it throws is kept.
    void Collect(const std::function<void()>& action);
    /// Raises the first one, if any.
    void Raise() const;
    const std::vector<std::string>& Texts() const { return texts_; }

private:
    std::exception_ptr first_;
    std::vector<std::string> texts_;
};

/// CInstantCamera at work.
///
///     no device --Attach--> closed --Open--> open --StartGrabbing--> open, streaming
///     and back by DetachDevice, Close, StopGrabbing, each of which takes the steps before it.
///
/// A grabbing has two ends: the queue's (IsGrabbing turns false; by StopGrabbing, the last result, a removal) and
/// that of the stream (`streaming_`), which needs lock_ and follows on the thread that brought the first about,
/// or, after a removal, with the next operation.
///
/// Order of locks: lock_, then a node map's lock, then those of the queue and of the device. state_ and the locks
/// of the handler lists are held for moments only, with no further lock but the device's inside. Close lets go of
/// lock_ while it waits for deliveries and for the device's threads; closing_ keeps others from starting anything
/// meanwhile. flush_ is taken without lock_, or with it when the device is closed and can't be opened.
class CInstantCamera::Impl : public IDeviceListener
{
public:
    explicit Impl(CInstantCamera& camera);
    ~Impl() override;

    void Attach(INivexDevice* device, ECleanup cleanup);
    void DetachDevice(bool forced);
    bool IsAttached() const;
    CDeviceInfo DeviceInfo() const;
    std::uint64_t FirstBlockID() const;
    void Open();
    void Close(bool forced);
    bool IsOpen() const;
    bool IsRemoved() const;

    enum class Map
    {
        Camera,
        TransportLayer,
        StreamGrabber
    };
    GenApi::NodeMapPtr NodeMap(Map which) const;
    const CameraParameters& Parameters() const { return parameters_; }

    void Start(std::size_t maxImages, EGrabStrategy strategy, EGrabLoop loop);
    void Stop();
    bool Retrieve(std::chrono::milliseconds timeout, CGrabResultPtr& result, ETimeoutHandling handling);
    GrabQueue& Queue() const { return *queue_; }

    HandlerList<CConfigurationEventHandler>& Configurations() { return configurations_; }
    HandlerList<CImageEventHandler>& ImageHandlers() { return imageHandlers_; }
    CameraEvents& Events() { return events_; }
    void FlushEvents();

    void OnDeviceEvent(std::uint64_t eventId, const std::uint8_t* data, std::size_t size) noexcept override;
    void OnDeviceEventsLost(std::uint64_t eventId, std::uint64_t count) noexcept override;
    void OnDeviceRemoved() noexcept override;

private:
    using Step = void (CConfigurationEventHandler::*)(CInstantCamera&);
    using Lock = std::unique_lock<std::recursive_mutex>;
    struct Link
    {
        std::shared_ptr<INivexDevice> device;  ///< Ends the device, or does not, as it was attached.
        std::array<GenApi::NodeMapPtr, 3> maps;
        bool isOpen = false;
    };

    void Announce(Step step);
    void AnnounceAll(Step step, Failures& failures);
    void AnnounceBefore(Step step, bool forced, Failures& failures);
    void Report(const std::string& message) noexcept;
    void Report(const Failures& failures) noexcept;

    /// Null if none is attached. Good while lock_ or flush_ is held or closing_ is set.
    INivexDevice* Device() const;
    void RequireNotClosing() const;
    void Connect(INivexDevice& device);
    void StartOpen(std::size_t maxImages, EGrabStrategy strategy, EGrabLoop loop);
    GrabPlan PlanOf(INivexDevice& device, std::size_t maxImages, EGrabStrategy strategy, EGrabLoop loop) const;
    void StartStream(INivexDevice& device, const GrabPlan& plan);
    void StopStream(Failures& failures);
    void StopLocked(bool forced, Failures& failures);
    void LockTransportLayer(bool locked);
    void RunGrabLoop();
    void Deliver(Delivery delivery);
    void EndGrabbing(std::uint64_t grabbing);

    CInstantCamera& camera_;
    const std::shared_ptr<ChunkMapSource> chunkMaps_;
    const std::shared_ptr<GrabQueue> queue_;
    CameraParameters parameters_;
    HandlerList<CConfigurationEventHandler> configurations_;
    HandlerList<CImageEventHandler> imageHandlers_;
    CameraEvents events_;

    mutable std::recursive_mutex lock_;  ///< The camera's lock.
    std::condition_variable_any closed_;
    bool closing_ = false;      ///< Guarded by lock_.
    bool streaming_ = false;    ///< Guarded by lock_.
    bool tellsCamera_ = false;  ///< Guarded by lock_: this grabbing starts and stops the camera.
    std::thread grabThread_;    ///< Guarded by lock_; runs from the first grabbing that needs it to the end.

    std::mutex flush_;  ///< Held by who flushes events: the device is not given up meanwhile.
    mutable std::mutex state_;
    Link link_;  ///< Guarded by state_; changes under lock_ only, a device goes under flush_, too.
    std::atomic<bool> removed_ = false;
};

}  // namespace Nivex

#include "base/instantcamera_impl.h"

#include "gcbase/exception.h"
#include "genapi/genapi.h"

#include "base/handlerlist_impl.h"
#include "base/parameters.h"

namespace Nivex {

void Failures::Collect(const std::function<void()>& action)
{
    try {
        action();
    } catch (...) {
        if (!first_) first_ = std::current_exception();
        texts_.push_back(GenICam::describeCurrentException());
    }
}

void Failures::Raise() const
{
    if (first_) std::rethrow_exception(first_);
}

CInstantCamera::Impl::Impl(CInstantCamera& camera)
    : camera_(camera),
      chunkMaps_(std::make_shared<ChunkMapSource>()),
      queue_(std::make_shared<GrabQueue>(chunkMaps_)),
      parameters_(queue_),
      events_(camera)
{}

CInstantCamera::Impl::~Impl()
{
    queue_->ShutDown();
    if (grabThread_.joinable()) grabThread_.join();
}

void CInstantCamera::Impl::Announce(Step step)
{
    configurations_.ForEach([&](auto& registration) { (registration.handler.get()->*step)(camera_); });
}

void CInstantCamera::Impl::AnnounceAll(Step step, Failures& failures)
{
    configurations_.ForEach(
        [&](auto& registration) { failures.Collect([&] { (registration.handler.get()->*step)(camera_); }); });
}

void CInstantCamera::Impl::AnnounceBefore(Step step, bool forced, Failures& failures)
{
    if (forced)
        AnnounceAll(step, failures);
    else
        Announce(step);
}

void CInstantCamera::Impl::Report(const std::string& message) noexcept
{
    // What the handler of errors throws has nobody left to go to.
    Failures ignored;
    configurations_.ForEach([&](auto& registration) {
        ignored.Collect([&] { registration.handler->OnGrabError(camera_, message.c_str()); });
    });
}

void CInstantCamera::Impl::Report(const Failures& failures) noexcept
{
    for (const std::string& text : failures.Texts())
        Report(text);
}

INivexDevice* CInstantCamera::Impl::Device() const
{
    const std::lock_guard lock(state_);
    return link_.device.get();
}

bool CInstantCamera::Impl::IsAttached() const
{
    return Device() != nullptr;
}

CDeviceInfo CInstantCamera::Impl::DeviceInfo() const
{
    const std::lock_guard lock(state_);
    return link_.device ? link_.device->GetDeviceInfo() : CDeviceInfo();
}

std::uint64_t CInstantCamera::Impl::FirstBlockID() const
{
    const std::lock_guard lock(state_);
    return link_.device ? link_.device->GetFirstBlockID() : 0;
}

bool CInstantCamera::Impl::IsOpen() const
{
    const std::lock_guard lock(state_);
    return link_.isOpen;
}

bool CInstantCamera::Impl::IsRemoved() const
{
    const std::lock_guard lock(state_);
    return removed_ || (link_.device && link_.device->IsRemoved());
}

GenApi::NodeMapPtr CInstantCamera::Impl::NodeMap(Map which) const
{
    const std::lock_guard lock(state_);
    if (!link_.isOpen) GENICAM_THROW(LogicalErrorException, "The camera is not open.");
    return link_.maps[static_cast<std::size_t>(which)];
}

void CInstantCamera::Impl::RequireNotClosing() const
{
    if (closing_) GENICAM_THROW(LogicalErrorException, "The camera is being closed.");
}

void CInstantCamera::Impl::Attach(INivexDevice* device, ECleanup cleanup)
{
    if (!device) GENICAM_THROW(InvalidArgumentException, "A device to be attached is a null pointer.");
    if (Device() == device)
        GENICAM_THROW(InvalidArgumentException, "The device \"%s\" is attached already.",
                      device->GetDeviceInfo().GetFullName().c_str());
    std::shared_ptr<INivexDevice> taken;
    if (cleanup == ECleanup::Delete)
        taken.reset(device);
    else
        taken.reset(device, [](INivexDevice*) {});
    DetachDevice(false);
    const Lock lock(lock_);
    RequireNotClosing();
    if (IsAttached()) GENICAM_THROW(LogicalErrorException, "Another thread has attached a device meanwhile.");
    Announce(&CConfigurationEventHandler::OnAttach);
    {
        const std::lock_guard state(state_);
        link_ = {.device = std::move(taken), .maps = {}, .isOpen = false};
    }
    removed_ = false;
    Failures failures;
    AnnounceAll(&CConfigurationEventHandler::OnAttached, failures);
    failures.Raise();
}

void CInstantCamera::Impl::DetachDevice(bool forced)
{
    Failures failures;
    const INivexDevice* present = nullptr;
    {
        const Lock lock(lock_);
        present = Device();
        if (!present) return;
        AnnounceBefore(&CConfigurationEventHandler::OnDetach, forced, failures);
    }
    failures.Collect([&] { Close(forced); });
    std::shared_ptr<INivexDevice> detached;
    {
        Lock lock(lock_);
        closed_.wait(lock, [this] { return !closing_; });
        if (Device() != present) return;  // another thread has detached it
        if (IsOpen()) {
            failures.Raise();
            GENICAM_THROW(LogicalErrorException, "Another thread opens the camera while it is to be detached.");
        }
        {
            // Nobody flushes a closed device for long.
            const std::scoped_lock givenUp(flush_, state_);
            detached = std::exchange(link_, {}).device;
        }
        removed_ = false;
        AnnounceAll(&CConfigurationEventHandler::OnDetached, failures);
    }
    detached.reset();
    if (forced)
        Report(failures);
    else
        failures.Raise();
}

void CInstantCamera::Impl::Open()
{
    const Lock lock(lock_);
    RequireNotClosing();
    INivexDevice* const device = Device();
    if (!device) GENICAM_THROW(LogicalErrorException, "There is no device attached that could be opened.");
    if (IsOpen()) return;
    Announce(&CConfigurationEventHandler::OnOpen);
    device->Open(*this);
    try {
        Connect(*device);
    } catch (...) {
        device->Close();
        throw;
    }
    Failures failures;
    AnnounceAll(&CConfigurationEventHandler::OnOpened, failures);
    failures.Raise();
}

void CInstantCamera::Impl::Connect(INivexDevice& device)
{
    std::array maps = {device.GetNodeMap(), device.GetTLNodeMap(), device.GetStreamGrabberNodeMap()};
    for (GenApi::NodeMapPtr& map : maps)
        if (!map) map = GenApi::CNodeMapFactory::CreateEmptyNodeMap();
    events_.Open(maps[static_cast<std::size_t>(Map::Camera)]);
    chunkMaps_->Open(device);
    const std::lock_guard state(state_);
    link_.maps = std::move(maps);
    link_.isOpen = true;
}

void CInstantCamera::Impl::Close(bool forced)
{
    Failures failures;
    {
        Lock lock(lock_);
        closed_.wait(lock, [this] { return !closing_; });
        if (!IsOpen()) return;
        AnnounceBefore(&CConfigurationEventHandler::OnClose, forced, failures);
        StopLocked(forced, failures);
        closing_ = true;
        INivexDevice* const device = Device();
        lock.unlock();
        queue_->WaitForDeliveries();
        chunkMaps_->Close();
        device->Close();
        events_.Close();
        queue_->Clear();
        lock.lock();
        {
            const std::lock_guard state(state_);
            link_.maps = {};
            link_.isOpen = false;
        }
        closing_ = false;
        closed_.notify_all();
        AnnounceAll(&CConfigurationEventHandler::OnClosed, failures);
    }
    if (forced)
        Report(failures);
    else
        failures.Raise();
}

void CInstantCamera::Impl::Start(std::size_t maxImages, EGrabStrategy strategy, EGrabLoop loop)
{
    if (maxImages == 0) GENICAM_THROW(InvalidArgumentException, "A grabbing of 0 images can't be started.");
    const bool opensHere = !IsOpen();
    try {
        if (opensHere) Open();
        StartOpen(maxImages, strategy, loop);
    } catch (...) {
        if (opensHere) Close(true);
        throw;
    }
}

void CInstantCamera::Impl::StartOpen(std::size_t maxImages, EGrabStrategy strategy, EGrabLoop loop)
{
    const Lock lock(lock_);
    RequireNotClosing();
    if (queue_->IsActive()) GENICAM_THROW(LogicalErrorException, "The camera is grabbing already.");
    INivexDevice* const device = Device();
    if (!IsOpen()) GENICAM_THROW(LogicalErrorException, "The camera is not open.");
    Failures failures;
    StopLocked(true, failures);
    Announce(&CConfigurationEventHandler::OnGrabStart);
    try {
        StartStream(*device, PlanOf(*device, maxImages, strategy, loop));
    } catch (...) {
        Failures consequences;
        StopStream(consequences);
        throw;
    }
    AnnounceAll(&CConfigurationEventHandler::OnGrabStarted, failures);
    failures.Raise();
}

GrabPlan CInstantCamera::Impl::PlanOf(INivexDevice& device, std::size_t maxImages, EGrabStrategy strategy,
                                      EGrabLoop loop) const
{
    const std::size_t payloadSize = device.GetPayloadSize();
    if (payloadSize == 0) GENICAM_THROW(RuntimeException, "The camera states a payload size of 0 bytes.");
    const bool makesChunkMaps = parameters_.ChunkNodeMapsEnable();
    return {.bufferCount = parameters_.MaxNumBuffer(),
            .bufferSize = payloadSize,
            .maxImages = maxImages,
            .outputQueueSize = parameters_.OutputQueueSize(),
            .strategy = strategy,
            .loop = loop,
            .makesChunkMaps = makesChunkMaps,
            .expectsChunks = makesChunkMaps &&
                             CBooleanParameter(NodeMap(Map::Camera), "ChunkModeActive").GetValueOrDefault(false)};
}

void CInstantCamera::Impl::StartStream(INivexDevice& device, const GrabPlan& plan)
{
    if (plan.loop == EGrabLoop::ProvidedByInstantCamera && !grabThread_.joinable())
        grabThread_ = std::thread([this] { RunGrabLoop(); });
    tellsCamera_ = false;
    streaming_ = true;
    queue_->Prepare(plan);
    LockTransportLayer(true);
    device.StartStream(*queue_);
    queue_->Begin(device);
    // A removal before Begin has ended nothing.
    if (removed_) GENICAM_THROW(RuntimeException, "The camera was removed.");
    if (!parameters_.AcquisitionStartStopExecutionEnable()) return;
    tellsCamera_ = true;
    CCommandParameter start(NodeMap(Map::Camera), "AcquisitionStart");
    if (start.IsValid()) start.Execute();
}

void CInstantCamera::Impl::LockTransportLayer(bool locked)
{
    CIntegerParameter parameter(NodeMap(Map::Camera), "TLParamsLocked");
    if (parameter.IsValid()) parameter.SetValue(locked ? 1 : 0);
}

void CInstantCamera::Impl::StopStream(Failures& failures)
{
    if (!streaming_) return;
    queue_->End();
    Failures told;
    CCommandParameter stop(NodeMap(Map::Camera), "AcquisitionStop");
    if (tellsCamera_ && stop.IsValid()) told.Collect([&] { stop.Execute(); });
    Device()->StopStream();
    queue_->Finish();
    told.Collect([this] { LockTransportLayer(false); });
    streaming_ = false;
    // A camera that is gone can't be told anything.
    if (!IsRemoved()) failures.Collect([&] { told.Raise(); });
}

void CInstantCamera::Impl::StopLocked(bool forced, Failures& failures)
{
    if (!streaming_) return;
    AnnounceBefore(&CConfigurationEventHandler::OnGrabStop, forced, failures);
    StopStream(failures);
    AnnounceAll(&CConfigurationEventHandler::OnGrabStopped, failures);
}

void CInstantCamera::Impl::Stop()
{
    Failures failures;
    {
        const Lock lock(lock_);
        if (closing_) return;
        StopLocked(false, failures);
    }
    failures.Raise();
}

void CInstantCamera::Impl::RunGrabLoop()
{
    while (auto delivery = queue_->TakeForLoop())
        Deliver(std::move(*delivery));
}

bool CInstantCamera::Impl::Retrieve(std::chrono::milliseconds timeout, CGrabResultPtr& result,
                                    ETimeoutHandling handling)
{
    result.Release();
    Delivery delivery;
    switch (queue_->TakeForUser(timeout, delivery)) {
        case GrabQueue::Outcome::Ended:
            return false;
        case GrabQueue::Outcome::Timeout:
            if (handling == ETimeoutHandling::Return) return false;
            GENICAM_THROW(TimeoutException, "No result arrived within %lld ms.",
                          static_cast<long long>(timeout.count()));
        case GrabQueue::Outcome::Result:
            break;
    }
    result = delivery.result;
    Deliver(std::move(delivery));
    return true;
}

void CInstantCamera::Impl::Deliver(Delivery delivery)
{
    const auto guarded = [this](const auto& call) {
        try {
            call();
        } catch (...) {
            Report(GenICam::describeCurrentException());
        }
    };
    const std::uint64_t skipped = delivery.result->GetNumberOfSkippedImages();
    imageHandlers_.ForEach([&](auto& registration) {
        CImageEventHandler& handler = *registration.handler;
        if (skipped > 0) guarded([&] { handler.OnImagesSkipped(camera_, skipped); });
        guarded([&] { handler.OnImageGrabbed(camera_, delivery.result); });
    });
    delivery.result.Release();
    if (delivery.isLast) EndGrabbing(delivery.grabbing);
    queue_->EndDelivery();
}

void CInstantCamera::Impl::EndGrabbing(std::uint64_t grabbing)
{
    Failures failures;
    {
        const Lock lock(lock_);
        if (closing_ || queue_->Grabbing() != grabbing) return;
        StopLocked(true, failures);
    }
    Report(failures);
}

void CInstantCamera::Impl::OnDeviceEvent(std::uint64_t eventId, const std::uint8_t* data,
                                         std::size_t size) noexcept
{
    if (!parameters_.GrabCameraEvents()) return;
    events_.Deliver(eventId, data, size, [this](const std::string& message) { Report(message); });
}

void CInstantCamera::Impl::OnDeviceEventsLost(std::uint64_t eventId, std::uint64_t count) noexcept
{
    if (!parameters_.GrabCameraEvents()) return;
    events_.DeliverLost(eventId, count, [this](const std::string& message) { Report(message); });
}

void CInstantCamera::Impl::FlushEvents()
{
    const std::lock_guard flush(flush_);
    if (INivexDevice* const device = Device()) device->FlushEvents();
}

void CInstantCamera::Impl::OnDeviceRemoved() noexcept
{
    if (removed_.exchange(true)) return;
    queue_->End();
    configurations_.ForEach([this](auto& registration) {
        try {
            registration.handler->OnCameraDeviceRemoved(camera_);
        } catch (...) {
            Report(GenICam::describeCurrentException());
        }
    });
}

}  // namespace Nivex

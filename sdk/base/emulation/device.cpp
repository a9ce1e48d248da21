#include "base/emulation/device.h"

#include <mutex>

#include "gcbase/exception.h"

#include "base/emulation/description.h"

namespace Nivex::Emulation {
namespace {

// A frame that comes later than this is lost: the computer is too slow for the frame rate.
constexpr std::chrono::seconds lagLimit{1};

/// Makes maps of one description, which is read once.
class MapMaker
{
public:
    explicit MapMaker(const std::string& description)
        : factory_(GenApi::ContentType_Xml, description.data(), description.size())
    {}

    GenApi::NodeMapPtr Make(const std::string& name)
    {
        const std::lock_guard lock(mutex_);
        return factory_.CreateNodeMap(name, false);
    }

private:
    std::mutex mutex_;
    GenApi::CNodeMapFactory factory_;
};

MapMaker& makerOf(EMap map)
{
    static MapMaker makers[] = {MapMaker(describeMap(EMap::Camera)), MapMaker(describeMap(EMap::Transport)),
                                MapMaker(describeMap(EMap::Stream))};
    return makers[static_cast<std::size_t>(map)];
}

MapMaker& chunkMaps()
{
    static MapMaker maker(describeChunks());
    return maker;
}

}  // namespace

void RegisterPort::Read(void* buffer, std::int64_t address, std::int64_t length)
{
    camera_.ReadRegister(map_, buffer, address, length);
}

void RegisterPort::Write(const void* buffer, std::int64_t address, std::int64_t length)
{
    if (camera_.WriteRegister(map_, buffer, address, length)) InvalidateNode();
}

/// Holds the camera for one device object.
class Device::Reservation
{
public:
    explicit Reservation(std::shared_ptr<Camera> camera) : camera_(std::move(camera)) {}
    ~Reservation()
    {
        if (reserved_) camera_->Release();
    }
    Reservation(const Reservation&) = delete;
    Reservation& operator=(const Reservation&) = delete;

    bool Take() { return reserved_ = camera_->Reserve(session_); }
    Camera& TheCamera() { return *camera_; }
    Session& TheSession() { return session_; }

private:
    const std::shared_ptr<Camera> camera_;
    Session session_;
    bool reserved_ = false;
};

std::unique_ptr<Device> Device::Reserve(std::shared_ptr<Camera> camera)
{
    auto reservation = std::make_unique<Reservation>(std::move(camera));
    if (!reservation->Take()) return nullptr;
    return std::unique_ptr<Device>(new Device(std::move(reservation)));
}

Device::Device(std::unique_ptr<Reservation> reservation)
    : reservation_(std::move(reservation)),
      camera_(reservation_->TheCamera()),
      session_(reservation_->TheSession()),
      info_(camera_.Info()),
      ports_{{{camera_, EMap::Camera}, {camera_, EMap::Transport}, {camera_, EMap::Stream}}}
{}

Device::~Device()
{
    Close();
}

void Device::CheckClosed() const
{
    const Lock lock(camera_.mutex);
    if (session_.open) GENICAM_THROW(LogicalErrorException, "%s is already open.", camera_.Name().c_str());
    camera_.CheckConnectedLocked();
}

// Maps take their own lock before the camera's mutex, so they are connected without it.
void Device::Open(IDeviceListener& listener)
{
    CheckClosed();
    std::array<GenApi::NodeMapPtr, mapCount> maps;
    for (std::size_t i = 0; i < mapCount; ++i) {
        maps[i] = makerOf(static_cast<EMap>(i)).Make(camera_.Name());
        maps[i]->Connect(&ports_[i], "Device");
    }
    const Lock lock(camera_.mutex);
    camera_.CheckConnectedLocked();
    eventThread_ = std::thread([this, &listener] { DeliverEvents(listener); });
    maps_ = std::move(maps);
    session_.open = true;
}

void Device::Close() noexcept
{
    StopStream();
    std::array<GenApi::NodeMapPtr, mapCount> maps;
    {
        const Lock lock(camera_.mutex);
        session_.open = false;
        session_.eventsDone += session_.events.size();
        session_.events.clear();
        camera_.StopAcquisitionLocked();
        std::swap(maps, maps_);
        camera_.noticed.notify_all();
    }
    if (eventThread_.joinable()) eventThread_.join();
    for (const GenApi::NodeMapPtr& map : maps)
        if (map) map->Connect(nullptr, "Device");
}

bool Device::IsOpen() const
{
    const Lock lock(camera_.mutex);
    return session_.open;
}

bool Device::IsRemoved() const
{
    const Lock lock(camera_.mutex);
    return session_.removed;
}

GenApi::NodeMapPtr Device::MapOf(EMap map) const
{
    const Lock lock(camera_.mutex);
    return maps_[static_cast<std::size_t>(map)];
}

GenApi::NodeMapPtr Device::CreateChunkNodeMap() const
{
    return chunkMaps().Make(camera_.Name());
}

std::size_t Device::GetPayloadSize() const
{
    const Lock lock(camera_.mutex);
    return camera_.PayloadSizeLocked();
}

void Device::StartStream(IStreamSink& sink)
{
    const Lock lock(camera_.mutex);
    camera_.CheckConnectedLocked();
    if (!session_.open) GENICAM_THROW(RuntimeException, "%s is not open.", camera_.Name().c_str());
    if (session_.streaming) GENICAM_THROW(RuntimeException, "%s is streaming already.", camera_.Name().c_str());
    streamThread_ = std::thread([this, &sink] { DeliverFrames(sink); });
    session_.frames = 0;
    camera_.SetStreamingLocked(true);
}

void Device::StopStream() noexcept
{
    {
        const Lock lock(camera_.mutex);
        if (!session_.streaming) return;
        camera_.SetStreamingLocked(false);
        camera_.changed.notify_all();
    }
    streamThread_.join();
    const Lock lock(camera_.mutex);
    session_.buffers.clear();
}

void Device::QueueBuffer(const SStreamBuffer& buffer)
{
    const Lock lock(camera_.mutex);
    if (!session_.streaming) return;
    session_.buffers.push_back(buffer);
    if (session_.buffers.size() == 1) camera_.changed.notify_all();
}

void Device::DeliverEvents(IDeviceListener& listener)
{
    Lock lock(camera_.mutex);
    for (;;) {
        camera_.noticed.wait(lock,
                             [this] { return !session_.open || !session_.events.empty() || session_.removed; });
        if (!session_.open) return;
        if (session_.events.empty()) break;
        const QueuedEvent event = std::move(session_.events.front());
        session_.events.pop_front();
        lock.unlock();
        listener.OnDeviceEvent(event.id, event.data.data(), event.size);
        for (const LostEvents& lost : event.lostBehind)
            listener.OnDeviceEventsLost(lost.id, lost.count);
        lock.lock();
        ++session_.eventsDone;
        camera_.noticed.notify_all();
    }
    // No frame may come behind the word that the camera is gone.
    camera_.noticed.wait(lock, [this] { return !session_.delivering; });
    if (!session_.open) return;
    lock.unlock();
    listener.OnDeviceRemoved();
}

// Of a camera that is gone, too, all that was queued is delivered.
void Device::FlushEvents() noexcept
{
    Lock lock(camera_.mutex);
    const std::uint64_t last = session_.eventsQueued;
    camera_.noticed.wait(lock, [&] { return !session_.open || session_.eventsDone >= last; });
}

void Device::DeliverFrames(IStreamSink& sink)
{
    Lock lock(camera_.mutex);
    while (WaitForWork(lock)) {
        RefreshSettings(lock);
        if (IsAcquiringLocked()) TakeFrame(lock, sink);
    }
}

bool Device::IsStreamUpLocked() const
{
    return session_.streaming && !session_.removed;
}

bool Device::IsAcquiringLocked() const
{
    return IsStreamUpLocked() && session_.acquiring;
}

// A wait for the next frame is over when its time may have changed.
bool Device::IsUnchangedLocked() const
{
    return IsAcquiringLocked() && revision_ == camera_.bank.Revision() && acquisition_ == session_.acquisition;
}

bool Device::WaitForWork(Lock& lock)
{
    camera_.changed.wait(lock, [this] {
        if (!IsStreamUpLocked()) return true;
        return session_.acquiring && (!camera_.bank.IsOn("TriggerMode"_reg) || session_.triggers > 0);
    });
    return IsStreamUpLocked();
}

// Gives the lock back while pictures are made. What is written meanwhile counts from the next frame on.
void Device::RefreshSettings(Lock& lock)
{
    const bool isNewAcquisition = acquisition_ != session_.acquisition;
    if (!isNewAcquisition && revision_ == camera_.bank.Revision()) return;
    revision_ = camera_.bank.Revision();
    acquisition_ = session_.acquisition;
    settings_ = camera_.SettingsLocked();
    lock.unlock();
    if (isNewAcquisition) maker_.ForgetFiles();
    maker_.Prepare(settings_);
    if (isNewAcquisition) pacer_.Restart();
    lock.lock();
}

// False if something else ended the wait.
bool Device::WaitUntil(Lock& lock, Clock::time_point time, bool (Device::*goesOn)() const)
{
    return time <= Clock::now() || !camera_.changed.wait_until(lock, time, [&] { return !(this->*goesOn)(); });
}

// As fast as it can means that buffers are waited for.
bool Device::WaitForBuffer(Lock& lock)
{
    camera_.changed.wait(lock, [this] { return !session_.buffers.empty() || !IsUnchangedLocked(); });
    return !session_.buffers.empty() && IsAcquiringLocked();
}

// Waits for the begin of the next exposure; none if something else comes first.
std::optional<Clock::time_point> Device::BeginExposure(Lock& lock)
{
    const Pacer::Terms terms = {settings_.frameRate, settings_.exposure, settings_.waitsForTrigger};
    if (terms.triggered && session_.triggers == 0) return std::nullopt;
    if (!terms.rate && !WaitForBuffer(lock)) return std::nullopt;
    const Clock::time_point start = pacer_.Next(Clock::now(), terms);
    if (!WaitUntil(lock, start, &Device::IsUnchangedLocked) || !IsAcquiringLocked()) return std::nullopt;
    pacer_.Take(start, terms);
    if (terms.triggered && session_.triggers > 0) --session_.triggers;
    return start;
}

void Device::TakeFrame(Lock& lock, IStreamSink& sink)
{
    const auto start = BeginExposure(lock);
    if (!start) return;
    const FrameFacts facts = {++session_.frames, camera_.TimeLocked(*start)};
    camera_.SendEventLocked(eventNamed("FrameStart"), facts.timestamp, facts.number);
    // Nor does the exposure take time then.
    const Clock::time_point end = settings_.frameRate ? *start + settings_.exposure : *start;
    if (!WaitUntil(lock, end, &Device::IsStreamUpLocked)) return;
    camera_.SendEventLocked(eventNamed("ExposureEnd"), camera_.TimeLocked(end), facts.number);
    camera_.bank.SetInteger("LineStatusAll"_reg, static_cast<std::int64_t>(lineStatus(facts.number)));

    if (!IsStreamUpLocked()) return;
    // Who gets the last frame may start the next acquisition at once.
    if (session_.toGo && --*session_.toGo == 0) camera_.StopAcquisitionLocked();
    if (session_.buffers.empty() || IsLostOnDemand(facts.number) || IsTooLate(end))
        camera_.bank.Add("StreamLostFrameCount"_reg, 1);
    else
        Deliver(lock, sink, facts);
    UnplugOnDemandLocked();
}

bool Device::IsTooLate(Clock::time_point end) const
{
    return settings_.frameRate && Clock::now() > end + lagLimit;
}

bool Device::IsLostOnDemand(std::uint64_t number) const
{
    if (settings_.lostEvery == 0) return false;
    return (number - 1) % (settings_.lostEvery + settings_.lostNumber) >= settings_.lostEvery;
}

void Device::Deliver(Lock& lock, IStreamSink& sink, const FrameFacts& facts)
{
    const SStreamBuffer buffer = session_.buffers.front();
    session_.buffers.pop_front();
    session_.delivering = true;
    lock.unlock();
    const SFrame frame = maker_.Make(buffer, facts);
    lock.lock();
    camera_.bank.Add("StreamDeliveredFrameCount"_reg, 1);
    if (!frame.isComplete) camera_.bank.Add("StreamFailedFrameCount"_reg, 1);
    lock.unlock();
    sink.OnFrame(frame);
    lock.lock();
    session_.delivering = false;
    if (session_.removed) camera_.noticed.notify_all();
}

void Device::UnplugOnDemandLocked()
{
    const auto unplugAfter = static_cast<std::uint64_t>(camera_.bank.Integer("UnplugAfterFrames"_reg));
    if (unplugAfter == 0 || session_.frames < unplugAfter) return;
    camera_.bank.SetInteger("UnplugAfterFrames"_reg, 0);
    camera_.UnplugLocked();
}

}  // namespace Nivex::Emulation

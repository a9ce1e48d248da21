#pragma once

#include <array>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "base/camerabackend.h"
#include "base/emulation/framesettings.h"
#include "base/emulation/registerbank.h"

namespace Nivex::Emulation {

using Clock = std::chrono::steady_clock;

/// Events of one number for which there was no room.
struct LostEvents
{
    std::uint64_t id;
    std::uint64_t count;
};

/// An event that waits for delivery.
struct QueuedEvent
{
    std::uint64_t id;
    std::size_t size;
    std::array<std::uint8_t, 16> data;
    std::vector<LostEvents> lostBehind;  ///< Dropped between this one and the next, one entry for each number.
};

/// The present session of a device object with its camera. Guarded by the camera's mutex.
struct Session
{
    bool open = false;
    bool removed = false;
    std::deque<QueuedEvent> events;
    std::uint64_t eventsQueued = 0;  ///< Ever.
    std::uint64_t eventsDone = 0;    ///< Of those: delivered, or given up by Close.

    bool streaming = false;
    bool delivering = false;            ///< A sink is being called.
    std::deque<SStreamBuffer> buffers;  ///< Those lent first come first.
    std::uint64_t frames = 0;           ///< Taken since the stream was started, lost ones included.

    bool acquiring = false;
    std::uint64_t acquisition = 0;      ///< Counts starts, so that a new one is noticed.
    std::optional<std::uint64_t> toGo;  ///< Frames until the acquisition ends; none if it does not by itself.
    unsigned triggers = 0;              ///< That wait.
};

/// An emulated camera with its registers, which live on while nobody has it open. Shared by the back end and the
/// device object that has reserved it; everything here is guarded by its mutex, which operations named ...Locked
/// want held.
///
/// Threads: users of the node maps come through ReadRegister and WriteRegister; the session's stream and event
/// threads wait on the condition variables. No lock is taken while the mutex is held.
class Camera
{
public:
    static constexpr std::size_t maxEvents = 1000;  ///< That wait; further ones are dropped and told of.
    static constexpr unsigned maxTriggers = 255;

    explicit Camera(std::string serialNumber);
    Camera(const Camera&) = delete;
    Camera& operator=(const Camera&) = delete;

    CDeviceInfo Info();
    bool IsPlugged();
    void Plug();
    void Unplug();

    /// @name The device object. One at a time reserves the camera.
    bool IsFree();
    /// False if the camera is unplugged or reserved. The session must live until Release.
    bool Reserve(Session& session);
    void Release();

    /// Access of a node map's port. Raises RuntimeException that names the camera when it is gone or refuses.
    void ReadRegister(EMap map, void* buffer, std::int64_t address, std::int64_t length);
    /// True if that changed further registers.
    bool WriteRegister(EMap map, const void* buffer, std::int64_t address, std::int64_t length);

    /// @name With `mutex` held
    bool IsPluggedLocked();
    void UnplugLocked();
    /// RuntimeException if the session's camera is gone.
    void CheckConnectedLocked() const;
    FrameSettings SettingsLocked() const;
    std::size_t PayloadSizeLocked() const;
    /// Queues the event if its notification is on.
    void SendEventLocked(std::size_t event, std::uint64_t time, std::uint64_t frameId);
    std::uint64_t TimeLocked(Clock::time_point at) const;
    void SetStreamingLocked(bool streaming);
    void StopAcquisitionLocked();

    const std::string& Name() const { return name_; }

    std::mutex mutex;
    std::condition_variable changed;  ///< Anything that a stream thread waits for, and the end of a delay.
    std::condition_variable noticed;  ///< Anything that an event thread, or who flushes, waits for.
    RegisterBank bank;

private:
    using Action = void (Camera::*)();
    struct ActionRow;
    static const ActionRow actions[];

    void WaitAsSlowDevice(std::unique_lock<std::mutex>& lock);
    bool React(Register written);
    bool Settle();
    void DropEvent(std::uint64_t id);
    void QueueEvent(std::uint64_t id, std::uint64_t time, std::optional<std::uint64_t> frameId);

    void StartAcquisition();
    void StopAcquisition() { StopAcquisitionLocked(); }
    void TriggerFrame();
    void LatchTime();
    void ResetTime();
    void LoadUserSet();
    void SendTestEvent();
    void SendUnknownEvent();
    void TakeTemperature();

    const std::string serialNumber_;
    const std::string name_;
    Clock::time_point timeZero_ = Clock::now();
    bool plugged_ = true;
    std::optional<Clock::time_point> replug_;
    Session* session_ = nullptr;
};

}  // namespace Nivex::Emulation

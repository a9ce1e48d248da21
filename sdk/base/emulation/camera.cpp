#include "base/emulation/camera.h"

#include <algorithm>
#include <cstring>

#include "gcbase/exception.h"

namespace Nivex::Emulation {
namespace {

using Milliseconds = std::chrono::milliseconds;

std::uint64_t nanoseconds(Clock::duration time)
{
    return static_cast<std::uint64_t>(
        std::max<std::int64_t>(std::chrono::duration_cast<std::chrono::nanoseconds>(time).count(), 0));
}

std::uint32_t natural(const RegisterBank& bank, Register reg)
{
    return static_cast<std::uint32_t>(bank.Integer(reg));
}

double exposureOf(const RegisterBank& bank)
{
    return static_cast<double>(bank.Integer("ExposureTimeRaw"_reg)) / 10;
}

PictureSettings pictureSettings(const RegisterBank& bank, const ComponentRow& component)
{
    PictureSettings picture;
    const bool isIntensity = component.pixelType == EPixelType::Undefined;
    picture.pixelType =
        isIntensity ? static_cast<EPixelType>(bank.Integer("PixelFormat"_reg)) : component.pixelType;
    picture.width = natural(bank, "Width"_reg);
    picture.height = natural(bank, "Height"_reg);
    picture.offsetX = natural(bank, "OffsetX"_reg);
    picture.offsetY = natural(bank, "OffsetY"_reg);
    picture.binningX = natural(bank, "BinningHorizontal"_reg);
    picture.binningY = natural(bank, "BinningVertical"_reg);
    picture.reverseX = bank.IsOn("ReverseX"_reg);
    picture.reverseY = bank.IsOn("ReverseY"_reg);
    picture.fromFolder = isIntensity && bank.IsOn("ImageSource"_reg);
    picture.folder = bank.Text("ImageFolder"_reg);
    picture.pattern = isIntensity ? static_cast<ETestPattern>(bank.Integer("TestPattern"_reg)) : component.pattern;
    picture.exposure = exposureOf(bank);
    for (std::size_t i = 0; i < gainCount; ++i)
        picture.gains[i] = bank.Float("Gain"_reg, i);
    picture.blackLevel = bank.Float("BlackLevel"_reg);
    return picture;
}

/// Brings a size and its offset within `most`; true if that changed one of them.
bool fit(RegisterBank& bank, Register sizeReg, Register offsetReg, std::int64_t most)
{
    const std::int64_t size = bank.Integer(sizeReg);
    const std::int64_t offset = bank.Integer(offsetReg);
    const std::int64_t newSize = std::min(size, most);
    const std::int64_t newOffset = std::min(offset, most - newSize);
    bank.SetInteger(sizeReg, newSize);
    bank.SetInteger(offsetReg, newOffset);
    return newSize != size || newOffset != offset;
}

}  // namespace

/// What the camera does when a command is written.
struct Camera::ActionRow
{
    Register command;
    Action action;
};

const Camera::ActionRow Camera::actions[] = {
    {"TimestampLatch"_reg, &Camera::LatchTime},
    {"TimestampReset"_reg, &Camera::ResetTime},
    {"AcquisitionStart"_reg, &Camera::StartAcquisition},
    {"AcquisitionStop"_reg, &Camera::StopAcquisition},
    {"TriggerSoftware"_reg, &Camera::TriggerFrame},
    {"UserSetLoad"_reg, &Camera::LoadUserSet},
    {"TestEventGenerate"_reg, &Camera::SendTestEvent},
    {"UnknownEventGenerate"_reg, &Camera::SendUnknownEvent},
    {"UnplugNow"_reg, &Camera::UnplugLocked},
};

Camera::Camera(std::string serialNumber)
    : serialNumber_(std::move(serialNumber)), name_("Emulated Camera (" + serialNumber_ + ")")
{
    bank.SetText("DeviceSerialNumber"_reg, serialNumber_);
    bank.SetText("DeviceID"_reg, name_);
    Settle();
}

CDeviceInfo Camera::Info()
{
    const std::lock_guard lock(mutex);
    CDeviceInfo info;
    const std::string userName = bank.Text("DeviceUserID"_reg);
    info.SetPropertyValue(Key::DeviceClass, "Emulated")
        .SetPropertyValue(Key::FullName, name_)
        .SetPropertyValue(Key::FriendlyName, userName.empty() ? name_ : userName + " (" + serialNumber_ + ")")
        .SetPropertyValue(Key::VendorName, bank.Text("DeviceVendorName"_reg))
        .SetPropertyValue(Key::ModelName, bank.Text("DeviceModelName"_reg))
        .SetPropertyValue(Key::SerialNumber, serialNumber_)
        .SetPropertyValue(Key::UserDefinedName, userName);
    return info;
}

bool Camera::IsPlugged()
{
    const std::lock_guard lock(mutex);
    return IsPluggedLocked();
}

bool Camera::IsPluggedLocked()
{
    if (!plugged_ && replug_ && Clock::now() >= *replug_) plugged_ = true;
    return plugged_;
}

void Camera::Plug()
{
    const std::lock_guard lock(mutex);
    plugged_ = true;
}

void Camera::Unplug()
{
    const std::lock_guard lock(mutex);
    UnplugLocked();
}

void Camera::UnplugLocked()
{
    if (!IsPluggedLocked()) return;
    plugged_ = false;
    const std::int64_t delay = bank.Integer("ReplugDelay"_reg);
    replug_ = delay > 0 ? std::optional(Clock::now() + Milliseconds(delay)) : std::nullopt;
    if (!session_) return;
    session_->removed = true;
    StopAcquisitionLocked();
    bank.SetInteger("ConnectionStatus"_reg, 1);
    changed.notify_all();
    noticed.notify_all();
}

bool Camera::IsFree()
{
    const std::lock_guard lock(mutex);
    return !session_ && IsPluggedLocked();
}

bool Camera::Reserve(Session& session)
{
    const std::lock_guard lock(mutex);
    if (session_ || !IsPluggedLocked()) return false;
    session_ = &session;
    bank.SetInteger("ConnectionStatus"_reg, 0);
    return true;
}

void Camera::Release()
{
    const std::lock_guard lock(mutex);
    session_ = nullptr;
}

void Camera::CheckConnectedLocked() const
{
    if (!session_ || session_->removed)
        GENICAM_THROW(RuntimeException, "%s is not connected any more.", name_.c_str());
}

// A stop of the waiting because the cable was pulled is noticed by the caller's next check.
void Camera::WaitAsSlowDevice(std::unique_lock<std::mutex>& lock)
{
    const std::int64_t delay = bank.Integer("RegisterAccessDelay"_reg);
    if (delay > 0) changed.wait_for(lock, Milliseconds(delay), [this] { return !session_ || session_->removed; });
    CheckConnectedLocked();
}

void Camera::ReadRegister(EMap map, void* buffer, std::int64_t address, std::int64_t length)
{
    std::unique_lock lock(mutex);
    if (map == EMap::Camera) {
        CheckConnectedLocked();
        WaitAsSlowDevice(lock);
        bank.Add("RegisterReadCount"_reg, 1);
    }
    if (map == EMap::Stream && session_) {
        bank.SetInteger("StreamInputBufferCount"_reg, static_cast<std::int64_t>(session_->buffers.size()));
        bank.SetInteger("StreamPayloadSize"_reg, static_cast<std::int64_t>(PayloadSizeLocked()));
    }
    bank.Read(buffer, address, length);
}

bool Camera::WriteRegister(EMap map, const void* buffer, std::int64_t address, std::int64_t length)
{
    std::unique_lock lock(mutex);
    if (map == EMap::Camera) {
        CheckConnectedLocked();
        WaitAsSlowDevice(lock);
        bank.Add("RegisterWriteCount"_reg, 1);
    }
    if (session_ && session_->streaming) bank.CheckUnlocked(address);
    const Register written = bank.Write(buffer, address, length);
    const bool changedOthers = React(written);
    changed.notify_all();
    return changedOthers;
}

bool Camera::React(Register written)
{
    const Placed& place = written.Place();
    if (place.feature->kind == EKind::Command) {
        const bool isOrder = bank.IsOn(written);
        bank.SetInteger(written, 0);
        if (!isOrder) return false;
        for (const ActionRow& row : actions)
            if (row.command == written) (this->*row.action)();
        return written == "UserSetLoad"_reg;
    }
    if (written == "EmulatedTemperature"_reg) TakeTemperature();
    return Settle();
}

bool Camera::Settle()
{
    const bool widthChanged =
        fit(bank, "Width"_reg, "OffsetX"_reg, sensorWidth / bank.Integer("BinningHorizontal"_reg));
    const bool heightChanged =
        fit(bank, "Height"_reg, "OffsetY"_reg, sensorHeight / bank.Integer("BinningVertical"_reg));
    return widthChanged || heightChanged;
}

std::size_t Camera::PayloadSizeLocked() const
{
    return SettingsLocked().PayloadSize();
}

FrameSettings Camera::SettingsLocked() const
{
    FrameSettings settings;
    for (std::size_t i = 0; i < std::size(components); ++i)
        if (bank.IsOn("ComponentEnable"_reg, i)) settings.pictures[i] = pictureSettings(bank, components[i]);
    settings.hasChunks = bank.IsOn("ChunkModeActive"_reg);
    for (std::size_t i = 0; i < std::size(chunks); ++i)
        settings.chunkEnabled[i] = settings.hasChunks && bank.IsOn("ChunkEnable"_reg, i);
    settings.waitsForTrigger = bank.IsOn("TriggerMode"_reg);
    if (bank.IsOn("AcquisitionFrameRateEnable"_reg)) settings.frameRate = bank.Float("AcquisitionFrameRate"_reg);
    settings.exposure = std::chrono::nanoseconds(bank.Integer("ExposureTimeRaw"_reg) * 100);
    const auto count = [&](Register reg) { return static_cast<std::uint64_t>(bank.Integer(reg)); };
    settings.failedEvery = count("FailedFramesEvery"_reg);
    settings.fault = &frameFaults[bank.Integer("FailedFramesCause"_reg)];
    settings.lostEvery = count("LostFramesEvery"_reg);
    settings.lostNumber = count("LostFramesNumber"_reg);
    settings.damagedEvery = count("DamagedChunksEvery"_reg);
    return settings;
}

std::uint64_t Camera::TimeLocked(Clock::time_point at) const
{
    return nanoseconds(at - timeZero_);
}

void Camera::SendEventLocked(std::size_t event, std::uint64_t time, std::uint64_t frameId)
{
    if (!bank.IsOn("EventNotification"_reg, event)) return;
    QueueEvent(events[event].id, time, events[event].hasFrameId ? std::optional(frameId) : std::nullopt);
}

// The queue is full.
void Camera::DropEvent(std::uint64_t id)
{
    bank.Add("EventLostCount"_reg, 1);
    std::vector<LostEvents>& lost = session_->events.back().lostBehind;
    const auto known =
        std::find_if(lost.begin(), lost.end(), [id](const LostEvents& row) { return row.id == id; });
    if (known != lost.end())
        ++known->count;
    else
        lost.push_back({id, 1});
}

void Camera::QueueEvent(std::uint64_t id, std::uint64_t time, std::optional<std::uint64_t> frameId)
{
    if (!session_ || !session_->open || session_->removed) return;
    if (session_->events.size() >= maxEvents) {
        DropEvent(id);
        return;
    }
    QueuedEvent event{id, sizeof(time), {}, {}};
    std::memcpy(event.data.data(), &time, sizeof(time));
    if (frameId) {
        std::memcpy(event.data.data() + sizeof(time), &*frameId, sizeof(*frameId));
        event.size += sizeof(*frameId);
    }
    session_->events.push_back(std::move(event));
    ++session_->eventsQueued;
    noticed.notify_all();
}

void Camera::SetStreamingLocked(bool streaming)
{
    session_->streaming = streaming;
    bank.SetInteger("TLParamsLocked"_reg, streaming);
    bank.SetInteger("StreamIsGrabbing"_reg, streaming);
    if (streaming)
        for (const Register count :
             {"StreamDeliveredFrameCount"_reg, "StreamFailedFrameCount"_reg, "StreamLostFrameCount"_reg})
            bank.SetInteger(count, 0);
}

void Camera::StartAcquisition()
{
    if (session_->acquiring) return;
    if (PayloadSizeLocked() == 0)
        GENICAM_THROW(RuntimeException, "%s can't start: no component is enabled.", name_.c_str());
    if (bank.IsOn("ImageSource"_reg)) PictureSource::PicturesOf(bank.Text("ImageFolder"_reg));
    switch (static_cast<EAcquisitionMode>(bank.Integer("AcquisitionMode"_reg))) {
        case EAcquisitionMode::SingleFrame:
            session_->toGo = 1;
            break;
        case EAcquisitionMode::MultiFrame:
            session_->toGo = static_cast<std::uint64_t>(bank.Integer("AcquisitionFrameCount"_reg));
            break;
        case EAcquisitionMode::Continuous:
            session_->toGo.reset();
            break;
    }
    session_->triggers = 0;
    session_->acquiring = true;
    ++session_->acquisition;
}

void Camera::StopAcquisitionLocked()
{
    if (session_) session_->acquiring = false;
}

void Camera::TriggerFrame()
{
    if (bank.Integer("TriggerSource"_reg) != 0 || !bank.IsOn("TriggerMode"_reg))
        GENICAM_THROW(RuntimeException,
                      "%s waits for no software trigger: TriggerMode must be On and TriggerSource Software.",
                      name_.c_str());
    if (!session_->acquiring) return;
    if (session_->triggers < maxTriggers)
        ++session_->triggers;
    else
        SendEventLocked(eventNamed("FrameTriggerMissed"), TimeLocked(Clock::now()), 0);
}

void Camera::LatchTime()
{
    bank.SetInteger("TimestampLatchValue"_reg, static_cast<std::int64_t>(TimeLocked(Clock::now())));
}

void Camera::ResetTime()
{
    timeZero_ = Clock::now();
}

void Camera::LoadUserSet()
{
    bank.LoadDefaults();
    TakeTemperature();
}

void Camera::SendTestEvent()
{
    SendEventLocked(eventNamed("Test"), TimeLocked(Clock::now()), 0);
}

void Camera::SendUnknownEvent()
{
    QueueEvent(unknownEventId, TimeLocked(Clock::now()), std::nullopt);
}

void Camera::TakeTemperature()
{
    const double before = bank.Float("DeviceTemperature"_reg);
    const double now = bank.Float("EmulatedTemperature"_reg);
    bank.SetFloat("DeviceTemperature"_reg, now);
    if (before < criticalTemperature && now >= criticalTemperature)
        SendEventLocked(eventNamed("OverTemperature"), TimeLocked(Clock::now()), 0);
}

}  // namespace Nivex::Emulation

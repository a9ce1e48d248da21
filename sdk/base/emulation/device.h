#pragma once

#include <array>
#include <memory>
#include <thread>

#include "genapi/nodemapfactory.h"
#include "genapi/portimpl.h"

#include "base/camerabackend.h"
#include "base/emulation/camera.h"
#include "base/emulation/framemaker.h"
#include "base/emulation/pacer.h"

namespace Nivex::Emulation {

/// Connects one of a camera's maps with its registers.
class RegisterPort : public GenApi::CPortImpl
{
public:
    RegisterPort(Camera& camera, EMap map) : camera_(camera), map_(map) {}

    GenApi::EAccessMode GetAccessMode() const override { return GenApi::RW; }
    void Read(void* buffer, std::int64_t address, std::int64_t length) override;
    void Write(const void* buffer, std::int64_t address, std::int64_t length) override;

private:
    Camera& camera_;
    const EMap map_;
};

/// An emulated camera in use. All state that threads share is in the camera's session, under the camera's mutex.
///
/// The event thread runs from Open to Close and ends early after it told of a removal; the stream thread runs from
/// StartStream to StopStream and ends early on a removal. Both call their listener without a lock.
class Device final : public INivexDevice
{
public:
    /// Null if the camera is unplugged or reserved.
    static std::unique_ptr<Device> Reserve(std::shared_ptr<Camera> camera);
    ~Device() override;

    const CDeviceInfo& GetDeviceInfo() const override { return info_; }
    void Open(IDeviceListener& listener) override;
    void Close() noexcept override;
    bool IsOpen() const override;
    bool IsRemoved() const override;

    GenApi::NodeMapPtr GetNodeMap() const override { return MapOf(EMap::Camera); }
    GenApi::NodeMapPtr GetTLNodeMap() const override { return MapOf(EMap::Transport); }
    GenApi::NodeMapPtr GetStreamGrabberNodeMap() const override { return MapOf(EMap::Stream); }
    GenApi::NodeMapPtr CreateChunkNodeMap() const override;
    ETrailerByteOrder GetTrailerByteOrder() const override { return ETrailerByteOrder::LittleEndian; }

    void FlushEvents() noexcept override;

    std::size_t GetPayloadSize() const override;
    std::uint64_t GetFirstBlockID() const override { return 1; }
    void StartStream(IStreamSink& sink) override;
    void StopStream() noexcept override;
    void QueueBuffer(const SStreamBuffer& buffer) override;

private:
    using Lock = std::unique_lock<std::mutex>;
    class Reservation;

    explicit Device(std::unique_ptr<Reservation> reservation);

    static constexpr std::size_t mapCount = 3;

    GenApi::NodeMapPtr MapOf(EMap map) const;
    void CheckClosed() const;
    void DeliverEvents(IDeviceListener& listener);
    void DeliverFrames(IStreamSink& sink);
    bool WaitForWork(Lock& lock);
    bool IsStreamUpLocked() const;
    bool WaitUntil(Lock& lock, Clock::time_point time, bool (Device::*goesOn)() const);
    bool IsAcquiringLocked() const;
    bool IsUnchangedLocked() const;
    void RefreshSettings(Lock& lock);
    bool WaitForBuffer(Lock& lock);
    std::optional<Clock::time_point> BeginExposure(Lock& lock);
    void TakeFrame(Lock& lock, IStreamSink& sink);
    bool IsTooLate(Clock::time_point end) const;
    bool IsLostOnDemand(std::uint64_t number) const;
    void Deliver(Lock& lock, IStreamSink& sink, const FrameFacts& facts);
    void UnplugOnDemandLocked();

    const std::unique_ptr<Reservation> reservation_;
    Camera& camera_;
    Session& session_;
    const CDeviceInfo info_;
    std::array<RegisterPort, mapCount> ports_;
    std::array<GenApi::NodeMapPtr, mapCount> maps_;  // guarded by the camera's mutex
    std::thread eventThread_;
    std::thread streamThread_;

    // The stream thread's own; pictures outlive a stream.
    FrameMaker maker_;
    Pacer pacer_;
    FrameSettings settings_;
    std::optional<std::uint64_t> revision_;
    std::uint64_t acquisition_ = 0;
};

}  // namespace Nivex::Emulation

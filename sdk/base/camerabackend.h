#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include "genapi/inodemap.h"

#include "base/deviceinfo.h"
#include "utility/pixeltype.h"

namespace Nivex {

/// How a payload is laid out.
enum class EPayloadType : std::uint32_t
{
    Undefined = 0xFFFFFFFF,
    Image = 0,          ///< One picture.
    RawData = 1,        ///< Bytes without a picture.
    File = 2,           ///< The content of a file.
    ChunkData = 3,      ///< One picture, chunks behind it.
    MultiComponent = 4  ///< Several data components, with or without chunks behind them.
};

/// What a data component holds. Values as in the GenICam standard feature naming convention; those from 0xFF00 are
/// custom. Other values may stand in the type.
enum class EComponentType : std::uint32_t
{
    Undefined = 0,
    Intensity = 1,
    Infrared = 2,
    Ultraviolet = 3,
    Range = 4,
    Reflectance = 5,
    Confidence = 6,
    ProcessedIntensity = 0xFF01  ///< An intensity picture that the camera has worked on.
};

/// Byte order of the chunk trailers that a transport uses. That of the chunks themselves is in the description.
enum class ETrailerByteOrder : std::uint8_t
{
    LittleEndian,  ///< USB3 Vision.
    BigEndian      ///< GigE Vision.
};

/// One picture within a frame's buffer.
struct SFrameComponent
{
    EComponentType type = EComponentType::Undefined;
    EPixelType pixelType = EPixelType::Undefined;
    std::uint32_t width = 0;   ///< In pixels.
    std::uint32_t height = 0;  ///< In rows.
    std::uint32_t offsetX = 0;
    std::uint32_t offsetY = 0;
    std::size_t paddingX = 0;  ///< Bytes behind each row.
    std::size_t offset = 0;    ///< First byte, from the start of the buffer.
    std::size_t size = 0;      ///< In bytes.
};

/// Memory that is lent to a device for one frame.
struct SStreamBuffer
{
    std::byte* data = nullptr;   ///< On a boundary of 64 bytes.
    std::size_t size = 0;        ///< In bytes.
    std::uintptr_t context = 0;  ///< The lender's own; comes back with the frame.
};

/// One frame as a device delivers it, good or failed. Plain data without allocation: it is made for every frame.
///
/// Frames may differ in size and form from one to the next (compressed pictures, a line camera's heights), and
/// need not fill their buffers. One that does not fit into its buffer is a failed one: `payloadSize` is what was
/// stored.
struct SFrame
{
    static constexpr std::size_t maxComponents = 8;

    SStreamBuffer buffer;
    bool isComplete = false;            ///< False for a failed frame; the buffer may then hold anything.
    std::uint32_t errorCode = 0;        ///< 0 for a good frame.
    const char* errorDescription = "";  ///< A literal that lives as long as the back end's library; may be empty.
    EPayloadType payloadType = EPayloadType::Undefined;
    EPixelType pixelType = EPixelType::Undefined;  ///< Of the picture, or of the first component.
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    std::uint32_t offsetX = 0;
    std::uint32_t offsetY = 0;
    std::size_t paddingX = 0;
    std::size_t imageSize = 0;    ///< Bytes of the picture, which begins the buffer.
    std::size_t payloadSize = 0;  ///< Bytes received, chunks and trailers included.
    /// The camera's frame number; 0 if it has none. It grows by 1 with each frame that the camera takes,
    /// delivered, failed or lost, and goes on from 65535 to 1 where the transport has 16 bits for it (GigE Vision
    /// without extended IDs). A transport that counts from 0 (USB3 Vision) must add 1.
    std::uint64_t blockId = 0;
    std::uint64_t timestamp = 0;     ///< The camera's clock, in ns; ticks of another length must be converted.
    bool hasChunks = false;          ///< True if chunks with trailers end at payloadSize.
    std::size_t componentCount = 0;  ///< 0 for a payload of one picture.
    std::array<SFrameComponent, maxComponents> components{};
};

/// Takes the frames of a stream.
class GENICAM_API IStreamSink
{
public:
    virtual ~IStreamSink() = default;
    /// Called on the device's stream thread, one call at a time, in the order of the frames' numbers. The buffer
    /// of the frame belongs to the sink again. Queues buffers within the call, on this and on other threads, so
    /// the device must not hold a lock that QueueBuffer takes. Must not stop the stream. Must not throw.
    virtual void OnFrame(const SFrame& frame) noexcept = 0;
};

/// Hears what happens to an open device.
class GENICAM_API IDeviceListener
{
public:
    virtual ~IDeviceListener() = default;
    /// A camera event; on the device's event thread, one call at a time, without a lock of the device. `eventId`
    /// is the number that the description gives as EventID. `data`, valid during the call, begins where the
    /// description's event ports have their address 0. May read and write the device's node maps, but not close
    /// the device. Must not throw.
    virtual void OnDeviceEvent(std::uint64_t eventId, const std::uint8_t* data, std::size_t size) noexcept = 0;
    /// `count` events of that number were not delivered, for want of room, since this was last said of it. On the
    /// event thread and under its rules; between the events that were delivered before and after them, as far as
    /// the device can tell. Must not throw.
    virtual void OnDeviceEventsLost(std::uint64_t eventId, std::uint64_t count) noexcept = 0;
    /// The device is gone for good: every register access fails from now on, without waiting for an answer, and no
    /// frame follows. Called at most once between Open and Close, without a lock of the device, on its event
    /// thread or any other thread of its own, but not on the stream thread: others may be waited for that stop the
    /// stream. A loss that is noticed there, or in a user's register access, is handed on. Must not close the
    /// device. Must not throw.
    virtual void OnDeviceRemoved() noexcept = 0;
};

/// A camera of a back end. The object reserves the camera: while it lives, no second one can be had for the same
/// camera. Open, Close and the stream operations come from one thread at a time; QueueBuffer, the node maps and
/// the queries may be used from any thread. After a removal all of them still work: queries answer, and Close and
/// StopStream do not wait for the camera.
///
/// Who uses the device writes TLParamsLocked and executes AcquisitionStart and AcquisitionStop, as far as the
/// camera's node map has them; none of it is the device's task.
class GENICAM_API INivexDevice
{
public:
    virtual ~INivexDevice() = default;  ///< Closes.

    virtual const CDeviceInfo& GetDeviceInfo() const = 0;

    /// Connects to the camera. Raises RuntimeException if the camera is gone or refuses. A closed device can be
    /// opened again; one that was removed can't, not even after the camera is back.
    virtual void Open(IDeviceListener& listener) = 0;
    /// Stops the stream, disconnects, and waits for running calls of the listener: it must be called without a
    /// lock that a listener needs, and not by a listener. Does nothing when closed. Never throws.
    virtual void Close() noexcept = 0;
    virtual bool IsOpen() const = 0;
    /// True from the moment that a removal was noticed.
    virtual bool IsRemoved() const = 0;

    /// @name Node maps: null while closed. Who keeps one beyond Close finds its ports disconnected.
    virtual GenApi::NodeMapPtr GetNodeMap() const = 0;
    virtual GenApi::NodeMapPtr GetTLNodeMap() const = 0;
    virtual GenApi::NodeMapPtr GetStreamGrabberNodeMap() const = 0;
    /// A new map of the camera's description (or of its chunk features) whose chunk ports are not attached and
    /// which does not reach the camera, so that it may outlive the device; null if the camera has no chunks. Only
    /// while open.
    virtual GenApi::NodeMapPtr CreateChunkNodeMap() const = 0;
    virtual ETrailerByteOrder GetTrailerByteOrder() const = 0;

    /// Returns when the events that the device had received at the call have been delivered, and what was lost of
    /// them told, or when the device is closed. Events that come meanwhile are not waited for. Any thread may call
    /// it, without a lock that a listener needs, but no listener. A device that delivers its events as it receives
    /// them has nothing to do.
    virtual void FlushEvents() noexcept {}

    /// @name Stream
    /// Bytes that a buffer must have for the largest frame of the present settings, and for what the transport
    /// adds or rounds up to. Raises what the camera raises.
    virtual std::size_t GetPayloadSize() const = 0;
    /// The block ID of the first frame after each StartStream, or 0 if the camera may begin with any. Where it is
    /// known, frames that are lost before the first one arrives are missed.
    virtual std::uint64_t GetFirstBlockID() const { return 0; }
    /// Gets ready to receive; the camera itself is started through its node map. Raises RuntimeException if the
    /// device is closed, removed or streaming.
    virtual void StartStream(IStreamSink& sink) = 0;
    /// Ends reception and waits for a running OnFrame: no lock that the sink needs may be held. Buffers still
    /// queued belong to the caller again, without a call. Does nothing without a stream.
    virtual void StopStream() noexcept = 0;
    /// Lends a buffer for a coming frame. Ignored without a stream. A frame for which no buffer is queued is lost,
    /// and its number is missing in the sequence. Buffers are filled in the order of queueing, but may come back
    /// in another one. Called under a lock that the sink's OnFrame takes. Must not throw.
    virtual void QueueBuffer(const SStreamBuffer& buffer) = 0;
};

/// A family of cameras: finds them and gives access. Any thread may call any operation.
class GENICAM_API ICameraBackend
{
public:
    virtual ~ICameraBackend() = default;
    /// The cameras that are connected, whether in use or not, ordered by full name. Class, full, friendly,
    /// vendor's and model's name and serial number must be there, the user-defined name and the address if the
    /// camera has them. A slow network may make it take a second. Raises RuntimeException if it can't look for
    /// them.
    virtual std::vector<CDeviceInfo> EnumerateDevices() = 0;
    /// True if the camera of that full name is connected and nobody has reserved it, as far as that can be told
    /// without opening it: another computer's hold may show in Open only.
    virtual bool IsDeviceAccessible(const CDeviceInfo& device) = 0;
    /// Reserves the camera of that full name; null if it is gone or reserved. The device may outlive the back end.
    virtual std::unique_ptr<INivexDevice> CreateDevice(const CDeviceInfo& device) = 0;
};

}  // namespace Nivex

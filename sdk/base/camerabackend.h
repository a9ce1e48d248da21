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

/// Byte order of the chunk trailers that a transport uses.
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
    std::byte* data = nullptr;
    std::size_t size = 0;        ///< In bytes.
    std::uintptr_t context = 0;  ///< The lender's own; comes back with the frame.
};

/// One frame as a device delivers it, good or failed. Plain data without allocation: it is made for every frame.
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
    std::size_t imageSize = 0;       ///< Bytes of the picture.
    std::size_t payloadSize = 0;     ///< Bytes received, chunks and trailers included.
    std::uint64_t blockId = 0;       ///< The camera's frame number, from 1 without gaps; 0 if it has none.
    std::uint64_t timestamp = 0;     ///< The camera's clock, in ns.
    bool hasChunks = false;          ///< True if chunks with trailers end at payloadSize.
    std::size_t componentCount = 0;  ///< 0 for a payload of one picture.
    std::array<SFrameComponent, maxComponents> components{};
};

/// Takes the frames of a stream.
class GENICAM_API IStreamSink
{
public:
    virtual ~IStreamSink() = default;
    /// Called on the device's stream thread, one call at a time. The buffer of the frame belongs to the sink
    /// again. May queue buffers, but not stop the stream. Must not throw.
    virtual void OnFrame(const SFrame& frame) noexcept = 0;
};

/// Hears what happens to an open device.
class GENICAM_API IDeviceListener
{
public:
    virtual ~IDeviceListener() = default;
    /// A camera event with its data, valid during the call; on the device's event thread, one call at a time. May
    /// read and write the device's node maps, but not close the device. Must not throw.
    virtual void OnDeviceEvent(std::uint64_t eventId, const std::uint8_t* data, std::size_t size) noexcept = 0;
    /// The device is gone for good: every register access fails from now on, and no frame follows. Called at most
    /// once between Open and Close, on the device's event thread. Must not close the device. Must not throw.
    virtual void OnDeviceRemoved() noexcept = 0;
};

/// A camera of a back end. The object reserves the camera: while it lives, no second one can be had for the same
/// camera. Open, Close and the stream operations come from one thread at a time; QueueBuffer, the node maps and
/// the queries may be used from any thread.
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
    /// A new map whose chunk ports are not attached; null if the camera has no chunks. Only while open.
    virtual GenApi::NodeMapPtr CreateChunkNodeMap() const = 0;
    virtual ETrailerByteOrder GetTrailerByteOrder() const = 0;

    /// @name Stream
    /// Bytes that a buffer must hold for a frame of the present settings.
    virtual std::size_t GetPayloadSize() const = 0;
    /// Gets ready to receive; the camera itself is started through its node map. Raises RuntimeException if the
    /// device is closed, removed or streaming.
    virtual void StartStream(IStreamSink& sink) = 0;
    /// Ends reception and waits for a running OnFrame: no lock that the sink needs may be held. Buffers still
    /// queued belong to the caller again, without a call. Does nothing without a stream.
    virtual void StopStream() noexcept = 0;
    /// Lends a buffer for a coming frame. Ignored without a stream. A frame for which no buffer is queued is lost,
    /// and its number is missing in the sequence. Buffers are filled in the order of queueing. Called under a lock
    /// that the sink's OnFrame takes. Must not throw.
    virtual void QueueBuffer(const SStreamBuffer& buffer) = 0;
};

/// A family of cameras: finds them and gives access. Any thread may call any operation.
class GENICAM_API ICameraBackend
{
public:
    virtual ~ICameraBackend() = default;
    /// The cameras that are connected, whether in use or not, ordered by full name. A slow network may make it
    /// take a second.
    virtual std::vector<CDeviceInfo> EnumerateDevices() = 0;
    /// True if the camera of that full name is connected and nobody has reserved it.
    virtual bool IsDeviceAccessible(const CDeviceInfo& device) = 0;
    /// Reserves the camera of that full name; null if it is gone or reserved. The device may outlive the back end.
    virtual std::unique_ptr<INivexDevice> CreateDevice(const CDeviceInfo& device) = 0;
};

}  // namespace Nivex

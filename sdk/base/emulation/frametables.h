#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "base/camerabackend.h"
#include "base/emulation/feature.h"
#include "base/emulation/scene.h"

// What a frame and the events around it are made of. The description, the payload size and the frames all walk
// these rows.
namespace Nivex::Emulation {

/// The entries of a selector over the rows of a table: index and name.
template <std::size_t count>
using Choices = std::array<Choice, count>;

template <typename Row, std::size_t count>
constexpr Choices<count> choicesOf(const Row (&rows)[count])
{
    Choices<count> choices{};
    for (std::size_t i = 0; i < count; ++i)
        choices[i] = {rows[i].name, static_cast<std::int64_t>(i), rows[i].toolTip};
    return choices;
}

struct ComponentRow
{
    const char* name;
    EComponentType type;
    EPixelType pixelType;  ///< Undefined: the feature PixelFormat tells it.
    ETestPattern pattern;  ///< What a component other than Intensity shows.
    const char* toolTip;
};

// Range and confidence come as grey values, so that every consumer of pictures can show them.
inline constexpr ComponentRow components[] = {
    {"Intensity", EComponentType::Intensity, EPixelType::Undefined, ETestPattern::Off, "The picture."},
    {"Range", EComponentType::Range, EPixelType::Mono16, ETestPattern::GreyDiagonalRampMoving,
     "Distances, as grey values of 16 bits: a slope that moves."},
    {"Confidence", EComponentType::Confidence, EPixelType::Mono8, ETestPattern::GreyVerticalRampMoving,
     "How far distances can be trusted, as grey values of 8 bits."},
    {"ProcessedIntensity", EComponentType::ProcessedIntensity, EPixelType::Mono8, ETestPattern::Blobs,
     "A picture that the camera has worked on, as grey values of 8 bits."},
};
inline constexpr auto componentChoices = choicesOf(components);
static_assert(std::size(components) <= SFrame::maxComponents);

/// Entries of the selector of gains.
inline constexpr Choice gainChoices[] = {{"All", 0}, {"Red", 1}, {"Green", 2}, {"Blue", 3}};
inline constexpr std::size_t gainCount = std::size(gainChoices);

enum class EChunkValue : std::uint8_t
{
    Timestamp,
    FrameID,
    ExposureTime,
    Gain,
    LineStatusAll,
    Width,
    Height,
    OffsetX,
    OffsetY,
    PixelFormat
};

struct ChunkRow
{
    const char* name;
    EChunkValue value;
    std::uint32_t id;
    EKind kind;
    std::size_t size;  ///< Bytes of its data; numbers of 8 bytes, little-endian.
    const char* unit;
    const char* toolTip;
};

/// The picture itself is the first chunk.
inline constexpr std::uint32_t pictureChunkId = 0x00000001;

inline constexpr ChunkRow chunks[] = {
    {"Timestamp", EChunkValue::Timestamp, 0xC0DE0001, EKind::Integer, 8, "ns", "When the exposure began."},
    {"FrameID", EChunkValue::FrameID, 0xC0DE0002, EKind::Integer, 8, "", "Number of the frame."},
    {"ExposureTime", EChunkValue::ExposureTime, 0xC0DE0003, EKind::Float, 8, "us", "Exposure time."},
    {"Gain", EChunkValue::Gain, 0xC0DE0004, EKind::Float, 8 * gainCount, "dB", "Gain."},
    {"LineStatusAll", EChunkValue::LineStatusAll, 0xC0DE0005, EKind::Integer, 8, "",
     "State of the lines, one bit each."},
    {"Width", EChunkValue::Width, 0xC0DE0006, EKind::Integer, 8, "px", "Width of the picture."},
    {"Height", EChunkValue::Height, 0xC0DE0007, EKind::Integer, 8, "px", "Height of the picture."},
    {"OffsetX", EChunkValue::OffsetX, 0xC0DE0008, EKind::Integer, 8, "px", "Left edge of the picture."},
    {"OffsetY", EChunkValue::OffsetY, 0xC0DE0009, EKind::Integer, 8, "px", "Upper edge of the picture."},
    {"PixelFormat", EChunkValue::PixelFormat, 0xC0DE000A, EKind::FormatChoice, 8, "", "Format of the pixels."},
};
inline constexpr auto chunkChoices = choicesOf(chunks);
/// Each chunk, the picture's too, ends with its id and its length.
inline constexpr std::size_t trailerSize = 8;

/// The lines count the frames.
constexpr std::uint64_t lineStatus(std::uint64_t frameNumber)
{
    return frameNumber % 16;
}

struct EventRow
{
    const char* name;
    std::uint64_t id;
    bool hasFrameId;  ///< Data: the time in ns, then the frame's number if so; 8 bytes each, little-endian.
    const char* toolTip;
};

inline constexpr EventRow events[] = {
    {"FrameStart", 0x9001, true, "The exposure of a frame began."},
    {"ExposureEnd", 0x9002, true, "The exposure of a frame ended."},
    {"FrameTriggerMissed", 0x9003, false, "A trigger came while too many were waiting."},
    {"OverTemperature", 0x9004, false, "The camera got too hot."},
    {"Test", 0x9FFE, false, "Asked for by the command TestEventGenerate."},
};
inline constexpr auto eventChoices = choicesOf(events);
inline constexpr std::uint64_t unknownEventId = 0x9FFF;

/// Index of the event of that name; does not compile for a name that is not there.
consteval std::size_t eventNamed(std::string_view name)
{
    std::size_t index = 0;
    while (name != events[index].name)
        ++index;
    return index;
}

/// A way for a frame to fail.
struct FrameFault
{
    const char* name;
    std::uint32_t code;
    const char* text;
    const char* toolTip;
};

inline constexpr FrameFault frameFaults[] = {
    {"PacketsLost", 0xE0000001, "The frame is incomplete: parts of it were lost on the way.",
     "The second half of the picture is missing."},
    {"SensorOverrun", 0xE0000002, "The sensor delivered faster than the camera could send.",
     "All of the picture is there, and not to be trusted."},
    {"WithoutText", 0xE0000003, "", "A failure without a text."},
};
inline constexpr auto frameFaultChoices = choicesOf(frameFaults);
/// Codes of failures that nobody asked for.
inline constexpr std::uint32_t bufferTooSmall = 0xE0000010;
inline constexpr std::uint32_t unreadablePicture = 0xE0000011;
inline constexpr std::uint32_t noPictures = 0xE0000012;

}  // namespace Nivex::Emulation

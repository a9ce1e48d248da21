#include "base/emulation/framemaker.h"

#include <cstring>
#include <mutex>
#include <set>

#include "gcbase/exception.h"

namespace Nivex::Emulation {
namespace {

/// Writes one after the other; the room must be there.
class Appender
{
public:
    Appender(std::byte* start, std::size_t offset) : start_(start), offset_(offset) {}

    template <typename Number>
    void Append(Number number)
    {
        std::memcpy(start_ + offset_, &number, sizeof(number));
        offset_ += sizeof(number);
    }

    void AppendTrailer(std::uint32_t id, std::size_t length)
    {
        Append(id);
        Append(static_cast<std::uint32_t>(length));
    }

    std::size_t Offset() const { return offset_; }

private:
    std::byte* start_;
    std::size_t offset_;
};

/// The frame's picture, as the chunks tell it.
const PictureSettings& pictureOf(const FrameSettings& settings)
{
    for (const auto& picture : settings.pictures)
        if (picture) return *picture;
    static const PictureSettings none;
    return none;
}

void appendValue(Appender& to, const ChunkRow& chunk, const PictureSettings& picture, const FrameFacts& facts)
{
    switch (chunk.value) {
        case EChunkValue::Timestamp:
            return to.Append(facts.timestamp);
        case EChunkValue::FrameID:
            return to.Append(facts.number);
        case EChunkValue::ExposureTime:
            return to.Append(picture.exposure);
        case EChunkValue::Gain:
            return to.Append(picture.gains);
        case EChunkValue::LineStatusAll:
            return to.Append(lineStatus(facts.number));
        case EChunkValue::Width:
            return to.Append(std::uint64_t{picture.width});
        case EChunkValue::Height:
            return to.Append(std::uint64_t{picture.height});
        case EChunkValue::OffsetX:
            return to.Append(std::uint64_t{picture.offsetX});
        case EChunkValue::OffsetY:
            return to.Append(std::uint64_t{picture.offsetY});
        case EChunkValue::PixelFormat:
            return to.Append(static_cast<std::uint64_t>(picture.pixelType));
    }
}

void fail(SFrame& frame, std::uint32_t code, const char* text)
{
    frame.isComplete = false;
    frame.hasChunks = false;
    frame.errorCode = code;
    frame.errorDescription = text;
}

/// The same text for good, as frames refer to theirs wherever they go. There are as many as files that can't be
/// read.
const char* lasting(const std::string& text)
{
    static std::mutex mutex;
    static std::set<std::string> texts;
    const std::lock_guard lock(mutex);
    return texts.insert(text).first->c_str();
}

void loseSecondHalf(SFrame& frame)
{
    const std::size_t half = frame.imageSize / 2;
    std::memset(frame.buffer.data + half, 0, frame.payloadSize - half);
    frame.payloadSize = half;
}

}  // namespace

void FrameMaker::ForgetFiles()
{
    for (PictureSource& source : sources_)
        source.ForgetFiles();
}

void FrameMaker::Prepare(const FrameSettings& settings)
{
    settings_ = settings;
    payloadSize_ = settings.PayloadSize();
    try {
        for (std::size_t i = 0; i < sources_.size(); ++i)
            if (settings.pictures[i]) sources_[i].Prepare(*settings.pictures[i]);
        fault_.clear();
    } catch (...) {
        // Each frame tells it: without pictures it is delivered as failed.
        fault_ = GenICam::describeCurrentException();
    }
}

SFrame FrameMaker::Make(const SStreamBuffer& buffer, const FrameFacts& facts)
{
    SFrame frame;
    frame.buffer = buffer;
    frame.isComplete = true;
    frame.blockId = facts.number;
    frame.timestamp = facts.timestamp;
    if (!fault_.empty()) {
        fail(frame, noPictures, lasting(fault_));
        return frame;
    }
    if (payloadSize_ > buffer.size) {
        fail(frame, bufferTooSmall, "The buffer is too small for the frame.");
        return frame;
    }
    const std::string unreadable = MakePictures(frame, facts);
    if (settings_.hasChunks) AppendChunks(frame, facts);
    if (!unreadable.empty()) {
        fail(frame, unreadablePicture, lasting(unreadable));
    } else if (settings_.failedEvery > 0 && facts.number % settings_.failedEvery == 0) {
        fail(frame, settings_.fault->code, settings_.fault->text);
        if (settings_.fault == &frameFaults[0]) loseSecondHalf(frame);
    }
    return frame;
}

std::string FrameMaker::MakePictures(SFrame& frame, const FrameFacts& facts)
{
    std::string unreadable;
    std::size_t count = 0;
    for (std::size_t i = 0; i < sources_.size(); ++i) {
        if (!settings_.pictures[i]) continue;
        const PictureSettings& picture = *settings_.pictures[i];
        const std::size_t size = sources_[i].PictureSize();
        unreadable += sources_[i].Fill(facts.number - 1, {frame.buffer.data + frame.payloadSize, size});
        frame.components[count++] = {.type = components[i].type,
                                     .pixelType = picture.pixelType,
                                     .width = picture.width,
                                     .height = picture.height,
                                     .offsetX = picture.offsetX,
                                     .offsetY = picture.offsetY,
                                     .paddingX = 0,
                                     .offset = frame.payloadSize,
                                     .size = size};
        frame.payloadSize += size;
    }
    const SFrameComponent& first = frame.components[0];
    frame.pixelType = first.pixelType;
    frame.width = first.width;
    frame.height = first.height;
    frame.offsetX = first.offsetX;
    frame.offsetY = first.offsetY;
    frame.imageSize = first.size;
    const bool isPlain = count == 1 && first.type == EComponentType::Intensity;
    frame.componentCount = isPlain ? 0 : count;
    frame.payloadType = !isPlain              ? EPayloadType::MultiComponent
                        : settings_.hasChunks ? EPayloadType::ChunkData
                                              : EPayloadType::Image;
    return unreadable;
}

void FrameMaker::AppendChunks(SFrame& frame, const FrameFacts& facts) const
{
    frame.hasChunks = true;
    Appender to(frame.buffer.data, frame.payloadSize);
    const bool damaged = settings_.damagedEvery > 0 && facts.number % settings_.damagedEvery == 0;
    const std::size_t excess = damaged ? frame.payloadSize + 1000000 : 0;
    to.AppendTrailer(pictureChunkId, frame.payloadSize + excess);
    const PictureSettings& picture = pictureOf(settings_);
    for (std::size_t i = 0; i < std::size(chunks); ++i) {
        if (!settings_.chunkEnabled[i]) continue;
        appendValue(to, chunks[i], picture, facts);
        to.AppendTrailer(chunks[i].id, chunks[i].size + excess);
    }
    frame.payloadSize = to.Offset();
}

}  // namespace Nivex::Emulation

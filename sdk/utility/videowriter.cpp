#include "utility/videowriter.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstring>
#include <filesystem>
#include <new>
#include <optional>

#include "gcbase/exception.h"

#include "utility/imageformatconverter.h"
#include "utility/niveximage.h"
#include "utility/video/fragmentedfile.h"
#include "utility/video/indexedcopy.h"
#include "utility/video/videoencoder.h"

namespace Nivex {
namespace {

using Clock = std::chrono::steady_clock;

constexpr std::int64_t largestSize = 16384;
constexpr double lowestRate = 0.01;
constexpr double highestRate = 1000.0;
constexpr double initialRate = 25.0;

std::uint32_t evenUp(std::uint32_t size)
{
    return size + size % 2;
}

/// Copies the picture into one of even size, whose surplus column and row repeat the last ones. The chroma planes
/// of both are alike.
void copyRepeatingEdges(const CNivexImage& from, CNivexImage& to)
{
    to.Reset(EPixelType::YUV420Planar, evenUp(from.GetWidth()), evenUp(from.GetHeight()));
    const auto source = *ComputeImageLayout(from.GetPixelType(), from.GetWidth(), from.GetHeight(), 0);
    const auto target = *ComputeImageLayout(to.GetPixelType(), to.GetWidth(), to.GetHeight(), 0);
    const auto* sourceBytes = static_cast<const std::uint8_t*>(from.GetBuffer());
    auto* targetBytes = static_cast<std::uint8_t*>(to.GetBuffer());
    for (std::size_t i = 0; i < source.planeCount; ++i) {
        const ImagePlane& in = source.planes[i];
        const ImagePlane& out = target.planes[i];
        for (std::uint32_t y = 0; y < out.rows; ++y) {
            const std::uint8_t* row = sourceBytes + in.offset + std::min(y, in.rows - 1) * in.stride;
            std::uint8_t* end = std::copy_n(row, in.rowBytes, targetBytes + out.offset + y * out.stride);
            std::fill_n(end, out.rowBytes - in.rowBytes, row[in.rowBytes - 1]);
        }
    }
}

}  // namespace

class CVideoWriter::Impl
{
public:
    Impl()
    {
        converter_.OutputPixelFormat.SetValue(EPixelType::YUV420Planar);
        converter_.OutputOrientation.SetValue(OutputOrientationEnums::TopDown);
    }

    bool isOpen() const { return file_.has_value(); }
    EVideoFailure lastFailure() const { return lastFailure_; }

    void open(const std::string& path, std::uint32_t width, std::uint32_t height, double playBackRate,
              double recordingRate)
    {
        if (isOpen()) {
            GENICAM_THROW(RuntimeException, "Could not open the video \"%s\": \"%s\" is still open.", path.c_str(),
                          path_.c_str());
        }
        Video::silenceLibraries();
        lastFailure_ = EVideoFailure::None;
        path_ = path;
        width_ = width;
        height_ = height;
        fragmentPictures_ = std::max(1, static_cast<int>(std::floor(std::min(playBackRate, recordingRate) / 2)));
        blame(EVideoFailure::Encoder,
              [&] { encoder_.emplace(path, evenUp(width), evenUp(height), playBackRate); });
        blame(EVideoFailure::File, [&] { file_.emplace(path, encoder_->context()); });
        noteFlush();
    }

    void add(const void* buffer, std::size_t bufferSize, EPixelType pixelType, std::uint32_t width,
             std::uint32_t height, std::size_t paddingX, EImageOrientation orientation)
    {
        lastFailure_ = EVideoFailure::None;
        blame(EVideoFailure::Encoder, [&] {
            checkPicture(width, height);
            if (!converted_.IsUnique()) converted_.Release();
            converter_.Convert(converted_, buffer, bufferSize, pixelType, width, height, paddingX, orientation);
            encoder_->encode(evenPicture(), [this](AVPacket& packet) { write(packet); });
        });
        ++unflushed_;
        blame(EVideoFailure::File, [&] { flushIfDue(); });
    }

    void close()
    {
        if (!isOpen()) return;
        lastFailure_ = EVideoFailure::None;
        const Ending ending{*this};
        blame(EVideoFailure::Encoder, [&] { encoder_->drain([this](AVPacket& packet) { write(packet); }); });
        blame(EVideoFailure::File, [&] { file_->finish(); });
        if (file_->packetCount() == 0) {
            blame(EVideoFailure::File, [&] { std::filesystem::remove(path_); });
            return;
        }
        blame(EVideoFailure::Index,
              [&] { Video::replaceByIndexedCopy(path_, file_->rate(), file_->packetCount()); });
    }

private:
    /// Lets go of file and encoder, however closing ends.
    struct Ending
    {
        Impl& impl;
        ~Ending()
        {
            impl.file_.reset();
            impl.encoder_.reset();
        }
    };

    /// Runs the operation; a failure is put down to `cause`, unless one inside it has been put down already.
    template <typename Operation>
    void blame(EVideoFailure cause, const Operation& operation)
    {
        try {
            operation();
        } catch (const GenICam::GenericException&) {
            noteFailure(cause);
            throw;
        } catch (const std::exception& error) {
            noteFailure(cause);
            GENICAM_THROW(RuntimeException, "Could not write the video \"%s\": %s.", path_.c_str(), error.what());
        }
    }

    void noteFailure(EVideoFailure cause)
    {
        if (lastFailure_ == EVideoFailure::None) lastFailure_ = cause;
    }

    void checkPicture(std::uint32_t width, std::uint32_t height) const
    {
        if (!isOpen()) GENICAM_THROW(RuntimeException, "Could not add a picture to a video: none is open.");
        if (width == width_ && height == height_) return;
        GENICAM_THROW(InvalidArgumentException,
                      "Could not add a picture of %u x %u pixels to the video \"%s\": its pictures have %u x %u.",
                      width, height, path_.c_str(), width_, height_);
    }

    const CNivexImage& evenPicture()
    {
        if (width_ % 2 == 0 && height_ % 2 == 0) return converted_;
        if (!even_.IsUnique()) even_.Release();
        copyRepeatingEdges(converted_, even_);
        return even_;
    }

    void write(AVPacket& packet)
    {
        blame(EVideoFailure::File, [&] { file_->write(packet); });
    }

    void flushIfDue()
    {
        constexpr std::chrono::seconds longest(1);
        if (unflushed_ < fragmentPictures_ && Clock::now() - lastFlush_ < longest) return;
        noteFlush();
        file_->flush();
    }

    void noteFlush()
    {
        unflushed_ = 0;
        lastFlush_ = Clock::now();
    }

    CImageFormatConverter converter_;
    CNivexImage converted_;  ///< Kept from picture to picture, so that its memory is used again.
    CNivexImage even_;       ///< The same, for pictures of odd size.
    std::optional<Video::VideoEncoder> encoder_;
    std::optional<Video::FragmentedFile> file_;  ///< Holds a value while a video is open.
    std::string path_;
    std::uint32_t width_ = 0;
    std::uint32_t height_ = 0;
    int fragmentPictures_ = 1;
    int unflushed_ = 0;  ///< Pictures in the present fragment.
    Clock::time_point lastFlush_;
    EVideoFailure lastFailure_ = EVideoFailure::None;
};

CVideoWriter::CVideoWriter()
    : Width({"Width", "Width", "Width of the pictures in pixels.", "Width of the pictures in pixels."}, 640, 1,
            largestSize),
      Height({"Height", "Height", "Height of the pictures in pixels.", "Height of the pictures in pixels."}, 480,
             1, largestSize),
      PlayBackFrameRate(
          {"PlayBackFrameRate", "Play Back Frame Rate", "Pictures per second when the video is played.",
           "Pictures per second when the video is played."},
          initialRate, lowestRate, highestRate),
      RecordingFrameRate(
          {"RecordingFrameRate", "Recording Frame Rate", "Pictures per second that are added to the video.",
           "Pictures per second that are added to the video. At most half a second of them can be "
           "lost if the process is killed."},
          initialRate, lowestRate, highestRate),
      impl_(std::make_unique<Impl>())
{}

CVideoWriter::~CVideoWriter()
{
    try {
        Close();
    } catch (const std::exception&) {
        // Whoever wants to know calls Close; what was written stays playable.
    }
}

void CVideoWriter::Open(const GenICam::gcstring& path)
{
    impl_->open(path.str(), static_cast<std::uint32_t>(Width.GetValue()),
                static_cast<std::uint32_t>(Height.GetValue()), PlayBackFrameRate.GetValue(),
                RecordingFrameRate.GetValue());
}

bool CVideoWriter::IsOpen() const
{
    return impl_->isOpen();
}

void CVideoWriter::Add(const void* buffer, std::size_t bufferSize, EPixelType pixelType, std::uint32_t width,
                       std::uint32_t height, std::size_t paddingX, EImageOrientation orientation)
{
    impl_->add(buffer, bufferSize, pixelType, width, height, paddingX, orientation);
}

void CVideoWriter::Add(const IImage& image)
{
    Add(image.GetBuffer(), image.GetImageSize(), image.GetPixelType(), image.GetWidth(), image.GetHeight(),
        image.GetPaddingX(), image.GetOrientation());
}

void CVideoWriter::Close()
{
    impl_->close();
}

EVideoFailure CVideoWriter::GetLastFailure() const
{
    return impl_->lastFailure();
}

}  // namespace Nivex

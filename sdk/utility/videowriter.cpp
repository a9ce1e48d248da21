#include "utility/videowriter.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <exception>
#include <filesystem>
#include <mutex>
#include <optional>
#include <utility>
#include <vector>

#include "gcbase/exception.h"

#include "utility/imageformatconverter.h"
#include "utility/niveximage.h"
#include "utility/video/fragmentedfile.h"
#include "utility/video/indexedcopy.h"
#include "utility/video/picturethread.h"
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
    std::uint64_t lateLossCount() const { return lateLosses_; }

    void setEncoders(std::vector<std::string> names) { encoders_ = std::move(names); }

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
        fragmentPictures_ = static_cast<std::uint64_t>(std::max(1.0, std::min(playBackRate, recordingRate) / 2));
        late_ = {};
        lateLosses_ = pictures_ = refused_ = flushed_ = 0;
        isEnded_ = false;
        blame(lastFailure_, EVideoFailure::Encoder,
              [&] { encoder_.emplace(path, evenUp(width), evenUp(height), playBackRate, encoders_); });
        blame(lastFailure_, EVideoFailure::File, [&] { file_.emplace(path, encoder_->context()); });
        lastFlush_ = Clock::now();
    }

    void add(const void* buffer, std::size_t bufferSize, EPixelType pixelType, std::uint32_t width,
             std::uint32_t height, std::size_t paddingX, EImageOrientation orientation)
    {
        lastFailure_ = EVideoFailure::None;
        blame(lastFailure_, EVideoFailure::Encoder, [&] { checkPicture(width, height); });
        raiseLate();
        blame(lastFailure_, EVideoFailure::Encoder, [&] {
            if (!thread_) thread_.emplace([this](const CNivexImage& picture) { encode(picture); });
            CNivexImage picture = thread_->takeSpare();
            CNivexImage& converted = isOdd() ? odd_ : picture;
            converter_.Convert(converted, buffer, bufferSize, pixelType, width, height, paddingX, orientation);
            if (isOdd()) copyRepeatingEdges(odd_, picture);
            thread_->push(std::move(picture));
        });
    }

    void close()
    {
        if (!isOpen()) return;
        lastFailure_ = EVideoFailure::None;
        const Ending ending{*this};
        thread_.reset();
        keepFailure([&](EVideoFailure& failure) {
            blame(failure, EVideoFailure::Encoder,
                  [&] { encoder_->drain([&](AVPacket& packet) { write(packet, failure); }); });
        });
        blame(lastFailure_, EVideoFailure::File, [&] { finishFile(); });
        if (file_->packetCount() == 0) {
            blame(lastFailure_, EVideoFailure::File, [&] { std::filesystem::remove(path_); });
        } else {
            blame(lastFailure_, EVideoFailure::Index,
                  [&] { Video::replaceByIndexedCopy(path_, file_->rate(), file_->packetCount()); });
        }
        raiseLate();
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

    /// A failure that is still to be raised.
    struct LateFailure
    {
        std::exception_ptr exception;
        EVideoFailure cause = EVideoFailure::None;
    };

    /// Runs the operation; a failure is put down to `cause`, unless one inside it has been put down already.
    template <typename Operation>
    void blame(EVideoFailure& noted, EVideoFailure cause, const Operation& operation)
    {
        const auto note = [&] {
            if (noted == EVideoFailure::None) noted = cause;
        };
        try {
            operation();
        } catch (const GenICam::GenericException&) {
            note();
            throw;
        } catch (const std::exception& error) {
            note();
            GENICAM_THROW(RuntimeException, "Could not write the video \"%s\": %s.", path_.c_str(), error.what());
        }
    }

    // On the caller's thread

    void checkPicture(std::uint32_t width, std::uint32_t height) const
    {
        if (!isOpen()) GENICAM_THROW(RuntimeException, "Could not add a picture to a video: none is open.");
        if (width == width_ && height == height_) return;
        GENICAM_THROW(InvalidArgumentException,
                      "Could not add a picture of %u x %u pixels to the video \"%s\": its pictures have %u x %u.",
                      width, height, path_.c_str(), width_, height_);
    }

    bool isOdd() const { return width_ % 2 != 0 || height_ % 2 != 0; }

    /// A failure of the file is raised again each time, since nothing else gets into it.
    void raiseLate()
    {
        LateFailure late;
        {
            const std::lock_guard lock(lateLock_);
            late = late_;
            if (late.cause != EVideoFailure::File) late_ = {};
        }
        if (!late.exception) return;
        lastFailure_ = late.cause;
        std::rethrow_exception(late.exception);
    }

    // On the encoding thread, and on the caller's after its end

    void encode(const CNivexImage& picture)
    {
        ++pictures_;
        keepFailure([&](EVideoFailure& failure) {
            blame(failure, EVideoFailure::Encoder,
                  [&] { encoder_->encode(picture, [&](AVPacket& packet) { write(packet, failure); }); });
            blame(failure, EVideoFailure::File, [&] { flushIfDue(); });
        });
    }

    /// Runs the operation; the first failure is kept for raiseLate.
    template <typename Operation>
    void keepFailure(const Operation& operation)
    {
        EVideoFailure failure = EVideoFailure::None;
        try {
            operation(failure);
        } catch (...) {
            if (failure == EVideoFailure::File) {
                isEnded_ = true;
            } else {
                ++refused_;
            }
            countLosses();
            const std::lock_guard lock(lateLock_);
            if (!late_.exception) late_ = {std::current_exception(), failure};
        }
    }

    void countLosses() { lateLosses_ = isEnded_ ? pictures_ - flushed_ : refused_; }

    void write(AVPacket& packet, EVideoFailure& failure)
    {
        blame(failure, EVideoFailure::File, [&] { file_->write(packet); });
    }

    void flushIfDue()
    {
        constexpr std::chrono::seconds longest(1);
        const bool isFull = file_->packetCount() - flushed_ >= fragmentPictures_;
        if (!isFull && Clock::now() - lastFlush_ < longest) return;
        lastFlush_ = Clock::now();
        requireInPlace("write");
        file_->flush();
        flushed_ = file_->packetCount();
    }

    void requireInPlace(const char* operation)
    {
        if (file_->isInPlace()) return;
        flushed_ = 0;
        Video::raise(operation, path_, "the file is no longer there under that name");
    }

    void finishFile()
    {
        isEnded_ = true;
        try {
            requireInPlace("finish");
            file_->finish();
            flushed_ = file_->packetCount();
        } catch (...) {
            countLosses();
            throw;
        }
        countLosses();
    }

    CImageFormatConverter converter_;
    CNivexImage odd_;  ///< A picture of odd size, kept so that its memory is used again.
    std::vector<std::string> encoders_;
    std::optional<Video::VideoEncoder> encoder_;
    std::optional<Video::FragmentedFile> file_;  ///< Holds a value while a video is open.
    std::string path_;
    std::uint32_t width_ = 0;
    std::uint32_t height_ = 0;
    EVideoFailure lastFailure_ = EVideoFailure::None;
    std::uint64_t fragmentPictures_ = 1;

    // Of the encoding thread, and of the caller's after its end:
    std::uint64_t pictures_ = 0;  ///< Given to the encoder.
    std::uint64_t refused_ = 0;   ///< Of these, by the encoder.
    std::uint64_t flushed_ = 0;   ///< Of these, in fragments that the system has.
    bool isEnded_ = false;        ///< Nothing else will get into the file.
    Clock::time_point lastFlush_;

    std::atomic<std::uint64_t> lateLosses_ = 0;
    std::mutex lateLock_;
    LateFailure late_;  ///< Guarded by lateLock_.
    std::optional<Video::PictureThread>
        thread_;  ///< Begun with the first picture; the last, so that it ends first.
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
           "Pictures per second that are added to the video. At most half a second of them and two more can be "
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

void CVideoWriter::SetEncoders(const std::vector<GenICam::gcstring>& names)
{
    impl_->setEncoders(std::vector<std::string>(names.begin(), names.end()));
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

std::uint64_t CVideoWriter::GetLateLossCount() const
{
    return impl_->lateLossCount();
}

}  // namespace Nivex

#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "utility/niveximage.h"
#include "utility/video/libraryfailure.h"

namespace Nivex::Video {

/// An H.264 encoder for full-range YUV420Planar pictures of one even size. It gives a packet for each picture as
/// soon as it can, libx264 at once. All refusals are RuntimeExceptions that name the path, which serves for
/// nothing else.
class VideoEncoder
{
public:
    using Sink = std::function<void(AVPacket&)>;  ///< Gets packets that count time in pictures.

    /// @param rate pictures per second, 0.01 to 1000
    /// @param names of the encoders to try, in this order; if empty, libx264 and then all others
    VideoEncoder(std::string path, std::uint32_t width, std::uint32_t height, double rate,
                 const std::vector<std::string>& names);
    ~VideoEncoder();
    VideoEncoder(const VideoEncoder&) = delete;
    VideoEncoder& operator=(const VideoEncoder&) = delete;

    const AVCodecContext& context() const { return *context_; }

    /// The encoder may hold on to a share of the picture's memory, so it must not be written while it is shared.
    void encode(const CNivexImage& picture, const Sink& sink);
    /// Gives all packets that are still inside. Nothing can be encoded afterwards.
    void drain(const Sink& sink);

private:
    void send(const AVFrame* frame, const Sink& sink);

    std::string path_;
    std::unique_ptr<AVCodecContext, Release> context_;
    std::unique_ptr<AVFrame, Release> frame_;
    std::unique_ptr<AVPacket, Release> packet_;
    std::int64_t count_ = 0;  ///< Of pictures so far.
};

}  // namespace Nivex::Video

#include "utility/video/videoencoder.h"

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavutil/buffer.h>
#include <libavutil/dict.h>
}

#include <algorithm>
#include <cmath>
#include <cstring>
#include <new>
#include <vector>

namespace Nivex::Video {
namespace {

using ContextPtr = std::unique_ptr<AVCodecContext, Release>;

constexpr const char* preferredEncoder = "libx264";

struct Option
{
    const char* name;
    const char* value;
};

// No picture may wait in the encoder, or a killed process would lose more than the last fragment.
constexpr Option preferredOptions[] = {{"preset", "veryfast"}, {"tune", "zerolatency"}, {"crf", "19"}};

bool fits(const AVCodec& codec)
{
    if (!av_codec_is_encoder(&codec) || codec.id != AV_CODEC_ID_H264 || !codec.pix_fmts) return false;
    for (const AVPixelFormat* format = codec.pix_fmts; *format != AV_PIX_FMT_NONE; ++format) {
        if (*format == AV_PIX_FMT_YUV420P) return true;
    }
    return false;
}

std::vector<const AVCodec*> candidates(const std::vector<std::string>& names)
{
    std::vector<const AVCodec*> found;
    const auto add = [&found](const AVCodec* codec) {
        if (codec && fits(*codec) && std::ranges::find(found, codec) == found.end()) found.push_back(codec);
    };
    for (const std::string& name : names)
        add(avcodec_find_encoder_by_name(name.c_str()));
    if (!names.empty()) return found;
    add(avcodec_find_encoder_by_name(preferredEncoder));
    void* position = nullptr;
    while (const AVCodec* codec = av_codec_iterate(&position))
        add(codec);
    return found;
}

std::string join(const std::vector<std::string>& names)
{
    std::string text;
    for (const std::string& name : names)
        text += (text.empty() ? "" : ", ") + name;
    return text;
}

ContextPtr configure(const AVCodec& codec, std::uint32_t width, std::uint32_t height, double rate)
{
    ContextPtr context(avcodec_alloc_context3(&codec));
    if (!context) throw std::bad_alloc();
    constexpr int largestTerm = 100000;  // 29.97 is 2997/100, 23.976 is 2997/125.
    context->framerate = av_d2q(rate, largestTerm);
    context->time_base = av_inv_q(context->framerate);
    context->width = static_cast<int>(width);
    context->height = static_cast<int>(height);
    context->pix_fmt = AV_PIX_FMT_YUV420P;
    context->color_range = AVCOL_RANGE_JPEG;
    context->colorspace = AVCOL_SPC_SMPTE170M;
    context->color_primaries = AVCOL_PRI_BT709;
    context->color_trc = AVCOL_TRC_IEC61966_2_1;
    context->chroma_sample_location = AVCHROMA_LOC_CENTER;
    context->gop_size = std::max(1, static_cast<int>(std::floor(rate)));
    context->max_b_frames = 0;
    context->thread_count = 0;
    context->flags |= AV_CODEC_FLAG_GLOBAL_HEADER;
    return context;
}

int open(AVCodecContext& context, const AVCodec& codec)
{
    AVDictionary* options = nullptr;
    if (std::strcmp(codec.name, preferredEncoder) == 0) {
        for (const Option& option : preferredOptions)
            av_dict_set(&options, option.name, option.value, 0);
    } else {
        constexpr double bitsPerPixel = 0.2;
        constexpr double largest = 2e9;
        context.bit_rate = static_cast<std::int64_t>(
            std::min(largest, bitsPerPixel * context.width * context.height * av_q2d(context.framerate)));
    }
    const int code = avcodec_open2(&context, &codec, &options);
    av_dict_free(&options);
    return code;
}

ContextPtr openFirst(const std::string& path, std::uint32_t width, std::uint32_t height, double rate,
                     const std::vector<std::string>& names)
{
    std::vector<std::string> refusals;
    for (const AVCodec* codec : candidates(names)) {
        forgetMessage();
        ContextPtr context = configure(*codec, width, height, rate);
        const int code = open(*context, *codec);
        if (code >= 0) return context;
        refusals.push_back(codec->name + (": " + describe(code)));
    }
    const std::string wanted = names.empty() ? preferredEncoder + std::string(" or any other") : join(names);
    raise("encode", path,
          refusals.empty() ? "no encoder for H.264 that takes yuv420p is installed; what was looked for: " + wanted
                           : "no encoder for H.264 can be used: " + join(refusals));
}

void releaseShare(void* share, std::uint8_t*)
{
    delete static_cast<CNivexImage*>(share);
}

void attach(AVFrame& frame, const CNivexImage& picture)
{
    auto share = std::make_unique<CNivexImage>(picture);
    auto* bytes = static_cast<std::uint8_t*>(share->GetBuffer());
    frame.buf[0] =
        av_buffer_create(bytes, share->GetImageSize(), releaseShare, share.get(), AV_BUFFER_FLAG_READONLY);
    if (!frame.buf[0]) throw std::bad_alloc();
    static_cast<void>(share.release());
    const auto layout = *ComputeImageLayout(picture.GetPixelType(), picture.GetWidth(), picture.GetHeight(), 0);
    for (std::size_t i = 0; i < layout.planeCount; ++i) {
        frame.data[i] = bytes + layout.planes[i].offset;
        frame.linesize[i] = static_cast<int>(layout.planes[i].stride);
    }
}

}  // namespace

VideoEncoder::VideoEncoder(std::string path, std::uint32_t width, std::uint32_t height, double rate,
                           const std::vector<std::string>& names)
    : path_(std::move(path)),
      context_(openFirst(path_, width, height, rate, names)),
      frame_(av_frame_alloc()),
      packet_(av_packet_alloc())
{
    if (!frame_ || !packet_) throw std::bad_alloc();
}

VideoEncoder::~VideoEncoder() = default;

void VideoEncoder::encode(const CNivexImage& picture, const Sink& sink)
{
    av_frame_unref(frame_.get());
    attach(*frame_, picture);
    frame_->format = context_->pix_fmt;
    frame_->width = context_->width;
    frame_->height = context_->height;
    frame_->color_range = context_->color_range;
    frame_->colorspace = context_->colorspace;
    frame_->pts = count_++;
    send(frame_.get(), sink);
    av_frame_unref(frame_.get());
}

void VideoEncoder::drain(const Sink& sink)
{
    send(nullptr, sink);
}

void VideoEncoder::send(const AVFrame* frame, const Sink& sink)
{
    forgetMessage();
    require(avcodec_send_frame(context_.get(), frame), "encode a picture of", path_);
    for (;;) {
        const int code = avcodec_receive_packet(context_.get(), packet_.get());
        if (code == AVERROR(EAGAIN) || code == AVERROR_EOF) return;
        require(code, "encode a picture of", path_);
        packet_->duration = 1;
        sink(*packet_);
        av_packet_unref(packet_.get());
    }
}

}  // namespace Nivex::Video

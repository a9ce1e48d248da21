#include "utility/video/libraryfailure.h"

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libavutil/log.h>
}

#include <array>
#include <mutex>

#include "gcbase/exception.h"

namespace Nivex::Video {
namespace {

std::array<char, 512>& lastMessage()
{
    static thread_local std::array<char, 512> message{};
    return message;
}

void keepErrors(void* source, int level, const char* format, va_list arguments)
{
    if (level > AV_LOG_ERROR) return;
    int isLineStart = 1;
    av_log_format_line(source, level, format, arguments, lastMessage().data(),
                       static_cast<int>(lastMessage().size()), &isLineStart);
}

}  // namespace

void silenceLibraries()
{
    static std::once_flag once;
    std::call_once(once, [] { av_log_set_callback(keepErrors); });
}

void forgetMessage() noexcept
{
    lastMessage()[0] = '\0';
}

std::string describe(int code)
{
    std::array<char, AV_ERROR_MAX_STRING_SIZE> text{};
    av_strerror(code, text.data(), text.size());
    std::string message(lastMessage().data());
    while (!message.empty() && (message.back() == '\n' || message.back() == '.'))
        message.pop_back();
    forgetMessage();
    return message.empty() ? text.data() : std::string(text.data()) + " (" + message + ")";
}

void raise(const char* operation, const std::string& path, const std::string& cause)
{
    GENICAM_THROW(RuntimeException, "Could not %s the video \"%s\": %s.", operation, path.c_str(), cause.c_str());
}

int require(int code, const char* operation, const std::string& path)
{
    if (code < 0) raise(operation, path, describe(code));
    return code;
}

void Release::operator()(AVCodecContext* context) const noexcept
{
    avcodec_free_context(&context);
}
void Release::operator()(AVFormatContext* format) const noexcept
{
    avformat_free_context(format);
}
void Release::operator()(AVFrame* frame) const noexcept
{
    av_frame_free(&frame);
}
void Release::operator()(AVPacket* packet) const noexcept
{
    av_packet_free(&packet);
}

}  // namespace Nivex::Video

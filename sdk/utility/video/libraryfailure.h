#pragma once

#include <string>

struct AVCodecContext;
struct AVFormatContext;
struct AVFrame;
struct AVPacket;

namespace Nivex::Video {

/// Takes the messages of the codec libraries away from stderr, for the whole process. Done once, at any call.
void silenceLibraries();

/// What is known of a code that a codec library gave: its text, and the last error message that the libraries had
/// for this thread since forgetMessage.
std::string describe(int code);
void forgetMessage() noexcept;

/// RuntimeException "Could not OPERATION the video "PATH": CAUSE.".
[[noreturn]] void raise(const char* operation, const std::string& path, const std::string& cause);

/// Gives the code back unless it tells of a failure; that is raised.
int require(int code, const char* operation, const std::string& path);

/// Frees each kind of library object in its own way.
struct Release
{
    void operator()(AVCodecContext* context) const noexcept;
    void operator()(AVFormatContext* format) const noexcept;  ///< Of an output; its file is the owner's.
    void operator()(AVFrame* frame) const noexcept;
    void operator()(AVPacket* packet) const noexcept;
};

}  // namespace Nivex::Video

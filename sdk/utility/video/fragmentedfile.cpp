#include "utility/video/fragmentedfile.h"

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libavutil/dict.h>
}

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <new>
#include <system_error>

#include "utility/files/picture.h"

namespace Nivex::Video {
namespace {

void checkPath(const std::string& path)
{
    if (path.empty()) raise("make", path, "the path is empty");
    if (path.find('\0') != std::string::npos) raise("make", path, "the path holds a zero byte");
    std::error_code unknown;
    const auto status = std::filesystem::status(path, unknown);
    if (std::filesystem::exists(status) && !std::filesystem::is_regular_file(status)) {
        raise("make", path, "something that is no regular file has the name");
    }
}

/// The file, made if there is none, with what it holds. A symbolic link of that name gives way to it: what the
/// link leads to is not what is recorded.
int openWhole(const std::string& path)
{
    checkPath(path);
    std::error_code failed;
    if (std::filesystem::is_symlink(path, failed)) std::filesystem::remove(path, failed);
    const int descriptor = ::open(path.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0666);
    if (descriptor < 0) raise("make", path, Files::systemText(errno));
    return descriptor;
}

}  // namespace

FragmentedFile::Claim::Claim(const std::string& path) : descriptor_(openWhole(path))
{
    // File systems without locks must not keep anybody from recording.
    if (::flock(descriptor_, LOCK_EX | LOCK_NB) == 0 || errno != EWOULDBLOCK) return;
    ::close(descriptor_);
    raise("make", path, "another video is being written to that file");
}

FragmentedFile::Claim::~Claim()
{
    ::close(descriptor_);
}

FragmentedFile::FragmentedFile(std::string path, const AVCodecContext& encoder)
    : path_(std::move(path)), claim_(path_), rate_{encoder.framerate.num, encoder.framerate.den}
{
    forgetMessage();
    AVFormatContext* format = nullptr;
    require(avformat_alloc_output_context2(&format, nullptr, "mp4", nullptr), "make", path_);
    format_.reset(format);
    try {
        require(avio_open(&format_->pb, ("file:" + path_).c_str(), AVIO_FLAG_WRITE), "make", path_);
        begin(encoder);
    } catch (...) {
        avio_closep(&format_->pb);
        std::error_code ignored;  // The first failure is the one to tell.
        std::filesystem::remove(path_, ignored);
        throw;
    }
}

FragmentedFile::~FragmentedFile()
{
    if (format_) avio_closep(&format_->pb);
}

void FragmentedFile::begin(const AVCodecContext& encoder)
{
    AVStream* stream = avformat_new_stream(format_.get(), nullptr);
    if (!stream) throw std::bad_alloc();
    require(avcodec_parameters_from_context(stream->codecpar, &encoder), "make", path_);
    stream->time_base = encoder.time_base;
    stream->avg_frame_rate = encoder.framerate;
    AVDictionary* options = nullptr;
    av_dict_set(&options, "movflags", "frag_custom+empty_moov+default_base_moof", 0);
    const int code = avformat_write_header(format_.get(), &options);
    av_dict_free(&options);
    require(code, "make", path_);
    avio_flush(format_->pb);
    checkFile(0, "make");
    wholeBytes_ = avio_tell(format_->pb);
}

void FragmentedFile::write(AVPacket& packet)
{
    AVStream& stream = *format_->streams[0];
    packet.stream_index = 0;
    av_packet_rescale_ts(&packet, AVRational{rate_.seconds, rate_.pictures}, stream.time_base);
    forgetMessage();
    checkFile(av_write_frame(format_.get(), &packet), "write");
    ++packetCount_;
}

void FragmentedFile::flush()
{
    const int code = av_write_frame(format_.get(), nullptr);
    avio_flush(format_->pb);
    checkFile(code, "write");
    wholeBytes_ = avio_tell(format_->pb);
    hasWholeFragment_ = true;
}

void FragmentedFile::finish()
{
    forgetMessage();
    int code = av_write_trailer(format_.get());
    avio_flush(format_->pb);
    if (format_->pb->error < 0) code = format_->pb->error;
    const int closed = avio_closep(&format_->pb);
    if (code < 0 || closed < 0) dropTornFragment();
    require(code < 0 ? code : closed, "finish", path_);
}

void FragmentedFile::dropTornFragment() const
{
    if (hasWholeFragment_) {
        // If that fails, too, players pass over the rest.
        static_cast<void>(::ftruncate(claim_.descriptor(), wholeBytes_) == 0);
    } else if (isInPlace()) {
        std::error_code failed;
        std::filesystem::remove(path_, failed);
    }
}

bool FragmentedFile::isInPlace() const
{
    struct stat ours = {};
    struct stat named = {};
    return ::fstat(claim_.descriptor(), &ours) == 0 && ::stat(path_.c_str(), &named) == 0 &&
           ours.st_dev == named.st_dev && ours.st_ino == named.st_ino;
}

void FragmentedFile::checkFile(int code, const char* operation)
{
    require(format_->pb->error < 0 ? format_->pb->error : code, operation, path_);
}

}  // namespace Nivex::Video

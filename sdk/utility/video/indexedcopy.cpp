#include "utility/video/indexedcopy.h"

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libavutil/mem.h>
}

#include <cstdio>
#include <memory>
#include <new>

#include "gcbase/exception.h"

#include "utility/files/outputfile.h"
#include "utility/files/picture.h"
#include "utility/video/libraryfailure.h"

namespace Nivex::Video {
namespace {

constexpr const char* operation = "index";

struct CloseInput
{
    void operator()(AVFormatContext* format) const noexcept { avformat_close_input(&format); }
};
struct FreeIo
{
    void operator()(AVIOContext* io) const noexcept
    {
        av_freep(&io->buffer);
        avio_context_free(&io);
    }
};

int writeBytes(void* file, std::uint8_t* bytes, int count)
{
    const bool isWritten = static_cast<Files::OutputFile*>(file)->write(bytes, static_cast<std::size_t>(count));
    return isWritten ? count : AVERROR(EIO);
}

std::int64_t seekTo(void* file, std::int64_t offset, int whence)
{
    auto& output = *static_cast<Files::OutputFile*>(file);
    if (whence == AVSEEK_SIZE) return static_cast<std::int64_t>(output.size());
    if (whence != SEEK_SET || !output.seek(static_cast<std::uint64_t>(offset))) return AVERROR(EIO);
    return offset;
}

std::unique_ptr<AVIOContext, FreeIo> makeIo(Files::OutputFile& file)
{
    constexpr int bufferBytes = 64 << 10;
    auto* buffer = static_cast<std::uint8_t*>(av_malloc(bufferBytes));
    if (!buffer) throw std::bad_alloc();
    AVIOContext* io = avio_alloc_context(buffer, bufferBytes, 1, &file, nullptr, writeBytes, seekTo);
    if (io) return std::unique_ptr<AVIOContext, FreeIo>(io);
    av_free(buffer);
    throw std::bad_alloc();
}

/// Copies all packets and gives their number.
std::uint64_t copyPackets(AVFormatContext& input, AVFormatContext& output, PictureRate rate,
                          const std::string& path)
{
    const std::unique_ptr<AVPacket, Release> packet(av_packet_alloc());
    if (!packet) throw std::bad_alloc();
    for (std::uint64_t count = 0;; ++count) {
        const int code = av_read_frame(&input, packet.get());
        if (code == AVERROR_EOF) return count;
        require(code, operation, path);
        av_packet_rescale_ts(packet.get(), input.streams[0]->time_base, output.streams[0]->time_base);
        // The last picture of a fragment comes without its duration.
        packet->duration = av_rescale_q(1, {rate.seconds, rate.pictures}, output.streams[0]->time_base);
        packet->pos = -1;
        require(av_write_frame(&output, packet.get()), operation, path);
        av_packet_unref(packet.get());
    }
}

void copy(const std::string& path, PictureRate rate, std::uint64_t packetCount, Files::OutputFile& file)
{
    AVFormatContext* opened = nullptr;
    require(avformat_open_input(&opened, ("file:" + path).c_str(), av_find_input_format("mp4"), nullptr),
            operation, path);
    const std::unique_ptr<AVFormatContext, CloseInput> input(opened);
    if (input->nb_streams != 1) raise(operation, path, "it has not one stream");

    const std::unique_ptr<AVIOContext, FreeIo> io = makeIo(file);
    AVFormatContext* made = nullptr;
    require(avformat_alloc_output_context2(&made, nullptr, "mp4", nullptr), operation, path);
    const std::unique_ptr<AVFormatContext, Release> output(made);
    output->pb = io.get();
    AVStream* stream = avformat_new_stream(output.get(), nullptr);
    if (!stream) throw std::bad_alloc();
    require(avcodec_parameters_copy(stream->codecpar, input->streams[0]->codecpar), operation, path);
    stream->time_base = input->streams[0]->time_base;
    require(avformat_write_header(output.get(), nullptr), operation, path);
    const std::uint64_t copied = copyPackets(*input, *output, rate, path);
    require(av_write_trailer(output.get()), operation, path);
    avio_flush(io.get());
    require(io->error, operation, path);
    if (copied != packetCount) {
        raise(operation, path,
              std::to_string(copied) + " of its " + std::to_string(packetCount) + " pictures can be read");
    }
}

}  // namespace

void replaceByIndexedCopy(const std::string& path, PictureRate rate, std::uint64_t packetCount)
{
    forgetMessage();
    try {
        Files::OutputFile file(path);
        try {
            copy(path, rate, packetCount, file);
        } catch (const GenICam::GenericException&) {
            file.check();  // The system's words for the cause, if it was the new file.
            throw;
        }
        file.commit();
    } catch (const Files::FormatError& error) {
        raise(operation, path, error.what());
    }
}

}  // namespace Nivex::Video

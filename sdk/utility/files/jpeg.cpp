// The library reports errors by calling back and expects not to be returned to, so that we leave its frames with
// longjmp. All calls into it that can fail stand in steps handed to `guarded`; no object with a destructor may
// live between there and the library, and exceptions are raised only outside.

// The library's header wants the C types first.
#include <cstdio>
//
#include <jerror.h>
#include <jpeglib.h>

#include <algorithm>
#include <array>
#include <csetjmp>

#include "utility/files/codecs.h"
#include "utility/imagepersistence.h"

namespace Nivex::Files {

namespace {

struct ErrorState
{
    jpeg_error_mgr manager;
    std::jmp_buf escape;
    std::array<char, JMSG_LENGTH_MAX> text;
};

ErrorState& errorState(j_common_ptr info)
{
    return *reinterpret_cast<ErrorState*>(info->err);
}

[[noreturn]] void escapeWithError(j_common_ptr info)
{
    info->err->format_message(info, errorState(info).text.data());
    std::longjmp(errorState(info).escape, 1);
}

/// Warnings about what hurts no pixel: an unknown colour transform of a marker's, filling before the end marker,
/// as some cameras write it, and a newer JFIF revision. All others mean that pixels are lost.
bool isHarmless(const jpeg_error_mgr& manager)
{
    constexpr int endMarker = 0xD9;
    return manager.msg_code == JWRN_ADOBE_XFORM || manager.msg_code == JWRN_JFIF_MAJOR ||
           manager.msg_code == JWRN_BOGUS_ICC ||
           (manager.msg_code == JWRN_EXTRANEOUS_DATA && manager.msg_parm.i[1] == endMarker);
}

void escapeOnDamage(j_common_ptr info, int level)
{
    const bool isWarning = level < 0;
    if (isWarning && !isHarmless(*info->err)) escapeWithError(info);
}

void printNothing(j_common_ptr) {}

void install(ErrorState& errors)
{
    jpeg_std_error(&errors.manager);
    errors.manager.error_exit = escapeWithError;
    errors.manager.emit_message = escapeOnDamage;
    errors.manager.output_message = printNothing;
    errors.text[0] = '\0';
}

/// Runs calls into the library. False, with the text in `errors`, if one of them failed.
template <typename Steps>
bool guarded(ErrorState& errors, Steps steps)
{
    if (setjmp(errors.escape) != 0) return false;
    steps();
    return true;
}

/// Feeds the decoder from a ByteSource, through a buffer.
struct SourceManager
{
    jpeg_source_mgr manager;
    ByteSource* source;
    std::uint64_t offset;
    std::array<JOCTET, std::size_t{64} << 10> buffer;
};

SourceManager& sourceManager(j_decompress_ptr info)
{
    return *reinterpret_cast<SourceManager*>(info->src);
}

void startSource(j_decompress_ptr) {}

boolean fillSource(j_decompress_ptr info)
{
    SourceManager& from = sourceManager(info);
    const std::size_t got = from.source->read(from.offset, from.buffer.data(), from.buffer.size());
    if (got == 0) ERREXIT(info, JERR_INPUT_EOF);
    from.offset += got;
    from.manager.next_input_byte = from.buffer.data();
    from.manager.bytes_in_buffer = got;
    return TRUE;
}

void skipSource(j_decompress_ptr info, long count)
{
    SourceManager& from = sourceManager(info);
    if (count <= 0) return;
    const auto bytes = static_cast<std::size_t>(count);
    const std::size_t buffered = std::min(bytes, from.manager.bytes_in_buffer);
    from.manager.next_input_byte += buffered;
    from.manager.bytes_in_buffer -= buffered;
    from.offset += bytes - buffered;
}

void endSource(j_decompress_ptr) {}

/// Each scan of a progressive picture goes over all of it, so that a small file could keep us busy for hours.
void limitScans(j_common_ptr info)
{
    constexpr int most = 100;
    const auto* decoder = reinterpret_cast<j_decompress_ptr>(info);
    if (decoder->input_scan_number <= most) return;
    std::snprintf(errorState(info).text.data(), JMSG_LENGTH_MAX, "it has more than %d scans", most);
    std::longjmp(errorState(info).escape, 1);
}

class Decoder
{
public:
    explicit Decoder(ByteSource& source)
    {
        install(errors_);
        info_.err = &errors_.manager;
        run([this] { jpeg_create_decompress(&info_); });
        progress_.progress_monitor = limitScans;
        info_.progress = &progress_;
        from_.source = &source;
        from_.manager.init_source = startSource;
        from_.manager.fill_input_buffer = fillSource;
        from_.manager.skip_input_data = skipSource;
        from_.manager.resync_to_restart = jpeg_resync_to_restart;
        from_.manager.term_source = endSource;
        info_.src = &from_.manager;
    }
    ~Decoder() { jpeg_destroy_decompress(&info_); }
    Decoder(const Decoder&) = delete;
    Decoder& operator=(const Decoder&) = delete;

    void decode(IReusableImage& image)
    {
        run([this] { jpeg_read_header(&info_, TRUE); });
        const bool isGrey = info_.jpeg_color_space == JCS_GRAYSCALE;
        if (!isGrey && info_.jpeg_color_space != JCS_YCbCr && info_.jpeg_color_space != JCS_RGB) {
            fail("its colour space, of %d components, is not supported; grey, YCbCr and RGB are",
                 info_.num_components);
        }
        if (info_.arith_code) fail("arithmetic coding is not supported");
        info_.out_color_space = isGrey ? JCS_GRAYSCALE : JCS_RGB;
        const EPixelType pixelType = isGrey ? EPixelType::Mono8 : EPixelType::RGB8Packed;
        checkLoadLimits(pixelType, info_.image_width, info_.image_height);
        checkCoefficients();
        std::byte* pixels = prepareImage(image, pixelType, info_.image_width, info_.image_height);
        const std::size_t stride = image.GetImageSize() / info_.image_height;
        run([this, pixels, stride] { readRows(reinterpret_cast<JSAMPLE*>(pixels), stride); });
    }

private:
    template <typename Steps>
    void run(Steps steps)
    {
        if (!guarded(errors_, steps)) fail("%s", errors_.text.data());
    }

    /// Pictures of several scans are kept whole in another form while they are decoded.
    void checkCoefficients()
    {
        if (!jpeg_has_multiple_scans(&info_)) return;
        std::uint64_t bytes = 0;
        for (int c = 0; c < info_.num_components; ++c) {
            bytes += std::uint64_t{info_.comp_info[c].width_in_blocks} * info_.comp_info[c].height_in_blocks *
                     sizeof(JBLOCK);
        }
        if (bytes > CImagePersistence::maxLoadBytes) {
            fail("its several scans of %u x %u pixels would take %llu bytes; at most %zu are allowed",
                 info_.image_width, info_.image_height, static_cast<unsigned long long>(bytes),
                 CImagePersistence::maxLoadBytes);
        }
    }

    void readRows(JSAMPLE* pixels, std::size_t stride)
    {
        jpeg_start_decompress(&info_);
        constexpr JDIMENSION rowsAtOnce = 16;
        while (info_.output_scanline < info_.output_height) {
            std::array<JSAMPROW, rowsAtOnce> rows;
            const JDIMENSION count = std::min(rowsAtOnce, info_.output_height - info_.output_scanline);
            for (JDIMENSION i = 0; i < count; ++i) {
                rows[i] = pixels + stride * (info_.output_scanline + i);
            }
            jpeg_read_scanlines(&info_, rows.data(), count);
        }
        jpeg_finish_decompress(&info_);
    }

    ErrorState errors_{};
    jpeg_decompress_struct info_{};
    jpeg_progress_mgr progress_{};
    SourceManager from_{};
};

/// Hands what the encoder makes to an OutputFile, through a buffer.
struct DestinationManager
{
    jpeg_destination_mgr manager;
    OutputFile* file;
    std::array<JOCTET, std::size_t{64} << 10> buffer;
};

DestinationManager& destinationManager(j_compress_ptr info)
{
    return *reinterpret_cast<DestinationManager*>(info->dest);
}

void startDestination(j_compress_ptr info)
{
    DestinationManager& to = destinationManager(info);
    to.manager.next_output_byte = to.buffer.data();
    to.manager.free_in_buffer = to.buffer.size();
}

boolean emptyDestination(j_compress_ptr info)
{
    DestinationManager& to = destinationManager(info);
    if (!to.file->write(to.buffer.data(), to.buffer.size())) ERREXIT(info, JERR_FILE_WRITE);
    startDestination(info);
    return TRUE;
}

void endDestination(j_compress_ptr info)
{
    DestinationManager& to = destinationManager(info);
    to.file->write(to.buffer.data(), to.buffer.size() - to.manager.free_in_buffer);
}

class Encoder
{
public:
    explicit Encoder(OutputFile& file)
    {
        install(errors_);
        info_.err = &errors_.manager;
        run([this] { jpeg_create_compress(&info_); });
        to_.file = &file;
        to_.manager.init_destination = startDestination;
        to_.manager.empty_output_buffer = emptyDestination;
        to_.manager.term_destination = endDestination;
        info_.dest = &to_.manager;
    }
    ~Encoder() { jpeg_destroy_compress(&info_); }
    Encoder(const Encoder&) = delete;
    Encoder& operator=(const Encoder&) = delete;

    void encode(const PictureView& picture, int quality)
    {
        const bool isGrey = picture.pixelType == EPixelType::Mono8;
        info_.image_width = picture.width;
        info_.image_height = picture.height;
        info_.input_components = isGrey ? 1 : 3;
        info_.in_color_space = isGrey                                        ? JCS_GRAYSCALE
                               : picture.pixelType == EPixelType::RGB8Packed ? JCS_EXT_RGB
                                                                             : JCS_EXT_BGR;
        run([this, quality] {
            jpeg_set_defaults(&info_);
            jpeg_set_quality(&info_, quality, TRUE);
        });
        run([this, &picture] { writeRows(picture); });
    }

private:
    template <typename Steps>
    void run(Steps steps)
    {
        if (guarded(errors_, steps)) return;
        to_.file->check();
        fail("%s", errors_.text.data());
    }

    void writeRows(const PictureView& picture)
    {
        jpeg_start_compress(&info_, TRUE);
        constexpr JDIMENSION rowsAtOnce = 16;
        while (info_.next_scanline < info_.image_height) {
            std::array<JSAMPROW, rowsAtOnce> rows;
            const JDIMENSION count = std::min(rowsAtOnce, info_.image_height - info_.next_scanline);
            for (JDIMENSION i = 0; i < count; ++i) {
                // The library reads these rows only, though its type says otherwise.
                auto* row = const_cast<std::byte*>(picture.row(info_.next_scanline + i));
                rows[i] = reinterpret_cast<JSAMPROW>(row);
            }
            jpeg_write_scanlines(&info_, rows.data(), count);
        }
        jpeg_finish_compress(&info_);
    }

    ErrorState errors_{};
    jpeg_compress_struct info_{};
    DestinationManager to_{};
};

}  // namespace

void readJpeg(ByteSource& source, IReusableImage& image)
{
    Decoder(source).decode(image);
}

void writeJpeg(const PictureView& picture, int quality, OutputFile& file)
{
    constexpr int defaultQuality = 90;
    Encoder(file).encode(picture, quality == 0 ? defaultQuality : quality);
}

}  // namespace Nivex::Files

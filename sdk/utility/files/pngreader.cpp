#include <spng.h>

#include <cstring>
#include <memory>

#include "utility/files/codecs.h"
#include "utility/imagepersistence.h"

namespace Nivex::Files {

namespace {

struct ContextDeleter
{
    void operator()(spng_ctx* context) const { spng_ctx_free(context); }
};

void check(int error)
{
    if (error != SPNG_OK) fail("%s", spng_strerror(error));
}

struct Stream
{
    ByteSource& source;
    std::uint64_t offset = 0;
};

int readStream(spng_ctx*, void* user, void* destination, std::size_t count)
{
    auto& stream = *static_cast<Stream*>(user);
    if (stream.source.read(stream.offset, destination, count) != count) return SPNG_IO_EOF;
    stream.offset += count;
    return SPNG_OK;
}

/// How the library is asked to decode a kind of file, and what of its pixels is kept.
struct Plan
{
    spng_format format;
    int flags;
    std::size_t decodedPixelBytes;
    EPixelType pixelType;
};

Plan choosePlan(spng_ctx* context, const spng_ihdr& header)
{
    spng_trns transparency = {};
    const int found = spng_get_trns(context, &transparency);
    if (found != SPNG_ECHUNKAVAIL) check(found);
    const bool hasTransparency = found == SPNG_OK;
    const bool isDeep = header.bit_depth == 16;
    switch (header.color_type) {
        case SPNG_COLOR_TYPE_GRAYSCALE:
            if (isDeep) return {SPNG_FMT_PNG, 0, 2, EPixelType::Mono16};
            return {SPNG_FMT_G8, 0, 1, EPixelType::Mono8};
        case SPNG_COLOR_TYPE_GRAYSCALE_ALPHA:
            if (isDeep) return {SPNG_FMT_PNG, 0, 4, EPixelType::Mono16};
            return {SPNG_FMT_PNG, 0, 2, EPixelType::Mono8};
        case SPNG_COLOR_TYPE_TRUECOLOR:
            if (isDeep) return {SPNG_FMT_PNG, 0, 6, EPixelType::RGB16Packed};
            break;
        case SPNG_COLOR_TYPE_TRUECOLOR_ALPHA:
            if (isDeep) return {SPNG_FMT_PNG, 0, 8, EPixelType::RGB16Packed};
            return {SPNG_FMT_RGBA8, 0, 4, EPixelType::RGBA8Packed};
        default:
            break;
    }
    if (hasTransparency) return {SPNG_FMT_RGBA8, SPNG_DECODE_TRNS, 4, EPixelType::RGBA8Packed};
    return {SPNG_FMT_RGB8, 0, 3, EPixelType::RGB8Packed};
}

/// Refuses sizes that no compression can have brought down to that of the file.
void checkPlausible(const ByteSource& source, const spng_ihdr& header)
{
    constexpr std::uint64_t bestRatio = 1032;  // Of deflate.
    const std::uint64_t rowBytes = (std::uint64_t{header.width} * header.bit_depth + 7) / 8;
    if (rowBytes * header.height / bestRatio > source.size()) {
        fail("its %llu bytes cannot hold %u x %u pixels", static_cast<unsigned long long>(source.size()),
             header.width, header.height);
    }
}

void keepLeadingBytes(const std::byte* from, std::size_t fromPixelBytes, std::byte* to, std::size_t toPixelBytes,
                      std::size_t pixels)
{
    for (std::size_t i = 0; i < pixels; ++i) {
        std::memcpy(to + i * toPixelBytes, from + i * fromPixelBytes, toPixelBytes);
    }
}

}  // namespace

void readPng(ByteSource& source, IReusableImage& image)
{
    const std::unique_ptr<spng_ctx, ContextDeleter> context(spng_ctx_new(0));
    if (!context) throw std::bad_alloc();
    // Texts and colour profiles may be packed as tightly as pixels, and nobody asked for them.
    constexpr std::size_t largestChunk = std::size_t{16} << 20;
    check(spng_set_chunk_limits(context.get(), largestChunk, 4 * largestChunk));
    Stream stream{source};
    check(spng_set_png_stream(context.get(), readStream, &stream));
    spng_ihdr header = {};
    check(spng_get_ihdr(context.get(), &header));
    const Plan plan = choosePlan(context.get(), header);
    checkLoadLimits(plan.pixelType, header.width, header.height);
    checkPlausible(source, header);

    std::byte* pixels = prepareImage(image, plan.pixelType, header.width, header.height);
    const std::size_t pixelBytes = BitsPerPixel(plan.pixelType) / 8;
    const std::size_t pixelCount = std::size_t{header.width} * header.height;
    if (pixelBytes == plan.decodedPixelBytes) {
        check(spng_decode_image(context.get(), pixels, image.GetImageSize(), plan.format, plan.flags));
        return;
    }
    const std::size_t decodedBytes = pixelCount * plan.decodedPixelBytes;
    const auto decoded = std::make_unique_for_overwrite<std::byte[]>(decodedBytes);
    check(spng_decode_image(context.get(), decoded.get(), decodedBytes, plan.format, plan.flags));
    keepLeadingBytes(decoded.get(), plan.decodedPixelBytes, pixels, pixelBytes, pixelCount);
}

}  // namespace Nivex::Files

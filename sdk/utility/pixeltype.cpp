#include "utility/pixeltype.h"

#include <string_view>

#include "utility/pixelformats.h"

namespace Nivex {
namespace {

// One plane: its bits per column group, and how many columns and rows of the picture a group covers.
struct PlaneShape
{
    std::uint32_t bits;
    std::uint32_t columns;
    std::uint32_t rows;
};

struct PlaneShapes
{
    std::array<PlaneShape, 3> planes;
    std::size_t count;
};

PlaneShapes shapesOf(EPixelType pixelType)
{
    const std::uint32_t bits = BitsPerPixel(pixelType);
    const PixelFormat* const format = FindPixelFormat(pixelType);
    switch (format ? format->planes : EPixelPlanes::Interleaved) {
        case EPixelPlanes::Interleaved:
            break;
        case EPixelPlanes::Planar2:
            return {{{{bits / 2, 1, 1}, {bits / 2, 1, 1}}}, 2};
        case EPixelPlanes::Planar3:
            return {{{{bits / 3, 1, 1}, {bits / 3, 1, 1}, {bits / 3, 1, 1}}}, 3};
        case EPixelPlanes::Planar422:
            return {{{{8, 1, 1}, {8, 2, 1}, {8, 2, 1}}}, 3};
        case EPixelPlanes::Planar420:
            return {{{{8, 1, 1}, {8, 2, 2}, {8, 2, 2}}}, 3};
        case EPixelPlanes::Semiplanar422:
            return {{{{8, 1, 1}, {16, 2, 1}}}, 2};
        case EPixelPlanes::Semiplanar420:
            return {{{{8, 1, 1}, {16, 2, 2}}}, 2};
    }
    return {{{{bits, 1, 1}}}, 1};
}

constexpr std::uint64_t ceilDivide(std::uint64_t value, std::uint64_t divisor)
{
    return (value + divisor - 1) / divisor;
}

bool inFamily(EPixelType pixelType, EPixelFamily first, EPixelFamily last)
{
    const PixelFormat* const format = FindPixelFormat(pixelType);
    return format != nullptr && format->family >= first && format->family <= last;
}

}  // namespace

const char* GetPixelTypeName(EPixelType pixelType)
{
    if (pixelType == EPixelType::Undefined) return "InvalidPixelFormat";
    const PixelFormat* const format = FindPixelFormat(pixelType);
    return format ? format->name : "UnknownPixelFormat";
}

EPixelType GetPixelTypeByName(const char* name)
{
    const std::string_view wanted = name ? name : "";
    for (const PixelFormat& format : GetPixelFormats()) {
        if (wanted == format.name || (format.alias && wanted == format.alias)) {
            return static_cast<EPixelType>(format.value);
        }
    }
    return EPixelType::Undefined;
}

bool HasPixelLayout(EPixelType pixelType)
{
    return FindPixelFormat(pixelType) != nullptr;
}

std::uint32_t BitsPerPixel(EPixelType pixelType)
{
    return pixelType == EPixelType::Undefined ? 0 : (static_cast<std::uint32_t>(pixelType) >> 16) & 0xFF;
}

std::uint32_t BitDepth(EPixelType pixelType)
{
    const PixelFormat* const format = FindPixelFormat(pixelType);
    return format ? format->bitDepth : 0;
}

bool IsMonochrome(EPixelType pixelType)
{
    return inFamily(pixelType, EPixelFamily::Mono, EPixelFamily::Mono);
}

bool IsBayer(EPixelType pixelType)
{
    return inFamily(pixelType, EPixelFamily::Bayer, EPixelFamily::Bayer);
}

std::optional<EBayerOrder> BayerOrder(EPixelType pixelType)
{
    if (!IsBayer(pixelType)) return std::nullopt;
    const std::string_view order = std::string_view(GetPixelTypeName(pixelType)).substr(5, 2);
    if (order == "GR") return EBayerOrder::GR;
    if (order == "RG") return EBayerOrder::RG;
    return order == "GB" ? EBayerOrder::GB : EBayerOrder::BG;
}

bool IsColor(EPixelType pixelType)
{
    return inFamily(pixelType, EPixelFamily::RGB, EPixelFamily::BiColor);
}

bool IsPlanar(EPixelType pixelType)
{
    return shapesOf(pixelType).count > 1;
}

std::optional<ImageLayout> ComputeImageLayout(EPixelType pixelType, std::uint32_t width, std::uint32_t height,
                                              std::size_t paddingX)
{
    if (BitsPerPixel(pixelType) == 0 || width == 0 || height == 0) return std::nullopt;
    const PlaneShapes shapes = shapesOf(pixelType);
    ImageLayout layout{};
    layout.planeCount = shapes.count;
    for (std::size_t i = 0; i < shapes.count; ++i) {
        const PlaneShape& shape = shapes.planes[i];
        ImagePlane& plane = layout.planes[i];
        plane.offset = layout.size;
        plane.rows = static_cast<std::uint32_t>(ceilDivide(height, shape.rows));
        plane.rowBytes = ceilDivide(ceilDivide(width, shape.columns) * shape.bits, 8);
        std::size_t planeSize = 0;
        if (__builtin_add_overflow(plane.rowBytes, paddingX, &plane.stride) ||
            __builtin_mul_overflow(plane.stride, plane.rows, &planeSize) ||
            __builtin_add_overflow(layout.size, planeSize, &layout.size))
        {
            return std::nullopt;
        }
    }
    return layout;
}

std::optional<std::size_t> ComputeStride(EPixelType pixelType, std::uint32_t width, std::size_t paddingX)
{
    const std::optional<ImageLayout> layout = ComputeImageLayout(pixelType, width, 1, paddingX);
    return layout ? std::optional(layout->planes[0].stride) : std::nullopt;
}

std::optional<std::size_t> ComputeImageSize(EPixelType pixelType, std::uint32_t width, std::uint32_t height,
                                            std::size_t paddingX)
{
    const std::optional<ImageLayout> layout = ComputeImageLayout(pixelType, width, height, paddingX);
    return layout ? std::optional(layout->size) : std::nullopt;
}

}  // namespace Nivex

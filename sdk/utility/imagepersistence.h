#pragma once

#include <cstdint>
#include <span>

#include "gcbase/gcstring.h"
#include "utility/image.h"

namespace Nivex {

enum class EImageFileFormat : std::uint32_t
{
    Bmp = 0,
    Tiff = 1,
    Jpeg = 2,
    Png = 3,
    Raw = 4,
    Dng = 5
};

/// How an image file is written.
struct CImagePersistenceOptions
{
    /// JPEG: 1 (smallest) to 100 (best); 0 asks for the encoder's default.
    int quality = 0;
};

/// Image files in and out. All operations may be called from any thread.
class GENICAM_API CImagePersistence
{
public:
    /// Limits of Load, so that a lying file cannot exhaust the memory.
    static constexpr std::uint32_t maxLoadDimension = 65535;
    static constexpr std::size_t maxLoadBytes = std::size_t{1} << 30;

    /// True if the format can hold an image of this form just as it is.
    static bool CanSaveWithoutConversion(EImageFileFormat format, EPixelType pixelType, std::uint32_t width,
                                         std::uint32_t height, std::size_t paddingX, EImageOrientation orientation);

    /// Writes a file under a temporary name in the same folder and renames it, so that no half file is ever
    /// seen under `path`. An image that the format cannot hold as it is, is converted first.
    /// Raises InvalidArgumentException for a bad image, RuntimeException that names file and cause if it
    /// cannot be written; then nothing stays behind.
    static void Save(EImageFileFormat format, const GenICam::gcstring& path, const void* buffer,
                     std::size_t bufferSize, EPixelType pixelType, std::uint32_t width, std::uint32_t height,
                     std::size_t paddingX, EImageOrientation orientation,
                     const CImagePersistenceOptions* options = nullptr);
    static void Save(EImageFileFormat format, const GenICam::gcstring& path, const IImage& image,
                     const CImagePersistenceOptions* options = nullptr);

    /// Reads a BMP, JPEG, PNG or TIFF file, told by its content. Gives Mono8, Mono16, RGB8Packed, BGR8Packed,
    /// RGB16Packed, BGRA8Packed or RGBA8Packed, top-down, without padding.
    /// Raises RuntimeException that names file and cause.
    static void Load(const GenICam::gcstring& path, IReusableImage& image);
    static void LoadFromMemory(std::span<const std::byte> file, IReusableImage& image);

    /// The endings, upper case and without dot, of the files that Load reads.
    static std::span<const char* const> GetLoadableExtensions();
};

}  // namespace Nivex

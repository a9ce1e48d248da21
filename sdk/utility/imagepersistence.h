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
    /// JPEG: 1 (smallest) to 100 (best); 0 asks for the default of 90. Others are lossless and ignore it.
    int quality = 0;
};

/// Image files in and out. All operations may be called from any thread.
class GENICAM_API CImagePersistence
{
public:
    /// Limits of Load, so that a lying file cannot exhaust the memory.
    static constexpr std::uint32_t maxLoadDimension = 65535;
    static constexpr std::size_t maxLoadBytes = std::size_t{1} << 30;

    /// True if Save writes an image of this form without converting it. Padding and bottom-up rows never stand
    /// in the way; the pixel type and, for JPEG above 65500 pixels, the size can. RAW takes every pixel type,
    /// DNG Bayer of every order and depth, RGB8Packed and RGB16Packed. False for what is no form of an image.
    static bool CanSaveWithoutConversion(EImageFileFormat format, EPixelType pixelType, std::uint32_t width,
                                         std::uint32_t height, std::size_t paddingX,
                                         EImageOrientation orientation);

    /// Writes a file under a temporary name (".NAME.tmp-PROCESS-NUMBER") in the same folder and renames it, so
    /// that no half file is ever seen under `path`; a file or link that has the name is replaced. The data are
    /// left to the system to bring to the disk in its own time.
    ///
    /// An image whose pixel type the format cannot hold is converted first: grey to Mono16 or Mono8, all else to
    /// RGB16Packed, RGB8Packed or BGR8Packed, 16 bits only if the image has more than 8 and the format takes
    /// them; DNG holds no grey. RAW is the buffer as it stands, padding and row order included; other files hold
    /// the rows from the top, without padding.
    ///
    /// Raises InvalidArgumentException for a format or quality out of range, no or too short a buffer, or what is
    /// no form of an image; RuntimeException that names file and cause if it cannot be written, as a grey image
    /// cannot to DNG, and then nothing stays behind.
    static void Save(EImageFileFormat format, const GenICam::gcstring& path, const void* buffer,
                     std::size_t bufferSize, EPixelType pixelType, std::uint32_t width, std::uint32_t height,
                     std::size_t paddingX, EImageOrientation orientation,
                     const CImagePersistenceOptions* options = nullptr);
    static void Save(EImageFileFormat format, const GenICam::gcstring& path, const IImage& image,
                     const CImagePersistenceOptions* options = nullptr);

    /// Reads a BMP, JPEG, PNG or TIFF file, told by its content, not its ending. DNG files are TIFF files: colour
    /// is read as it is stored, Bayer is refused. Gives Mono8, Mono16, RGB8Packed, BGR8Packed, RGB16Packed,
    /// BGRA8Packed or RGBA8Packed, top-down, without padding. The image is reset to that; it is empty after a
    /// failure. Raises RuntimeException that names file and cause: not there or no regular file, larger than 2
    /// GiB, of another format, damaged or ending early, beyond the limits above.
    static void Load(const GenICam::gcstring& path, IReusableImage& image);
    static void LoadFromMemory(std::span<const std::byte> file, IReusableImage& image);

    /// The endings, upper case and without dot, by which files that Load reads are known.
    static std::span<const char* const> GetLoadableExtensions();
};

}  // namespace Nivex

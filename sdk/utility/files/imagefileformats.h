#pragma once

#include <span>

#include "utility/files/codecs.h"
#include "utility/imagepersistence.h"

namespace Nivex::Files {

/// What is known of one file format, and who reads and writes it.
struct ImageFileFormat
{
    EImageFileFormat format;
    const char* name;
    std::span<const char* const> extensions;  ///< Of loadable files: upper case, without dot.
    /// The beginnings by which files of this format are known.
    std::span<const std::string_view> signatures;
    void (*read)(ByteSource& source, IReusableImage& image);  ///< Null if not loadable.
    void (*write)(const PictureView& picture, int quality, OutputFile& file);
    std::span<const EPixelType> pixelTypes;  ///< What the writer takes.
    bool takesAnyPixelType;                  ///< It takes all others too.
    std::uint32_t maxDimension;              ///< Most pixels each way.

    bool takes(EPixelType pixelType) const;
};

/// In the order of their numbers.
std::span<const ImageFileFormat> imageFileFormats();

/// The format of that number; raises InvalidArgumentException if there is none.
const ImageFileFormat& imageFileFormat(EImageFileFormat format);

}  // namespace Nivex::Files

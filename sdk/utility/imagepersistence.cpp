#include "utility/imagepersistence.h"

#include <algorithm>
#include <array>
#include <memory>
#include <new>
#include <string>
#include <vector>

#include "gcbase/exception.h"

#include "utility/files/imagefileformats.h"
#include "utility/imageformatconverter.h"
#include "utility/niveximage.h"

namespace Nivex {

using Files::ImageFileFormat;
using Files::PictureView;

namespace {

/// Runs `work` and turns what it says of the cause into a failure that names the file.
template <typename Work>
void nameFailures(const char* what, const std::string& name, Work work)
{
    try {
        work();
    } catch (const Files::FormatError& error) {
        GENICAM_THROW(RuntimeException, "Could not %s \"%s\": %s.", what, name.c_str(), error.what());
    } catch (const std::bad_alloc&) {
        GENICAM_THROW(RuntimeException, "Could not %s \"%s\": there is no memory for it.", what, name.c_str());
    } catch (const GenICam::BadAllocException& error) {
        GENICAM_THROW(RuntimeException, "Could not %s \"%s\": %s", what, name.c_str(), error.GetDescription());
    }
}

/// A zero byte would cut off the name that the system sees.
void checkPath(const std::string& path)
{
    if (path.empty()) Files::fail("the path is empty");
    if (path.find('\0') != std::string::npos) Files::fail("the path holds a zero byte");
}

const ImageFileFormat& recognise(Files::ByteSource& source)
{
    std::array<char, 8> start{};
    const std::string_view bytes(start.data(), source.read(0, start.data(), start.size()));
    for (const ImageFileFormat& format : Files::imageFileFormats()) {
        for (const std::string_view signature : format.signatures) {
            if (bytes.starts_with(signature)) return format;
        }
    }
    if (bytes.empty()) Files::fail("it is empty");
    Files::fail("it is no BMP, JPEG, PNG or TIFF file");
}

void decode(Files::ByteSource& source, IReusableImage& image)
{
    const ImageFileFormat& format = recognise(source);
    try {
        format.read(source, image);
    } catch (const Files::FormatError& error) {
        throw Files::FormatError(std::string("bad ") + format.name + " file: " + error.what());
    }
}

/// Hands over a picture or an empty image, never a half one.
template <typename MakeSource>
void load(const std::string& name, IReusableImage& image, MakeSource makeSource)
{
    try {
        nameFailures("load", name, [&] { decode(*makeSource(), image); });
    } catch (...) {
        image.Release();
        throw;
    }
}

PictureView viewOf(const void* buffer, std::size_t bufferSize, EPixelType pixelType, std::uint32_t width,
                   std::uint32_t height, std::size_t paddingX, EImageOrientation orientation)
{
    const auto layout = ComputeImageLayout(pixelType, width, height, paddingX);
    if (!layout) {
        GENICAM_THROW(InvalidArgumentException,
                      "No image can have %u x %u pixels of type 0x%08X and %zu bytes of padding per row.", width,
                      height, static_cast<unsigned>(pixelType), paddingX);
    }
    if (!buffer || bufferSize < layout->size) {
        GENICAM_THROW(InvalidArgumentException,
                      "An image of %u x %u pixels of type 0x%08X needs %zu bytes; the buffer at %p has %zu.",
                      width, height, static_cast<unsigned>(pixelType), layout->size, buffer, bufferSize);
    }
    const Nivex::ImagePlane& rows = layout->planes[0];
    return {static_cast<const std::byte*>(buffer),
            layout->size,
            pixelType,
            width,
            height,
            rows.rowBytes,
            rows.stride,
            orientation == EImageOrientation::BottomUp};
}

int checkedQuality(const CImagePersistenceOptions* options)
{
    const int quality = options ? options->quality : 0;
    if (quality < 0 || quality > 100) {
        GENICAM_THROW(InvalidArgumentException, "JPEG quality %d is not one of 0 (default) or 1 to 100.", quality);
    }
    return quality;
}

/// The pixel type to which an image is brought that the format can't hold: as deep as it can, and colour unless
/// the image is grey.
EPixelType conversionTarget(const ImageFileFormat& format, EPixelType pixelType)
{
    const bool isGrey = IsMonochrome(pixelType);
    const EPixelType deep = isGrey ? EPixelType::Mono16 : EPixelType::RGB16Packed;
    if (BitDepth(pixelType) > 8 && format.takes(deep)) return deep;
    if (isGrey) return EPixelType::Mono8;
    return format.takes(EPixelType::RGB8Packed) ? EPixelType::RGB8Packed : EPixelType::BGR8Packed;
}

void convertFor(const ImageFileFormat& format, const PictureView& picture, std::size_t paddingX,
                CNivexImage& converted)
{
    const EPixelType target = conversionTarget(format, picture.pixelType);
    if (!format.takes(target)) {
        Files::fail("a %s file holds Bayer and colour images, not grey ones such as %s", format.name,
                    GetPixelTypeName(picture.pixelType));
    }
    CImageFormatConverter converter;
    converter.OutputPixelFormat.SetValue(target);
    converter.Convert(converted, picture.buffer, picture.size, picture.pixelType, picture.width, picture.height,
                      paddingX, picture.isBottomUp ? EImageOrientation::BottomUp : EImageOrientation::TopDown);
}

void write(const ImageFileFormat& format, const std::string& path, const PictureView& picture, int quality)
{
    Files::OutputFile file(path);
    format.write(picture, quality, file);
    file.commit();
}

}  // namespace

bool CImagePersistence::CanSaveWithoutConversion(EImageFileFormat format, EPixelType pixelType,
                                                 std::uint32_t width, std::uint32_t height, std::size_t paddingX,
                                                 EImageOrientation)
{
    const ImageFileFormat& row = Files::imageFileFormat(format);
    return row.takes(pixelType) && width <= row.maxDimension && height <= row.maxDimension &&
           ComputeImageSize(pixelType, width, height, paddingX);
}

void CImagePersistence::Save(EImageFileFormat format, const GenICam::gcstring& path, const void* buffer,
                             std::size_t bufferSize, EPixelType pixelType, std::uint32_t width,
                             std::uint32_t height, std::size_t paddingX, EImageOrientation orientation,
                             const CImagePersistenceOptions* options)
{
    const ImageFileFormat& row = Files::imageFileFormat(format);
    const int quality = checkedQuality(options);
    PictureView picture = viewOf(buffer, bufferSize, pixelType, width, height, paddingX, orientation);
    CNivexImage converted;
    nameFailures("save", path.str(), [&] {
        checkPath(path.str());
        if (width > row.maxDimension || height > row.maxDimension) {
            Files::fail("a %s file holds at most %u pixels each way, not %u x %u", row.name, row.maxDimension,
                        width, height);
        }
        if (!row.takes(pixelType)) {
            convertFor(row, picture, paddingX, converted);
            picture = viewOf(converted.GetBuffer(), converted.GetImageSize(), converted.GetPixelType(), width,
                             height, converted.GetPaddingX(), converted.GetOrientation());
        }
        write(row, path.str(), picture, quality);
    });
}

void CImagePersistence::Save(EImageFileFormat format, const GenICam::gcstring& path, const IImage& image,
                             const CImagePersistenceOptions* options)
{
    Save(format, path, image.GetBuffer(), image.GetImageSize(), image.GetPixelType(), image.GetWidth(),
         image.GetHeight(), image.GetPaddingX(), image.GetOrientation(), options);
}

void CImagePersistence::Load(const GenICam::gcstring& path, IReusableImage& image)
{
    load(path.str(), image, [&] {
        checkPath(path.str());
        return std::make_unique<Files::FileSource>(path.str());
    });
}

void CImagePersistence::LoadFromMemory(std::span<const std::byte> file, IReusableImage& image)
{
    load("file in memory", image, [&] { return std::make_unique<Files::MemorySource>(file); });
}

std::span<const char* const> CImagePersistence::GetLoadableExtensions()
{
    static const std::vector<const char*> extensions = [] {
        std::vector<const char*> all;
        for (const ImageFileFormat& format : Files::imageFileFormats()) {
            all.insert(all.end(), format.extensions.begin(), format.extensions.end());
        }
        return all;
    }();
    return extensions;
}

}  // namespace Nivex

#include "datawriter/ImageMediaWriter.h"

#include <array>
#include <system_error>

#include "gcbase/exception.h"

#include "utility/pixeltype.h"

#include "datawriter/ImageWalk.h"
#include "datawriter/NameRendering.h"

namespace Plugin::NivexStageletPackageBase {

namespace {

namespace Core = Nivex::DataProcessing::Core;
namespace Utils = Nivex::DataProcessing::Utils;
using Core::LossCause;
using Nivex::CImagePersistence;
using Nivex::EImageFileFormat;
using Nivex::EImageOrientation;
using Nivex::EPixelType;

struct FormatRow
{
    MediaType type;
    const char* extension;
    EImageFileFormat format;
};

constexpr std::array formatRows = {
    FormatRow{MediaType::BMP, ".bmp", EImageFileFormat::Bmp},
    FormatRow{MediaType::TIFF, ".tiff", EImageFileFormat::Tiff},
    FormatRow{MediaType::JPEG, ".jpg", EImageFileFormat::Jpeg},
    FormatRow{MediaType::PNG, ".png", EImageFileFormat::Png},
    FormatRow{MediaType::RAW, ".raw", EImageFileFormat::Raw},
    FormatRow{MediaType::DNG, ".dng", EImageFileFormat::Dng},
};

const FormatRow& formatOf(MediaType type)
{
    for (const FormatRow& row : formatRows) {
        if (row.type == type) return row;
    }
    GENICAM_THROW(InvalidArgumentException, "The media type %d is no type of image file.", static_cast<int>(type));
}

bool canSave(EImageFileFormat format, EPixelType pixelType, const Core::Image& image, std::size_t padding)
{
    return CImagePersistence::CanSaveWithoutConversion(format, pixelType, image.getWidth(), image.getHeight(),
                                                       padding, EImageOrientation::TopDown);
}

/// The pixel type that an image is brought to which the format does not take as it is.
EPixelType conversionTarget(EImageFileFormat format, const Core::Image& image)
{
    const EPixelType source = image.getPixelType();
    const bool isDeep = Nivex::BitDepth(source) > 8;
    const auto takes = [&](EPixelType pixelType) { return canSave(format, pixelType, image, 0); };
    if (Nivex::IsMonochrome(source)) {
        return isDeep && takes(EPixelType::Mono16) ? EPixelType::Mono16 : EPixelType::Mono8;
    }
    if (isDeep && takes(EPixelType::RGB16Packed)) return EPixelType::RGB16Packed;
    return takes(EPixelType::RGB8Packed) ? EPixelType::RGB8Packed : EPixelType::BGR8Packed;
}

const char* nameTemplate(const MediaWriterSettings& settings, bool inArray)
{
    if (!settings.fileName.empty()) return settings.fileName.c_str();
    return inArray ? "Image_Record{RecordIndex}_Data{PinIndex}_{ArrayIndex}"
                   : "Image_Record{RecordIndex}_Data{PinIndex}";
}

/// The bytes on disk, or those of the picture if someone has taken the file away already.
std::uint64_t sizeOf(const std::filesystem::path& file, const Core::Image& image)
{
    std::error_code failed;
    const std::uintmax_t size = std::filesystem::file_size(file, failed);
    return failed ? image.getImageSize() : size;
}

}  // namespace

void ImageMediaWriter::writeData(const Utils::Variant& value, const Utils::TypeInfo&,
                                 const MediaWriterContext& context)
{
    forEachImage(value, context, ledger_, [&](const Core::Image& image, const WriterIndices& indices) {
        writeImage(image, context, indices);
    });
}

void ImageMediaWriter::writeImage(const Core::Image& image, const MediaWriterContext& context,
                                  const WriterIndices& indices)
{
    const MediaWriterSettings& settings = *context.settings;
    const FormatRow& row = formatOf(settings.mediaType);
    if (row.format == EImageFileFormat::Dng && Nivex::IsMonochrome(image.getPixelType())) {
        ledger_.reportLoss(LossCause::Unsupported);
        return;
    }
    const std::string name =
        renderName(*context.tokens, nameTemplate(settings, indices.inArray != 0), *context.time, indices);
    const std::filesystem::path file = *context.folder / (name + row.extension);
    claims_.require(file);
    save(image, row.format, file.string());
    ledger_.reportRecorded(1, sizeOf(file, image));
}

void ImageMediaWriter::save(const Core::Image& image, EImageFileFormat format, const GenICam::gcstring& path)
{
    const EPixelType source = image.getPixelType();
    if (canSave(format, source, image, image.getLinePadding())) {
        const Nivex::CImagePersistenceOptions defaultQuality;
        CImagePersistence::Save(format, path, image.getDataConst(), image.getImageSize(), source, image.getWidth(),
                                image.getHeight(), image.getLinePadding(), EImageOrientation::TopDown,
                                format == EImageFileFormat::Jpeg ? &defaultQuality : nullptr);
        return;
    }
    converter_.OutputPixelFormat.SetValue(conversionTarget(format, image));
    converter_.Convert(converted_, image.getDataConst(), image.getImageSize(), source, image.getWidth(),
                       image.getHeight(), image.getLinePadding(), EImageOrientation::TopDown);
    CImagePersistence::Save(format, path, converted_, nullptr);
}

}  // namespace Plugin::NivexStageletPackageBase

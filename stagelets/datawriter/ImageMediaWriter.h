#pragma once

#include "utility/imageformatconverter.h"
#include "utility/imagepersistence.h"
#include "utility/niveximage.h"

#include "core/image.h"
#include "datawriter/IMediaWriter.h"
#include "datawriter/OutputClaims.h"

namespace Plugin::NivexStageletPackageBase {

/// Writes each image to a file of its own, and each element of an array of images to one. A file that has the name
/// is replaced, whatever the file mode, but for one that another writer makes at the same time. JPEG files have
/// the encoder's default quality.
///
/// Accounts for each image: recorded with its file, InvalidInput for an image that is empty or holds an error,
/// Unsupported for a grey image that was to become DNG and for any other kind of value. An empty array accounts
/// for nothing. writeData raises what claiming the file, conversion and saving raise.
class ImageMediaWriter : public IMediaWriter
{
public:
    explicit ImageMediaWriter(IWriterLedger& ledger) : ledger_(ledger) {}

    void beginSession(const MediaWriterContext&) override {}
    void beginRecord(const MediaWriterContext&) override {}
    void writeData(const Nivex::DataProcessing::Utils::Variant& value,
                   const Nivex::DataProcessing::Utils::TypeInfo& type, const MediaWriterContext& context) override;
    void endRecord(const MediaWriterContext&) override {}
    void endSession(const MediaWriterContext&) override
    {
        converted_.Release();
        claims_.release();
    }

private:
    void writeImage(const Nivex::DataProcessing::Core::Image& image, const MediaWriterContext& context,
                    const WriterIndices& indices);
    void save(const Nivex::DataProcessing::Core::Image& image, Nivex::EImageFileFormat format,
              const GenICam::gcstring& path);

    IWriterLedger& ledger_;
    OutputClaims claims_;
    Nivex::CNivexImage converted_;  ///< Kept from image to image, so that its memory is used again.
    Nivex::CImageFormatConverter converter_;
};

}  // namespace Plugin::NivexStageletPackageBase

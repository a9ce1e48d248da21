#include "datawriter/MediaWriterFactory.h"

#include "datawriter/ImageMediaWriter.h"
#include "datawriter/TextMediaWriter.h"
#include "datawriter/VideoMediaWriter.h"

namespace Plugin::NivexStageletPackageBase {

std::shared_ptr<IMediaWriter> createMediaWriter(MediaType type, IWriterLedger& ledger)
{
    switch (type) {
        case MediaType::MP4:
            return std::make_shared<VideoMediaWriter>(ledger);
        case MediaType::BMP:
        case MediaType::TIFF:
        case MediaType::JPEG:
        case MediaType::PNG:
        case MediaType::RAW:
        case MediaType::DNG:
            return std::make_shared<ImageMediaWriter>(ledger);
        case MediaType::TXT:
            return std::make_shared<TextMediaWriter>(ledger);
    }
    return nullptr;
}

}  // namespace Plugin::NivexStageletPackageBase

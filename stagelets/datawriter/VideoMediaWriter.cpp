#include "datawriter/VideoMediaWriter.h"

#include <string>

#include "gcbase/exception.h"

#include "utility/imageformatconverter.h"

#include "datawriter/DataWriterLog.h"
#include "datawriter/ImageWalk.h"
#include "datawriter/NameRendering.h"
#include "utils/log.h"

namespace Plugin::NivexStageletPackageBase {

namespace {

namespace Core = Nivex::DataProcessing::Core;
namespace Utils = Nivex::DataProcessing::Utils;
using Core::LossCause;
using Nivex::EPixelType;
using Nivex::EVideoFailure;

Utils::CatId videoChannel()
{
    static const Utils::CatId id = Utils::getCatId("nivex.dataprocessing.stagelet.DataWriterVideo");
    return id;
}

constexpr NodeLog videoLog{"DataWriterVideo", videoChannel};

bool isSupported(EPixelType pixelType)
{
    return Nivex::CImageFormatConverter::IsSupportedInputFormat(pixelType) ||
           pixelType == EPixelType::YUV420Planar;
}

std::string fileName(const MediaWriterContext& context, const WriterIndices& indices)
{
    constexpr const char* ending = ".mp4";
    const GenICam::gcstring& given = context.settings->fileName;
    std::string name = renderName(*context.tokens, given.empty() ? "Video{MediaWriterIndex}.mp4" : given.c_str(),
                                  *context.time, indices);
    if (!name.ends_with(ending)) name += ending;
    return name;
}

/// 0 if someone has taken the file away already.
std::uint64_t sizeOf(const std::string& file)
{
    std::error_code failed;
    const std::uintmax_t size = std::filesystem::file_size(file, failed);
    return failed ? 0 : size;
}

}  // namespace

void VideoMediaWriter::beginSession(const MediaWriterContext& context)
{
    if (context.settings->fileScope != FileScope::Session) return;
    closeAtRecordEnd_ = false;
    closeAtSessionEnd_ = true;
}

void VideoMediaWriter::beginRecord(const MediaWriterContext& context)
{
    if (context.settings->fileScope == FileScope::Record) closeAtRecordEnd_ = true;
}

void VideoMediaWriter::writeData(const Utils::Variant& value, const Utils::TypeInfo&,
                                 const MediaWriterContext& context)
{
    forEachImage(value, context, ledger_, [&](const Core::Image& image, const WriterIndices& indices) {
        writeImage(image, context, indices);
    });
}

void VideoMediaWriter::writeImage(const Core::Image& image, const MediaWriterContext& context,
                                  const WriterIndices& indices)
{
    if (!isSupported(image.getPixelType())) {
        ledger_.reportLoss(LossCause::Unsupported);
        return;
    }
    if (!opened_) opened_ = videoLog.guarded(this, "opening video", [&] { open(image, context, indices); });
    if (!opened_ || !videoLog.guarded(this, "adding image to video", [&] { add(image); })) {
        ledger_.reportLoss(cause_);
        reportLateLosses();
        return;
    }
    ledger_.reportRecorded(0, 0);
}

void VideoMediaWriter::reportLateLosses()
{
    for (; lateLosses_ < writer_.GetLateLossCount(); ++lateLosses_)
        ledger_.reportLoss(cause_);
}

void VideoMediaWriter::open(const Core::Image& image, const MediaWriterContext& context,
                            const WriterIndices& indices)
{
    std::string path = (*context.folder / fileName(context, indices)).string();
    if (path == path_) {
        Utils::createLogEntry(Utils::SeverityFailure, videoChannel(),
                              "DataWriterVideo %p: The video \"%s\" of this session is replaced by a later one. "
                              "{RecordIndex} in FileName keeps each; FileScope Session makes one of all records.",
                              static_cast<const void*>(this), path.c_str());
    }
    cause_ = LossCause::FileNotWritten;
    claims_.require(path);
    cause_ = LossCause::EncoderFailed;
    lateLosses_ = 0;
    writer_.Width.SetValue(image.getWidth());
    writer_.Height.SetValue(image.getHeight());
    writer_.PlayBackFrameRate.SetValueCorrected(context.settings->playBackSpeed);
    writer_.RecordingFrameRate.SetValueCorrected(context.settings->playBackSpeed);
    notingCause([&] { writer_.Open(path); });
    path_ = std::move(path);
}

void VideoMediaWriter::add(const Core::Image& image)
{
    notingCause([&] {
        writer_.Add(image.getDataConst(), image.getImageSize(), image.getPixelType(), image.getWidth(),
                    image.getHeight(), image.getLinePadding(), Nivex::EImageOrientation::TopDown);
    });
}

template <typename Operation>
void VideoMediaWriter::notingCause(const Operation& operation)
{
    try {
        operation();
    } catch (...) {
        const bool isOfFile = writer_.GetLastFailure() == EVideoFailure::File;
        cause_ = isOfFile ? LossCause::FileNotWritten : LossCause::EncoderFailed;
        throw;
    }
}

void VideoMediaWriter::endRecord(const MediaWriterContext&)
{
    if (closeAtRecordEnd_) close();
}

void VideoMediaWriter::endSession(const MediaWriterContext&)
{
    if (closeAtSessionEnd_) close();
    claims_.release();
}

void VideoMediaWriter::close()
{
    if (!writer_.IsOpen()) return;
    opened_ = false;
    const bool isClosed = videoLog.guarded(this, "closing video", [&] { notingCause([&] { writer_.Close(); }); });
    reportLateLosses();
    if (isClosed || writer_.GetLastFailure() != EVideoFailure::File) {
        ledger_.reportRecorded(1, sizeOf(path_));
    } else {
        ledger_.reportLoss(LossCause::FileNotWritten);
    }
}

}  // namespace Plugin::NivexStageletPackageBase

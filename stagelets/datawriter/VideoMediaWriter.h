#pragma once

#include <string>

#include "utility/videowriter.h"

#include "core/image.h"
#include "datawriter/IMediaWriter.h"
#include "datawriter/OutputClaims.h"

namespace Plugin::NivexStageletPackageBase {

/// Writes the images of all its pins, and each element of arrays of images, to one MP4 video at a time. A video is
/// opened by the first image for which none is open and has that image's size. The file scope says when it is
/// closed: Record, with the record; Session and DataItem, with the session. The file mode is not looked at: a
/// video replaces a file that has its name, one of the same session not without a line in the log. A name that
/// doesn't end in ".mp4" gets that ending.
///
/// Accounts for each image: recorded; InvalidInput for an image that is empty or
/// holds an error; Unsupported for a pixel type that can't be converted and for any other kind of value;
/// FileNotWritten if the file can't be made or written, or another writer makes it at the same time; EncoderFailed
/// for what else keeps it from being opened or from taking the image, such as another size. Each video that is
/// closed is recorded as one file with its bytes; one that can't be written to its end is one more FileNotWritten.
/// A failure shows up to two images late, and a full disk at the end of a fragment: images that were recorded by
/// then and are lost after all are counted as lost as well.
///
/// Nothing is raised: failures are logged and the image is lost.
class VideoMediaWriter : public IMediaWriter
{
public:
    explicit VideoMediaWriter(IWriterLedger& ledger) : ledger_(ledger) {}

    void beginSession(const MediaWriterContext& context) override;
    void beginRecord(const MediaWriterContext& context) override;
    void writeData(const Nivex::DataProcessing::Utils::Variant& value,
                   const Nivex::DataProcessing::Utils::TypeInfo& type, const MediaWriterContext& context) override;
    void endRecord(const MediaWriterContext& context) override;
    void endSession(const MediaWriterContext& context) override;

private:
    void writeImage(const Nivex::DataProcessing::Core::Image& image, const MediaWriterContext& context,
                    const WriterIndices& indices);
    void open(const Nivex::DataProcessing::Core::Image& image, const MediaWriterContext& context,
              const WriterIndices& indices);
    void add(const Nivex::DataProcessing::Core::Image& image);
    void reportLateLosses();
    void close();
    /// Runs a call of the writer and keeps what it throws as the cause of the loss.
    template <typename Operation>
    void notingCause(const Operation& operation);

    IWriterLedger& ledger_;
    OutputClaims claims_;
    Nivex::CVideoWriter writer_;
    Nivex::DataProcessing::Core::LossCause cause_{};  ///< Of the last image that was lost by a failure.
    std::uint64_t lateLosses_ = 0;                    ///< Of the present video, as far as reported.
    std::string path_;                                ///< Of the video opened last.
    bool opened_ = false;
    bool closeAtRecordEnd_ = false;
    bool closeAtSessionEnd_ = true;
};

}  // namespace Plugin::NivexStageletPackageBase

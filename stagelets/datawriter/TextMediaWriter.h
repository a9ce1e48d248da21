#pragma once

#include <filesystem>
#include <fstream>
#include <optional>
#include <string>

#include "datawriter/ByteCounter.h"
#include "datawriter/IMediaWriter.h"
#include "datawriter/OutputClaims.h"

namespace Plugin::NivexStageletPackageBase {

/// Writes data of all its pins as text, in the sections that the pins' templates give, to one file at a time. The
/// file scope says when one is opened and closed: Session, with the session; Record, with each record; DataItem,
/// with the first item for which none is open, until the session ends or writing an item raises an exception.
///
/// There is one stream for the whole session, so what a template sets of its format (precision, fill, flags) holds
/// for all that follows, across pins, records and files. Numbers don't depend on the global locale. Text reaches
/// the file when the stream's buffer is full and when the file is closed.
///
/// Accounts for each value: recorded with its bytes; FileNotWritten if there is no open file or its stream has
/// failed; Unsupported if text can't be made of its type. A file that another writer makes at the same time is
/// opened to append to it only. Each file that is closed without failure is recorded as one file. One that fails
/// as late as there, or has gone from its place by then, is one more FileNotWritten. That it has gone is looked
/// for at each record, too. What keeps a file from being written is logged once for each. As text waits in the
/// stream's buffer, up to a buffer full of it may have been recorded before a full disk shows.
///
/// Raises std::out_of_range if a pin's list of media writers or the list of pins is too short, and from writeData
/// what the getters of a value raise.
class TextMediaWriter : public IMediaWriter
{
public:
    explicit TextMediaWriter(IWriterLedger& ledger);

    void beginSession(const MediaWriterContext& context) override;
    void beginRecord(const MediaWriterContext& context) override;
    void writeData(const Nivex::DataProcessing::Utils::Variant& value,
                   const Nivex::DataProcessing::Utils::TypeInfo& type, const MediaWriterContext& context) override;
    void endRecord(const MediaWriterContext& context) override;
    void endSession(const MediaWriterContext& context) override;

private:
    /// Leaves the stream in a failed state, with a log entry, if the file can't be opened.
    void open(const MediaWriterContext& context);
    void close(const MediaWriterContext& context);
    /// Raises what getting the text of the value raises.
    void writeValue(const Nivex::DataProcessing::Utils::Variant& value,
                    const Nivex::DataProcessing::Utils::TypeInfo& type, const MediaWriterContext& context);
    /// A section outside of data, of each pin in turn.
    void writeSections(TextFormatSelector selector, const MediaWriterContext& context);
    void loseValue(const std::string& cause, const MediaWriterContext& context);
    /// False if a failure of this file has been logged before.
    bool logFailure(const std::string& cause, const MediaWriterContext& context);

    IWriterLedger& ledger_;
    OutputClaims claims_;
    std::ofstream file_;
    ByteCounter counter_;                          ///< Stands between the stream and the buffer of its file.
    std::filesystem::path path_;                   ///< Of the file that was opened last, with or without success.
    std::optional<std::filesystem::path> failed_;  ///< The file whose failure has been logged.
    bool closeAtRecordEnd_ = false;
    bool closeAtSessionEnd_ = true;
};

}  // namespace Plugin::NivexStageletPackageBase

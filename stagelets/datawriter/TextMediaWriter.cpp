#include "datawriter/TextMediaWriter.h"

#include <cerrno>
#include <cinttypes>
#include <locale>
#include <system_error>

#include "datawriter/DataWriterLog.h"
#include "datawriter/NameRendering.h"
#include "datawriter/TextFormatter.h"
#include "datawriter/ValueText.h"

namespace Plugin::NivexStageletPackageBase {

namespace {

namespace Core = Nivex::DataProcessing::Core;
namespace Utils = Nivex::DataProcessing::Utils;
namespace fs = std::filesystem;
using Core::LossCause;
using enum TextFormatSelector;

const char* nameTemplate(const MediaWriterSettings& settings)
{
    if (!settings.fileName.empty()) return settings.fileName.c_str();
    switch (settings.fileScope) {
        case FileScope::Session:
            return "Data_Session{SessionIndex}.txt";
        case FileScope::Record:
            return "Data_Record{RecordIndex}.txt";
        case FileScope::DataItem:
            break;
    }
    return "Data_Record{RecordIndex}_Data{PinIndex}.txt";
}

std::ios_base::openmode openModeOf(FileMode mode)
{
    switch (mode) {
        case FileMode::Append:
            return std::ios_base::out | std::ios_base::app;
        case FileMode::CreateThenAppend:
            return std::ios_base::out | std::ios_base::trunc;  // sic: as Create
        case FileMode::Create:
            break;
    }
    return std::ios_base::out;
}

constexpr const char* goneText = "The file was removed or renamed before it was finished.";

/// Of the last call into the system.
std::string systemMessage()
{
    return errno != 0 ? std::generic_category().message(errno) : "The stream has failed.";
}

/// Opening a pipe would wait for a reader, and a device is no place for a recording.
bool isSpecialFile(const fs::path& path)
{
    std::error_code failed;
    const fs::file_status status = fs::status(path, failed);
    return fs::is_fifo(status) || fs::is_socket(status) || fs::is_character_file(status) ||
           fs::is_block_file(status);
}

bool isMissing(const fs::path& path)
{
    std::error_code failed;
    return fs::status(path, failed).type() == fs::file_type::not_found;
}

}  // namespace

TextMediaWriter::TextMediaWriter(IWriterLedger& ledger) : ledger_(ledger), counter_(*file_.rdbuf())
{
    static_cast<std::ostream&>(file_).rdbuf(&counter_);
    file_.rdbuf()->pubimbue(std::locale::classic());
    file_.imbue(std::locale::classic());
}

void TextMediaWriter::beginSession(const MediaWriterContext& context)
{
    if (context.settings->fileScope != FileScope::Session) return;
    open(context);
    closeAtRecordEnd_ = false;
    closeAtSessionEnd_ = true;
    writeSections(TextFormat_SessionBegin, context);
}

void TextMediaWriter::beginRecord(const MediaWriterContext& context)
{
    if (context.settings->fileScope == FileScope::Record) {
        open(context);
        closeAtRecordEnd_ = true;
    }
    if (!file_.is_open()) return;
    if (isMissing(path_)) {
        file_.setstate(std::ios_base::failbit);
        logFailure(goneText, context);
    }
    writeSections(TextFormat_RecordBegin, context);
}

void TextMediaWriter::writeData(const Utils::Variant& value, const Utils::TypeInfo& type,
                                const MediaWriterContext& context)
{
    if (!type.isValid() || !value.isValid()) return;
    const bool isItemScope = context.settings->fileScope == FileScope::DataItem;
    if (!file_.is_open()) {
        if (!isItemScope) return loseValue("No file is open.", context);
        open(context);
    }
    try {
        writeValue(value, type, context);
    } catch (...) {
        if (isItemScope && file_.is_open()) close(context);
        throw;
    }
}

void TextMediaWriter::writeValue(const Utils::Variant& value, const Utils::TypeInfo& type,
                                 const MediaWriterContext& context)
{
    const InputPinSettings& pin = context.pins->at(context.indices->pinIndex - 1);
    const std::uint64_t before = counter_.getCount();
    errno = 0;
    if (!writeValueText(file_, value, type, pin, context)) return ledger_.reportLoss(LossCause::Unsupported);
    if (file_.fail()) return loseValue(systemMessage(), context);
    ledger_.reportRecorded(0, counter_.getCount() - before);
}

void TextMediaWriter::endRecord(const MediaWriterContext& context)
{
    if (!file_.is_open()) return;
    writeSections(TextFormat_RecordEnd, context);
    if (closeAtRecordEnd_) close(context);
}

void TextMediaWriter::endSession(const MediaWriterContext& context)
{
    claims_.release();
    if (!file_.is_open()) return;
    writeSections(TextFormat_SessionEnd, context);
    if (closeAtSessionEnd_) close(context);
}

void TextMediaWriter::writeSections(TextFormatSelector selector, const MediaWriterContext& context)
{
    const std::size_t writer = context.indices->mediaWriterIndex - 1;
    for (const InputPinSettings& pin : *context.pins) {
        const GenICam::gcstring& text = getTextFormat(pin, selector);
        if (pin.writeEnable != WriteEnable::On || text.empty()) continue;
        if (pin.useMediaWriterEnable.at(writer) != UseMediaWriterEnable::On) continue;
        formatStructuralText(*context.tokens, text.c_str(), *context.time, file_, *context.indices);
    }
}

// Files

void TextMediaWriter::open(const MediaWriterContext& context)
{
    const MediaWriterSettings& settings = *context.settings;
    path_ = *context.folder / renderName(*context.tokens, nameTemplate(settings), *context.time, *context.indices);
    const bool isFree = claims_.claim(path_) || settings.fileMode == FileMode::Append;
    if (!isFree || isSpecialFile(path_)) {
        file_.setstate(std::ios_base::failbit);
        logFailure(isFree ? "It is no regular file." : OutputClaims::refusal, context);
        return;
    }
    errno = 0;
    file_.open(path_, openModeOf(settings.fileMode));
    if (file_.fail()) {
        logFailure(systemMessage(), context);
    } else {
        failed_.reset();
    }
}

void TextMediaWriter::close(const MediaWriterContext& context)
{
    errno = 0;
    file_.close();
    std::string cause;
    if (file_.fail()) {
        cause = systemMessage();
    } else if (isMissing(path_)) {
        cause = goneText;
    } else {
        return ledger_.reportRecorded(1, 0);
    }
    // If this is the first that shows of the failure, no value has been counted as lost yet.
    if (logFailure(cause, context)) ledger_.reportLoss(LossCause::FileNotWritten);
}

void TextMediaWriter::loseValue(const std::string& cause, const MediaWriterContext& context)
{
    logFailure(cause, context);
    ledger_.reportLoss(LossCause::FileNotWritten);
}

bool TextMediaWriter::logFailure(const std::string& cause, const MediaWriterContext& context)
{
    if (failed_ == path_) return false;
    failed_ = path_;
    Utils::createLogEntry(Utils::SeverityFailure, dataWriterChannel(),
                          "Media writer %" PRIu64 ": Writing the text file \"%s\" failed. Message: %s",
                          context.indices->mediaWriterIndex, path_.c_str(), cause.c_str());
    return true;
}

}  // namespace Plugin::NivexStageletPackageBase

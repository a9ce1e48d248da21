#pragma once

#include <cstdint>
#include <filesystem>
#include <vector>

#include "core/ledger.h"
#include "datawriter/DataWriterSettings.h"
#include "datawriter/TextTokenTable.h"
#include "datawriter/TimeSnapshot.h"
#include "datawriter/WriterIndices.h"
#include "utils/variant.h"

namespace Plugin::NivexStageletPackageBase {

/// What a media writer needs of the node, all owned by the caller and valid for one call.
struct MediaWriterContext
{
    const MediaWriterSettings* settings;  ///< Of this writer.
    TimeSnapshot* time;
    const std::filesystem::path* folder;  ///< To write into; not to be relied on at the end of a record.
    const TextTokenTable* tokens;
    const WriterIndices* indices;
    const std::vector<InputPinSettings>* pins;
};

/// Where writers account for data within writeData, endRecord and endSession. Every value that a writer gets is
/// either recorded, lost, or lost through the exception that writeData ends with, which the node counts.
class IWriterLedger
{
public:
    /// @param files that were finished by this
    /// @param bytes that went to the disk
    virtual void reportRecorded(std::uint64_t files, std::uint64_t bytes) = 0;
    virtual void reportLoss(Nivex::DataProcessing::Core::LossCause cause) = 0;

protected:
    ~IWriterLedger() = default;
};

/// Writes data to files of one kind during one session of a DataWriter. The calls come from one thread at a time,
/// under the node's lock: beginSession; for each record beginRecord, any number of writeData, endRecord; at last
/// endSession. What a call throws is logged by the node, and the calls go on.
class IMediaWriter
{
public:
    virtual ~IMediaWriter() = default;
    virtual void beginSession(const MediaWriterContext& context) = 0;
    virtual void beginRecord(const MediaWriterContext& context) = 0;
    /// Writes the value of one pin, whose number the indices hold.
    virtual void writeData(const Nivex::DataProcessing::Utils::Variant& value,
                           const Nivex::DataProcessing::Utils::TypeInfo& type,
                           const MediaWriterContext& context) = 0;
    virtual void endRecord(const MediaWriterContext& context) = 0;
    virtual void endSession(const MediaWriterContext& context) = 0;
};

}  // namespace Plugin::NivexStageletPackageBase

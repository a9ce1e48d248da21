#pragma once

#include <filesystem>
#include <memory>
#include <optional>
#include <vector>

#include "core/inodemapcontainer.h"
#include "datawriter/DataWriter.h"
#include "datawriter/DataWriterLog.h"
#include "datawriter/DataWriterNodeMap.h"
#include "datawriter/RecordTimer.h"
#include "utils/property.h"

namespace Plugin::NivexStageletPackageBase {

/// The state of a DataWriter and its sessions. All is used under the node's lock, but for createdPinCount, which
/// only the one thread touches that changes pins.
class DataWriterPrivate final : private IWriterLedger
{
public:
    DataWriterPrivate(DataWriter& node, MediaWriterFactory factory);

    /// Raises what getting the current folder or starting the timer raises; there is no session then.
    void beginSession();
    /// Decides on one update, and writes it if it is to be a record.
    void processUpdate();
    void endSession();

    const std::vector<Nivex::DataProcessing::Core::NodeMapInfo> nodeMapInfos;
    /// One for each pin that there can be, so that the address of a pin's property never changes.
    std::vector<std::unique_ptr<Nivex::DataProcessing::Utils::VariantProperty>> pinProperties;
    DataWriterNodeMap::Settings settings;
    std::filesystem::path sessionFolder;
    std::filesystem::path recordFolder;
    DataWriterNodeMap nodeMap;
    std::uint64_t createdPinCount = 0;

private:
    using Operation = void (IMediaWriter::*)(const MediaWriterContext& context);

    void reportRecorded(std::uint64_t files, std::uint64_t bytes) override;
    void reportLoss(Nivex::DataProcessing::Core::LossCause cause) override;

    bool openSessionFolder(TimeSnapshot& time);
    /// Appends the name that the template gives to `folder` and makes sure that this folder exists. False, with a
    /// log entry, if it can't be made or the name is "..".
    bool enterFolder(std::filesystem::path& folder, const GenICam::gcstring& nameTemplate, TimeSnapshot& time,
                     const char* activity);
    void createMediaWriters(TimeSnapshot& time);
    void evaluateRecordPeriod();

    bool isRecordDue();
    bool hasPeriodHit();
    Nivex::DataProcessing::Utils::Variant valueOfPin(std::size_t pin) const;
    void writeRecord(TimeSnapshot& time);
    void writePin(std::size_t pin, TimeSnapshot& time);

    /// Runs one operation on each media writer in order, under its number. What one throws is logged, counted by
    /// `cause` if there is one, and doesn't keep the others from their turn.
    void forEachWriter(Operation operation, const char* activity, const std::filesystem::path& folder,
                       TimeSnapshot& time, std::optional<Nivex::DataProcessing::Core::LossCause> cause = {});
    MediaWriterContext contextFor(std::size_t writer, TimeSnapshot& time, const std::filesystem::path& folder,
                                  const WriterIndices& indices) const;

    DataWriter& node_;
    MediaWriterFactory factory_;
    const TextTokenTable tokens_;
    bool sessionActive_ = false;
    std::vector<std::shared_ptr<IMediaWriter>> mediaWriters_;  ///< As in the settings; entries may be null.
    WriterIndices indices_;
    std::uint64_t recordPeriod_ = 1;  ///< As it was at the start of the session.
    bool timeBasedPeriod_ = false;
    std::uint64_t nextRecordUpdate_ = 1;
    RecordTimer timer_;
    bool accounted_ = false;  ///< Whether the present record has reported anything to the ledger.
};

}  // namespace Plugin::NivexStageletPackageBase

#pragma once

#include <filesystem>

#include "datawriter/DataWriterNodeMapBase.h"
#include "datawriter/INodeMapObserver.h"
#include "utils/cowptr.h"

namespace Plugin::NivexStageletPackageBase {

/// The parameters of a DataWriter as a view of its settings. Every access takes the lock of StageletNodeMapBase
/// for as long as it reads or writes the settings; the observer is told afterwards. A selected parameter belongs
/// to the pin, writer or section that its selectors name at that moment; a selector beyond its range, which only a
/// wrong recipe brings, raises std::out_of_range or RuntimeException.
class DataWriterNodeMap final : public DataWriterNodeMapBase
{
public:
    using Settings = Nivex::DataProcessing::Utils::COWPtr<DataWriterSettings>;

    /// All arguments outlive this object.
    DataWriterNodeMap(Settings& settings, const std::filesystem::path& sessionFolder,
                      const std::filesystem::path& recordFolder, INodeMapObserver& observer);

    /// To be called under the lock after the settings were replaced: brings the limits of selectors in line, and
    /// has clients read everything anew.
    void refresh();

    std::uint64_t zReadNumInputDataPins() const override;
    void zWriteNumInputDataPins(std::uint64_t value) override;
    std::uint64_t zReadNumMediaWriters() const override;
    void zWriteNumMediaWriters(std::uint64_t value) override;
    std::uint64_t zReadRecordPeriod() const override;
    void zWriteRecordPeriod(std::uint64_t value) override;
    RecordPeriodUnit zReadRecordPeriodUnit() const override;
    void zWriteRecordPeriodUnit(RecordPeriodUnit value) override;
    std::uint64_t zReadInputDataPinSelector() const override;
    void zWriteInputDataPinSelector(std::uint64_t value) override;
    gcstring zReadPinDescription() const override;
    void zWritePinDescription(const gcstring& text) override;
    WriteEnable zReadWriteEnable() const override;
    void zWriteWriteEnable(WriteEnable value) override;
    RecordTriggerSelector zReadRecordTriggerSelector() const override;
    void zWriteRecordTriggerSelector(RecordTriggerSelector value) override;
    RecordTriggerEnable zReadRecordTriggerEnable() const override;
    void zWriteRecordTriggerEnable(RecordTriggerEnable value) override;
    TextFormatSelector zReadTextFormatSelector() const override;
    void zWriteTextFormatSelector(TextFormatSelector value) override;
    gcstring zReadTextFormat() const override;
    void zWriteTextFormat(const gcstring& text) override;
    std::uint64_t zReadUseMediaWriterSelector() const override;
    void zWriteUseMediaWriterSelector(std::uint64_t value) override;
    UseMediaWriterEnable zReadUseMediaWriterEnable() const override;
    void zWriteUseMediaWriterEnable(UseMediaWriterEnable value) override;
    std::uint64_t zReadMediaWriterSelector() const override;
    void zWriteMediaWriterSelector(std::uint64_t value) override;
    gcstring zReadMediaWriterDescription() const override;
    void zWriteMediaWriterDescription(const gcstring& text) override;
    MediaType zReadMediaType() const override;
    void zWriteMediaType(MediaType value) override;
    FileScope zReadFileScope() const override;
    void zWriteFileScope(FileScope value) override;
    FileMode zReadFileMode() const override;
    void zWriteFileMode(FileMode value) override;
    double zReadQuality() const override;
    void zWriteQuality(double value) override;
    gcstring zReadOutputFolderName() const override;
    void zWriteOutputFolderName(const gcstring& text) override;
    gcstring zReadSessionFolderName() const override;
    void zWriteSessionFolderName(const gcstring& text) override;
    gcstring zReadRecordFolderName() const override;
    void zWriteRecordFolderName(const gcstring& text) override;
    gcstring zReadFileName() const override;
    void zWriteFileName(const gcstring& text) override;
    double zReadPlayBackSpeed() const override;
    void zWritePlayBackSpeed(double value) override;
    gcstring zReadUsedSessionFolderPath() const override;
    void zWriteUsedSessionFolderPath(const gcstring& text) override;
    gcstring zReadUsedRecordFolderPath() const override;
    void zWriteUsedRecordFolderPath(const gcstring& text) override;

private:
    template <typename Field>
    auto read(Field field) const;
    template <typename Field>
    auto readPin(Field field) const;
    template <typename Field>
    auto readWriter(Field field) const;

    /// Runs the change on the settings and tells the observer.
    template <typename Change>
    void edit(const Change& change, NodeMapChange kind = NodeMapChange::Settings);
    template <typename Field, typename Value>
    void write(Field field, const Value& value);
    template <typename Field, typename Value>
    void writePin(Field field, const Value& value);
    template <typename Field, typename Value>
    void writeWriter(Field field, const Value& value);
    void writeCount(std::uint64_t DataWriterSettings::*count, std::uint64_t value, NodeMapChange kind);

    const InputPinSettings& selectedPin() const;
    void setSelectorLimits();

    Settings& settings_;
    const std::filesystem::path& sessionFolder_;
    const std::filesystem::path& recordFolder_;
    INodeMapObserver& observer_;
};

}  // namespace Plugin::NivexStageletPackageBase

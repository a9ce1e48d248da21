#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <memory>
#include <vector>

#include "gcbase/gcstring.h"

#include "datawriter/DataWriterSettings.h"
#include "parameteradapter/stageletnodemapbase.h"

namespace Plugin::NivexStageletPackageBase {

/// The face of a DataWriter's parameters: owns a port for each, with its texts and limits, and makes the node map.
/// Each port relays to the zRead and zWrite function of its name, which a derived class implements and in which it
/// takes the node's lock.
class DataWriterNodeMapBase : public StageletNodeMapBase
{
public:
    using gcstring = GenICam::gcstring;

    /// Gives or withdraws write access to the parameters that are fixed during a session.
    void setSessionParametersWritable(bool writable);

    virtual std::uint64_t zReadNumInputDataPins() const = 0;
    virtual void zWriteNumInputDataPins(std::uint64_t value) = 0;
    virtual std::uint64_t zReadNumMediaWriters() const = 0;
    virtual void zWriteNumMediaWriters(std::uint64_t value) = 0;
    virtual std::uint64_t zReadRecordPeriod() const = 0;
    virtual void zWriteRecordPeriod(std::uint64_t value) = 0;
    virtual RecordPeriodUnit zReadRecordPeriodUnit() const = 0;
    virtual void zWriteRecordPeriodUnit(RecordPeriodUnit value) = 0;
    virtual std::uint64_t zReadInputDataPinSelector() const = 0;
    virtual void zWriteInputDataPinSelector(std::uint64_t value) = 0;
    virtual gcstring zReadPinDescription() const = 0;
    virtual void zWritePinDescription(const gcstring& text) = 0;
    virtual WriteEnable zReadWriteEnable() const = 0;
    virtual void zWriteWriteEnable(WriteEnable value) = 0;
    virtual RecordTriggerSelector zReadRecordTriggerSelector() const = 0;
    virtual void zWriteRecordTriggerSelector(RecordTriggerSelector value) = 0;
    virtual RecordTriggerEnable zReadRecordTriggerEnable() const = 0;
    virtual void zWriteRecordTriggerEnable(RecordTriggerEnable value) = 0;
    virtual TextFormatSelector zReadTextFormatSelector() const = 0;
    virtual void zWriteTextFormatSelector(TextFormatSelector value) = 0;
    virtual gcstring zReadTextFormat() const = 0;
    virtual void zWriteTextFormat(const gcstring& text) = 0;
    virtual std::uint64_t zReadUseMediaWriterSelector() const = 0;
    virtual void zWriteUseMediaWriterSelector(std::uint64_t value) = 0;
    virtual UseMediaWriterEnable zReadUseMediaWriterEnable() const = 0;
    virtual void zWriteUseMediaWriterEnable(UseMediaWriterEnable value) = 0;
    virtual std::uint64_t zReadMediaWriterSelector() const = 0;
    virtual void zWriteMediaWriterSelector(std::uint64_t value) = 0;
    virtual gcstring zReadMediaWriterDescription() const = 0;
    virtual void zWriteMediaWriterDescription(const gcstring& text) = 0;
    virtual MediaType zReadMediaType() const = 0;
    virtual void zWriteMediaType(MediaType value) = 0;
    virtual FileScope zReadFileScope() const = 0;
    virtual void zWriteFileScope(FileScope value) = 0;
    virtual FileMode zReadFileMode() const = 0;
    virtual void zWriteFileMode(FileMode value) = 0;
    virtual double zReadQuality() const = 0;
    virtual void zWriteQuality(double value) = 0;
    virtual gcstring zReadOutputFolderName() const = 0;
    virtual void zWriteOutputFolderName(const gcstring& text) = 0;
    virtual gcstring zReadSessionFolderName() const = 0;
    virtual void zWriteSessionFolderName(const gcstring& text) = 0;
    virtual gcstring zReadRecordFolderName() const = 0;
    virtual void zWriteRecordFolderName(const gcstring& text) = 0;
    virtual gcstring zReadFileName() const = 0;
    virtual void zWriteFileName(const gcstring& text) = 0;
    virtual double zReadPlayBackSpeed() const = 0;
    virtual void zWritePlayBackSpeed(double value) = 0;
    virtual gcstring zReadUsedSessionFolderPath() const = 0;
    virtual void zWriteUsedSessionFolderPath(const gcstring& text) = 0;
    virtual gcstring zReadUsedRecordFolderPath() const = 0;
    virtual void zWriteUsedRecordFolderPath(const gcstring& text) = 0;

protected:
    /// Adds the ports. The derived class builds the map, as the ports can't be read before.
    DataWriterNodeMapBase();

    void setMaxInputDataPinSelector(std::uint64_t max);
    /// Of both selectors of media writers.
    void setMaxMediaWriterSelectors(std::uint64_t max);

private:
    using IntegerPort = std::shared_ptr<AnythingToNodeMapAdapter::IntegerParameterPortBase>;
    struct Row;

    // These add a port that reads and writes through two functions of this class. A row that names a port keeps
    // it there.
    template <auto read, auto write>
    void addInteger(const Row& row, const IntegerRange& range, const char* representation,
                    IntegerPort* kept = nullptr);
    template <auto read, auto write>
    void addFloat(const Row& row, const FloatRange& range, const char* representation);
    template <auto read, auto write>
    void addText(const Row& row, std::uint64_t maxLength, bool isWritable = true);
    template <auto read, auto write, typename E, std::size_t count>
    void addEnumeration(const Row& row, const std::array<EnumEntryRow<E>, count>& entries);
    template <typename Port>
    void addRow(const Row& row, const std::shared_ptr<Port>& port);

    void addRecordParameters();
    void addPinParameters();
    void addMediaWriterParameters();
    void addFolderParameters();

    std::vector<std::function<void(bool writable)>> sessionParameters_;
    IntegerPort inputDataPinSelector_;
    IntegerPort useMediaWriterSelector_;
    IntegerPort mediaWriterSelector_;
};

}  // namespace Plugin::NivexStageletPackageBase

// The sessions of a DataWriter: beginSession, then processUpdate for each update, then endSession.

#include "datawriter/DataWriterPrivate.h"

#include <system_error>

#include "gcbase/exception.h"

#include "core/ivalue.h"
#include "datawriter/NameRendering.h"
#include "datawriter/RecordTriggers.h"

namespace Plugin::NivexStageletPackageBase {

namespace Core = Nivex::DataProcessing::Core;
namespace Utils = Nivex::DataProcessing::Utils;
namespace fs = std::filesystem;
using Core::LossCause;

namespace {

const char* beginSessionActivity(MediaType type)
{
    switch (type) {
        case MediaType::MP4:
            return "starting video media writer session";
        case MediaType::TXT:
            return "starting text media writer session";
        default:
            return "starting image media writer session";
    }
}

/// Milliseconds in the unit; 0 for what is no unit of time.
std::uint64_t millisecondsIn(RecordPeriodUnit unit)
{
    switch (unit) {
        case RecordPeriodUnit::Update:
            return 0;
        case RecordPeriodUnit::Milliseconds:
            return 1;
        case RecordPeriodUnit::Seconds:
            return 1000;
        case RecordPeriodUnit::Minute:
            return 60000;
        case RecordPeriodUnit::Hours:
            return 3600000;
    }
    return 0;
}

bool isDirectory(const fs::path& path)
{
    std::error_code failed;
    return fs::is_directory(path, failed);
}

}  // namespace

DataWriterPrivate::DataWriterPrivate(DataWriter& node, MediaWriterFactory factory)
    : nodeMapInfos{Core::NodeMapInfo("Data Writer", StageletNodeMapBase::identifier)},
      settings(DataWriterNodeMap::Settings::make()),
      nodeMap(settings, sessionFolder, recordFolder, node),
      node_(node),
      factory_(std::move(factory))
{
    for (std::uint64_t i = 0; i < DataWriterSettings::maxCount; ++i)
        pinProperties.push_back(std::make_unique<Utils::VariantProperty>(Utils::TypeInfo::get<Core::IValue>()));
}

// Ledger

void DataWriterPrivate::reportRecorded(std::uint64_t files, std::uint64_t bytes)
{
    accounted_ = true;
    node_.reportRecorded(files, bytes);
}

void DataWriterPrivate::reportLoss(LossCause cause)
{
    accounted_ = true;
    node_.reportLoss(cause);
}

// Session

void DataWriterPrivate::beginSession()
{
    indices_ = WriterIndices{.sessionIndex = indices_.sessionIndex + 1};
    sessionActive_ = false;
    TimeSnapshot time;
    sessionActive_ = openSessionFolder(time);
    if (sessionActive_) createMediaWriters(time);
    evaluateRecordPeriod();
}

bool DataWriterPrivate::openSessionFolder(TimeSnapshot& time)
{
    sessionFolder = settings->outputFolderName.str();
    if (sessionFolder.empty()) sessionFolder = fs::current_path();
    if (!isDirectory(sessionFolder)) return false;
    return enterFolder(sessionFolder, settings->sessionFolderName, time, "creating session folder");
}

bool DataWriterPrivate::enterFolder(fs::path& folder, const GenICam::gcstring& nameTemplate, TimeSnapshot& time,
                                    const char* activity)
{
    if (nameTemplate.empty()) return true;
    return dataWriterLog.guarded(&node_, activity, [&] {
        const std::string name = renderName(tokens_, nameTemplate.c_str(), time, indices_);
        if (name == "..") {
            GENICAM_THROW(RuntimeException,
                          "The template \"%s\" gives the name \"..\", which leads out of \"%s\".",
                          nameTemplate.c_str(), folder.c_str());
        }
        folder /= name;
        if (!isDirectory(folder)) fs::create_directory(folder);
    });
}

void DataWriterPrivate::createMediaWriters(TimeSnapshot& time)
{
    mediaWriters_.clear();
    for (std::size_t i = 0; i < settings->numMediaWriters; ++i) {
        const MediaType type = settings->mediaWriters.at(i).mediaType;
        indices_.mediaWriterIndex = i + 1;
        const std::shared_ptr<IMediaWriter>& writer = mediaWriters_.emplace_back(factory_(type, *this));
        if (!writer) continue;
        dataWriterLog.guarded(&node_, beginSessionActivity(type),
                              [&] { writer->beginSession(contextFor(i, time, sessionFolder, indices_)); });
    }
    indices_.mediaWriterIndex = 0;
}

void DataWriterPrivate::evaluateRecordPeriod()
{
    const std::uint64_t unit = millisecondsIn(settings->recordPeriodUnit);
    recordPeriod_ = settings->recordPeriod;
    timeBasedPeriod_ = recordPeriod_ != 0 && unit != 0;
    nextRecordUpdate_ = 1;
    if (timeBasedPeriod_ && sessionActive_) timer_.start(recordPeriod_ * unit);
}

void DataWriterPrivate::endSession()
{
    if (!sessionActive_) return;
    TimeSnapshot time;
    forEachWriter(&IMediaWriter::endSession, "ending media writer session", sessionFolder, time);
    mediaWriters_.clear();
    timer_.stop();
}

// Update

void DataWriterPrivate::processUpdate()
{
    ++indices_.updateIndex;
    if (!sessionActive_) return reportLoss(LossCause::NoSession);
    if (!isRecordDue()) return reportLoss(LossCause::RefusedByRule);
    ++indices_.recordIndex;
    TimeSnapshot time;
    recordFolder = sessionFolder;
    if (!enterFolder(recordFolder, settings->recordFolderName, time, "creating record folder")) {
        return reportLoss(LossCause::FileNotWritten);
    }
    accounted_ = false;
    writeRecord(time);
    if (!accounted_) reportRecorded(0, 0);
}

bool DataWriterPrivate::isRecordDue()
{
    if (hasPeriodHit()) return true;
    for (std::size_t pin = 0; pin < settings->numInputDataPins; ++pin) {
        if (hasTriggerHit(settings->pins.at(pin), valueOfPin(pin))) return true;
    }
    return false;
}

bool DataWriterPrivate::hasPeriodHit()
{
    if (recordPeriod_ == 0) return false;
    if (timeBasedPeriod_) return timer_.takeDue();
    if (indices_.updateIndex < nextRecordUpdate_) return false;
    nextRecordUpdate_ += recordPeriod_;
    return true;
}

Utils::Variant DataWriterPrivate::valueOfPin(std::size_t pin) const
{
    const Utils::VariantProperty& property = *pinProperties.at(pin);
    return property.hasValue() ? property.getVariant() : Utils::Variant();
}

void DataWriterPrivate::writeRecord(TimeSnapshot& time)
{
    forEachWriter(&IMediaWriter::beginRecord, "starting media writer record", recordFolder, time);
    for (std::size_t pin = 0; pin < settings->numInputDataPins; ++pin) {
        writePin(pin, time);
        pinProperties.at(pin)->reset();
    }
    // What was written so far may be incomplete without the end of its record.
    forEachWriter(&IMediaWriter::endRecord, "ending media writer record", sessionFolder, time,
                  LossCause::FileNotWritten);
}

void DataWriterPrivate::writePin(std::size_t pin, TimeSnapshot& time)
{
    const InputPinSettings& pinSettings = settings->pins.at(pin);
    const Utils::Variant value = valueOfPin(pin);
    if (!value.isValid() || pinSettings.writeEnable != WriteEnable::On) return;

    WriterIndices indices = indices_;
    indices.pinIndex = pin + 1;
    for (std::size_t i = 0; i < mediaWriters_.size(); ++i) {
        if (pinSettings.useMediaWriterEnable.at(i) != UseMediaWriterEnable::On) continue;
        if (!mediaWriters_[i]) {
            reportLoss(LossCause::Unsupported);
            continue;
        }
        indices.mediaWriterIndex = i + 1;
        const bool isSessionFile = settings->mediaWriters.at(i).fileScope == FileScope::Session;
        const MediaWriterContext context =
            contextFor(i, time, isSessionFile ? sessionFolder : recordFolder, indices);
        const bool isWritten = dataWriterLog.guarded(&node_, "writing media writer data", [&] {
            mediaWriters_[i]->writeData(value, value.getValueType(), context);
        });
        if (!isWritten) reportLoss(LossCause::FileNotWritten);
    }
}

// Media writers

void DataWriterPrivate::forEachWriter(Operation operation, const char* activity, const fs::path& folder,
                                      TimeSnapshot& time, std::optional<LossCause> cause)
{
    for (std::size_t i = 0; i < mediaWriters_.size(); ++i) {
        if (!mediaWriters_[i]) continue;
        indices_.mediaWriterIndex = i + 1;
        const bool isDone = dataWriterLog.guarded(
            &node_, activity, [&] { ((*mediaWriters_[i]).*operation)(contextFor(i, time, folder, indices_)); });
        if (!isDone && cause) reportLoss(*cause);
    }
    indices_.mediaWriterIndex = 0;
}

MediaWriterContext DataWriterPrivate::contextFor(std::size_t writer, TimeSnapshot& time, const fs::path& folder,
                                                 const WriterIndices& indices) const
{
    return {&settings->mediaWriters.at(writer), &time, &folder, &tokens_, &indices, &settings->pins};
}

}  // namespace Plugin::NivexStageletPackageBase

#include "datawriter/DataWriter.h"

#include <string>

#include "gcbase/exception.h"

#include "datawriter/DataWriterPrivate.h"
#include "threading/uniquelock.h"
#include "utils/log.h"
#include "utils/typeregistrar.h"

namespace Plugin::NivexStageletPackageBase {

namespace Core = Nivex::DataProcessing::Core;
namespace Utils = Nivex::DataProcessing::Utils;
using GenICam::gcstring;
using Guard = Nivex::DataProcessing::Threading::UniqueLock<Nivex::DataProcessing::Threading::IRecursiveLockable>;

namespace {

const Utils::TypeRegistrar<DataWriter, Core::SimpleNode, Core::INodeMapContainer> registrar;

gcstring pinName(std::uint64_t number)
{
    return "Data" + std::to_string(number);
}

/// Runs an operation on the settings store; what it throws is logged as a refusal before it goes on.
template <typename Operation>
void loggingRefusals(const void* node, const char* name, const Operation& operation)
{
    try {
        operation();
    } catch (const GenICam::GenericException& exception) {
        Utils::createLogEntry(
            Utils::SeverityRefused, dataWriterChannel(), "DataWriter %p: %s failed. Message: \"%s\" (%s:%i)", node,
            name, exception.GetDescription(), exception.GetSourceFileName(), exception.GetSourceLine());
        throw;
    }
}

void requireStore(const std::shared_ptr<Core::ISettings>& settings)
{
    if (!settings) GENICAM_THROW(InvalidArgumentException, "ptrSettings is a nullptr");
}

}  // namespace

DataWriter::DataWriter(const std::shared_ptr<Core::IResourcePool>& pool) : DataWriter(pool, createMediaWriter) {}

DataWriter::DataWriter(const std::shared_ptr<Core::IResourcePool>& pool, MediaWriterFactory factory)
    : SimpleNode(pool), private_(std::make_unique<DataWriterPrivate>(*this, std::move(factory)))
{
    setLock(private_->nodeMap.getLock());
    updatePins();
}

DataWriter::~DataWriter()
{
    cleanup();
}

void DataWriter::updatePins()
{
    const std::uint64_t wanted = private_->nodeMap.zReadNumInputDataPins();
    std::uint64_t& count = private_->createdPinCount;
    while (count < wanted) {
        const gcstring name = pinName(count + 1);
        createInput(name, name + " Input", *private_->pinProperties.at(count));
        ++count;
    }
    while (count > wanted) {
        removeInput(pinName(count));
        --count;
        private_->pinProperties.at(count)->reset();
    }
}

void DataWriter::onNodeMapChanged(NodeMapChange change)
{
    switch (change) {
        case NodeMapChange::PinCount:
            updatePins();
            notifySettingsChanged();
            return;
        case NodeMapChange::Settings:
        case NodeMapChange::MediaWriterCount:
            notifySettingsChanged();
            return;
    }
}

void DataWriter::onStarting(const Core::NodeArgumentCollection&)
{
    const Guard guard(*getLock());
    private_->nodeMap.setSessionParametersWritable(false);
    try {
        private_->beginSession();
    } catch (...) {
        onStopping();
        throw;
    }
}

void DataWriter::process()
{
    const Guard guard(*getLock());
    private_->processUpdate();
}

void DataWriter::onStopping()
{
    const Guard guard(*getLock());
    private_->nodeMap.setSessionParametersWritable(true);
    private_->endSession();
}

void DataWriter::loadSettings(const std::shared_ptr<Core::ISettings>& settings)
{
    {
        const Guard guard(*getLock());
        loggingRefusals(this, "loadSettings", [&] {
            requireStore(settings);
            if (getState() != Core::NodeState::Stopped) {
                GENICAM_THROW(RuntimeException, "Node must be in stopped state to deserialize.");
            }
            load(private_->settings.write(), *settings);
        });
        private_->nodeMap.refresh();
    }
    updatePins();
}

void DataWriter::saveSettings(const std::shared_ptr<Core::ISettings>& settings)
{
    const Guard guard(*getLock());
    loggingRefusals(this, "saveSettings", [&] {
        requireStore(settings);
        if (getState() != Core::NodeState::Stopped) {
            GENICAM_THROW(RuntimeException, "Node must be in stopped state to serialize.");
        }
        save(*private_->settings, *settings);
    });
}

std::vector<Core::NodeMapInfo> DataWriter::getNodeMapInfos()
{
    const Guard guard(*getLock());
    return private_->nodeMapInfos;
}

GenApi::CNodeMapRef DataWriter::getNodeMap(const gcstring& identifier)
{
    return private_->nodeMap.getNodeMap(identifier);
}

}  // namespace Plugin::NivexStageletPackageBase

// What the parameters of Camera do.
#include "base/featurepersistence.h"

#include "camera/camera_private.h"

namespace Plugin::NivexStageletPackageBase {

namespace Core = Nivex::DataProcessing::Core;
using namespace CameraDetail;
using GenICam::gcstring;

namespace {

constexpr const char* noDeviceProperty = "There is no device property to set. Execute Device Property Add first.";

/// The selected item of a list. Raises RuntimeException that says how to get one.
template <typename List>
auto& requireSelected(List& list, const void* node, const char* function, const char* text)
{
    auto* selected = list.selected();
    if (!selected) NODE_REFUSE(RuntimeException, cameraLog, node, function, text);
    return *selected;
}

gcstring selectedLine(const CameraPins::Lines& lines)
{
    return lines.selected() ? *lines.selected() : gcstring();
}

}  // namespace

// Acquisition

AcquisitionMode Camera::getAcquisitionMode() const
{
    const Guard guard(*getLock());
    return impl_->acquisitionMode;
}

void Camera::setAcquisitionMode(AcquisitionMode value)
{
    edit([&](Notices& notices) {
        if (impl_->acquisitionMode == value) return;
        impl_->acquisitionMode = value;
        notices.changed(impl_->parameters->acquisitionMode);
        notices.settingsChanged = true;
    });
}

FixCorruptImages Camera::getFixCorruptImages() const
{
    const Guard guard(*getLock());
    return impl_->fixCorruptImages;
}

void Camera::setFixCorruptImages(FixCorruptImages value)
{
    edit([&](Notices& notices) {
        if (impl_->fixCorruptImages == value) return;
        impl_->fixCorruptImages = value;
        notices.changed(impl_->parameters->fixCorruptImages);
        notices.outputsChanged = notices.settingsChanged = true;
    });
}

// The list of cameras

void Camera::executeDeviceListUpdate()
{
    requireStopped("executeDeviceListUpdate");
    DeviceAssignment::refresh(*impl_->pool);
    edit([&](Notices& notices) {
        *impl_->resourcesChanged = false;
        impl_->assignment.updateDevices(impl_->pool);
        impl_->showDevices(notices);
    });
}

unsigned long Camera::getDeviceSelector() const
{
    const Guard guard(*getLock());
    impl_->updateDevicesIfChanged();
    return impl_->assignment.getSelectedDevice();
}

void Camera::setDeviceSelector(unsigned long value)
{
    edit([&](Notices& notices) {
        requireStopped("setDeviceSelector");
        Impl& own = *impl_;
        own.updateDevicesIfChanged();
        const std::size_t before = own.assignment.getSelectedDevice();
        own.assignment.selectDevice(value);
        if (own.assignment.getSelectedDevice() == before) return;
        own.showDevices(notices);
        notices.settingsChanged = true;
    });
}

void Camera::executeDeviceChoose()
{
    Core::ResourceInfo device;
    {
        const Guard guard(*getLock());
        impl_->updateDevicesIfChanged();
        const Core::ResourceInfo* selected = impl_->assignment.getSelectedInfo();
        if (!selected) {
            NODE_REFUSE(RuntimeException, cameraLog, this, "executeDeviceChoose",
                        "There is no camera to choose. Execute Device List Update while one is connected.");
        }
        device = *selected;
    }
    setActiveAssignmentProperties(device);
}

// The properties wanted

DeviceProperties Camera::getActiveAssignmentProperties() const
{
    const Guard guard(*getLock());
    return impl_->assignment.properties().items();
}

void Camera::setActiveAssignmentProperties(const Core::ResourceInfo& device)
{
    setDeviceProperties("setActiveAssignmentProperties", [&](SelectableList<DeviceProperty>& list) {
        DeviceProperties properties;
        getAssignmentProperties(device, properties);
        list.assign(std::move(properties));
    });
}

void Camera::setDeviceProperties(const char* function,
                                 const std::function<void(SelectableList<DeviceProperty>&)>& change)
{
    edit([&](Notices& notices) {
        requireStopped(function);
        SelectableList<DeviceProperty>& list = impl_->assignment.properties();
        const SelectableList<DeviceProperty> before = list;
        change(list);
        if (list == before) return;
        notices.changed(impl_->parameters->devicePropertySelector);
        notices.changed(impl_->parameters->devicePropertyKey);
        notices.changed(impl_->parameters->devicePropertyValue);
        notices.settingsChanged = true;
    });
}

unsigned long Camera::getDevicePropertySelector() const
{
    const Guard guard(*getLock());
    return impl_->assignment.properties().index();
}

void Camera::setDevicePropertySelector(unsigned long value)
{
    setDeviceProperties("setDevicePropertySelector", [value](auto& list) { list.select(value); });
}

gcstring Camera::getDevicePropertyKey() const
{
    const Guard guard(*getLock());
    const DeviceProperty* row = impl_->assignment.properties().selected();
    return row ? row->first : gcstring();
}

void Camera::setDevicePropertyKey(const gcstring& value)
{
    constexpr const char* function = "setDevicePropertyKey";
    setDeviceProperties(
        function, [&](auto& list) { requireSelected(list, this, function, noDeviceProperty).first = value; });
}

gcstring Camera::getDevicePropertyValue() const
{
    const Guard guard(*getLock());
    const DeviceProperty* row = impl_->assignment.properties().selected();
    return row ? row->second : gcstring();
}

void Camera::setDevicePropertyValue(const gcstring& value)
{
    constexpr const char* function = "setDevicePropertyValue";
    setDeviceProperties(
        function, [&](auto& list) { requireSelected(list, this, function, noDeviceProperty).second = value; });
}

void Camera::executeDevicePropertyAdd()
{
    setDeviceProperties("executeDevicePropertyAdd", [](auto& list) { list.add({}); });
}

void Camera::executeDevicePropertyRemove()
{
    setDeviceProperties("executeDevicePropertyRemove", [](auto& list) { list.remove(); });
}

// Event and chunk pins

void Camera::setConfigurationLines(bool isEvent, const char* function,
                                   const std::function<void(CameraPins::Lines&)>& change)
{
    edit([&](Notices& notices) {
        requireStopped(function);
        CameraPins& pins = impl_->pins;
        const CameraParameters& parameters = *impl_->parameters;
        const CameraPins::Lines& before = isEvent ? pins.getEventLines() : pins.getChunkLines();
        CameraPins::Lines lines = before;
        change(lines);
        if (lines == before) return;
        notices.outputsChanged = lines.items() != before.items();
        if (isEvent) {
            pins.setEventLines(std::move(lines));
        } else {
            pins.setChunkLines(std::move(lines));
        }
        notices.changed(isEvent ? parameters.eventPinSelector : parameters.chunkPinSelector);
        notices.changed(isEvent ? parameters.eventPinConfiguration : parameters.chunkPinConfiguration);
        notices.settingsChanged = true;
    });
}

unsigned long Camera::getEventPinSelector() const
{
    const Guard guard(*getLock());
    return impl_->pins.getEventLines().index();
}

void Camera::setEventPinSelector(unsigned long value)
{
    setConfigurationLines(true, "setEventPinSelector", [value](auto& lines) { lines.select(value); });
}

gcstring Camera::getEventPinConfiguration() const
{
    const Guard guard(*getLock());
    return selectedLine(impl_->pins.getEventLines());
}

void Camera::setEventPinConfiguration(const gcstring& value)
{
    constexpr const char* function = "setEventPinConfiguration";
    setConfigurationLines(true, function, [&](auto& lines) {
        requireSelected(lines, this, function,
                        "There is no event pin to configure. Execute Event Pin Add first.") = value;
    });
}

void Camera::executeEventPinAdd()
{
    setConfigurationLines(true, "executeEventPinAdd", [](auto& lines) { lines.add({}); });
}

void Camera::executeEventPinRemove()
{
    setConfigurationLines(true, "executeEventPinRemove", [](auto& lines) { lines.remove(); });
}

unsigned long Camera::getChunkPinSelector() const
{
    const Guard guard(*getLock());
    return impl_->pins.getChunkLines().index();
}

void Camera::setChunkPinSelector(unsigned long value)
{
    setConfigurationLines(false, "setChunkPinSelector", [value](auto& lines) { lines.select(value); });
}

gcstring Camera::getChunkPinConfiguration() const
{
    const Guard guard(*getLock());
    return selectedLine(impl_->pins.getChunkLines());
}

void Camera::setChunkPinConfiguration(const gcstring& value)
{
    constexpr const char* function = "setChunkPinConfiguration";
    setConfigurationLines(false, function, [&](auto& lines) {
        requireSelected(lines, this, function,
                        "There is no chunk pin to configure. Execute Chunk Pin Add first.") = value;
    });
}

void Camera::executeChunkPinAdd()
{
    setConfigurationLines(false, "executeChunkPinAdd", [](auto& lines) { lines.add({}); });
}

void Camera::executeChunkPinRemove()
{
    setConfigurationLines(false, "executeChunkPinRemove", [](auto& lines) { lines.remove(); });
}

// Configuration sets

StreamType Camera::getStreamType() const
{
    const Guard guard(*getLock());
    return impl_->streamType;
}

void Camera::setStreamType(StreamType value)
{
    edit([&](Notices& notices) {
        Impl& own = *impl_;
        if (own.streamType == value) return;
        own.streamType = value;
        notices.changed(own.parameters->configurationSetSelector);
        own.showConfigurationSet(notices);
        notices.settingsChanged = true;
    });
}

gcstring Camera::getCfgSetStagedContent() const
{
    const Guard guard(*getLock());
    return impl_->configurationSets.getStaged(impl_->selectedSet());
}

void Camera::setCfgSetStagedContent(const gcstring& value)
{
    edit([&](Notices& notices) {
        Impl& own = *impl_;
        const gcstring before = own.configurationSets.getStaged(own.selectedSet());
        own.configurationSets.setStaged(own.selectedSet(), value);
        if (own.configurationSets.getStaged(own.selectedSet()) == before) return;
        own.showConfigurationSet(notices);
        notices.settingsChanged = true;
    });
}

void Camera::executeCfgSetFetch()
{
    edit([&](Notices& notices) {
        Impl& own = *impl_;
        own.configurationSets.fetch(own.selectedSet(), [&own](const gcstring& identifier) {
            gcstring text;
            Nivex::CFeaturePersistence::SaveToString(text, *own.requireNodeMap(identifier));
            return text;
        });
        own.showConfigurationSet(notices);
        notices.settingsChanged = true;
    });
}

void Camera::executeCfgSetCommit()
{
    edit([&](Notices& notices) {
        Impl& own = *impl_;
        own.configurationSets.commit(own.selectedSet(),
                                     own.isCameraHeld() ? own.loadFunction() : ConfigurationSets::Load());
        own.showConfigurationSet(notices);
        notices.settingsChanged = true;
    });
}

void Camera::executeCfgSetClear()
{
    edit([&](Notices& notices) {
        impl_->configurationSets.clear(impl_->selectedSet());
        impl_->showConfigurationSet(notices);
        notices.settingsChanged = true;
    });
}

void Camera::transferCfgSetActiveContentToCamera()
{
    const Guard guard(*getLock());
    impl_->configurationSets.apply(impl_->loadFunction());
}

GenApi::NodeMapPtr Camera::Impl::requireNodeMap(const gcstring& identifier) const
{
    GenApi::NodeMapPtr map = findNodeMap(identifier);
    if (!map) {
        GENICAM_THROW(RuntimeException, "There is no node map \"%s\" now: no camera has been allocated.",
                      identifier.c_str());
    }
    return map;
}

ConfigurationSets::Load Camera::Impl::loadFunction() const
{
    return [this](const gcstring& identifier, const gcstring& text) {
        Nivex::CFeaturePersistence::LoadFromString(text, *requireNodeMap(identifier));
    };
}

}  // namespace Plugin::NivexStageletPackageBase

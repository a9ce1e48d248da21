#include "camera/camera.h"

#include <algorithm>

#include "camera/camera_private.h"
#include "utils/typeregistrar.h"

namespace Plugin::NivexStageletPackageBase {

namespace Core = Nivex::DataProcessing::Core;
namespace Utils = Nivex::DataProcessing::Utils;
using namespace CameraDetail;
using GenICam::gcstring;

namespace {

const Utils::TypeRegistrar<Camera, Core::AdvancedNode, Core::INodeMapContainer> registrar;

constexpr const char* noDeviceSelected = "No device selected";

}  // namespace

Camera::Impl::Impl(Camera& node, std::shared_ptr<Core::IResourcePool> resourcePool)
    : pool(std::move(resourcePool)),
      imageBuilder([this] { return camera.GetNodeMap(); }, [this] { return camera.GetStreamGrabberNodeMap(); },
                   pool ? pool->getBufferProvider() : nullptr),
      eventOutput(node),
      assignment(&node),
      configurationSets(&node)
{}

Camera::Camera(const std::shared_ptr<Core::IResourcePool>& pool)
    : AdvancedNode(pool),
      ThreadedConfigurationEventHandler(getThreadPool()),
      impl_(std::make_unique<Impl>(*this, pool))
{
    Impl& own = *impl_;
    if (!pool) {
        NODE_REFUSE(InvalidArgumentException, cameraLog, this, "Camera", "Resource pool must not be nullptr. ");
    }
    setLock(own.nodeMap.getLock());
    own.signals = std::make_unique<Impl::Signals>();
    own.signals->resourcesChanged.set(
        pool->getResourcesChangedSignal().connect([changed = own.resourcesChanged] { *changed = true; }));
    own.camera.RegisterImageEventHandler(this, Nivex::ERegistrationMode::Append, Nivex::ECleanup::None);
    own.camera.RegisterConfiguration(this, Nivex::ERegistrationMode::Append, Nivex::ECleanup::None);

    Notices notices;
    {
        const Guard guard(*getLock());
        own.parameters = std::make_unique<CameraParameters>(
            *this, own.nodeMap,
            CameraParameters::Limits{
                .device =
                    [&own] {
                        own.updateDevicesIfChanged();
                        return own.assignment.getMaxDevice();
                    },
                .deviceProperty = [&own] { return own.assignment.properties().maxIndex(); },
                .eventPin = [&own] { return own.pins.getEventLines().maxIndex(); },
                .chunkPin = [&own] { return own.pins.getChunkLines().maxIndex(); },
            });
        own.nodeMaps.push_back(
            {{"Camera", StageletNodeMapBase::identifier}, own.nodeMap.getNodeMap().GetNodeMap()});
        own.nodeMaps.push_back({{"Camera Instance", cameraInstanceMap}, own.camera.GetInstantCameraNodeMap()});
        notices.outputs = own.pins.getOutputs(own.fixCorruptImages);
    }
    updateOutputs(notices);
}

Camera::~Camera()
{
    // From here on the camera has nothing more to tell, and no job of the pool is left.
    impl_->signals->resourcesChanged.disconnect();
    impl_->camera.DeregisterConfiguration(this);
    finishRemovals();
    cleanup();
    impl_->camera.DeregisterImageEventHandler(this);
}

// Changes and what they have told

void Camera::edit(const std::function<void(Notices&)>& change)
{
    Notices notices;
    std::exception_ptr failure;
    {
        const Guard guard(*getLock());
        try {
            change(notices);
        } catch (...) {
            failure = std::current_exception();
        }
        if (notices.outputsChanged) notices.outputs = impl_->pins.getOutputs(impl_->fixCorruptImages);
    }
    tell(notices);
    if (failure) std::rethrow_exception(failure);
}

void Camera::tell(Notices& notices)
{
    if (notices.newError) setError(notices.newError);
    updateOutputs(notices);
    for (const auto& observer : notices.observers)
        observer();
    if (notices.nodeMapsChanged) impl_->signals->nodeMapsChanged();
    if (notices.settingsChanged) notifySettingsChanged();
}

void Camera::updateOutputs(Notices& notices)
{
    if (notices.outputs.empty()) return;
    const auto isWanted = [&notices](const Core::OutputDescriptor& present) {
        return std::any_of(notices.outputs.begin(), notices.outputs.end(), [&](const CameraOutput& output) {
            return output.name == present.getName() && output.type == present.getType() &&
                   output.description == present.getDisplayName();
        });
    };
    std::vector<gcstring> present;
    for (const Core::OutputDescriptor& output : getOutputDescriptors()) {
        if (isWanted(output)) {
            present.push_back(output.getName());
        } else {
            removeOutput(output.getName());
        }
    }
    for (const CameraOutput& output : notices.outputs) {
        if (std::find(present.begin(), present.end(), output.name) != present.end()) continue;
        createOutput(output.name, output.description, output.type, true, ~0UL);
        if (output.origin == PinMappingType::Invalid) continue;
        Utils::createLogEntry(Utils::SeverityDetail, cameraChannel(),
                              output.origin == PinMappingType::Event
                                  ? "Camera: Add camera event output: %s of type %s"
                                  : "Camera: Add camera chunk data output: %s of type %s",
                              output.name.c_str(), toText(output.valueType));
    }
}

void Camera::requireStopped(const char* function) const
{
    if (getState() == Core::NodeState::Stopped) return;
    NODE_REFUSE(RuntimeException, cameraLog, this, function,
                "Stagelet must not be running to change the choice of the camera or the output pins.");
}

// Node maps

std::vector<Core::NodeMapInfo> Camera::getNodeMapInfos()
{
    const Guard guard(*getLock());
    std::vector<Core::NodeMapInfo> infos;
    for (const Impl::ExposedNodeMap& shown : impl_->nodeMaps)
        infos.push_back(shown.info);
    return infos;
}

GenApi::CNodeMapRef Camera::getNodeMap(const gcstring& identifier)
{
    const Guard guard(*getLock());
    return GenApi::CNodeMapRef(impl_->findNodeMap(identifier));
}

Core::NodeBase::VoidSignal& Camera::getNodeMapsChangedSignal()
{
    return impl_->signals->nodeMapsChanged;
}

GenApi::NodeMapPtr Camera::Impl::findNodeMap(const gcstring& identifier) const
{
    const auto found = std::find_if(nodeMaps.begin(), nodeMaps.end(), [&](const ExposedNodeMap& shown) {
        return shown.info.GetIdentifier() == identifier;
    });
    return found == nodeMaps.end() ? nullptr : found->map;
}

void Camera::Impl::dropCameraMaps(Notices& notices)
{
    constexpr std::size_t ownMaps = 2;
    if (nodeMaps.size() <= ownMaps) return;
    nodeMaps.resize(ownMaps);
    notices.nodeMapsChanged = true;
}

// What the parameters show

void Camera::Impl::showDevices(Notices& notices)
{
    notices.show(parameters->deviceModelName, assignment.getShown(Nivex::Key::ModelName));
    notices.show(parameters->deviceVendorName, assignment.getShown(Nivex::Key::VendorName));
    notices.show(parameters->deviceSerialNumber, assignment.getShown(Nivex::Key::SerialNumber));
    notices.show(parameters->deviceUserDefinedName, assignment.getShown(Nivex::Key::UserDefinedName));
    notices.changed(parameters->deviceSelector);
}

void Camera::Impl::showConfigurationSet(Notices& notices)
{
    notices.changed(parameters->configurationSetStaged);
    notices.show(parameters->configurationSetActive, configurationSets.getActive(selectedSet()));
}

void Camera::Impl::showSelectedDevice(const Nivex::CDeviceInfo& device, Notices& notices)
{
    notices.show(parameters->selectedDeviceModelName, device.GetModelName());
    notices.show(parameters->selectedDeviceSerialNumber, device.GetSerialNumber());
    notices.show(parameters->selectedDeviceVendorName, device.GetVendorName());
    notices.show(parameters->selectedDeviceUserDefinedName, device.GetUserDefinedName());
    parameters->forEachSelectedDeviceText([&](ShownText& text) { notices.setAvailable(text.port(), true); });
}

void Camera::Impl::showNoSelectedDevice(const char* text, bool available, Notices& notices)
{
    parameters->forEachSelectedDeviceText([&](ShownText& shown) {
        notices.setAvailable(shown.port(), available);
        notices.show(shown, text);
    });
}

void Camera::Impl::setStoppedOnlyAvailable(bool available, Notices& notices)
{
    parameters->forEachStoppedOnly([&](const auto& port) { notices.setAvailable(port, available); });
}

void Camera::Impl::updateDevicesIfChanged()
{
    if (!resourcesChanged->exchange(false)) return;
    assignment.updateDevices(pool);
    // Nobody asked for it here, so the observers are left alone; who reads gets the truth.
    Notices unheard;
    showDevices(unheard);
}

// Removal

void Camera::Impl::keepDeviceError(Notices& notices)
{
    if (deviceError) return;
    deviceError = std::make_shared<Core::DeviceError>(
        "Stagelet has stopped working because the camera has been disconnected.", Utils::DateTime::now());
    notices.newError = deviceError;
}

void Camera::handleCameraDeviceRemoval()
{
    giveUpCamera([this](Notices& notices) {
        Impl& own = *impl_;
        own.keepDeviceError(notices);
        notices.nodeMapsChanged = true;  // also if there were none to drop: listeners look at the node anew
        own.showNoSelectedDevice(noDeviceSelected, false, notices);
        Utils::createLogEntry(Utils::SeverityRefused, cameraChannel(), "Camera %p: Device has been removed.",
                              static_cast<const void*>(this));
    });
}

}  // namespace Plugin::NivexStageletPackageBase

// How Camera gets its camera and gives it up.
#include "camera/camera_private.h"

namespace Plugin::NivexStageletPackageBase {

namespace Core = Nivex::DataProcessing::Core;
namespace Utils = Nivex::DataProcessing::Utils;
using namespace CameraDetail;

namespace {

/// Runs one step of the allocation. What it throws is logged and passes on; what is of no known kind becomes a
/// RuntimeException.
template <typename Step>
void runStep(const char* activity, const void* node, const Step& step)
{
    const std::string logged = std::string(activity) + ".";
    try {
        step();
    } catch (const GenICam::GenericException& e) {
        cameraLog.logCaught(node, logged.c_str(), e.GetDescription());
        throw;
    } catch (const std::exception& e) {
        cameraLog.logCaught(node, logged.c_str(), e.what());
        throw;
    } catch (...) {
        cameraLog.logCaughtUnknown(node, logged.c_str());
        GENICAM_THROW(RuntimeException, "Unknown exception caught while %s.", activity);
    }
}

}  // namespace

void Camera::allocateAdditionalResources(const std::shared_ptr<Core::IResourcePool>& pool, bool mayRefresh)
{
    // The camera of before may still be on its way out.
    waitForRemoval();
    std::shared_ptr<Core::DeviceError> oldError;
    {
        const Guard guard(*getLock());
        if (impl_->isCameraHeld()) return;
        oldError = std::exchange(impl_->deviceError, nullptr);
    }
    if (oldError) resetError(oldError);
    try {
        edit([&](Notices& notices) {
            std::unique_ptr<Nivex::INivexDevice> device = impl_->assignment.reserve(*impl_->pool, mayRefresh);
            runStep("allocating camera resource", this, [&] { holdCamera(std::move(device), notices); });
        });
        runStep("allocating additional resources", this,
                [&] { AdvancedNode::allocateAdditionalResources(pool, mayRefresh); });
    } catch (...) {
        giveUpCamera([this](Notices& notices) { impl_->showNoSelectedDevice(noDeviceListed, true, notices); });
        throw;
    }
}

void Camera::holdCamera(std::unique_ptr<Nivex::INivexDevice> device, Notices& notices)
{
    Impl& own = *impl_;
    own.camera.Attach(device.release(), Nivex::ECleanup::Delete);
    own.camera.Open();
    const Nivex::CDeviceInfo info = own.camera.GetDeviceInfo();
    Utils::createLogEntry(Utils::SeverityProgress, cameraChannel(), "Camera %p: Using camera \"%s\"",
                          static_cast<const void*>(this), info.GetFullName().c_str());
    own.nodeMaps.push_back({{"Device Transport Layer", transportLayerMap}, own.camera.GetTLNodeMap()});
    own.nodeMaps.push_back({{"Camera", cameraDeviceMap}, own.camera.GetNodeMap()});
    own.nodeMaps.push_back({{"Stream Parameters", streamGrabberMap}, own.camera.GetStreamGrabberNodeMap()});
    notices.nodeMapsChanged = true;
    own.showSelectedDevice(info, notices);
    transferCfgSetActiveContentToCamera();
}

void Camera::OnOpened(Nivex::CInstantCamera& camera)
{
    // Only the allocation opens, so this thread holds the node's lock.
    try {
        impl_->eventRegistrations.registerAll(camera, impl_->pins.getUsedEventLines(), impl_->eventOutput);
    } catch (...) {
        Utils::createLogEntry(Utils::SeverityRefused, cameraChannel(),
                              "Camera: Unexpected error in Camera::OnOpened()");
    }
}

Nivex::CDeviceInfo Camera::getCameraDeviceData() const
{
    return impl_->camera.GetDeviceInfo();
}

void Camera::freeAdditionalResources(bool final)
{
    waitForRemoval();
    giveUpCamera([this](Notices& notices) { impl_->showNoSelectedDevice(noDeviceListed, true, notices); });
    // A removal that was noticed between the two is of the camera just given up.
    waitForRemoval();
    AdvancedNode::freeAdditionalResources(final);
}

void Camera::giveUpCamera(const std::function<void(Notices&)>& change)
{
    // Whatever observers do, the camera has to be free for others.
    struct Closing
    {
        Camera& node;
        ~Closing() { node.closeCamera(); }
    };
    const Closing closing{*this};
    edit([&](Notices& notices) {
        impl_->dropCameraMaps(notices);
        change(notices);
    });
}

void Camera::closeCamera() noexcept
{
    const std::lock_guard closing(impl_->closingMutex);
    cameraLog.guarded(this, "closing the camera", [this] {
        impl_->camera.DetachDevice();
        impl_->eventRegistrations.deregisterAll(impl_->camera);
    });
}

}  // namespace Plugin::NivexStageletPackageBase

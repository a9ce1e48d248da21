#pragma once

#include <atomic>
#include <mutex>

#include "base/instantcamera.h"

#include "camera/callgate.h"
#include "camera/camera.h"
#include "camera/cameralog.h"
#include "camera/cameraparameters.h"
#include "camera/camerapins.h"
#include "camera/configurationsets.h"
#include "camera/eventpins.h"
#include "camera/framegapcounter.h"
#include "camera/grabbedimage.h"
#include "core/errors.h"
#include "threading/uniquelock.h"
#include "utils/connection.h"
#include "utils/signal.h"

// What the source files of Camera share: the record behind the node.

namespace Plugin::NivexStageletPackageBase {

namespace CameraDetail {

using Guard = Nivex::DataProcessing::Threading::UniqueLock<Nivex::DataProcessing::Threading::IRecursiveLockable>;

inline constexpr const char* cameraInstanceMap = "@CameraInstance";
inline constexpr const char* cameraDeviceMap = "@CameraDevice";
inline constexpr const char* transportLayerMap = "@DeviceTransportLayer";
inline constexpr const char* streamGrabberMap = "@StreamGrabber0";

}  // namespace CameraDetail

/// The way of event values to the node.
class Camera::EventOutput : public IEventPinOutput
{
public:
    explicit EventOutput(Camera& node) : node_(node) {}
    void outputEventValue(const GenICam::gcstring& pinName, Nivex::DataProcessing::Utils::Variant value) override;
    void onEventValueLost(const GenICam::gcstring& pinName) noexcept override;
    void onEventsMissed(const GenICam::gcstring& pinName, std::uint64_t count) noexcept override;

private:
    Camera& node_;
};

/// What is to be told when the node's lock has been released.
struct Camera::Notices
{
    template <typename Port>
    void changed(const std::shared_ptr<Port>& port)
    {
        observers.push_back([port] { port->notifyObserver(); });
    }
    void show(ShownText& shown, const GenICam::gcstring& text)
    {
        if (shown.show(text)) changed(shown.port());
    }
    template <typename Port>
    void setAvailable(const std::shared_ptr<Port>& port, bool available)
    {
        if (port->available == available) return;
        port->available = available;
        changed(port);
    }

    std::shared_ptr<Nivex::DataProcessing::Core::IError> newError;
    std::vector<std::function<void()>> observers;
    std::vector<CameraOutput> outputs;  ///< All that there have to be; empty if they have not changed.
    bool outputsChanged = false;
    bool nodeMapsChanged = false;
    bool settingsChanged = false;
};

struct Camera::Impl
{
    /// One node map that the node shows.
    struct ExposedNodeMap
    {
        Nivex::DataProcessing::Core::NodeMapInfo info;
        GenApi::NodeMapPtr map;
    };
    struct Signals
    {
        using VoidSignal =
            Nivex::DataProcessing::Utils::Signal<void(), Nivex::DataProcessing::Utils::VoidCombiner>;

        VoidSignal nodeMapsChanged;
        Nivex::DataProcessing::Utils::ScopedConnection resourcesChanged;
    };

    Impl(Camera& node, std::shared_ptr<Nivex::DataProcessing::Core::IResourcePool> resourcePool);

    /// Null if the node has no such map at present.
    GenApi::NodeMapPtr findNodeMap(const GenICam::gcstring& identifier) const;
    /// Raises RuntimeException in place of null.
    GenApi::NodeMapPtr requireNodeMap(const GenICam::gcstring& identifier) const;
    ConfigurationSets::Load loadFunction() const;
    bool isCameraHeld() const { return findNodeMap(CameraDetail::cameraDeviceMap) != nullptr; }
    GenICam::gcstring selectedSet() const { return nodeMapIdentifier(streamType); }
    void showDevices(Notices& notices);
    void showConfigurationSet(Notices& notices);
    void showSelectedDevice(const Nivex::CDeviceInfo& device, Notices& notices);
    void showNoSelectedDevice(const char* text, bool available, Notices& notices);
    void setStoppedOnlyAvailable(bool available, Notices& notices);
    void dropCameraMaps(Notices& notices);
    /// Makes the error of a removal, unless there is one.
    void keepDeviceError(Notices& notices);
    /// Takes over the pool's list of cameras if that has changed.
    void updateDevicesIfChanged();

    const std::shared_ptr<Nivex::DataProcessing::Core::IResourcePool> pool;
    /// Set by the pool's signal, which may come while others hold locks of nodes: so that is all it does.
    const std::shared_ptr<std::atomic<bool>> resourcesChanged = std::make_shared<std::atomic<bool>>(false);
    Nivex::CInstantCamera camera;
    GrabbedImageBuilder imageBuilder;
    EventOutput eventOutput;
    EventPinRegistrations eventRegistrations;
    CallGate eventGate;        ///< Open while the node runs.
    bool offersEvents = true;  ///< False once the limit of updates was met. Of the event thread, behind the gate.
    std::mutex closingMutex;   ///< One thread at a time gives the camera up. Taken without the node's lock.

    // Guarded by the node's lock.
    std::unique_ptr<Signals> signals;
    std::unique_ptr<CameraParameters> parameters;
    std::vector<ExposedNodeMap> nodeMaps;
    AcquisitionMode acquisitionMode = AcquisitionMode::Continuous;
    FixCorruptImages fixCorruptImages = FixCorruptImages::Off;
    StreamType streamType = StreamType::CameraDevice;
    DeviceAssignment assignment;
    CameraPins pins;
    ConfigurationSets configurationSets;
    std::shared_ptr<Nivex::DataProcessing::Core::DeviceError> deviceError;

    // Set while nothing is grabbed; then used by the grab thread alone.
    FrameGapCounter frameGaps;
    std::uint64_t discardedBefore = 0;  ///< Of earlier runs.

    /// Last, so that it goes first: clients of the map then find no port that leads to what is gone.
    StageletNodeMapBase nodeMap;
};

}  // namespace Plugin::NivexStageletPackageBase

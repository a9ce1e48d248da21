#pragma once

#include <functional>
#include <memory>
#include <vector>

#include "base/deviceinfo.h"
#include "base/eventhandlers.h"
#include "base/grabresult.h"

#include "camera/cameraenums.h"
#include "camera/deviceassignment.h"
#include "camera/threadedconfigurationeventhandler.h"
#include "core/advancednode.h"
#include "core/inodemapcontainer.h"

namespace Plugin::NivexStageletPackageBase {

/// The source of a recipe that acquires images from one camera.
///
/// Allocation reserves a free camera that has the wanted properties, opens it and gives it the active
/// configuration sets; the camera stays with the node until its resources are freed or it is unplugged. Start and
/// stop start and stop the acquisition. Each result of the camera is an update with the image and the values of
/// the chunk pins; each value of an event pin is an update of its own. A failed result gives an image that holds
/// the error or, with FixCorruptImages on, what could be saved of the picture, told by the pin "ImageCorrupt".
/// When the camera is unplugged the node keeps its settings, gets an error, and gives the camera up; after the
/// resources are freed or allocated again it can be started anew.
///
/// Threads: parameters, node maps and the queries may be used from any thread. Images come on the camera's
/// grab thread, events on its event thread, and a removal is dealt with on a thread of the pool. The node's
/// recursive lock, which also guards the map "@Stagelet", guards all state of the node. It may be held while the
/// camera's own lock is taken, never the other way round, and not while something waits for handlers of the camera
/// or for space in the recipe. Observers of parameters, signals and changes of pins come after it was released,
/// except that a client who writes through the node map holds it himself.
///
/// Configured pins and the choice of the camera can't be changed while the node runs: their parameters are not
/// available then, and the operations here raise RuntimeException. Every refusal is logged.
class Camera : public Nivex::DataProcessing::Core::AdvancedNode,
               public Nivex::DataProcessing::Core::INodeMapContainer,
               public Nivex::CImageEventHandler,
               public ThreadedConfigurationEventHandler
{
public:
    /// Raises InvalidArgumentException for null.
    explicit Camera(const std::shared_ptr<Nivex::DataProcessing::Core::IResourcePool>& pool);
    ~Camera() override;

protected:
    /// Does nothing while a camera is held. Raises RuntimeException if no camera fits, or none that is free, and
    /// whatever the camera raises as it is opened and configured; the node then holds no camera.
    void allocateAdditionalResources(const std::shared_ptr<Nivex::DataProcessing::Core::IResourcePool>& pool,
                                     bool mayRefresh) override;
    /// Waits for handlers of the camera.
    void freeAdditionalResources(bool final) override;
    /// The argument "AcquisitionMode" with the string "SingleFrame" or "Continuous" sets the parameter. Raises
    /// RuntimeException without a camera, and what the camera raises.
    void onStarting(const Nivex::DataProcessing::Core::NodeArgumentCollection& arguments) override;
    /// When it returns, no image and no event of this run is on its way to the recipe.
    void onStopping() override;

public:
    /// Both raise InvalidArgumentException for null and RuntimeException while running. Loading leaves what has no
    /// key as it is; a failure leaves the settings as far as loading has gone.
    void loadSettings(const std::shared_ptr<Nivex::DataProcessing::Core::ISettings>& settings) override;
    void saveSettings(const std::shared_ptr<Nivex::DataProcessing::Core::ISettings>& settings) override;

    /// "@Stagelet" and "@CameraInstance" are there always, "@DeviceTransportLayer", "@CameraDevice" and
    /// "@StreamGrabber0" while a camera is held.
    std::vector<Nivex::DataProcessing::Core::NodeMapInfo> getNodeMapInfos() override;
    GenApi::CNodeMapRef getNodeMap(const GenICam::gcstring& identifier) override;
    /// Fired after node maps came or went.
    VoidSignal& getNodeMapsChangedSignal();

    /// @name The handlers of the camera
    void OnImageGrabbed(Nivex::CInstantCamera& camera, const Nivex::CGrabResultPtr& result) override;
    void OnOpened(Nivex::CInstantCamera& camera) override;

    /// @name For other packages
    /// The properties of the camera held; none without one.
    GENICAM_API Nivex::CDeviceInfo getCameraDeviceData() const;
    /// What a camera must have to be allocated.
    GENICAM_API DeviceProperties getActiveAssignmentProperties() const;
    /// Wants the camera that is described.
    GENICAM_API void setActiveAssignmentProperties(const Nivex::DataProcessing::Core::ResourceInfo& device);

    /// @name Parameters
    /// Selectors are indices from 0; one beyond its list selects the last item. A value of an empty list is empty
    /// and can't be set (RuntimeException). Commands are done when they return.
    AcquisitionMode getAcquisitionMode() const;
    void setAcquisitionMode(AcquisitionMode value);
    FixCorruptImages getFixCorruptImages() const;
    /// Adds and removes the pin "ImageCorrupt".
    void setFixCorruptImages(FixCorruptImages value);

    bool isExecutingDeviceListUpdate() const { return false; }
    void executeDeviceListUpdate();
    unsigned long getDeviceSelector() const;
    void setDeviceSelector(unsigned long value);
    bool isExecutingDeviceChoose() const { return false; }
    /// RuntimeException if no camera is listed.
    void executeDeviceChoose();

    unsigned long getDevicePropertySelector() const;
    void setDevicePropertySelector(unsigned long value);
    GenICam::gcstring getDevicePropertyKey() const;
    void setDevicePropertyKey(const GenICam::gcstring& value);
    GenICam::gcstring getDevicePropertyValue() const;
    void setDevicePropertyValue(const GenICam::gcstring& value);
    bool isExecutingDevicePropertyAdd() const { return false; }
    void executeDevicePropertyAdd();
    bool isExecutingDevicePropertyRemove() const { return false; }
    void executeDevicePropertyRemove();

    // An error in a configuration is logged and costs its pin; a ValueName that stands twice raises
    // std::runtime_error.

    unsigned long getEventPinSelector() const;
    void setEventPinSelector(unsigned long value);
    GenICam::gcstring getEventPinConfiguration() const;
    void setEventPinConfiguration(const GenICam::gcstring& value);
    bool isExecutingEventPinAdd() const { return false; }
    void executeEventPinAdd();
    bool isExecutingEventPinRemove() const { return false; }
    void executeEventPinRemove();

    unsigned long getChunkPinSelector() const;
    void setChunkPinSelector(unsigned long value);
    GenICam::gcstring getChunkPinConfiguration() const;
    void setChunkPinConfiguration(const GenICam::gcstring& value);
    bool isExecutingChunkPinAdd() const { return false; }
    void executeChunkPinAdd();
    bool isExecutingChunkPinRemove() const { return false; }
    void executeChunkPinRemove();

    // What fails here raises RuntimeException and leaves the texts alone.

    StreamType getStreamType() const;
    void setStreamType(StreamType value);
    bool isExecutingCfgSetFetch() const { return false; }
    void executeCfgSetFetch();
    GenICam::gcstring getCfgSetStagedContent() const;
    void setCfgSetStagedContent(const GenICam::gcstring& value);
    bool isExecutingCfgSetCommit() const { return false; }
    void executeCfgSetCommit();
    bool isExecutingCfgSetClear() const { return false; }
    void executeCfgSetClear();

protected:
    void handleCameraDeviceRemoval() override;

private:
    struct Impl;
    struct Notices;
    class EventOutput;

    /// Runs `change` under the node's lock, and tells what it noted when the lock has been released; also when it
    /// throws.
    void edit(const std::function<void(Notices&)>& change);
    void tell(Notices& notices);
    void updateOutputs(Notices& notices);
    /// Raises RuntimeException unless stopped.
    void requireStopped(const char* function) const;

    void setConfigurationLines(bool isEvent, const char* function,
                               const std::function<void(SelectableList<GenICam::gcstring>&)>& change);
    void setDeviceProperties(const char* function,
                             const std::function<void(SelectableList<DeviceProperty>&)>& change);

    void holdCamera(std::unique_ptr<Nivex::INivexDevice> device, Notices& notices);
    void transferCfgSetActiveContentToCamera();
    /// Takes the camera's node maps away, with `change` under the same lock, and then the camera. Waits for its
    /// handlers.
    void giveUpCamera(const std::function<void(Notices&)>& change);
    void closeCamera() noexcept;
    void startGrabbing();
    /// Waits for handlers, whatever it raises.
    void endGrabbing();
    void putOutResult(const Nivex::CGrabResultPtr& result,
                      std::shared_ptr<Nivex::DataProcessing::Core::IGraphUpdate>& update);
    void putOutEventValue(const GenICam::gcstring& pinName, Nivex::DataProcessing::Utils::Variant value);
    std::shared_ptr<Nivex::DataProcessing::Core::IGraphUpdate> createUpdate();
    /// Has the ledger count something that never became an update; false if no update may begin any more.
    bool countLost(Nivex::DataProcessing::Core::LossCause cause) noexcept;
    void countDiscardedResults();

    std::unique_ptr<Impl> impl_;
};

}  // namespace Plugin::NivexStageletPackageBase

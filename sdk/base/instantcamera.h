#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <memory>

#include "gcbase/gcstring.h"
#include "genapi/inodemap.h"

#include "base/camerabackend.h"
#include "base/deviceinfo.h"
#include "base/eventhandlers.h"
#include "base/grabresult.h"

namespace Nivex {

/// Which results reach the user when he is slower than the camera.
enum class EGrabStrategy : std::uint8_t
{
    OneByOne,         ///< All, in order. When all buffers are in use, the camera loses frames.
    LatestImageOnly,  ///< The newest; older ones are skipped.
    LatestImages      ///< The newest few, in order; as many as the parameter OutputQueueSize says.
};

/// Who calls the image handlers.
enum class EGrabLoop : std::uint8_t
{
    ProvidedByInstantCamera,  ///< A thread of the camera.
    ProvidedByUser            ///< The caller of RetrieveResult.
};

enum class ETimeoutHandling : std::uint8_t
{
    Return,
    ThrowException
};

/// A camera from attachment to results: holds a device, its buffers, the grab thread and the handlers.
///
/// Buffers: StartGrabbing makes as many as the parameter MaxNumBuffer says, for the payload size of that moment. A
/// frame is written by the device straight into one of them; a result shares it, and the last user of the result
/// gives it back. Results stay good after the grabbing, the device and the camera have ended.
///
/// Threads: any thread may call any operation. Image and event handlers run without a lock of the camera; image
/// handlers of grabbings whose loop the camera provides on one thread, one result after the other, over the end of
/// a grabbing too.
///
/// Locks: attaching, opening, starting, stopping and their reverses take the camera's lock, a recursive one, and
/// call the configuration handlers with it; the queries and RetrieveResult do not take it. Inside it come the
/// locks of node maps. So a lock under which the camera is called must not be taken by a configuration handler,
/// unless its thread has it already - also at the end of a grabbing of `maxImages`, whose OnGrabStop and
/// OnGrabStopped come on the thread of the last result. And a node map's lock must not be held around such a call.
/// Operations that wait for image and event handlers (Close, DetachDevice, Attach, WaitForGrabLoop, the
/// destructor, the deregistrations and replacements) let go of the camera's lock meanwhile: call them without a
/// lock that such a handler takes, and not out of a handler unless it is said to be possible.
///
/// A failure of a configuration handler after a step does not undo the step: the others are called, and the first
/// failure reaches the caller.
class GENICAM_API CInstantCamera
{
public:
    CInstantCamera();
    /// Detaches and deregisters everything; waits for handlers.
    ~CInstantCamera();
    CInstantCamera(const CInstantCamera&) = delete;
    CInstantCamera& operator=(const CInstantCamera&) = delete;

    /// @name Device
    /// Takes a device in place of the present one, which is detached first. Raises InvalidArgumentException for
    /// null and for the present one.
    void Attach(INivexDevice* device, ECleanup cleanup = ECleanup::Delete);
    /// Closes and gives the device up: ended if it was attached with ECleanup::Delete, else the caller's again.
    /// Waits for handlers. Never throws for a device that is gone.
    void DetachDevice();
    bool IsNivexDeviceAttached() const;
    /// Empty if no device is attached.
    CDeviceInfo GetDeviceInfo() const;

    /// Raises LogicalErrorException without a device or while another thread closes it, and what the device
    /// raises. Does nothing when open.
    void Open();
    /// Stops grabbing and disconnects. Waits for handlers. Never throws for a device that is gone.
    void Close();
    bool IsOpen() const;
    bool IsCameraDeviceRemoved() const;

    /// @name Node maps
    /// Those of the device raise LogicalErrorException ("The camera is not open.") while it is not open; never
    /// null.
    GenApi::NodeMapPtr GetNodeMap() const;
    GenApi::NodeMapPtr GetTLNodeMap() const;
    GenApi::NodeMapPtr GetStreamGrabberNodeMap() const;
    /// The camera object's own parameters (MaxNumBuffer, OutputQueueSize, GrabCameraEvents, ChunkNodeMapsEnable,
    /// counts of buffers); always there.
    GenApi::NodeMapPtr GetInstantCameraNodeMap() const;

    /// @name Grabbing
    /// Makes buffers, starts the stream and executes the camera's AcquisitionStart. Opens the device if that has
    /// not been done. Ends by itself after `maxImages` results. Raises LogicalErrorException while grabbing, and
    /// what the device raises, with all undone; InvalidArgumentException for 0 images. Does not wait for handlers:
    /// one that still has a result of an earlier grabbing ends before it gets one of this.
    void StartGrabbing(std::size_t maxImages, EGrabStrategy strategy = EGrabStrategy::OneByOne,
                       EGrabLoop loop = EGrabLoop::ProvidedByUser);
    void StartGrabbing(EGrabStrategy strategy = EGrabStrategy::OneByOne,
                       EGrabLoop loop = EGrabLoop::ProvidedByUser);
    /// Stops camera and stream; results that wait are dropped and counted. A handler that runs goes on:
    /// this does not wait for it and may be called with its locks held, and by it. Does nothing when not grabbing.
    /// Never throws for a device that is gone.
    void StopGrabbing();
    /// True from StartGrabbing until StopGrabbing, the last of `maxImages` results or the removal of the device.
    bool IsGrabbing() const;
    /// Waits until no handler runs for a result of a grabbing that has ended. Returns at once in an image handler.
    void WaitForGrabLoop();
    /// Gives the next result and calls the image handlers. False on a timeout or when the grabbing ends, with
    /// `result` released; ETimeoutHandling::ThrowException raises TimeoutException instead for the timeout.
    /// LogicalErrorException if the camera provides the grab loop.
    bool RetrieveResult(std::chrono::milliseconds timeout, CGrabResultPtr& result,
                        ETimeoutHandling handling = ETimeoutHandling::ThrowException);
    /// Results of this and earlier grabbings that a stop or removal dropped: those that were ready, those that
    /// were skipped for them, and frames that arrived before the stream had stopped. Frames beyond `maxImages` are
    /// none.
    std::uint64_t GetNumberOfDiscardedResults() const;
    /// The block ID that the first frame of a grabbing has; 0 if the camera may begin with any, or there is none.
    std::uint64_t GetFirstBlockID() const;
    /// Executes TriggerSoftware. Raises what the node raises.
    void ExecuteSoftwareTrigger();

    /// @name Handlers: called in the order of registration
    /// InvalidArgumentException for null and for a handler that is registered already (for events: for that node).
    /// What its On...Registered throws undoes the registration and passes.
    void RegisterConfiguration(CConfigurationEventHandler* handler, ERegistrationMode mode, ECleanup cleanup);
    void RegisterImageEventHandler(CImageEventHandler* handler, ERegistrationMode mode, ECleanup cleanup);
    /// `nodeName`: a node of the camera's node map whose value comes from event data, or with an event's ID. Kept
    /// over Close and DetachDevice; for a node that the open camera does not have it is never called.
    void RegisterCameraEventHandler(CCameraEventHandler* handler, const GenICam::gcstring& nodeName,
                                    std::intptr_t userProvidedId, ERegistrationMode mode, ECleanup cleanup);
    /// False if it was not registered. These wait for a running call of the handler, unless called by it.
    bool DeregisterConfiguration(CConfigurationEventHandler* handler);
    bool DeregisterImageEventHandler(CImageEventHandler* handler);
    bool DeregisterCameraEventHandler(CCameraEventHandler* handler, const GenICam::gcstring& nodeName);
    /// Waits until the handlers have been called for the events that the device had received at the call, and told
    /// of those lost among them. Ends early when the camera is closed. Not to be called by an event handler, nor
    /// with a lock that one needs.
    void FlushEvents();
    /// Events that arrived but for whose id the camera's description has no node; none while GrabCameraEvents is
    /// off.
    std::uint64_t GetNumberOfUnknownEvents() const;

private:
    class Impl;
    std::unique_ptr<Impl> impl_;
};

}  // namespace Nivex

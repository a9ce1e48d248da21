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
/// Threads: any thread may call any operation; one recursive lock guards the state. Image handlers run without
/// that lock. Operations that wait for handlers say so: never call them with a lock that a handler takes, nor out
/// of a handler.
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
    /// null.
    void Attach(INivexDevice* device, ECleanup cleanup = ECleanup::Delete);
    /// Closes and gives the device up: ended if it was attached with ECleanup::Delete, else the caller's again.
    /// Waits for handlers. Never throws for a device that is gone.
    void DetachDevice();
    bool IsNivexDeviceAttached() const;
    /// Empty if no device is attached.
    CDeviceInfo GetDeviceInfo() const;

    /// Raises LogicalErrorException without a device and what the device raises. Does nothing when open.
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
    /// what the device raises, with all undone. Waits for the end of the grab thread of an earlier grabbing.
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
    /// Waits until no handler runs for a result of a stopped grabbing. Returns at once in a handler.
    void WaitForGrabLoop();
    /// Gives the next result and calls the image handlers. False on a timeout or when the grabbing ends, with
    /// `result` released; ETimeoutHandling::ThrowException raises TimeoutException instead for the timeout.
    /// LogicalErrorException if the camera provides the grab loop.
    bool RetrieveResult(std::chrono::milliseconds timeout, CGrabResultPtr& result,
                        ETimeoutHandling handling = ETimeoutHandling::ThrowException);
    /// Results of this and earlier grabbings that were ready but dropped by a stop.
    std::uint64_t GetNumberOfDiscardedResults() const;
    /// Executes TriggerSoftware. Raises what the node raises.
    void ExecuteSoftwareTrigger();

    /// @name Handlers: called in the order of registration; one may be registered once only
    /// InvalidArgumentException for null.
    void RegisterConfiguration(CConfigurationEventHandler* handler, ERegistrationMode mode, ECleanup cleanup);
    void RegisterImageEventHandler(CImageEventHandler* handler, ERegistrationMode mode, ECleanup cleanup);
    /// `nodeName`: an event data node of the camera's node map. Kept over Close and DetachDevice; a
    /// node that the open camera does not have is never called.
    void RegisterCameraEventHandler(CCameraEventHandler* handler, const GenICam::gcstring& nodeName,
                                    std::intptr_t userProvidedId, ERegistrationMode mode, ECleanup cleanup);
    /// False if it was not registered. These wait for a running call of the handler, unless called by it.
    bool DeregisterConfiguration(CConfigurationEventHandler* handler);
    bool DeregisterImageEventHandler(CImageEventHandler* handler);
    bool DeregisterCameraEventHandler(CCameraEventHandler* handler, const GenICam::gcstring& nodeName);
    /// Events that arrived but for whose id the camera's description has no node.
    std::uint64_t GetNumberOfUnknownEvents() const;

private:
    class Impl;
    std::unique_ptr<Impl> impl_;
};

}  // namespace Nivex

#pragma once

#include <cstddef>
#include <cstdint>

#include "gcbase/export.h"
#include "genapi/inode.h"

namespace Nivex {

class CInstantCamera;
class CGrabResultPtr;

/// What becomes of the handlers registered before.
enum class ERegistrationMode : std::uint8_t
{
    Append,
    ReplaceAll
};

/// Who ends an object that is handed over.
enum class ECleanup : std::uint8_t
{
    None = 0,   ///< The caller, after it was deregistered or detached.
    Delete = 1  ///< The camera, also if handing it over fails.
};

/// Hears of each result that a camera delivers. What a handler throws is logged nowhere and ends that call
/// only: it reaches OnGrabError of the configuration handlers.
class GENICAM_API CImageEventHandler
{
public:
    virtual ~CImageEventHandler();
    /// Good and failed results alike, on the thread that retrieves: the camera's grab thread, or the caller of
    /// RetrieveResult.
    virtual void OnImageGrabbed(CInstantCamera& camera, const CGrabResultPtr& result);
    /// The grab strategy dropped `count` results. Comes before the result that follows them.
    virtual void OnImagesSkipped(CInstantCamera& camera, std::size_t count);
    virtual void OnImageEventHandlerRegistered(CInstantCamera& camera);
    virtual void OnImageEventHandlerDeregistered(CInstantCamera& camera);
};

/// Hears of what happens to a camera. Those in -ed come after, the others before the step; what one of the latter
/// throws stops the step, unless it comes by itself (the last result, the camera's destructor). All run on the
/// thread that does the step, with the camera's lock held, but for OnGrabError and OnCameraDeviceRemoved.
class GENICAM_API CConfigurationEventHandler
{
public:
    virtual ~CConfigurationEventHandler();
    virtual void OnAttach(CInstantCamera& camera);
    virtual void OnAttached(CInstantCamera& camera);
    virtual void OnDetach(CInstantCamera& camera);
    virtual void OnDetached(CInstantCamera& camera);
    virtual void OnOpen(CInstantCamera& camera);
    virtual void OnOpened(CInstantCamera& camera);
    virtual void OnClose(CInstantCamera& camera);
    virtual void OnClosed(CInstantCamera& camera);
    virtual void OnGrabStart(CInstantCamera& camera);
    virtual void OnGrabStarted(CInstantCamera& camera);
    virtual void OnGrabStop(CInstantCamera& camera);
    virtual void OnGrabStopped(CInstantCamera& camera);
    /// A handler threw where nobody waits for the outcome; on the thread that called it, without the camera's
    /// lock.
    virtual void OnGrabError(CInstantCamera& camera, const char* message);
    /// The camera is gone. On a thread of the back end, without the camera's lock; must not close or detach the
    /// device nor wait for a thread that does.
    virtual void OnCameraDeviceRemoved(CInstantCamera& camera);
    virtual void OnConfigurationRegistered(CInstantCamera& camera);
    virtual void OnConfigurationDeregistered(CInstantCamera& camera);
};

/// Hears of one data item of camera events.
class GENICAM_API CCameraEventHandler
{
public:
    virtual ~CCameraEventHandler();
    /// An event arrived whose data the node of the registered name shows. On the device's event thread, without
    /// a lock; must not close or detach the device. Other invalidations of the node are no events.
    virtual void OnCameraEvent(CInstantCamera& camera, std::intptr_t userProvidedId, GenApi::INode* node) = 0;
    /// `count` events were lost on their way, for want of room, whose data the node would have shown. Called as
    /// OnCameraEvent is, between the events before and after them as far as the device can tell.
    virtual void OnCameraEventsLost(CInstantCamera& camera, std::intptr_t userProvidedId, GenApi::INode* node,
                                    std::uint64_t count);
    virtual void OnCameraEventHandlerRegistered(CInstantCamera& camera, const char* nodeName,
                                                std::intptr_t userProvidedId);
    virtual void OnCameraEventHandlerDeregistered(CInstantCamera& camera, const char* nodeName,
                                                  std::intptr_t userProvidedId);
};

}  // namespace Nivex

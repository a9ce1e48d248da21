#include "base/instantcamera.h"

#include <limits>

#include "base/handlerlist_impl.h"
#include "base/instantcamera_impl.h"
#include "base/parameters.h"

namespace Nivex {

using GenICam::gcstring;

namespace {

constexpr std::size_t noLimit = std::numeric_limits<std::size_t>::max();

// What each kind of handler is told when it comes and goes.

void greet(CInstantCamera& camera, const HandlerList<CConfigurationEventHandler>::Registration& entry)
{
    entry.handler->OnConfigurationRegistered(camera);
}

void greet(CInstantCamera& camera, const HandlerList<CImageEventHandler>::Registration& entry)
{
    entry.handler->OnImageEventHandlerRegistered(camera);
}

void greet(CInstantCamera& camera, const HandlerList<CCameraEventHandler>::Registration& entry)
{
    entry.handler->OnCameraEventHandlerRegistered(camera, entry.nodeName, entry.id);
}

void dismiss(CInstantCamera& camera, const HandlerList<CConfigurationEventHandler>::Registration& entry)
{
    entry.handler->OnConfigurationDeregistered(camera);
}

void dismiss(CInstantCamera& camera, const HandlerList<CImageEventHandler>::Registration& entry)
{
    entry.handler->OnImageEventHandlerDeregistered(camera);
}

void dismiss(CInstantCamera& camera, const HandlerList<CCameraEventHandler>::Registration& entry)
{
    entry.handler->OnCameraEventHandlerDeregistered(camera, entry.nodeName, entry.id);
}

template <typename Handler>
void dismissAll(CInstantCamera& camera, HandlerList<Handler>& list)
{
    for (const auto& entry : list.RemoveAll())
        dismiss(camera, *entry);
}

template <typename Handler>
void enlist(CInstantCamera& camera, HandlerList<Handler>& list, ERegistrationMode mode,
            const typename HandlerList<Handler>::Pointer& entry)
{
    if (mode == ERegistrationMode::ReplaceAll) dismissAll(camera, list);
    list.Add(entry);
    try {
        greet(camera, *entry);
    } catch (...) {
        list.Remove(entry->handler.get(), entry->nodeName);
        throw;
    }
}

template <typename Handler>
bool delist(CInstantCamera& camera, HandlerList<Handler>& list, const Handler* handler,
            const gcstring& nodeName = {})
{
    const auto entry = list.Remove(handler, nodeName);
    if (entry) dismiss(camera, *entry);
    return entry != nullptr;
}

}  // namespace

CInstantCamera::CInstantCamera() : impl_(std::make_unique<Impl>(*this)) {}

CInstantCamera::~CInstantCamera()
{
    impl_->DetachDevice(true);
    Failures ignored;  // Nobody is left to hear of what a handler throws now.
    ignored.Collect([this] { dismissAll(*this, impl_->ImageHandlers()); });
    ignored.Collect([this] { dismissAll(*this, impl_->Events().List()); });
    ignored.Collect([this] { dismissAll(*this, impl_->Configurations()); });
}

void CInstantCamera::Attach(INivexDevice* device, ECleanup cleanup)
{
    impl_->Attach(device, cleanup);
}

void CInstantCamera::DetachDevice()
{
    impl_->DetachDevice(false);
}

bool CInstantCamera::IsNivexDeviceAttached() const
{
    return impl_->IsAttached();
}

CDeviceInfo CInstantCamera::GetDeviceInfo() const
{
    return impl_->DeviceInfo();
}

void CInstantCamera::Open()
{
    impl_->Open();
}

void CInstantCamera::Close()
{
    impl_->Close(false);
}

bool CInstantCamera::IsOpen() const
{
    return impl_->IsOpen();
}

bool CInstantCamera::IsCameraDeviceRemoved() const
{
    return impl_->IsRemoved();
}

GenApi::NodeMapPtr CInstantCamera::GetNodeMap() const
{
    return impl_->NodeMap(Impl::Map::Camera);
}

GenApi::NodeMapPtr CInstantCamera::GetTLNodeMap() const
{
    return impl_->NodeMap(Impl::Map::TransportLayer);
}

GenApi::NodeMapPtr CInstantCamera::GetStreamGrabberNodeMap() const
{
    return impl_->NodeMap(Impl::Map::StreamGrabber);
}

GenApi::NodeMapPtr CInstantCamera::GetInstantCameraNodeMap() const
{
    return impl_->Parameters().NodeMap();
}

void CInstantCamera::StartGrabbing(std::size_t maxImages, EGrabStrategy strategy, EGrabLoop loop)
{
    impl_->Start(maxImages, strategy, loop);
}

void CInstantCamera::StartGrabbing(EGrabStrategy strategy, EGrabLoop loop)
{
    impl_->Start(noLimit, strategy, loop);
}

void CInstantCamera::StopGrabbing()
{
    impl_->Stop();
}

bool CInstantCamera::IsGrabbing() const
{
    return impl_->Queue().IsActive();
}

void CInstantCamera::WaitForGrabLoop()
{
    impl_->Queue().WaitForDeliveries();
}

bool CInstantCamera::RetrieveResult(std::chrono::milliseconds timeout, CGrabResultPtr& result,
                                    ETimeoutHandling handling)
{
    return impl_->Retrieve(timeout, result, handling);
}

std::uint64_t CInstantCamera::GetNumberOfDiscardedResults() const
{
    return impl_->Queue().Discarded();
}

std::uint64_t CInstantCamera::GetFirstBlockID() const
{
    return impl_->FirstBlockID();
}

void CInstantCamera::ExecuteSoftwareTrigger()
{
    CCommandParameter(GetNodeMap(), "TriggerSoftware").Execute();
}

void CInstantCamera::RegisterConfiguration(CConfigurationEventHandler* handler, ERegistrationMode mode,
                                           ECleanup cleanup)
{
    auto& list = impl_->Configurations();
    enlist(*this, list, mode, list.Make(handler, cleanup));
}

void CInstantCamera::RegisterImageEventHandler(CImageEventHandler* handler, ERegistrationMode mode,
                                               ECleanup cleanup)
{
    auto& list = impl_->ImageHandlers();
    enlist(*this, list, mode, list.Make(handler, cleanup));
}

void CInstantCamera::RegisterCameraEventHandler(CCameraEventHandler* handler, const gcstring& nodeName,
                                                std::intptr_t userProvidedId, ERegistrationMode mode,
                                                ECleanup cleanup)
{
    auto& list = impl_->Events().List();
    enlist(*this, list, mode, list.Make(handler, cleanup, nodeName, userProvidedId));
}

bool CInstantCamera::DeregisterConfiguration(CConfigurationEventHandler* handler)
{
    return delist(*this, impl_->Configurations(), handler);
}

bool CInstantCamera::DeregisterImageEventHandler(CImageEventHandler* handler)
{
    return delist(*this, impl_->ImageHandlers(), handler);
}

bool CInstantCamera::DeregisterCameraEventHandler(CCameraEventHandler* handler, const gcstring& nodeName)
{
    return delist(*this, impl_->Events().List(), handler, nodeName);
}

void CInstantCamera::FlushEvents()
{
    impl_->FlushEvents();
}

std::uint64_t CInstantCamera::GetNumberOfUnknownEvents() const
{
    return impl_->Events().UnknownCount();
}

}  // namespace Nivex

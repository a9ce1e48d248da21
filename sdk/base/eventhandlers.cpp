#include "base/eventhandlers.h"

namespace Nivex {

CImageEventHandler::~CImageEventHandler() = default;
void CImageEventHandler::OnImageGrabbed(CInstantCamera&, const CGrabResultPtr&) {}
void CImageEventHandler::OnImagesSkipped(CInstantCamera&, std::size_t) {}
void CImageEventHandler::OnImageEventHandlerRegistered(CInstantCamera&) {}
void CImageEventHandler::OnImageEventHandlerDeregistered(CInstantCamera&) {}

CConfigurationEventHandler::~CConfigurationEventHandler() = default;
void CConfigurationEventHandler::OnAttach(CInstantCamera&) {}
void CConfigurationEventHandler::OnAttached(CInstantCamera&) {}
void CConfigurationEventHandler::OnDetach(CInstantCamera&) {}
void CConfigurationEventHandler::OnDetached(CInstantCamera&) {}
void CConfigurationEventHandler::OnOpen(CInstantCamera&) {}
void CConfigurationEventHandler::OnOpened(CInstantCamera&) {}
void CConfigurationEventHandler::OnClose(CInstantCamera&) {}
void CConfigurationEventHandler::OnClosed(CInstantCamera&) {}
void CConfigurationEventHandler::OnGrabStart(CInstantCamera&) {}
void CConfigurationEventHandler::OnGrabStarted(CInstantCamera&) {}
void CConfigurationEventHandler::OnGrabStop(CInstantCamera&) {}
void CConfigurationEventHandler::OnGrabStopped(CInstantCamera&) {}
void CConfigurationEventHandler::OnGrabError(CInstantCamera&, const char*) {}
void CConfigurationEventHandler::OnCameraDeviceRemoved(CInstantCamera&) {}
void CConfigurationEventHandler::OnConfigurationRegistered(CInstantCamera&) {}
void CConfigurationEventHandler::OnConfigurationDeregistered(CInstantCamera&) {}

CCameraEventHandler::~CCameraEventHandler() = default;
void CCameraEventHandler::OnCameraEventsLost(CInstantCamera&, std::intptr_t, GenApi::INode*, std::uint64_t) {}
void CCameraEventHandler::OnCameraEventHandlerRegistered(CInstantCamera&, const char*, std::intptr_t) {}
void CCameraEventHandler::OnCameraEventHandlerDeregistered(CInstantCamera&, const char*, std::intptr_t) {}

}  // namespace Nivex

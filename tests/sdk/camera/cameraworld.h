#pragma once

#include "base/instantcamera.h"
#include "base/parameters.h"

#include "sdk/camera/fakebackend.h"

namespace CameraTest {

using namespace std::chrono_literals;
using namespace Nivex;

/// A camera object with a fake camera attached.
struct World
{
    World() { camera.Attach(device); }

    /// Takes what is ready; empty if nothing is.
    CGrabResultPtr Take()
    {
        CGrabResultPtr result;
        camera.RetrieveResult(0ms, result, ETimeoutHandling::Return);
        return result;
    }
    void Set(const char* parameter, std::int64_t value)
    {
        dynamic_cast<GenApi::IValue&>(*camera.GetInstantCameraNodeMap()->GetNode(parameter))
            .FromString(std::to_string(value).c_str());
    }
    std::int64_t Get(const char* parameter) const
    {
        return CIntegerParameter(camera.GetInstantCameraNodeMap(), parameter).GetValue();
    }
    void Register(CImageEventHandler& handler)
    {
        camera.RegisterImageEventHandler(&handler, ERegistrationMode::Append, ECleanup::None);
    }
    void Register(CConfigurationEventHandler& handler)
    {
        camera.RegisterConfiguration(&handler, ERegistrationMode::Append, ECleanup::None);
    }

    std::shared_ptr<FakeState> state = std::make_shared<FakeState>();
    FakeDevice* device = new FakeDevice(state);  ///< Gone after DetachDevice.
    CInstantCamera camera;
};

// Handlers made of functions. They, and what their functions refer to, are declared before the World, which tells
// them of its end.

struct ImageHandler : CImageEventHandler
{
    void OnImageGrabbed(CInstantCamera&, const CGrabResultPtr& result) override { onImage(result); }
    void OnImagesSkipped(CInstantCamera&, std::size_t count) override { onSkipped(count); }

    std::function<void(const CGrabResultPtr&)> onImage = [](const CGrabResultPtr&) {};
    std::function<void(std::size_t)> onSkipped = [](std::size_t) {};
};

struct EventHandler : CCameraEventHandler
{
    void OnCameraEvent(CInstantCamera&, std::intptr_t id, GenApi::INode* node) override { onEvent(id, node); }
    void OnCameraEventsLost(CInstantCamera&, std::intptr_t id, GenApi::INode* node, std::uint64_t count) override
    {
        onLost(id, node, count);
    }

    std::function<void(std::intptr_t, GenApi::INode*)> onEvent;
    std::function<void(std::intptr_t, GenApi::INode*, std::uint64_t)> onLost = [](auto...) {};
};

/// Calls `onStep` with the name of each step.
struct Steps : CConfigurationEventHandler
{
    void OnAttach(CInstantCamera&) override { onStep("OnAttach"); }
    void OnAttached(CInstantCamera&) override { onStep("OnAttached"); }
    void OnDetach(CInstantCamera&) override { onStep("OnDetach"); }
    void OnDetached(CInstantCamera&) override { onStep("OnDetached"); }
    void OnOpen(CInstantCamera&) override { onStep("OnOpen"); }
    void OnOpened(CInstantCamera&) override { onStep("OnOpened"); }
    void OnClose(CInstantCamera&) override { onStep("OnClose"); }
    void OnClosed(CInstantCamera&) override { onStep("OnClosed"); }
    void OnGrabStart(CInstantCamera&) override { onStep("OnGrabStart"); }
    void OnGrabStarted(CInstantCamera&) override { onStep("OnGrabStarted"); }
    void OnGrabStop(CInstantCamera&) override { onStep("OnGrabStop"); }
    void OnGrabStopped(CInstantCamera&) override { onStep("OnGrabStopped"); }
    void OnGrabError(CInstantCamera&, const char* message) override { onStep("OnGrabError " + gcstring(message)); }
    void OnCameraDeviceRemoved(CInstantCamera&) override { onStep("OnCameraDeviceRemoved"); }

    std::function<void(const gcstring&)> onStep;
};

}  // namespace CameraTest

// Start, stop, and the way of images and events from the camera to the pins.
#include <optional>

#include "base/parameters.h"

#include "camera/camera_private.h"
#include "camera/chunkpins.h"
#include "core/boolean.h"
#include "core/string.h"

namespace Plugin::NivexStageletPackageBase {

namespace Core = Nivex::DataProcessing::Core;
namespace Utils = Nivex::DataProcessing::Utils;
using namespace CameraDetail;
using GenICam::gcstring;

namespace {

constexpr const char* modeParameter = "AcquisitionMode";

std::optional<AcquisitionMode> modeOfName(const Utils::Variant& argument)
{
    const auto* text = argument.isValid() ? argument.tryGet<Core::String>() : nullptr;
    if (!text || text->hasError()) return std::nullopt;
    if (text->get() == "SingleFrame") return AcquisitionMode::SingleFrame;
    if (text->get() == "Continuous") return AcquisitionMode::Continuous;
    return std::nullopt;
}

}  // namespace

void Camera::onStarting(const Core::NodeArgumentCollection& arguments)
{
    if (arguments.hasArgument(modeParameter)) {
        if (const auto mode = modeOfName(arguments.getArgumentValue(modeParameter))) {
            setAcquisitionMode(*mode);
        } else {
            Utils::createLogEntry(Utils::SeverityFailure, cameraChannel(),
                                  "Camera %p: Argument \"AcquisitionMode\" is not of type \"String\" or "
                                  "invalid and is therefore ignored.",
                                  static_cast<const void*>(this));
        }
    }
    try {
        edit([&](Notices& notices) {
            Impl& own = *impl_;
            if (!own.isCameraHeld()) {
                const gcstring text =
                    own.deviceError ? own.deviceError->getDescription() : gcstring("No camera is allocated.");
                NODE_REFUSE(RuntimeException, cameraLog, this, "onStarting", text.c_str());
            }
            cameraLog.guarded(this, "looking at the chunk pins",
                              [&] { logSilentChunkPins(own.pins.getChunkPins(), own.camera.GetNodeMap(), this); });
            own.setStoppedOnlyAvailable(false, notices);
            own.frameGaps.restart(own.camera.GetFirstBlockID());
            own.discardedBefore = own.camera.GetNumberOfDiscardedResults();
            own.offersEvents = true;
            own.eventGate.open();
            startGrabbing();
        });
    } catch (...) {
        // The job that deals with a removal may come later than the failure that it caused.
        if (impl_->camera.IsCameraDeviceRemoved()) {
            edit([this](Notices& notices) { impl_->keepDeviceError(notices); });
        }
        impl_->eventGate.close();
        endGrabbing();
        throw;
    }
}

void Camera::startGrabbing()
{
    Nivex::CInstantCamera& camera = impl_->camera;
    Nivex::CEnumParameter cameraMode(camera.GetNodeMap(), modeParameter);
    switch (impl_->acquisitionMode) {
        case AcquisitionMode::SingleFrame:
            cameraMode.TrySetValue("SingleFrame");
            camera.StartGrabbing(1, Nivex::EGrabStrategy::OneByOne, Nivex::EGrabLoop::ProvidedByInstantCamera);
            return;
        case AcquisitionMode::Continuous:
            cameraMode.TrySetValue("Continuous");
            camera.StartGrabbing(Nivex::EGrabStrategy::OneByOne, Nivex::EGrabLoop::ProvidedByInstantCamera);
            return;
    }
    Utils::createLogEntry(Utils::SeverityRefused, cameraChannel(),
                          "Camera %p: Couldn't determine acquisition mode.", static_cast<const void*>(this));
    GENICAM_THROW(RuntimeException, "Couldn't determine acquisition mode.");
}

void Camera::endGrabbing()
{
    std::exception_ptr failure;
    const auto attempt = [&failure](const auto& step) {
        try {
            step();
        } catch (...) {
            if (!failure) failure = std::current_exception();
        }
    };
    Impl& own = *impl_;
    attempt([&] {
        edit([&](Notices& notices) {
            attempt([&own] { own.camera.StopGrabbing(); });
            own.setStoppedOnlyAvailable(true, notices);
        });
    });
    // Handlers take the node's lock.
    own.camera.WaitForGrabLoop();
    attempt([&own] { own.camera.FlushEvents(); });
    own.eventGate.close();
    own.eventGate.wait();
    if (failure) std::rethrow_exception(failure);
}

void Camera::onStopping()
{
    try {
        endGrabbing();
    } catch (...) {
        countDiscardedResults();
        throw;
    }
    countDiscardedResults();
}

void Camera::countDiscardedResults()
{
    const std::uint64_t discarded = impl_->camera.GetNumberOfDiscardedResults();
    for (std::uint64_t i = impl_->discardedBefore; i < discarded; ++i) {
        if (!countLost(Core::LossCause::NoSpace)) break;
    }
}

std::shared_ptr<Core::IGraphUpdate> Camera::createUpdate()
{
    return getUpdateFactory()->createUpdate(*this, nullptr, false);
}

bool Camera::countLost(Core::LossCause cause) noexcept
{
    try {
        const auto update = createUpdate();
        if (update) reportLoss(cause, update.get());
        return update != nullptr;
    } catch (...) {
        Utils::createLogEntry(Utils::SeverityFailure, cameraChannel(),
                              "Camera %p: A loss could not be counted. Message: %s",
                              static_cast<const void*>(this), GenICam::describeCurrentException().c_str());
        return false;
    }
}

void Camera::OnImageGrabbed(Nivex::CInstantCamera& /*camera*/, const Nivex::CGrabResultPtr& result)
{
    std::shared_ptr<Core::IGraphUpdate> update;
    if (cameraLog.guarded(this, "grabbing an image", [&] { putOutResult(result, update); })) return;
    // An update in hand is counted as it goes.
    if (!update) countLost(Core::LossCause::SourceFailed);
}

void Camera::putOutResult(const Nivex::CGrabResultPtr& result, std::shared_ptr<Core::IGraphUpdate>& update)
{
    Impl& own = *impl_;
    Core::PinValues outputs;
    GrabbedImage image;
    FixCorruptImages fix = FixCorruptImages::Off;
    {
        const Guard guard(*getLock());
        fix = own.fixCorruptImages;
        image = own.imageBuilder.build(result, fix);
    }
    if (result.IsValid() && result->IsChunkDataAvailable()) {
        const Guard guard(*getLock());
        readChunkPins(own.pins.getChunkPins(), *result, outputs, this);
    }
    const std::uint64_t missed = own.frameGaps.count(result.IsValid() ? result->GetBlockID() : 0);
    update = createUpdate();
    if (!update) return;
    if (missed > 0) reportMissed(Core::LossCause::FramesMissed, missed);
    if (image.isLost()) {
        reportLoss(Core::LossCause::GrabFailed, update.get());
        Utils::createLogEntry(Utils::SeverityFailure, cameraChannel(),
                              "Camera %p: An image could not be grabbed. Message: %s",
                              static_cast<const void*>(this), image.image->getError()->getDescription().c_str());
    }
    outputs.emplace(imagePin, Utils::Variant(std::move(image.image)));
    if (fix == FixCorruptImages::On) {
        outputs.emplace(imageCorruptPin, Utils::Variant(Core::Boolean(image.corrupt)));
    }
    if (waitUntilSpaceAvailable()) createJob(update, std::move(outputs));
}

void Camera::EventOutput::outputEventValue(const gcstring& pinName, Utils::Variant value)
{
    node_.putOutEventValue(pinName, std::move(value));
}

void Camera::EventOutput::onEventValueLost(const gcstring& /*pinName*/) noexcept
{
    const CallGate::Pass pass(node_.impl_->eventGate);
    if (pass) node_.countLost(Core::LossCause::SourceFailed);
}

void Camera::EventOutput::onEventsMissed(const gcstring& /*pinName*/, std::uint64_t count) noexcept
{
    const CallGate::Pass pass(node_.impl_->eventGate);
    if (pass && node_.impl_->offersEvents) node_.reportMissed(Core::LossCause::EventsMissed, count);
}

void Camera::putOutEventValue(const gcstring& pinName, Utils::Variant value)
{
    const CallGate::Pass pass(impl_->eventGate);
    if (!pass) return;
    std::shared_ptr<Core::IGraphUpdate> update;
    {
        const Guard guard(*getLock());
        update = createUpdate();
    }
    impl_->offersEvents = update != nullptr;
    if (!update) return;
    // The update is counted as it goes, so the caller must not hear of a failure.
    cameraLog.guarded(this, "putting out an event", [&] {
        Core::PinValues outputs;
        outputs.emplace(pinName, std::move(value));
        if (waitUntilSpaceAvailable()) createJob(update, std::move(outputs));
    });
}

}  // namespace Plugin::NivexStageletPackageBase

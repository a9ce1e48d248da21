// Start, stop and the worker thread of ImageLoading.
#include <sys/prctl.h>

#include <cerrno>
#include <chrono>
#include <ctime>

#include "gcbase/exception.h"

#include "utility/niveximage.h"

#include "core/errors.h"
#include "core/image.h"
#include "core/integer.h"
#include "core/string.h"
#include "imageloading/imageloading_private.h"
#include "imageloading/imagesource.h"

namespace Plugin::NivexStageletPackageBase {

namespace Core = Nivex::DataProcessing::Core;
namespace Utils = Nivex::DataProcessing::Utils;
using namespace ImageLoadingDetail;
using GenICam::gcstring;
using Clock = std::chrono::system_clock;

namespace {

void sleepUntil(Clock::time_point due)
{
    for (auto now = Clock::now(); now < due; now = Clock::now()) {
        const auto rest = std::chrono::duration_cast<std::chrono::nanoseconds>(due - now);
        const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(rest);
        timespec left{.tv_sec = seconds.count(), .tv_nsec = (rest - seconds).count()};
        while (nanosleep(&left, &left) == -1 && errno == EINTR) {
        }
    }
}

/// The start argument as a string; null if it is none.
const gcstring* stringArgument(const Utils::Variant& argument)
{
    const auto* text = argument.isValid() ? argument.tryGet<Core::String>() : nullptr;
    return text && !text->hasError() ? &text->get() : nullptr;
}

}  // namespace

void ImageLoading::onStarting(const Core::NodeArgumentCollection& arguments)
{
    constexpr const char* argumentName = "AcquisitionMode";
    constexpr const char* function = "onStarting";
    bool singleFrame = false;
    if (arguments.hasArgument(argumentName)) {
        const gcstring* mode = stringArgument(arguments.getArgumentValue(argumentName));
        if (mode) {
            singleFrame = *mode == "SingleFrame";
        } else {
            Utils::createLogEntry(Utils::SeverityFailure, channel(),
                                  "ImageLoading %p: Argument \"AcquisitionMode\" is not of type \"String\" or "
                                  "invalid and is therefore ignored.",
                                  static_cast<const void*>(this));
        }
    }

    const Guard guard(*getLock());
    Private& own = *private_;
    own.singleFrame = singleFrame;
    own.stopRequested = false;
    own.bufferProvider = getBufferProvider();
    own.updateFactory = getUpdateFactory();
    if (own.settings.sourcePath.empty()) {
        NODE_REFUSE(RuntimeException, nodeLog, this, function, "No image source path was specified.");
    }
    own.files = scanImageSource(own.settings.sourcePath);
    if (own.files.empty()) {
        NODE_REFUSE(RuntimeException, nodeLog, this, function, "No images found in specified image source path.");
    }
    orderImages(own.files, own.settings.sortBy);
    own.runCount = 1;
    lockParameters(true);
    try {
        own.worker = std::thread(&ImageLoading::runWorker, this);
    } catch (...) {
        lockParameters(false);
        throw;
    }
}

void ImageLoading::onStopping()
{
    {
        const Guard guard(*getLock());
        private_->stopRequested = true;
        lockParameters(false);
    }
    if (private_->worker.joinable()) private_->worker.join();
}

void ImageLoading::runWorker()
{
    prctl(PR_SET_TIMERSLACK, 1UL);  // the default of 50 microseconds would cost 2 % of the rate at 500 Hz
    try {
        putOutImages();
    } catch (const GenICam::GenericException& e) {
        Utils::createLogEntry(Utils::SeverityFailure, channel(),
                              "ImageLoading %p: Exception caught, no more images are output. Message: %s",
                              static_cast<const void*>(this), e.GetDescription());
    } catch (const std::exception& e) {
        Utils::createLogEntry(Utils::SeverityFailure, channel(),
                              "ImageLoading %p: Exception caught, no more images are output. Message: %s",
                              static_cast<const void*>(this), e.what());
    } catch (...) {
        Utils::createLogEntry(Utils::SeverityFailure, channel(),
                              "ImageLoading %p: Unknown exception caught, no more images are output.",
                              static_cast<const void*>(this));
    }
}

void ImageLoading::putOutImages()
{
    Private& own = *private_;
    own.imageIndex = 0;
    while (!isStopRequested() && beginNextRunIfDue()) {
        const Clock::time_point now = Clock::now();
        const Clock::time_point due = now + std::chrono::milliseconds(1000 / getFramesPerSecond());
        if (putOutImage(own.files[own.imageIndex])) return;
        ++own.imageIndex;
        sleepUntil(due);
    }
}

bool ImageLoading::isStopRequested() const
{
    const Guard guard(*getLock());
    return private_->stopRequested;
}

bool ImageLoading::beginNextRunIfDue()
{
    Private& own = *private_;
    const Settings& settings = own.settings;
    if (own.imageIndex < settings.numberOfImages && own.imageIndex < own.files.size()) return true;
    if (!settings.runContinuously && own.runCount == settings.numberOfRuns) return false;
    if (settings.sortBy == SortBy::Random) orderImages(own.files, SortBy::Random);
    ++own.runCount;
    own.imageIndex = 0;
    return true;
}

bool ImageLoading::putOutImage(const gcstring& path)
{
    bool isLast = false;
    nodeLog.guarded(this, "creating update.", [&] {
        const bool spaceAvailable = waitUntilSpaceAvailable();
        if (!spaceAvailable) return;
        const auto update = private_->updateFactory->createUpdate(*this, nullptr, spaceAvailable);
        if (!update) return;
        createJob(update, loadImage(path, *update), {});
        isLast = private_->singleFrame;
    });
    return isLast;
}

Core::PinValues ImageLoading::loadImage(const gcstring& path, const Core::IGraphUpdate& update)
{
    using ImagePtr = Utils::COWPtr<Core::Image>;
    ImagePtr image;
    std::shared_ptr<Core::IError> failure;
    Nivex::CNivexImage loaded;
    try {
        loaded.Load(path);
    } catch (const GenICam::GenericException& e) {
        Utils::createLogEntry(Utils::SeverityFailure, channel(),
                              "ImageLoading: Exception caught while loading image. Message: %s",
                              e.GetDescription());
        failure = std::make_shared<Core::GenICamExceptionError>(e);
    } catch (const std::exception& e) {
        Utils::createLogEntry(Utils::SeverityFailure, channel(),
                              "ImageLoading: Exception caught while loading image. Message: %s", e.what());
        failure = std::make_shared<Core::StdExceptionError>(e);
    } catch (...) {
        Utils::createLogEntry(Utils::SeverityFailure, channel(),
                              "ImageLoading: Unknown exception caught while loading image.");
        failure = std::make_shared<Core::UnknownExceptionError>("Failed to load image.", sourceUnit, 574,
                                                                Utils::DateTime::now());
    }
    if (failure) {
        reportLoss(Core::LossCause::LoadFailed, &update);
        image = ImagePtr::make(failure);
    } else {
        image = ImagePtr::make(loaded, private_->bufferProvider, false);
    }
    Core::PinValues values;
    values.emplace(imagePin, Utils::Variant(image));
    values.emplace(imagePathPin, Utils::Variant(Core::String(path)));
    values.emplace(runCountPin, Utils::Variant(Core::Integer(private_->runCount)));
    return values;
}

}  // namespace Plugin::NivexStageletPackageBase

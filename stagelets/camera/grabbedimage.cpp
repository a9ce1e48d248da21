#include "camera/grabbedimage.h"

#include <algorithm>
#include <limits>

#include "gcbase/exception.h"

#include "base/parameters.h"
#include "utility/pixeltypemapper.h"

#include "core/errors.h"

namespace Plugin::NivexStageletPackageBase {

namespace Core = Nivex::DataProcessing::Core;
namespace Utils = Nivex::DataProcessing::Utils;
using GenICam::gcstring;
using Nivex::EComponentType;
using Nivex::EPixelType;

namespace {

constexpr const char* sourceUnit = "camera/grabbedimage";

gcstring failureOf(const Nivex::CGrabResultData& result)
{
    const gcstring description = result.GetErrorDescription();
    return description.empty() ? gcstring("The grabbed image is corrupt.") : description;
}

/// The exception that is being handled as an error; `unknownText` and `line` describe one of no known type.
std::shared_ptr<Core::IError> currentError(const gcstring& unknownText, int line)
{
    try {
        throw;
    } catch (const GenICam::GenericException& e) {
        return std::make_shared<Core::GenICamExceptionError>(e);
    } catch (const std::exception& e) {
        return std::make_shared<Core::StdExceptionError>(e);
    } catch (...) {
        return std::make_shared<Core::UnknownExceptionError>(unknownText, sourceUnit, line,
                                                             Utils::DateTime::now());
    }
}

/// The first component of one of the types; one of type Undefined if there is none.
Nivex::CNivexDataComponent firstOf(const Nivex::CGrabResultData& result, EComponentType type,
                                   EComponentType otherType)
{
    for (std::size_t i = 0; i < result.GetDataComponentCount(); ++i) {
        Nivex::CNivexDataComponent component = result.GetDataComponent(i);
        if (component.GetComponentType() == type || component.GetComponentType() == otherType) return component;
    }
    return {};
}

/// The component that is the picture: an intensity before a range before whatever comes first.
Nivex::CNivexDataComponent chooseComponent(const Nivex::CGrabResultData& result)
{
    Nivex::CNivexDataComponent component =
        firstOf(result, EComponentType::Intensity, EComponentType::ProcessedIntensity);
    if (component.GetComponentType() == EComponentType::Undefined) {
        component = firstOf(result, EComponentType::Range, EComponentType::Range);
    }
    if (component.GetComponentType() == EComponentType::Undefined) component = result.GetDataComponent(0);
    return component;
}

void attach(Nivex::CNivexImage& image, const Nivex::CNivexDataComponent& component)
{
    const auto handler = std::make_shared<DataComponentReleaseHandler>(component);
    Nivex::CNivexDataComponent& kept = handler->getComponent();
    image.AttachUserBuffer(kept.GetBuffer(), kept.GetImageSize(), kept.GetPixelType(), kept.GetWidth(),
                           kept.GetHeight(), kept.GetPaddingX(), Nivex::EImageOrientation::TopDown, [handler] {});
}

std::uint32_t readExtent(const GenApi::NodeMapPtr& nodeMap, const char* name)
{
    const std::int64_t value = Nivex::CIntegerParameter(nodeMap, name).GetValueOrDefault(0);
    constexpr std::int64_t max = std::numeric_limits<std::uint32_t>::max();
    if (value < 0 || value > max) {
        GENICAM_THROW(OutOfRangeException, "%s of the camera is %lld; an image takes 0 to %lld.", name,
                      static_cast<long long>(value), static_cast<long long>(max));
    }
    return static_cast<std::uint32_t>(value);
}

}  // namespace

GrabbedImage GrabbedImageBuilder::build(const Nivex::CGrabResultPtr& result, FixCorruptImages fix) const
{
    try {
        if (result->GrabSucceeded()) return {share(result), false};
        if (fix == FixCorruptImages::On) return {repair(*result), true};
        return {
            ImagePtr::make(std::make_shared<Core::InvalidValueError>(failureOf(*result), Utils::DateTime::now())),
            true};
    } catch (...) {
        return {ImagePtr::make(currentError("An error occurred while grabbing an image.", __LINE__)), true};
    }
}

GrabbedImageBuilder::ImagePtr GrabbedImageBuilder::share(const Nivex::CGrabResultPtr& result) const
{
    Nivex::CNivexDataComponent component;
    if (result->GetPayloadType() == Nivex::EPayloadType::MultiComponent) component = chooseComponent(*result);
    Nivex::CNivexImage image;
    if (component.IsValid()) {
        attach(image, component);
    } else {
        image.AttachGrabResultBuffer(result);
    }
    return ImagePtr::make(image, bufferProvider_, false);
}

GrabbedImageBuilder::ImagePtr GrabbedImageBuilder::repair(const Nivex::CGrabResultData& result) const
{
    try {
        return ImagePtr::make(copyOfBuffer(result), bufferProvider_, false);
    } catch (...) {
        return ImagePtr::make(currentError(failureOf(result), __LINE__));
    }
}

Nivex::CNivexImage GrabbedImageBuilder::copyOfBuffer(const Nivex::CGrabResultData& result) const
{
    const std::size_t payloadSize = claimedPayloadSize();
    EPixelType pixelType = result.GetPixelType();
    std::uint32_t height = result.GetHeight();
    std::uint32_t width = result.GetWidth();
    if (pixelType != EPixelType::Undefined && width != 0 && height != 0) {
        const GenApi::NodeMapPtr nodeMap = cameraMap_();
        const gcstring name = Nivex::CEnumParameter(nodeMap, "PixelFormat").GetValueOrDefault("Mono8");
        pixelType = Nivex::CPixelTypeMapper::GetNivexPixelTypeByName(name);
        height = readExtent(nodeMap, "Height");
        width = readExtent(nodeMap, "Width");
    }
    // The camera's settings may have changed since the buffer was made.
    const std::size_t size = std::min(payloadSize, result.GetBufferSize());
    Nivex::CNivexImage image;
    image.CopyImage(result.GetBuffer(), size, pixelType, width, height, result.GetPaddingX(),
                    Nivex::EImageOrientation::TopDown);
    return image;
}

std::size_t GrabbedImageBuilder::claimedPayloadSize() const
{
    std::int64_t size = Nivex::CIntegerParameter(cameraMap_(), "PayloadSize").GetValueOrDefault(0);
    const Nivex::CIntegerParameter ofStream(streamGrabberMap_(), "PayloadSize");
    if (ofStream.IsValid()) size = ofStream.GetValueOrDefault(0);
    return size > 0 ? static_cast<std::size_t>(size) : 0;
}

}  // namespace Plugin::NivexStageletPackageBase

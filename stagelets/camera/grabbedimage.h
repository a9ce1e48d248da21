#pragma once

#include <functional>
#include <memory>

#include "base/grabresult.h"

#include "camera/cameraenums.h"
#include "core/image.h"
#include "utils/cowptr.h"

namespace Plugin::NivexStageletPackageBase {

/// Keeps a component of a grab result, and with it the grab buffer, for as long as an image shows it.
class DataComponentReleaseHandler
{
public:
    explicit DataComponentReleaseHandler(Nivex::CNivexDataComponent component) : component_(std::move(component))
    {}
    ~DataComponentReleaseHandler() { component_.Release(); }
    DataComponentReleaseHandler(const DataComponentReleaseHandler&) = delete;
    DataComponentReleaseHandler& operator=(const DataComponentReleaseHandler&) = delete;

    Nivex::CNivexDataComponent& getComponent() { return component_; }

private:
    Nivex::CNivexDataComponent component_;
};

/// What a grab result gives for the pins "Image" and "ImageCorrupt".
struct GrabbedImage
{
    Nivex::DataProcessing::Utils::COWPtr<Nivex::DataProcessing::Core::Image> image;  ///< Never null.
    bool corrupt = false;

    /// True if the picture could not be had: the image holds the error, and the result is lost.
    bool isLost() const { return image->hasError(); }
};

/// Makes images of grab results. Good ones share the grab buffer, without a copy. A failed one gives an error
/// or, with the repair on, a copy of what the buffer holds.
///
/// The repair takes the picture's form from the camera's features PixelFormat, Width and Height, if the result has
/// one itself (if not, there is nothing to go by and the result's stays), and the number of bytes from PayloadSize
/// of the stream grabber, or else of the camera. It reads nothing from outside the grab buffer: a form that needs
/// more than the buffer holds is refused, and the image holds that error.
class GrabbedImageBuilder
{
public:
    /// Gives a node map of the open camera; may throw.
    using NodeMapSource = std::function<GenApi::NodeMapPtr()>;

    /// @param cameraMap and @param streamGrabberMap are asked by repairs only.
    GrabbedImageBuilder(NodeMapSource cameraMap, NodeMapSource streamGrabberMap,
                        std::shared_ptr<Nivex::DataProcessing::Core::IBufferProvider> bufferProvider)
        : cameraMap_(std::move(cameraMap)),
          streamGrabberMap_(std::move(streamGrabberMap)),
          bufferProvider_(std::move(bufferProvider))
    {}

    /// Takes any result, also none. Raises BadAllocException at most.
    GrabbedImage build(const Nivex::CGrabResultPtr& result, FixCorruptImages fix) const;

private:
    using ImagePtr = Nivex::DataProcessing::Utils::COWPtr<Nivex::DataProcessing::Core::Image>;

    ImagePtr share(const Nivex::CGrabResultPtr& result) const;
    ImagePtr repair(const Nivex::CGrabResultData& result) const;
    Nivex::CNivexImage copyOfBuffer(const Nivex::CGrabResultData& result) const;
    std::size_t claimedPayloadSize() const;

    NodeMapSource cameraMap_;
    NodeMapSource streamGrabberMap_;
    std::shared_ptr<Nivex::DataProcessing::Core::IBufferProvider> bufferProvider_;
};

}  // namespace Plugin::NivexStageletPackageBase

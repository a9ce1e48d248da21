#include "blobfinder.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>
#include <string>

#include "utils/typeregistrar.h"

namespace Inspection {

namespace {

const Utils::TypeRegistrar<BlobFinder, Core::SimpleNode, Core::INodeMapContainer> registrar;

constexpr Plugin::NivexStageletPackageBase::EnumEntryRow<Polarity> polarities[] = {
    {Polarity::Bright, "Bright", "Bright", "Blobs are brighter than the rest.",
     "Pixels of the threshold and above belong to blobs."},
    {Polarity::Dark, "Dark", "Dark", "Blobs are darker than the rest.",
     "Pixels below the threshold belong to blobs."},
};

}  // namespace

BlobFinder::BlobFinder(const std::shared_ptr<Core::IResourcePool>& pool)
    : ParameterNode(pool, "Blob Finder", "inspection.BlobFinder")
{
    toGrey_.OutputPixelFormat.SetValue(Nivex::EPixelType::Mono8);
    toGrey_.MaxNumThreads.SetValue(1);  // the graph keeps the cores busy

    addParameter({"Polarity", "Polarity", "What a blob looks like.",
                  "Whether blobs are brighter or darker than the rest.", "Beginner"},
                 settings_.polarity, polarities);
    addParameter({"Threshold", "Threshold", "The grey value that divides blobs from the rest.",
                  "Bright blobs begin at this grey value, dark ones end below it.", "Beginner"},
                 settings_.threshold, {.min = 0, .max = 255});
    addParameter({"MinArea", "Minimum Area", "The smallest blob that counts, in pixels.",
                  "Blobs of fewer pixels are passed over as noise.", "Beginner"},
                 settings_.minArea, {.min = 1, .max = std::numeric_limits<int>::max()}, "PureNumber", "px");
    buildNodeMap();

    createInput("Image", "Input image", input_, Utils::Variant(Core::Image()));
    addOutput("Image", "Image", image_);
    addOutput("Count", "Number of blobs", count_);
    addOutput("Found", "Whether there are blobs", found_);
    addOutput("MeanBrightness", "Mean grey value of all blobs", brightness_);
    addOutput("Label", "The result in words", label_);
    addOutput("Centers", "Centers", centers_);
    addOutput("BoundingBoxes", "Bounding boxes", boxes_);
    addOutput("Ellipses", "Ellipses of the same moments", ellipses_);
    addOutput("LargestCircle", "Circle of the largest blob's area", circle_);
    addOutput("LargestLine", "Major axis of the largest blob", line_);
    addOutput("LargestRegion", "Bounding box of the largest blob", region_);
    addOutput("Transformation", "From the picture to the largest blob", transformation_);
}

BlobFinder::~BlobFinder()
{
    cleanup();  // first of all, as in every final node class
}

void BlobFinder::process()
{
    const Core::Image image = *input_.getValue();
    if (image.hasError()) return outputErrors("Input image is invalid.", Core::LossCause::InvalidInput, &image);
    Nivex::CNivexImage grey;
    try {
        toGrey_.Convert(grey, image.getNivexImage());
    } catch (const GenICam::GenericException& e) {
        return outputErrors(e.GetDescription(), Core::LossCause::ConversionFailed);
    }
    const std::vector<Blob> blobs =
        findBlobs({static_cast<const std::uint8_t*>(grey.GetBuffer()), static_cast<int>(grey.GetWidth()),
                   static_cast<int>(grey.GetHeight())},
                  copyOf(settings_));
    image_ = input_;
    output(blobs);
    if (!blobs.empty()) outputLargest(*std::ranges::max_element(blobs, {}, &Blob::area), image);
}

void BlobFinder::output(const std::vector<Blob>& blobs)
{
    std::int64_t area = 0;
    double brightness = 0.0;
    Core::Array<Core::PointF> centers;
    Core::Array<Core::RectangleF> boxes;
    Core::Array<Core::EllipseF> ellipses;
    for (const Blob& blob : blobs) {
        area += blob.area;
        brightness += blob.brightness * blob.area;
        const Core::PointF center(blob.centerX, blob.centerY);
        centers.append(center);
        boxes.append(
            {{blob.left + blob.width / 2.0, blob.top + blob.height / 2.0}, 1.0 * blob.width, 1.0 * blob.height});
        ellipses.append({center, blob.majorRadius, blob.minorRadius, blob.rotation});
    }
    const std::string label = std::to_string(blobs.size()) + (blobs.size() == 1 ? " blob" : " blobs");
    count_.setValue(Core::Integer(std::ssize(blobs)));
    found_.setValue(Core::Boolean(!blobs.empty()));
    brightness_.setValue(Core::Float(blobs.empty() ? 0.0 : brightness / static_cast<double>(area)));
    label_.setValue(Core::String(label.c_str()));
    centers_.setValue(centers);
    boxes_.setValue(boxes);
    ellipses_.setValue(ellipses);
    transformation_.setValue(Core::TransformationData(3, 3, {1, 0, 0, 0, 1, 0, 0, 0, 1}));
}

void BlobFinder::outputLargest(const Blob& blob, const Core::Image& image)
{
    const double x = blob.centerX;
    const double y = blob.centerY;
    const double c = std::cos(blob.rotation);
    const double s = 0.0 - std::sin(blob.rotation);  // Y goes down
    const double r = blob.majorRadius;
    const Core::BoundingBox box{blob.left, blob.top, static_cast<std::uint32_t>(blob.width),
                                static_cast<std::uint32_t>(blob.height)};
    circle_.setValue(Core::CircleF({x, y}, std::sqrt(blob.area / std::numbers::pi)));
    line_.setValue(Core::LineF({x - r * c, y - r * s}, {x + r * c, y + r * s}));
    region_.setValue(Core::Region(box, Core::ReferenceSize{image.getWidth(), image.getHeight()}));
    transformation_.setValue(
        Core::TransformationData(3, 3, {c, s, -c * x - s * y, 0.0 - s, c, s * x - c * y, 0, 0, 1}));
}

}  // namespace Inspection

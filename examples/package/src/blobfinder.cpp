#include "blobfinder.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <numbers>
#include <string>

#include "gcbase/exception.h"

#include "utility/niveximage.h"

#include "core/errors.h"
#include "threading/uniquelock.h"
#include "utils/log.h"
#include "utils/typeregistrar.h"

namespace Inspection {

using Adapter::IntegerRange;
using Adapter::PortTexts;
using GenICam::gcstring;
using Guard = Nivex::DataProcessing::Threading::UniqueLock<Nivex::DataProcessing::Threading::IRecursiveLockable>;

namespace {

const Utils::TypeRegistrar<BlobFinder, Core::SimpleNode, Core::INodeMapContainer> registrar;

constexpr IntegerRange polarityRange{.min = 0, .max = 1};
constexpr IntegerRange thresholdRange{.min = 0, .max = 255};
constexpr IntegerRange minAreaRange{.min = 1, .max = std::numeric_limits<std::int32_t>::max()};

constexpr std::array<Plugin::NivexStageletPackageBase::EnumEntryRow<Polarity>, 2> polarities = {{
    {Polarity::Bright, "Bright", "Bright", "Blobs are brighter than the rest.",
     "Pixels of the threshold and above belong to blobs."},
    {Polarity::Dark, "Dark", "Dark", "Blobs are darker than the rest.",
     "Pixels below the threshold belong to blobs."},
}};

void requireInRange(const char* name, std::int64_t value, const IntegerRange& range)
{
    if (value < range.min || value > range.max) {
        GENICAM_THROW(InvalidArgumentException, "%s is %lld but must lie between %lld and %lld.", name,
                      static_cast<long long>(value), static_cast<long long>(range.min),
                      static_cast<long long>(range.max));
    }
}

/// The array of what `make` makes of each blob.
template <typename T, typename Make>
Core::Array<T> arrayOf(const std::vector<Blob>& blobs, const Make& make)
{
    std::vector<T> elements;
    elements.reserve(blobs.size());
    for (const Blob& blob : blobs)
        elements.push_back(make(blob));
    return Core::Array<T>(std::move(elements));
}

Core::PointF centerOf(const Blob& blob)
{
    return {blob.centerX, blob.centerY};
}

Core::RectangleF boxOf(const Blob& blob)
{
    const auto width = static_cast<double>(blob.width);
    const auto height = static_cast<double>(blob.height);
    return {
        {static_cast<double>(blob.left) + width / 2, static_cast<double>(blob.top) + height / 2}, width, height};
}

}  // namespace

BlobFinder::BlobFinder(const std::shared_ptr<Core::IResourcePool>& pool) : SimpleNode(pool)
{
    setLock(nodeMap_.getLock());
    toGrey_.OutputPixelFormat.SetValue(Nivex::EPixelType::Mono8);
    toGrey_.MaxNumThreads.SetValue(1);  // the graph keeps the cores busy

    const Guard guard(*getLock());
    polarityPort_ = nodeMap_.addFeature(std::make_shared<PolarityPort>(
        *this, PortTexts{"Polarity", "Polarity", "What a blob looks like.",
                         "Whether blobs are brighter or darker than the rest.", "Beginner"}));
    nodeMap_.addEntries<Polarity>("Polarity", polarities);
    thresholdPort_ = nodeMap_.addFeature(std::make_shared<ThresholdPort>(
        *this,
        PortTexts{"Threshold", "Threshold", "The grey value that divides blobs from the rest.",
                  "Bright blobs begin at this grey value, dark ones end below it.", "Beginner"},
        thresholdRange, "Linear"));
    minAreaPort_ = nodeMap_.addFeature(std::make_shared<MinAreaPort>(
        *this,
        PortTexts{"MinArea", "Minimum Area", "The smallest blob that counts, in pixels.",
                  "Blobs of fewer pixels are passed over as noise.", "Beginner"},
        minAreaRange, "PureNumber", "px"));
    nodeMap_.build();

    createInput("Image", "Input image", input_, Utils::Variant(Core::Image()));
    forEachOutput([this](const char* name, const char* displayName, auto& property) {
        createOutput(name, displayName, property);
    });
}

BlobFinder::~BlobFinder()
{
    cleanup();  // first of all, as in every final node class
}

template <typename Action>
void BlobFinder::forEachOutput(const Action& action)
{
    action("Image", "Image", image_);
    action("Count", "Number of blobs", count_);
    action("Found", "Whether there are blobs", found_);
    action("MeanBrightness", "Mean grey value of all blobs", brightness_);
    action("Label", "The result in words", label_);
    action("Centers", "Centers", centers_);
    action("BoundingBoxes", "Bounding boxes", boxes_);
    action("Ellipses", "Ellipses of the same moments", ellipses_);
    action("LargestCircle", "Circle of the largest blob's area", circle_);
    action("LargestLine", "Major axis of the largest blob", line_);
    action("LargestRegion", "Bounding box of the largest blob", region_);
    action("Transformation", "From the picture to the largest blob", transformation_);
}

void BlobFinder::process()
{
    const Utils::COWPtr<Core::Image> image = input_.getValue();
    if (image->hasError()) {
        outputErrors("Input image is invalid.", *image, Core::LossCause::InvalidInput);
        return;
    }
    std::vector<Blob> blobs;
    try {
        blobs = find(*image);
    } catch (const GenICam::GenericException& e) {
        outputErrors(e.GetDescription(), *image, Core::LossCause::ConversionFailed);
        return;
    }
    output(blobs, *image);
}

std::vector<Blob> BlobFinder::find(const Core::Image& image)
{
    Nivex::CNivexImage grey;
    toGrey_.Convert(grey, image.getNivexImage());
    return findBlobs({static_cast<const std::uint8_t*>(grey.GetBuffer()), grey.GetWidth(), grey.GetHeight()},
                     getSettings());
}

void BlobFinder::output(const std::vector<Blob>& blobs, const Core::Image& image)
{
    std::uint64_t area = 0;
    double brightness = 0.0;
    for (const Blob& blob : blobs) {
        area += blob.area;
        brightness += blob.brightness * static_cast<double>(blob.area);
    }
    image_ = input_;
    count_.setValue(Core::Integer(static_cast<std::int64_t>(blobs.size())));
    found_.setValue(Core::Boolean(!blobs.empty()));
    brightness_.setValue(Core::Float(area == 0 ? 0.0 : brightness / static_cast<double>(area)));
    label_.setValue(
        Core::String((std::to_string(blobs.size()) + (blobs.size() == 1 ? " blob" : " blobs")).c_str()));
    centers_.setValue(arrayOf<Core::PointF>(blobs, centerOf));
    boxes_.setValue(arrayOf<Core::RectangleF>(blobs, boxOf));
    ellipses_.setValue(arrayOf<Core::EllipseF>(blobs, [](const Blob& blob) {
        return Core::EllipseF(centerOf(blob), blob.majorRadius, blob.minorRadius, blob.rotation);
    }));
    transformation_.setValue(Core::TransformationData(3, 3, {1, 0, 0, 0, 1, 0, 0, 0, 1}));
    const auto smaller = [](const Blob& a, const Blob& b) { return a.area < b.area; };
    if (!blobs.empty()) outputLargest(*std::max_element(blobs.begin(), blobs.end(), smaller), image);
}

void BlobFinder::outputLargest(const Blob& blob, const Core::Image& image)
{
    const double x = blob.centerX;
    const double y = blob.centerY;
    const double c = std::cos(blob.rotation);
    const double s = std::sin(blob.rotation);
    const double r = blob.majorRadius;
    circle_.setValue(Core::CircleF(centerOf(blob), std::sqrt(static_cast<double>(blob.area) / std::numbers::pi)));
    line_.setValue(Core::LineF({x - r * c, y - r * s}, {x + r * c, y + r * s}));
    region_.setValue(Core::Region(
        Core::BoundingBox{static_cast<std::int32_t>(blob.left), static_cast<std::int32_t>(blob.top),
                          static_cast<std::uint32_t>(blob.width), static_cast<std::uint32_t>(blob.height)},
        Core::ReferenceSize{image.getWidth(), image.getHeight()}));
    transformation_.setValue(
        Core::TransformationData(3, 3, {c, s, -c * x - s * y, -s, c, s * x - c * y, 0, 0, 1}));
}

void BlobFinder::outputErrors(const gcstring& text, const Core::Image& image, Core::LossCause cause)
{
    static const Utils::CatId channel = Utils::getCatId("inspection.BlobFinder");
    Utils::createLogEntry(Utils::SeverityFailure, channel, "No blobs were looked for: %s", text.c_str());
    Core::ErrorList causes;
    if (image.hasError()) causes.push_back(image.getError());
    const auto error = std::make_shared<Core::InvalidValueError>(text, causes, Utils::DateTime::now());
    forEachOutput([&error](const char*, const char*, auto& property) {
        using Value = typename std::decay_t<decltype(property)>::Element;
        property.setCOWPtr(Utils::COWPtr<Value>::make(error));
    });
    reportLoss(cause);
}

BlobSettings BlobFinder::getSettings() const
{
    const Guard guard(*getLock());
    return settings_;
}

template <typename Change>
void BlobFinder::changeSettings(const Change& change)
{
    {
        const Guard guard(*getLock());
        BlobSettings changed = settings_;
        change(changed);
        requireInRange("Polarity", static_cast<std::int64_t>(changed.polarity), polarityRange);
        requireInRange("Threshold", changed.threshold, thresholdRange);
        requireInRange("MinArea", changed.minArea, minAreaRange);
        settings_ = changed;
    }
    notifySettingsChanged();  // never under the lock
}

void BlobFinder::setPolarity(Polarity value)
{
    changeSettings([value](BlobSettings& settings) { settings.polarity = value; });
}

void BlobFinder::setThreshold(long value)
{
    changeSettings([value](BlobSettings& settings) { settings.threshold = value; });
}

void BlobFinder::setMinArea(long value)
{
    changeSettings([value](BlobSettings& settings) { settings.minArea = value; });
}

void BlobFinder::loadSettings(const std::shared_ptr<Core::ISettings>& settings)
{
    requireUsable(settings);
    changeSettings([&settings](BlobSettings& loaded) {
        if (settings->hasKey("Polarity")) {
            const std::int64_t polarity = settings->getSigned("Polarity");
            requireInRange("Polarity", polarity, polarityRange);  // before the cast cuts it
            loaded.polarity = static_cast<Polarity>(polarity);
        }
        if (settings->hasKey("Threshold")) loaded.threshold = settings->getSigned("Threshold");
        if (settings->hasKey("MinArea")) loaded.minArea = settings->getSigned("MinArea");
    });
    const Guard guard(*getLock());  // clients of the node map hear of it
    polarityPort_->notifyObserver();
    thresholdPort_->notifyObserver();
    minAreaPort_->notifyObserver();
}

void BlobFinder::saveSettings(const std::shared_ptr<Core::ISettings>& settings)
{
    requireUsable(settings);
    const BlobSettings saved = getSettings();
    settings->setSigned("Polarity", static_cast<std::int64_t>(saved.polarity));
    settings->setSigned("Threshold", saved.threshold);
    settings->setSigned("MinArea", saved.minArea);
}

void BlobFinder::requireUsable(const std::shared_ptr<Core::ISettings>& settings) const
{
    if (!settings) GENICAM_THROW(InvalidArgumentException, "There is no settings store.");
    if (getState() == Core::NodeState::Stopped) return;
    GENICAM_THROW(RuntimeException, "Settings are loaded and saved only while the node is stopped.");
}

std::vector<Core::NodeMapInfo> BlobFinder::getNodeMapInfos()
{
    return {{"Blob Finder", nodeMap_.identifier}};
}

GenApi::CNodeMapRef BlobFinder::getNodeMap(const gcstring& identifier)
{
    return nodeMap_.getNodeMap(identifier);
}

}  // namespace Inspection

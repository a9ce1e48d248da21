#pragma once

#include <memory>
#include <vector>

#include "utility/imageformatconverter.h"

#include "blobs.h"
#include "core/array.h"
#include "core/boolean.h"
#include "core/circlef.h"
#include "core/ellipsef.h"
#include "core/float.h"
#include "core/image.h"
#include "core/inodemapcontainer.h"
#include "core/integer.h"
#include "core/linef.h"
#include "core/rectanglef.h"
#include "core/region.h"
#include "core/simplenode.h"
#include "core/string.h"
#include "core/transformationdata.h"
#include "parameteradapter/stageletnodemapbase.h"
#include "utils/property.h"

namespace Inspection {

namespace Core = Nivex::DataProcessing::Core;
namespace Utils = Nivex::DataProcessing::Utils;
namespace Adapter = AnythingToNodeMapAdapter;

/// Finds the bright or dark blobs of a picture and tells where they are, how large and how they lie.
///
/// Of a picture without blobs, the outputs that describe the largest one have no value, but for Transformation,
/// which is the identity. An erroneous picture gives an error on every output and counts as lost.
class BlobFinder : public Core::SimpleNode, public Core::INodeMapContainer
{
public:
    explicit BlobFinder(const std::shared_ptr<Core::IResourcePool>& pool);
    ~BlobFinder() override;

    /// Keys that are absent leave their values alone; after a failure all values are as before.
    void loadSettings(const std::shared_ptr<Core::ISettings>& settings) override;
    void saveSettings(const std::shared_ptr<Core::ISettings>& settings) override;
    std::vector<Core::NodeMapInfo> getNodeMapInfos() override;
    GenApi::CNodeMapRef getNodeMap(const GenICam::gcstring& identifier) override;

    // The parameters, for any thread. Setters raise InvalidArgumentException for a value that is not allowed.
    Polarity getPolarity() const { return getSettings().polarity; }
    void setPolarity(Polarity value);
    long getThreshold() const { return getSettings().threshold; }
    void setThreshold(long value);
    long getMinArea() const { return getSettings().minArea; }
    void setMinArea(long value);

protected:
    void process() override;

private:
    using PolarityPort =
        Adapter::EnumParameterPortRelay<Polarity, BlobFinder, &BlobFinder::getPolarity, &BlobFinder::setPolarity>;
    using ThresholdPort =
        Adapter::IntegerParameterPortRelay<long, BlobFinder, &BlobFinder::getThreshold, &BlobFinder::setThreshold>;
    using MinAreaPort =
        Adapter::IntegerParameterPortRelay<long, BlobFinder, &BlobFinder::getMinArea, &BlobFinder::setMinArea>;

    BlobSettings getSettings() const;
    /// Lets `change` work on a copy and takes it over if all is in range.
    template <typename Change>
    void changeSettings(const Change& change);
    void requireUsable(const std::shared_ptr<Core::ISettings>& settings) const;
    template <typename Action>
    void forEachOutput(const Action& action);
    std::vector<Blob> find(const Core::Image& image);
    void output(const std::vector<Blob>& blobs, const Core::Image& image);
    void outputLargest(const Blob& blob, const Core::Image& image);
    void outputErrors(const GenICam::gcstring& text, const Core::Image& image, Core::LossCause cause);

    Utils::ResettableProperty<Utils::COWPtr<Core::Image>> input_;
    Utils::ResettableProperty<Utils::COWPtr<Core::Image>> image_;
    Utils::ResettableProperty<Core::Integer> count_;
    Utils::ResettableProperty<Core::Boolean> found_;
    Utils::ResettableProperty<Core::Float> brightness_;
    Utils::ResettableProperty<Core::String> label_;
    Utils::ResettableProperty<Core::Array<Core::PointF>> centers_;
    Utils::ResettableProperty<Core::Array<Core::RectangleF>> boxes_;
    Utils::ResettableProperty<Core::Array<Core::EllipseF>> ellipses_;
    Utils::ResettableProperty<Core::CircleF> circle_;
    Utils::ResettableProperty<Core::LineF> line_;
    Utils::ResettableProperty<Core::Region> region_;
    Utils::ResettableProperty<Core::TransformationData> transformation_;

    BlobSettings settings_;                // guarded by the node's lock
    Nivex::CImageFormatConverter toGrey_;  // used by process() only
    std::shared_ptr<PolarityPort> polarityPort_;
    std::shared_ptr<ThresholdPort> thresholdPort_;
    std::shared_ptr<MinAreaPort> minAreaPort_;
    Plugin::NivexStageletPackageBase::StageletNodeMapBase
        nodeMap_;  // the last, so that it ends before the ports' node
};

}  // namespace Inspection

#pragma once

#include "utility/imageformatconverter.h"

#include "blobs.h"
#include "core/values.h"
#include "parameteradapter/parameternode.h"

namespace Inspection {

namespace Core = Nivex::DataProcessing::Core;
namespace Utils = Nivex::DataProcessing::Utils;

/// Finds the bright or dark blobs of a picture and tells where they are, how large and how they lie.
///
/// Of a picture without blobs, the outputs that describe the largest one have no value, but for Transformation,
/// which is the identity. An erroneous picture gives an error on every output and counts as lost.
class BlobFinder : public Plugin::NivexStageletPackageBase::ParameterNode
{
public:
    explicit BlobFinder(const std::shared_ptr<Core::IResourcePool>& pool);
    ~BlobFinder() override;

protected:
    void process() override;

private:
    void output(const std::vector<Blob>& blobs);
    void outputLargest(const Blob& blob, const Core::Image& image);

    Utils::ResettableProperty<Utils::COWPtr<Core::Image>> input_, image_;
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
};

}  // namespace Inspection

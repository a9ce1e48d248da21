#pragma once

#include "core/pointf.h"

namespace Nivex::DataProcessing::Core {

struct CircleFData
{
    static constexpr const char* className = "CircleF";
    PointF center;
    double radius = 0.0;
};

/// A circle, in pixels. All access to the parts raises RuntimeException if it holds an error, and so does building
/// it from points that hold one.
class GENICAM_API CircleF : public DataValue<CircleFData>
{
public:
    CircleF() = default;
    CircleF(const PointF& center, double radius) : DataValue(CircleFData{center.withoutError(), radius}) {}
    explicit CircleF(std::shared_ptr<IError> error) : DataValue(std::move(error)) {}

    PointF getCenter() const { return data().center; }
    Float getRadius() const { return Float(data().radius); }
    void setCenter(const PointF& center) { editData().center = center.withoutError(); }
    void setRadius(const Float& radius) { editData().radius = radius; }
};

}  // namespace Nivex::DataProcessing::Core

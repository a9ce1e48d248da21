#pragma once

#include "core/pointf.h"

namespace Nivex::DataProcessing::Core {

struct LineFData
{
    static constexpr const char* className = "LineF";
    PointF pointA;
    PointF pointB;
};

/// A line between two points, in pixels. All access to the parts raises RuntimeException if it holds an error, and
/// so does building it from points that hold one.
class GENICAM_API LineF : public DataValue<LineFData>
{
public:
    LineF() = default;
    LineF(const PointF& pointA, const PointF& pointB)
        : DataValue(LineFData{pointA.withoutError(), pointB.withoutError()})
    {}
    explicit LineF(std::shared_ptr<IError> error) : DataValue(std::move(error)) {}

    PointF getPointA() const { return data().pointA; }
    PointF getPointB() const { return data().pointB; }
    void setPointA(const PointF& pointA) { editData().pointA = pointA.withoutError(); }
    void setPointB(const PointF& pointB) { editData().pointB = pointB.withoutError(); }
};

}  // namespace Nivex::DataProcessing::Core

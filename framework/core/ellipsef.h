#pragma once

#include "core/pointf.h"

namespace Nivex::DataProcessing::Core {

struct EllipseFData
{
    static constexpr const char* className = "EllipseF";
    PointF center;
    double radius1 = 0.0;
    double radius2 = 0.0;
    double rotation = 0.0;
};

/// An ellipse, in pixels. The rotation of its first axis is in radians, from the x-axis, counterclockwise as the
/// picture is seen, with y going down. All access to the parts raises RuntimeException if it holds an error, and
/// so does building it from points that hold one.
class GENICAM_API EllipseF : public DataValue<EllipseFData>
{
public:
    EllipseF() = default;
    EllipseF(const PointF& center, double radius1, double radius2, double rotation = 0.0)
        : DataValue(EllipseFData{center.withoutError(), radius1, radius2, rotation})
    {}
    explicit EllipseF(std::shared_ptr<IError> error) : DataValue(std::move(error)) {}

    PointF getCenter() const { return data().center; }
    Float getRadius1() const { return Float(data().radius1); }
    Float getRadius2() const { return Float(data().radius2); }
    Float getRotation() const { return Float(data().rotation); }
    void setCenter(const PointF& center) { editData().center = center.withoutError(); }
    void setRadius1(const Float& radius1) { editData().radius1 = radius1; }
    void setRadius2(const Float& radius2) { editData().radius2 = radius2; }
    void setRotation(const Float& rotation) { editData().rotation = rotation; }
};

}  // namespace Nivex::DataProcessing::Core

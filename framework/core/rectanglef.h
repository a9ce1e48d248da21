#pragma once

#include "core/pointf.h"

namespace Nivex::DataProcessing::Core {

struct RectangleFData
{
    static constexpr const char* className = "RectangleF";
    PointF center;
    double width = 0.0;
    double height = 0.0;
    double rotation = 0.0;
};

/// A rectangle, in pixels. Its rotation about the center is in radians, from the x-axis, counterclockwise as the
/// picture is seen, with y going down. All access to the parts raises RuntimeException if it holds an error, and
/// so does building it from points that hold one.
class GENICAM_API RectangleF : public DataValue<RectangleFData>
{
public:
    RectangleF() = default;
    RectangleF(const PointF& center, double width, double height, double rotation = 0.0)
        : DataValue(RectangleFData{center.withoutError(), width, height, rotation})
    {}
    explicit RectangleF(std::shared_ptr<IError> error) : DataValue(std::move(error)) {}

    PointF getCenter() const { return data().center; }
    Float getWidth() const { return Float(data().width); }
    Float getHeight() const { return Float(data().height); }
    Float getRotation() const { return Float(data().rotation); }
    void setCenter(const PointF& center) { editData().center = center.withoutError(); }
    void setWidth(const Float& width) { editData().width = width; }
    void setHeight(const Float& height) { editData().height = height; }
    void setRotation(const Float& rotation) { editData().rotation = rotation; }
};

}  // namespace Nivex::DataProcessing::Core

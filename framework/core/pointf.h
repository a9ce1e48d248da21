#pragma once

#include "core/float.h"

namespace Nivex::DataProcessing::Core {

struct PointFData
{
    static constexpr const char* className = "PointF";
    double x = 0.0;
    double y = 0.0;
};

/// A point of a picture, in pixels: X to the right, Y down, from the top left corner. All access to the parts
/// raises RuntimeException if it holds an error.
class GENICAM_API PointF : public DataValue<PointFData>
{
public:
    PointF() = default;
    PointF(double x, double y) : DataValue(PointFData{x, y}) {}
    explicit PointF(std::shared_ptr<IError> error) : DataValue(std::move(error)) {}

    /// The point itself.
    const PointF& withoutError() const
    {
        requireNoError(PointFData::className);
        return *this;
    }

    Float getX() const { return Float(data().x); }
    Float getY() const { return Float(data().y); }
    void setX(const Float& x) { editData().x = x; }
    void setY(const Float& y) { editData().y = y; }
};

}  // namespace Nivex::DataProcessing::Core

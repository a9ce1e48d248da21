// Registers the value classes, in one file, since bases must come before what derives from them.

#include "core/values.h"
#include "utils/typeregistrar.h"

namespace Nivex::DataProcessing::Core {

namespace {

using Utils::PropertyInfo;
using Utils::TypeRegistrar;

/// A value class and the array of it.
template <typename T>
struct ValueTypes
{
    ValueTypes(std::initializer_list<PropertyInfo> properties = {}) : value(properties) {}

    TypeRegistrar<T, IValue> value;
    TypeRegistrar<Array<T>, IArray> array;
};

const TypeRegistrar<IValue> ivalue;
const TypeRegistrar<IArray, IValue> iarray;

const ValueTypes<Boolean> boolean;
const ValueTypes<Integer> integer;
const ValueTypes<Float> floating;
const ValueTypes<String> string;
const ValueTypes<Image> image;
const ValueTypes<Region> region;
const ValueTypes<TransformationData> transformationData;
const ValueTypes<PointF> pointF{
    PropertyInfo::of<&PointF::getX, &PointF::setX>("X"),
    PropertyInfo::of<&PointF::getY, &PointF::setY>("Y"),
};
const ValueTypes<LineF> lineF{
    PropertyInfo::of<&LineF::getPointA, &LineF::setPointA>("PointA"),
    PropertyInfo::of<&LineF::getPointB, &LineF::setPointB>("PointB"),
};
const ValueTypes<CircleF> circleF{
    PropertyInfo::of<&CircleF::getCenter, &CircleF::setCenter>("Center"),
    PropertyInfo::of<&CircleF::getRadius, &CircleF::setRadius>("Radius"),
};
const ValueTypes<EllipseF> ellipseF{
    PropertyInfo::of<&EllipseF::getCenter, &EllipseF::setCenter>("Center"),
    PropertyInfo::of<&EllipseF::getRadius1, &EllipseF::setRadius1>("Radius1"),
    PropertyInfo::of<&EllipseF::getRadius2, &EllipseF::setRadius2>("Radius2"),
    PropertyInfo::of<&EllipseF::getRotation, &EllipseF::setRotation>("Rotation"),
};
const ValueTypes<RectangleF> rectangleF{
    PropertyInfo::of<&RectangleF::getCenter, &RectangleF::setCenter>("Center"),
    PropertyInfo::of<&RectangleF::getWidth, &RectangleF::setWidth>("Width"),
    PropertyInfo::of<&RectangleF::getHeight, &RectangleF::setHeight>("Height"),
    PropertyInfo::of<&RectangleF::getRotation, &RectangleF::setRotation>("Rotation"),
};

const TypeRegistrar<std::vector<Boolean>> booleans;
const TypeRegistrar<std::vector<Integer>> integers;
const TypeRegistrar<std::vector<Float>> floats;
const TypeRegistrar<std::vector<String>> strings;

}  // namespace

}  // namespace Nivex::DataProcessing::Core

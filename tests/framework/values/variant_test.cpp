#include "utils/variant.h"

#include "core/errors.h"
#include "core/values.h"
#include "framework/refusal.h"
#include "utils/propertyinfo.h"

namespace {

using namespace Nivex::DataProcessing::Core;
using namespace Nivex::DataProcessing::Utils;
using GenICam::InvalidArgumentException;
using GenICam::RuntimeException;

/// What holds for every type that a pin can carry.
template <typename T>
class PinValueTest : public testing::Test
{};

using PinTypes = testing::Types<Integer, Float, Boolean, String, Image, Region, TransformationData, PointF,
                                RectangleF, LineF, CircleF, EllipseF, Array<Integer>, Array<Float>, Array<Boolean>,
                                Array<String>, Array<Image>, Array<Region>, Array<TransformationData>,
                                Array<PointF>, Array<RectangleF>, Array<LineF>, Array<CircleF>, Array<EllipseF>>;
TYPED_TEST_SUITE(PinValueTest, PinTypes);

TYPED_TEST(PinValueTest, IsSharedBetweenPointerAndVariants)
{
    const COWPtr<TypeParam> pointer = COWPtr<TypeParam>::make();
    const Variant variant(pointer);
    const Variant copy = variant;
    EXPECT_EQ(variant.getValueType(), TypeInfo::get<TypeParam>());
    EXPECT_EQ(copy.tryGet<TypeParam>(), pointer.get());
    EXPECT_EQ(&copy.getValue<TypeParam>(), pointer.get());
    EXPECT_EQ(copy.getCOWPtr<TypeParam>(), pointer);
    EXPECT_EQ(copy.getValue<COWPtr<TypeParam>>(), pointer);
    EXPECT_EQ(copy.tryGet<IValue>(), static_cast<const IValue*>(pointer.get()));
    EXPECT_EQ(copy.tryGet<IArray>() != nullptr, (std::is_base_of_v<IArray, TypeParam>));
    EXPECT_EQ(Variant::makeDefault(TypeInfo::get<TypeParam>()).getValueType(), variant.getValueType());
}

TYPED_TEST(PinValueTest, HoldsDataOrAnError)
{
    TypeParam value;
    EXPECT_FALSE(value.hasError());
    EXPECT_EQ(value.getError(true), nullptr);
    EXPECT_EQ(refusal<InvalidArgumentException>([&] { value.setError(nullptr); }),
              "Invalid error pointer passed.");
    EXPECT_EQ(refusal<InvalidArgumentException>([] { TypeParam(std::shared_ptr<IError>()); }),
              "Invalid error pointer passed.");
    const std::shared_ptr<IError> error = std::make_shared<InvalidValueError>("bad", DateTime::now());
    value.setError(error);
    EXPECT_TRUE(value.hasError());
    EXPECT_TRUE(value.hasError(true));
    EXPECT_EQ(value.getError(true), error);
    const TypeParam copy = TypeParam(error);
    EXPECT_EQ(copy.getError(), error);
    value = TypeParam();
    EXPECT_FALSE(value.hasError());
}

struct Unregistered
{};

TEST(VariantTest, RefusesWhatItCannotHold)
{
    EXPECT_EQ(refusal<InvalidArgumentException>([] { Variant(COWPtr<Integer>()); }),
              "Invalid data pointer passed.");
    EXPECT_EQ(refusal<RuntimeException>([] { Variant{Unregistered()}; }),
              "Type of passed data is not registered.");
}

TEST(VariantTest, RefusesToShowWhatItDoesNotHold)
{
    const std::string badCast = "Could not cast variant value to requested type.";
    const Variant integer(Integer(5));
    EXPECT_EQ(refusal<RuntimeException>([&] { integer.getValue<Unregistered>(); }),
              "Requested type is not registered.");
    EXPECT_EQ(refusal<RuntimeException>([&] { integer.getValue<Float>(); }), badCast);
    EXPECT_EQ(refusal<RuntimeException>([&] { integer.getCOWPtr<Float>(); }), badCast);
    EXPECT_EQ(refusal<RuntimeException>([&] { integer.getCOWPtr<IValue>(); }),
              "Requested type is not registered.");
    EXPECT_EQ(integer.tryGet<Unregistered>(), nullptr);
    EXPECT_EQ(integer.get(TypeInfo::get<Float>(), false), nullptr);
    EXPECT_EQ(integer.get(TypeInfo(), false), nullptr);

    const Variant empty;
    EXPECT_FALSE(empty.isValid());
    EXPECT_FALSE(empty.getValueType().isValid());
    EXPECT_EQ(empty.tryGet<Integer>(), nullptr);
    EXPECT_EQ(refusal<RuntimeException>([&] { empty.getValue<Integer>(); }), badCast);
    EXPECT_EQ(refusal<RuntimeException>([] { Variant().write(TypeInfo::get<Integer>()); }), badCast);
    Variant moved = integer;
    const Variant taken = std::move(moved);
    EXPECT_FALSE(moved.isValid());
    EXPECT_EQ(taken.getValue<Integer>().getSigned(), 5);
}

TEST(VariantTest, WritingLeavesSharersAsTheyAre)
{
    const COWPtr<PointF> pointer = COWPtr<PointF>::make(1.0, 2.0);
    Variant first(pointer);
    const Variant second = first;
    static_cast<PointF*>(first.write(TypeInfo::get<PointF>()))->setX(Float(9.0));
    EXPECT_EQ(first.getValue<PointF>().getX(), 9.0);
    EXPECT_EQ(second.getValue<PointF>().getX(), 1.0);
    EXPECT_EQ(pointer->getX(), 1.0);
    const void* own = first.get(TypeInfo::get<PointF>());
    EXPECT_EQ(first.write(TypeInfo::get<PointF>()), own) << "nobody shares it any more";
}

TEST(VariantTest, PartsAreReadAndWrittenByPath)
{
    Variant circle(CircleF(PointF(1.0, 2.0), 3.0));
    PropertyInfo::setValue(circle, "Center.Y", Variant(Float(7.0)));
    PropertyInfo::setValue(circle, "Radius", Variant(Float(8.0)));
    EXPECT_EQ(PropertyInfo::getValue(circle, "Center.Y").getValue<Float>(), 7.0);
    EXPECT_EQ(circle.getValueType().getProperty("Radius")->getValue<Float>(circle), 8.0);
    EXPECT_EQ(refusal<RuntimeException>([&] { PropertyInfo::setValue(circle, "Center", Variant(Float(1.0))); }),
              "Could not cast variant value to requested type.");
    const PropertyInfo readOnly = PropertyInfo::of<&PointF::getX>("X");
    Variant point(PointF(4.0, 5.0));
    EXPECT_EQ(readOnly.getValue<Float>(point), 4.0);
    EXPECT_EQ(refusal<GenICam::AccessException>([&] { readOnly.setValue(point, Variant(Float(1.0))); }),
              "Property \"X\" can only be read.");
}

}  // namespace

#include "utils/property.h"

#include <thread>

#include "core/values.h"
#include "framework/refusal.h"

namespace {

using namespace Nivex::DataProcessing::Core;
using namespace Nivex::DataProcessing::Utils;
using GenICam::InvalidArgumentException;
using GenICam::PropertyException;
using GenICam::RuntimeException;

/// Counts a property's changes, and that its lock is free when it tells of them.
class ChangeCount
{
public:
    explicit ChangeCount(IResettableProperty& property)
        : connection_(property.getChangedSignal().connect([this, &property] {
              ++count_;
              std::thread([&] { property.hasValue(); }).join();
          }))
    {}
    /// The changes since the last call.
    int take() { return std::exchange(count_, 0); }

private:
    int count_ = 0;
    ScopedConnection connection_;
};

template <typename T>
class ResettablePropertyTest : public testing::Test
{};
using DeclaredTypes =
    testing::Types<Integer, Image, Array<Float>, COWPtr<String>, COWPtr<Image>, std::vector<Boolean>>;
TYPED_TEST_SUITE(ResettablePropertyTest, DeclaredTypes);

TYPED_TEST(ResettablePropertyTest, HoldsNothingOrAValue)
{
    using Element = typename ResettableProperty<TypeParam>::Element;
    const std::string resetted = "Property is resetted.";
    ResettableProperty<TypeParam> property;
    ChangeCount changes(property);
    EXPECT_EQ(property.getType(), TypeInfo::get<TypeParam>());
    EXPECT_FALSE(property.hasValue());
    for (int round = 0; round < 2; ++round) {
        EXPECT_EQ(refusal<PropertyException>([&] { property.getValue(); }), resetted);
        EXPECT_EQ(refusal<PropertyException>([&] { property.getReference(); }), resetted);
        EXPECT_EQ(refusal<PropertyException>([&] { property.getVariant(); }), resetted);
        EXPECT_EQ(refusal<PropertyException>([&] { property.getSubProperty("X"); }), resetted);
        EXPECT_EQ(refusal<PropertyException>([&] { property.setSubProperty("X", Variant(Float(1))); }),
                  "Cannot set a subproperty of a resetted property.");

        const auto pointer = COWPtr<Element>::make();
        property.setCOWPtr(pointer);
        EXPECT_EQ(changes.take(), 1);
        EXPECT_TRUE(property.hasValue());
        EXPECT_EQ(&property.getReference(), pointer.get());
        EXPECT_EQ(property.getCOWPtr(), pointer);
        EXPECT_EQ(property.getVariant().template tryGet<Element>(), pointer.get());
        property.setValue(property.getValue());
        property.setPointer(std::make_unique<Element>());
        property.setVariant(Variant(pointer));
        EXPECT_EQ(changes.take(), 3);
        EXPECT_EQ(property.getCOWPtr(), pointer);
        property.reset();
        EXPECT_EQ(changes.take(), 1);
        EXPECT_FALSE(property.hasValue());
    }
}

TYPED_TEST(ResettablePropertyTest, RefusesNoValueAndWrongValuesUnchanged)
{
    using Element = typename ResettableProperty<TypeParam>::Element;
    ResettableProperty<TypeParam> property;
    property.setPointer(std::make_unique<Element>());
    const auto before = property.getCOWPtr();
    ChangeCount changes(property);
    EXPECT_EQ(refusal<InvalidArgumentException>([&] { property.setCOWPtr({}); }), "Invalid value pointer passed.");
    EXPECT_EQ(refusal<InvalidArgumentException>([&] { property.setPointer(nullptr); }),
              "Invalid value pointer passed.");
    EXPECT_EQ(refusal<InvalidArgumentException>([&] { property.setVariant(Variant()); }),
              "Invalid variant passed.");
    EXPECT_EQ(refusal<InvalidArgumentException>([&] { property.setVariant(Variant(CircleF())); }),
              "Variant returned invalid value.");
    EXPECT_EQ(changes.take(), 0);
    EXPECT_EQ(property.getCOWPtr(), before);
}

TEST(PropertyTest, NoPropertyOfAnUnregisteredType)
{
    struct Local
    {};
    EXPECT_EQ(refusal<RuntimeException>([] { ResettableProperty<Local>(); }),
              "The requested type is not registered.");
}

TEST(PropertyTest, AssignmentSharesTheValueAndTheStateOfBeingSet)
{
    ResettableProperty<COWPtr<Image>> input;
    ResettableProperty<COWPtr<Image>> output;
    ChangeCount changes(output);
    input.setValue(COWPtr<Image>::make());
    output = input;
    EXPECT_EQ(output.getValue(), input.getValue());
    EXPECT_EQ(changes.take(), 1);
    output.assign(output);
    EXPECT_EQ(changes.take(), 0);
    input.reset();
    output.assign(input);
    EXPECT_FALSE(output.hasValue());
    EXPECT_EQ(changes.take(), 1);
    ResettableProperty<String> other;
    other.setValue(String("a"));
    EXPECT_EQ(refusal<InvalidArgumentException>([&] { output.assign(other); }), "Variant returned invalid value.");
}

TEST(PropertyTest, SubPropertiesAreWrittenWithoutTouchingSharers)
{
    ResettableProperty<CircleF> property;
    property.setValue(CircleF(PointF(1, 2), 3));
    const auto before = property.getCOWPtr();
    ChangeCount changes(property);
    property.setSubProperty("Center.X", Variant(Float(9)));
    EXPECT_EQ(changes.take(), 1);
    EXPECT_EQ(property.getSubProperty("Center.X").getValue<Float>(), 9.0);
    EXPECT_EQ(before->getCenter().getX(), 1.0);
    EXPECT_THROW(property.setSubProperty("Center.Q", Variant(Float(9))), InvalidArgumentException);
    EXPECT_EQ(changes.take(), 0);
}

TEST(VariantPropertyTest, TakesAnyValueOrThoseOfOneBase)
{
    VariantProperty any;
    VariantProperty arrays(TypeInfo::get<IArray>());
    EXPECT_FALSE(any.getType().isValid());
    EXPECT_EQ(arrays.getType(), TypeInfo::get<IArray>());
    ChangeCount changes(any);
    any.setVariant(Variant(Integer(1)));
    any.setVariant(Variant(Array<Integer>(std::size_t{3})));
    EXPECT_EQ(changes.take(), 2);
    arrays = any;
    EXPECT_EQ(arrays.getVariant().tryGet<IArray>()->getSize(), 3U);
    EXPECT_EQ(refusal<InvalidArgumentException>([&] { arrays.setVariant(Variant(Integer(1))); }),
              "Variant returned invalid value.");
    EXPECT_EQ(refusal<InvalidArgumentException>([&] { any.setVariant(Variant()); }), "Invalid variant passed.");
    any.reset();
    EXPECT_EQ(refusal<PropertyException>([&] { any.getVariant(); }), "Property is resetted.");
}

TEST(PropertyTest, StandsReadersAndWritersOnManyThreads)
{
    ResettableProperty<String> property;
    property.setValue(String("start"));
    std::thread writer([&] {
        for (int i = 0; i < 2000; ++i)
            property.setValue(String(std::string(64, static_cast<char>('a' + i % 26))));
    });
    for (int i = 0; i < 2000; ++i) {
        const auto text = property.getCOWPtr();
        EXPECT_EQ(text->get().str().find_first_not_of(text->get().c_str()[0], 1),
                  text->get() == "start" ? 1U : std::string::npos);
    }
    writer.join();
}

}  // namespace

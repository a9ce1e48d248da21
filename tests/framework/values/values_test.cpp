#include "core/values.h"

#include <gmock/gmock.h>

#include <cstring>
#include <functional>
#include <limits>
#include <thread>

#include "core/bufferprovider.h"
#include "core/errors.h"
#include "framework/refusal.h"

namespace {

using namespace Nivex::DataProcessing::Core;
using GenICam::InvalidArgumentException;
using GenICam::RuntimeException;
using Nivex::CNivexImage;
using Nivex::EPixelType;
using Nivex::DataProcessing::Utils::DateTime;
using Nivex::DataProcessing::Utils::Variant;

std::shared_ptr<IError> makeError(const char* text)
{
    return std::make_shared<InvalidValueError>(text, DateTime::now());
}

TEST(IntegerTest, KeepsSignednessAndAllBits)
{
    const struct
    {
        Integer value;
        bool isSigned;
        std::int64_t asSigned;
        std::uint64_t asUnsigned;
    } cases[] = {
        {Integer(), true, 0, 0},
        {Integer(-1), true, -1, ~0ULL},
        {Integer(std::numeric_limits<long>::min()), true, std::numeric_limits<long>::min(), 1ULL << 63},
        {Integer(~0UL), false, -1, ~0ULL},
        {Integer(7U), false, 7, 7},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(c.value.isSigned(), c.isSigned);
        EXPECT_EQ(c.value.getSigned(), c.asSigned);
        EXPECT_EQ(c.value.getUnsigned(), c.asUnsigned);
    }
}

TEST(ValuesTest, ReadingDataOfAnErroneousValueIsRefused)
{
    const auto error = makeError("bad");
    const std::pair<std::string, std::function<void()>> cases[] = {
        {"Boolean", [&] { Boolean(error).get(); }},
        {"Integer", [&] { Integer(error).getSigned(); }},
        {"Float", [&] { static_cast<void>(static_cast<double>(Float(error))); }},
        {"String", [&] { String(error).get(); }},
        {"Region", [&] { Region(error).hasBoundingBox(); }},
        {"TransformationData", [&] { TransformationData(error).getSizeX(); }},
        {"PointF", [&] { PointF(error).getX(); }},
        {"PointF", [&] { LineF(PointF(1, 2), PointF(error)); }},
        {"LineF", [&] { LineF(error).setPointA(PointF(1, 2)); }},
        {"CircleF", [&] { CircleF(error).getCenter(); }},
        {"EllipseF", [&] { EllipseF(error).getRotation(); }},
        {"RectangleF", [&] { RectangleF(error).getWidth(); }},
    };
    for (const auto& [name, read] : cases)
        EXPECT_EQ(refusal<RuntimeException>(read), name + " is in error state.");
}

TEST(ValuesTest, PartsComeBackWhereTheyWerePut)
{
    const RectangleF rectangle(PointF(1, 2), 3, 4, 5);
    EXPECT_EQ(rectangle.getCenter().getX() + 10 * rectangle.getCenter().getY(), 21);
    EXPECT_EQ(rectangle.getWidth() + 10 * rectangle.getHeight() + 100 * rectangle.getRotation(), 543);
    const EllipseF ellipse(PointF(1, 2), 3, 4, 5);
    EXPECT_EQ(ellipse.getRadius1() + 10 * ellipse.getRadius2() + 100 * ellipse.getRotation(), 543);
    const LineF line(PointF(1, 2), PointF(3, 4));
    EXPECT_EQ(line.getPointA().getY() + 10 * line.getPointB().getX(), 32);
    EXPECT_EQ(Boolean(true).get(), true);
    EXPECT_EQ(String("text").get(), "text");
    EXPECT_EQ(Float(2).get(), 2.0);
}

TEST(RegionTest, GroupsMayBeAbsent)
{
    const Region region(BoundingBox{-1, -2, 3, 4}, ReferenceSize{5, 6});
    EXPECT_EQ(region.getBoundingBoxLeft(), -1);
    EXPECT_EQ(region.getBoundingBoxTop(), -2);
    EXPECT_EQ(region.getBoundingBoxWidth() * 10 + region.getBoundingBoxHeight(), 34U);
    EXPECT_EQ(region.getReferenceWidth() * 10 + region.getReferenceHeight(), 56U);
    const Region empty;
    EXPECT_FALSE(empty.hasBoundingBox() || empty.hasReferenceSize());
    EXPECT_EQ(refusal<RuntimeException>([&] { empty.getBoundingBoxLeft(); }), "Region has no bounding box.");
    EXPECT_EQ(refusal<RuntimeException>([&] { empty.getReferenceWidth(); }), "Region has no reference size.");
}

TEST(TransformationDataTest, IsAMatrixOfColumnsAndRows)
{
    const TransformationData matrix(3, 2, {1, 2, 3, 4, 5, 6});
    EXPECT_EQ(matrix.get(2, 0), 3);
    EXPECT_EQ(matrix.get(0, 1), 4);
    for (const auto& [x, y] : {std::pair{3, 0}, {0, 2}}) {
        EXPECT_THROW(matrix.get(static_cast<std::size_t>(x), static_cast<std::size_t>(y)),
                     InvalidArgumentException);
    }
    EXPECT_EQ(TransformationData(0, 5, {}).getSizeY(), 5U);
    EXPECT_EQ(refusal<InvalidArgumentException>([] {
                  TransformationData(2, 2, {1, 2, 3});
              }),
              "A matrix of 2 columns and 2 rows cannot be made of 3 values.");
    EXPECT_THROW(TransformationData(~std::size_t{0} / 2 + 1, 2, {}), InvalidArgumentException)
        << "product overflows";
}

TEST(ArrayTest, ChecksErrorThenIndexThenValue)
{
    const std::string inError = "Array is in error state.";
    const std::string badIndex = "Invalid index passed.";
    Array<Integer> array(std::size_t{2});
    const Variant five(Integer(5));
    EXPECT_EQ(refusal<InvalidArgumentException>([&] { array.at(2); }), badIndex);
    EXPECT_EQ(refusal<InvalidArgumentException>([&] { array.getElement(2); }), badIndex);
    EXPECT_EQ(refusal<InvalidArgumentException>([&] { array.set(2, Integer(1)); }), badIndex);
    EXPECT_EQ(refusal<InvalidArgumentException>([&] { array.setElement(2, Variant()); }), badIndex);
    EXPECT_EQ(refusal<InvalidArgumentException>([&] { array.setElement(1, Variant()); }),
              "The given value is invalid.");
    EXPECT_EQ(refusal<RuntimeException>([&] { array.setElement(1, Variant(Float(5.0))); }),
              "Could not cast variant value to requested type.");
    array.setElement(1, five);
    EXPECT_EQ(array.getElement(1).getValue<Integer>().getSigned(), 5);

    array.setError(makeError("bad"));
    EXPECT_EQ(array.getSize(), 0U);
    EXPECT_EQ(refusal<RuntimeException>([&] { array.at(9); }), inError);
    EXPECT_EQ(refusal<RuntimeException>([&] { array.getElement(9); }), inError);
    EXPECT_EQ(refusal<RuntimeException>([&] { array.set(9, Integer(1)); }), inError);
    EXPECT_EQ(refusal<RuntimeException>([&] { array.setElement(9, Variant()); }), inError);
    EXPECT_EQ(refusal<RuntimeException>([&] { array.append(Integer(1)); }), inError);
    EXPECT_EQ(refusal<RuntimeException>([&] { array.getData(); }), inError);
}

TEST(ArrayTest, CopiesShareElementsUntilOneWrites)
{
    Array<String> first({String("a"), String("b")});
    Array<String> second = first;
    EXPECT_EQ(first.getData(), second.getData());
    second.set(0, String("c"));
    second.append(String("d"));
    EXPECT_EQ(first.at(0).get(), "a");
    EXPECT_EQ(second.at(0).get(), "c");
    EXPECT_EQ(first.getSize() * 10 + second.getSize(), 23U);
    Array<String> empty;
    EXPECT_TRUE(empty.isEmpty());
    empty.append(String("e"));
    EXPECT_EQ(empty.at(0).get(), "e");
}

TEST(ArrayTest, RecursiveErrorsIncludeThoseOfElements)
{
    const auto bad = makeError("bad");
    const auto worse = makeError("worse");
    Array<Float> array({Float(1.0), Float(bad), Float(worse)});
    EXPECT_FALSE(array.hasError());
    EXPECT_EQ(array.getError(), nullptr);
    EXPECT_TRUE(array.hasError(true));
    EXPECT_THAT(array.getError(true)->getParentErrors(), testing::ElementsAre(bad, worse));
    const auto own = makeError("own");
    array.setError(own);
    EXPECT_EQ(array.getError(true), own);
}

TEST(ArrayTest, TakesOverTheDataOfCompatibleArrays)
{
    Array<Integer> target;
    Array<Integer> source({Integer(1), Integer(2)});
    target.assign(source);
    EXPECT_EQ(target.getData(), source.getData());
    target.assign(target);
    EXPECT_EQ(target.getSize(), 2U);
    EXPECT_EQ(refusal<InvalidArgumentException>([&] { target.assign(Array<Float>()); }),
              "Data in the given array is not compatible with this array.");
    source.setError(makeError("bad"));
    target.assign(source);
    EXPECT_EQ(target.getError(), source.getError());
    target.assign(Array<Integer>(std::size_t{1}));
    EXPECT_FALSE(target.hasError());
}

class ImageTest : public testing::Test
{
protected:
    ImageTest()
    {
        picture_.Reset(EPixelType::Mono8, 3, 2, 1);
        std::memcpy(picture_.GetBuffer(), "abc.def.", 8);
    }

    CNivexImage picture_;
    std::shared_ptr<BufferProvider> provider_ = std::make_shared<BufferProvider>();
};

TEST_F(ImageTest, SharesOrCopiesThePicture)
{
    struct Case
    {
        bool copy;
        std::shared_ptr<IBufferProvider> provider;
    };
    for (const Case& c : {Case{false, provider_}, {true, provider_}, {true, nullptr}}) {
        const Image image(picture_, c.provider, c.copy);
        EXPECT_EQ(image.getDataConst() == picture_.GetBuffer(), !c.copy);
        EXPECT_EQ(image.getBufferConst(), image.getDataConst());
        EXPECT_EQ(std::memcmp(image.getDataConst(), "abc.def.", 8), 0);
        EXPECT_EQ(image.getWidth() * 100 + image.getHeight() * 10 + image.getLinePadding(), 321U);
        EXPECT_EQ(image.getImageSize(), 8U);
        EXPECT_GE(image.getBufferSize(), 8U);
        EXPECT_EQ(image.getPixelType(), EPixelType::Mono8);
        EXPECT_EQ(image.getNivexImage().GetBuffer(), image.getDataConst());
    }
    EXPECT_GE(provider_->getIdleBytes(), 8U) << "the copy's memory came back";
}

TEST_F(ImageTest, KeepsAttachedMemoryUntilItsLastUser)
{
    int released = 0;
    char pixels[] = "abcdef";
    Image image;
    {
        CNivexImage attached;
        attached.AttachUserBuffer(pixels, 6, EPixelType::Mono8, 3, 2, 0, Nivex::EImageOrientation::TopDown,
                                  [&] { ++released; });
        image = Image(attached, provider_, false);
    }
    Image copy = image;
    image.setError(makeError("bad"));
    EXPECT_EQ(copy.getDataConst(), pixels);
    EXPECT_EQ(released, 0);
    copy = Image();
    EXPECT_EQ(released, 1);
}

TEST_F(ImageTest, IsEmptyWithoutAPicture)
{
    const Image cases[] = {Image(), Image(makeError("bad")), Image(CNivexImage(), provider_, true)};
    for (const Image& image : cases) {
        EXPECT_EQ(image.getDataConst(), nullptr);
        EXPECT_EQ(image.getWidth() + image.getHeight() + image.getImageSize() + image.getBufferSize(), 0U);
        EXPECT_EQ(image.getPixelType(), EPixelType::Undefined);
        EXPECT_FALSE(image.getNivexImage().IsValid());
    }
}

TEST(BufferProviderTest, ReusesWhatCameBackUpToItsLimit)
{
    BufferProvider provider(20000);
    auto buffer = provider.getBuffer(10000);
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(buffer.get()) % 64, 0U);
    std::memset(buffer.get(), 1, 10000);
    const std::byte* const address = buffer.get();
    auto second = provider.getBuffer(10001);
    EXPECT_NE(second.get(), address);
    std::thread([taken = std::move(buffer)]() mutable { taken.reset(); }).join();
    const std::size_t one = provider.getIdleBytes();
    EXPECT_GE(one, 10000U);
    EXPECT_LE(one, 11250U) << "an eighth is wasted at most";
    second.reset();
    EXPECT_EQ(provider.getIdleBytes(), one) << "the second is beyond the limit";
    EXPECT_EQ(provider.getBuffer(9990).get(), address);
    provider.trim();
    EXPECT_EQ(provider.getIdleBytes(), 0U);
}

TEST(BufferProviderTest, RefusesImpossibleSizesAndMayDieFirst)
{
    auto provider = std::make_unique<BufferProvider>();
    EXPECT_THROW(provider->getBuffer(0), InvalidArgumentException);
    for (const std::size_t size : {~std::size_t{0}, std::size_t{1} << 39}) {
        EXPECT_EQ(refusal<GenICam::BadAllocException>([&] { provider->getBuffer(size); }),
                  "Could not provide a buffer of " + std::to_string(size) + " bytes.");
    }
    const auto buffer = provider->getBuffer(100);
    provider.reset();
    std::memset(buffer.get(), 1, 100);
}

TEST(ErrorsTest, TellNameMessageTimeAndCauses)
{
    const DateTime time(std::chrono::nanoseconds(5));
    const auto cause = makeError("cause");
    const InvalidValueError invalid("text", {cause, nullptr}, time);
    EXPECT_EQ(invalid.getName(), "InvalidValueError");
    EXPECT_EQ(invalid.getDescription(), "text");
    EXPECT_EQ(invalid.getTimestamp(), time);
    EXPECT_THAT(invalid.getParentErrors(), testing::ElementsAre(cause, nullptr));
    EXPECT_EQ(DeviceError("gone", time).getName(), "DeviceError");
    const UnknownExceptionError unknown("what", "folder/file", 12, time);
    EXPECT_EQ(unknown.getDescription(), "what");
    EXPECT_EQ(unknown.getFileName(), "folder/file");
    EXPECT_EQ(unknown.getLine(), 12);
}

TEST(ErrorsTest, KeepTheExceptionTheyAreMadeOf)
{
    try {
        GENICAM_THROW(AccessException, "locked");
    } catch (const GenICam::GenericException& e) {
        const GenICamExceptionError error(e);
        EXPECT_EQ(error.getDescription(), "locked");
        EXPECT_THROW(std::rethrow_exception(error.getException()), GenICam::AccessException);
    }
    try {
        throw std::out_of_range("far");
    } catch (const std::exception& e) {
        const StdExceptionError error(e);
        EXPECT_EQ(error.getDescription(), "far");
        EXPECT_THROW(std::rethrow_exception(error.getException()), std::out_of_range);
    }
}

}  // namespace

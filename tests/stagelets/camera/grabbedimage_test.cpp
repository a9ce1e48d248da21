#include "camera/grabbedimage.h"

#include <gtest/gtest.h>

#include <cstring>
#include <stdexcept>

#include "core/errors.h"
#include "fakeresult.h"
#include "genicam/genapi/world.h"

namespace Plugin::NivexStageletPackageBase::Test {
namespace {

namespace Core = Nivex::DataProcessing::Core;
using GenApi::NodeMapPtr;
using Nivex::EComponentType;
using Nivex::EPayloadType;
using Nivex::EPixelType;

/// "4x2 Mono8+1" or "KIND: description".
std::string render(const GrabbedImage& grabbed)
{
    const Core::Image& image = *grabbed.image;
    if (image.hasError()) {
        return image.getError()->getName().str() + ": " + image.getError()->getDescription().str();
    }
    return GenICam::formatText("%ux%u %s+%zu", image.getWidth(), image.getHeight(),
                               Nivex::GetPixelTypeName(image.getPixelType()), image.getLinePadding());
}

NodeMapPtr mapOf(const std::string& nodes)
{
    return GenApiTest::MakeMap(GenApiTest::Description(nodes));
}

std::string integer(const char* name, std::int64_t value)
{
    return GenApiTest::Node("Integer", name, "<Value>" + std::to_string(value) + "</Value>");
}

std::string form(const std::string& pixelFormat, std::int64_t width, std::int64_t height)
{
    return GenApiTest::Node(
               "Enumeration", "PixelFormat",
               "<EnumEntry Name=\"" + pixelFormat + "\"><Value>1</Value></EnumEntry><Value>1</Value>") +
           integer("Width", width) + integer("Height", height);
}

class GrabbedImageTest : public testing::Test
{
protected:
    static constexpr std::size_t bufferSize = 64;

    GrabbedImageTest() { result->setForm(EPixelType::Mono8, 8, 4); }

    GrabbedImage build(FixCorruptImages fix = FixCorruptImages::Off) const
    {
        return GrabbedImageBuilder(cameraMap, streamMap, nullptr).build(result->pointer(), fix);
    }
    void failResult(const char* description)
    {
        result->frame().isComplete = false;
        result->frame().errorDescription = description;
    }
    void addComponent(EComponentType type, std::uint32_t height, std::size_t size = 8)
    {
        Nivex::SFrame& frame = result->frame();
        frame.payloadType = EPayloadType::MultiComponent;
        frame.components.at(frame.componentCount) = {.type = type,
                                                     .pixelType = EPixelType::Mono8,
                                                     .width = 2,
                                                     .height = height,
                                                     .paddingX = 0,
                                                     .offset = 8 * frame.componentCount,
                                                     .size = size};
        ++frame.componentCount;
    }

    std::shared_ptr<FakeResult> result = std::make_shared<FakeResult>(bufferSize);
    GrabbedImageBuilder::NodeMapSource cameraMap = [] { return mapOf(integer("PayloadSize", bufferSize)); };
    GrabbedImageBuilder::NodeMapSource streamMap = [] { return mapOf(integer("Other", 0)); };
};

TEST_F(GrabbedImageTest, GoodImagesShareTheGrabBuffer)
{
    result->setForm(EPixelType::Mono8, 8, 4, 3);
    GrabbedImage grabbed = build();
    EXPECT_EQ(render(grabbed), "8x4 Mono8+3");
    EXPECT_FALSE(grabbed.corrupt);
    EXPECT_EQ(grabbed.image->getDataConst(), result->GetBuffer());
    const std::weak_ptr<FakeResult> alive = result;
    result.reset();
    EXPECT_FALSE(alive.expired());
    grabbed.image.reset();
    EXPECT_TRUE(alive.expired());
}

// The chosen component is told by its height: the first has 1 row, the second 2; the whole result has 4.
TEST_F(GrabbedImageTest, ChoosesTheComponentThatIsThePicture)
{
    using Type = EComponentType;
    struct Row
    {
        const char* name;
        std::vector<Type> types;
        std::uint32_t rows;
    };
    const Row rows[] = {
        {"the intensity", {Type::Range, Type::Intensity}, 2},
        {"the first of the intensities", {Type::Confidence, Type::ProcessedIntensity, Type::Intensity}, 2},
        {"an intensity behind a range", {Type::Range, Type::Confidence, Type::ProcessedIntensity}, 3},
        {"the first range", {Type::Range, Type::Range}, 1},
        {"a range", {Type::Confidence, Type::Range}, 2},
        {"neither", {Type::Confidence, Type::Infrared}, 1},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        result = std::make_shared<FakeResult>(bufferSize);
        result->setForm(EPixelType::Mono8, 8, 4);
        for (const Type type : row.types) {
            addComponent(type, static_cast<std::uint32_t>(result->frame().componentCount + 1));
        }
        GrabbedImage grabbed = build();
        EXPECT_EQ(render(grabbed), GenICam::formatText("2x%u Mono8+0", row.rows));
        EXPECT_EQ(grabbed.image->getDataConst(),
                  static_cast<std::byte*>(result->GetBuffer()) + 8 * (row.rows - 1));
        const std::weak_ptr<FakeResult> alive = result;
        result.reset();
        EXPECT_FALSE(alive.expired());
        grabbed.image.reset();
        EXPECT_TRUE(alive.expired());
    }
}

TEST_F(GrabbedImageTest, TakesTheWholeResultIfTheComponentIsNoPicture)
{
    result->frame().payloadType = EPayloadType::MultiComponent;
    EXPECT_EQ(render(build()), "8x4 Mono8+0") << "no component";
    addComponent(EComponentType::Intensity, 2, 1000);
    EXPECT_EQ(render(build()), "8x4 Mono8+0") << "a component from outside the buffer";
    // Components of another kind of payload don't count.
    result->frame().payloadType = EPayloadType::Image;
    result->frame().components[0].size = 8;
    EXPECT_EQ(render(build()), "8x4 Mono8+0");
}

TEST_F(GrabbedImageTest, WhatIsNoPictureGivesAnError)
{
    result->setForm(EPixelType::Undefined, 0, 0);
    const GrabbedImage unusable = build();
    EXPECT_TRUE(unusable.isLost() && unusable.corrupt);
    EXPECT_EQ(render(unusable).find("GenICamExceptionError: No image can have 0 x 0 pixels"), 0U)
        << render(unusable);
    for (const FixCorruptImages fix : {FixCorruptImages::On, FixCorruptImages::Off}) {
        const GrabbedImage none = GrabbedImageBuilder(cameraMap, streamMap, nullptr).build({}, fix);
        EXPECT_TRUE(none.isLost() && none.corrupt);
    }
}

// The grab buffer holds 64 bytes, and the result says 8 x 4 Mono8 of itself.
TEST_F(GrabbedImageTest, RepairsWithinTheGrabBuffer)
{
    constexpr std::int64_t huge = std::int64_t{1} << 40;
    const std::string tooSmall = "GenICamExceptionError: The image buffer holds ";
    struct Row
    {
        const char* name;
        std::string camera;
        std::string stream;
        std::string expected;  ///< Or the beginning of it.
        std::uint32_t width = 8;
    };
    const std::string payload = integer("PayloadSize", 64);
    const Row rows[] = {
        {"the camera's form", payload + form("Mono16", 4, 2), "", "4x2 Mono16+1"},
        {"all of the buffer", payload + form("Mono8", 15, 4), "", "15x4 Mono8+1"},
        {"one row more", payload + form("Mono8", 15, 5), "", tooSmall + "64 bytes, but 15 x 5"},
        {"a larger payload is no larger buffer", integer("PayloadSize", huge) + form("Mono8", 15, 5), "",
         tooSmall + "64 bytes"},
        {"the stream's payload size wins", integer("PayloadSize", 4) + form("Mono8", 4, 2), payload,
         "4x2 Mono8+1"},
        {"also if it is smaller", payload + form("Mono8", 4, 2), integer("PayloadSize", 9), tooSmall + "9 bytes"},
        {"or senseless", payload + form("Mono8", 4, 2), integer("PayloadSize", -1), tooSmall + "0 bytes"},
        {"no payload size", form("Mono8", 4, 2), "", tooSmall + "0 bytes"},
        {"without a format it is Mono8", payload + integer("Width", 4) + integer("Height", 2), "", "4x2 Mono8+1"},
        {"a format of no known name", payload + form("Mono99", 4, 2), "",
         "GenICamExceptionError: No image can have"},
        {"heights beyond 32 bits", payload + form("Mono8", 4, (std::int64_t{1} << 32) + 2), "",
         "GenICamExceptionError: Height of the camera is 4294967298;"},
        {"negative ones", payload + form("Mono8", -4, 2), "", "GenICamExceptionError: Width of the camera is -4;"},
        {"a result without form keeps its own", payload + form("Mono8", 4, 2), "",
         "GenICamExceptionError: No image can have 0 x 4", 0},
    };
    failResult("");
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        result->setForm(EPixelType::Mono8, row.width, 4, 1);
        cameraMap = [&row] { return mapOf(row.camera.empty() ? integer("Other", 0) : row.camera); };
        streamMap = [&row] { return mapOf(row.stream.empty() ? integer("Other", 0) : row.stream); };
        const GrabbedImage grabbed = build(FixCorruptImages::On);
        EXPECT_TRUE(grabbed.corrupt);
        EXPECT_EQ(render(grabbed).substr(0, row.expected.size()), row.expected);
        if (grabbed.isLost()) continue;
        EXPECT_NE(grabbed.image->getDataConst(), result->GetBuffer());
        EXPECT_EQ(std::memcmp(grabbed.image->getDataConst(), result->GetBuffer(), grabbed.image->getImageSize()),
                  0);
        EXPECT_EQ(result.use_count(), 1) << "a copy does not keep the grab buffer";
    }
}

TEST_F(GrabbedImageTest, AFailureIsAnError)
{
    struct Row
    {
        FixCorruptImages fix;
        std::function<void()> failure;  ///< Of the node maps.
        const char* description;
        const char* expected;
    };
    const auto on = FixCorruptImages::On;
    const auto off = FixCorruptImages::Off;
    const auto notOpen = [] { GENICAM_THROW(LogicalErrorException, "The camera is not open."); };
    const auto closed = [] { throw std::logic_error("closed"); };
    const auto unknown = [] { throw 1; };
    const Row rows[] = {
        {off, unknown, "", "InvalidValueError: The grabbed image is corrupt."},
        {off, unknown, "Packets were lost.", "InvalidValueError: Packets were lost."},
        {on, notOpen, "", "GenICamExceptionError: The camera is not open."},
        {on, closed, "", "StdExceptionError: closed"},
        {on, unknown, "", "UnknownExceptionError: The grabbed image is corrupt."},
        {on, unknown, "Packets were lost.", "UnknownExceptionError: Packets were lost."},
    };
    for (const Row& row : rows) {
        failResult(row.description);
        cameraMap = [&row]() -> NodeMapPtr {
            row.failure();
            return nullptr;
        };
        const GrabbedImage grabbed = build(row.fix);
        EXPECT_EQ(render(grabbed), row.expected);
        EXPECT_TRUE(grabbed.corrupt && grabbed.isLost());
    }
}

}  // namespace
}  // namespace Plugin::NivexStageletPackageBase::Test

// Every input to every output against a reference of its own, and the converter's parameters and refusals. Names
// and sizes of formats are in pixeltype_test.cpp.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <opencv2/imgproc.hpp>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <numeric>

#include "gcbase/exception.h"

#include "utility/imageformatconverter.h"
#include "utility/niveximage.h"

#include "sdk/conversion/guardedimage.h"
#include "sdk/conversion/reference.h"

namespace {

using namespace Nivex;
using enum EPixelType;
using enum EImageOrientation;
using Bytes = std::vector<std::uint8_t>;

struct Options
{
    std::size_t inputPadding;
    std::size_t outputPadding;
    bool continuous;
    EImageOrientation orientation;
    OutputOrientationEnums outputOrientation;
    OutputBitAlignmentEnums alignment;
};

void apply(CImageFormatConverter& converter, EPixelType output, const Options& options)
{
    converter.OutputPixelFormat.SetValue(output);
    converter.OutputPaddingX.SetValue(static_cast<std::int64_t>(options.outputPadding));
    converter.OutputOrientation.SetValue(options.outputOrientation);
    converter.OutputBitAlignment.SetValue(options.alignment);
    converter.MaxNumThreads.SetValue(2);
}

Bytes convertOnce(EPixelType output, const Bytes& source, EPixelType input, std::uint32_t width,
                  std::uint32_t height, int threads = 1)
{
    CImageFormatConverter converter;
    converter.OutputPixelFormat.SetValue(output);
    converter.OutputBitAlignment.SetValue(OutputBitAlignmentEnums::LsbAligned);
    converter.MaxNumThreads.SetValue(threads);
    GuardedImage destination;
    converter.Convert(destination, source.data(), source.size(), input, width, height, 0, TopDown);
    return destination.pixels();
}

class Sweep : public testing::TestWithParam<Reference::Model>
{};

TEST_P(Sweep, EqualsTheReferenceForEveryOutput)
{
    using Orientation = OutputOrientationEnums;
    using Alignment = OutputBitAlignmentEnums;
    const Options optionSets[] = {
        {0, 0, false, TopDown, Orientation::Unchanged, Alignment::MsbAligned},
        {3, 5, false, TopDown, Orientation::BottomUp, Alignment::LsbAligned},
        {0, 1, true, BottomUp, Orientation::TopDown, Alignment::MsbAligned},
        {2, 0, false, BottomUp, Orientation::Unchanged, Alignment::LsbAligned},
    };
    const std::pair<std::uint32_t, std::uint32_t> sizes[] = {{1, 1}, {1, 4}, {3, 2}, {2, 1}, {7, 5}, {67, 9}};
    const Reference::Model& from = GetParam();
    for (const auto& [width, height] : sizes) {
        const Reference::Picture picture = Reference::randomPicture(from, width, height);
        for (const Options& options : optionSets) {
            Bytes source = Reference::pack(from, picture, {options.inputPadding, false, true});
            if (options.continuous && from.packing != Reference::Packing::Cells) {
                // One that saves no byte can't be told from rows that start on a byte.
                Bytes stream = Reference::pack(from, picture, {0, true, true});
                if (stream.size() < source.size()) source = std::move(stream);
            }
            const bool flip = options.outputOrientation != Orientation::Unchanged;
            for (const Reference::Model& to : Reference::outputs()) {
                SCOPED_TRACE(testing::Message() << GetPixelTypeName(to.type) << ' ' << width << 'x' << height
                                                << " options " << &options - optionSets);
                CImageFormatConverter converter;
                apply(converter, to.type, options);
                GuardedImage destination;
                converter.Convert(destination, source.data(), source.size(), from.type, width, height,
                                  options.inputPadding, options.orientation);
                const Reference::Picture expected =
                    Reference::convert(from, picture, to, flip, options.alignment == Alignment::MsbAligned);
                ASSERT_EQ(destination.pixels(), Reference::pack(to, expected, {options.outputPadding}));
                ASSERT_TRUE(destination.isGuardIntact());
                ASSERT_TRUE(options.outputOrientation != Orientation::Unchanged
                                ? destination.GetOrientation() != options.orientation
                                : destination.GetOrientation() == options.orientation);
            }
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Inputs, Sweep, testing::ValuesIn(Reference::inputs()),
                         [](const auto& model) { return std::string(GetPixelTypeName(model.param.type)); });

// Bytes worked out by hand from the layouts, to Mono16 or RGB16 as they are.
TEST(Decoding, ReadsKnownBytes)
{
    struct Case
    {
        EPixelType input;
        EPixelType output;
        std::uint32_t width;
        Bytes source;
        std::vector<std::uint16_t> expected;
    };
    const Case cases[] = {
        {Mono12p, Mono16, 2, {0xBC, 0x3A, 0x12}, {0xABC, 0x123}},
        {Mono12Packed, Mono16, 2, {0xAB, 0x3C, 0x12}, {0xABC, 0x123}},
        {Mono10Packed, Mono16, 2, {0xAA, 0x13, 0x55}, {0x2AB, 0x155}},
        {Mono10p, Mono16, 4, {0x01, 0x08, 0x30, 0xC0, 0xFF}, {0x001, 0x002, 0x003, 0x3FF}},
        {Mono10, Mono16, 1, {0xFF, 0xFF}, {0x3FF}},
        // The order of pixels in a byte, and of bytes here, is our reading: no public text fixes it.
        {Mono1Packed, Mono16, 9, {0x05, 0x01}, {255, 0, 255, 0, 0, 0, 0, 0, 255}},
        {Mono2Packed, Mono16, 3, {0x24}, {0, 85, 170}},
        {Mono4Packed, Mono16, 3, {0xF1, 0x02}, {17, 255, 34}},
        {RGB12V1Packed,
         RGB16Packed,
         2,
         {0x11, 0x21, 0x22, 0x33, 0x43, 0x44, 0x55, 0x65, 0x66},
         {0x111, 0x222, 0x333, 0x444, 0x555, 0x666}},
    };
    for (const Case& test : cases) {
        SCOPED_TRACE(GetPixelTypeName(test.input));
        const Bytes result = convertOnce(test.output, test.source, test.input, test.width, 1);
        std::vector<std::uint16_t> values(result.size() / 2);
        std::memcpy(values.data(), result.data(), result.size());
        EXPECT_EQ(values, test.expected);
    }
}

// White, grey and the primaries of the full-range equations.
TEST(Colours, FollowTheFullRangeEquations)
{
    const Bytes rgb = {255, 255, 255, 77, 77, 77, 255, 0, 0, 0, 255, 0, 0, 0, 255};
    const Bytes yuv = convertOnce(YUV444Planar, rgb, RGB8Packed, 5, 1);
    EXPECT_EQ(yuv, (Bytes{255, 77, 76, 150, 29, 128, 128, 85, 44, 255, 128, 128, 255, 21, 107}));
}

// The arithmetic behind this is scaled integers; here every pair of chroma values is held against real numbers.
TEST(Colours, AreThoseOfRealNumbersForEveryChroma)
{
    const auto level = [](double value) { return std::clamp(std::floor(value + 0.5 + 1e-9), 0.0, 255.0); };
    for (const int luma : {0, 60, 128, 200, 255}) {
        Bytes yuv(3 * 65536, static_cast<std::uint8_t>(luma));
        for (std::size_t i = 0; i < 65536; ++i) {
            yuv[65536 + i] = static_cast<std::uint8_t>(i % 256);
            yuv[2 * 65536 + i] = static_cast<std::uint8_t>(i / 256);
        }
        const Bytes rgb = convertOnce(RGB8Planar, yuv, YUV444Planar, 256, 256);
        for (std::size_t i = 0; i < 65536; ++i) {
            const int u = yuv[65536 + i] - 128;
            const int v = yuv[2 * 65536 + i] - 128;
            ASSERT_EQ(rgb[i], level(luma + 1.402 * v)) << luma << ' ' << u << ' ' << v;
            ASSERT_EQ(rgb[65536 + i], level(luma - 0.34414 * u - 0.71414 * v)) << luma << ' ' << u << ' ' << v;
            ASSERT_EQ(rgb[2 * 65536 + i], level(luma + 1.772 * u)) << luma << ' ' << u << ' ' << v;
        }
    }
}

// The only judge that is not our own: OpenCV's bilinear interpolation, away from its border rule.
TEST(Bayer, EqualsOpenCvInTheInterior)
{
    struct Case
    {
        const char* order;
        int code;
    };
    const Case cases[] = {{"RG", cv::COLOR_BayerRGGB2RGB},
                          {"BG", cv::COLOR_BayerBGGR2RGB},
                          {"GB", cv::COLOR_BayerGBRG2RGB},
                          {"GR", cv::COLOR_BayerGRBG2RGB}};
    const cv::Rect interior(1, 1, 31, 20);
    for (const Case& test : cases) {
        for (const int bits : {8, 16}) {
            const std::string name = "Bayer" + std::string(test.order) + std::to_string(bits);
            SCOPED_TRACE(name);
            cv::Mat raw(22, 33, bits == 8 ? CV_8UC1 : CV_16UC1);
            cv::randu(raw, 0, 1 << bits);
            cv::Mat expected;
            cv::cvtColor(raw, expected, test.code);
            const Bytes source(raw.data, raw.data + raw.total() * raw.elemSize());
            Bytes result = convertOnce(bits == 8 ? RGB8Packed : RGB16Packed, source,
                                       GetPixelTypeByName(name.c_str()), 33, 22);
            const cv::Mat ours(22, 33, bits == 8 ? CV_8UC3 : CV_16UC3, result.data());
            EXPECT_EQ(cv::norm(ours(interior), expected(interior), cv::NORM_INF), 0);
        }
    }
}

TEST(Threads, DoNotChangeTheResult)
{
    constexpr std::uint32_t width = 701;
    constexpr std::uint32_t height = 521;
    for (const EPixelType input : {BayerRG12p, BayerGB8, RGB8Packed, Mono10p, YCbCr420_8_YY_CbCr_Semiplanar}) {
        const auto model = std::ranges::find(Reference::inputs(), input, &Reference::Model::type);
        const Bytes source =
            Reference::pack(*model, Reference::randomPicture(*model, width, height), {0, input == Mono10p, false});
        for (const EPixelType output : {BGR8Packed, YUV420Planar, Mono16}) {
            SCOPED_TRACE(testing::Message() << GetPixelTypeName(input) << " to " << GetPixelTypeName(output));
            const Bytes single = convertOnce(output, source, input, width, height, 1);
            EXPECT_EQ(convertOnce(output, source, input, width, height, 4), single);
        }
    }
}

// Once the memory has to grow, once it stays and rows change places.
TEST(Convert, TakesItsSourceFromTheDestination)
{
    for (const EPixelType output : {BGRA8Packed, RGB8Packed}) {
        SCOPED_TRACE(GetPixelTypeName(output));
        CNivexImage image;
        image.Reset(BGR8Packed, 5, 3);
        auto* const bytes = static_cast<std::uint8_t*>(image.GetBuffer());
        std::iota(bytes, bytes + image.GetImageSize(), std::uint8_t{1});
        CNivexImage original;
        original.CopyImage(image);
        CImageFormatConverter converter;
        converter.OutputPixelFormat.SetValue(output);
        converter.OutputOrientation.SetValue(OutputOrientationEnums::BottomUp);
        GuardedImage expected;
        converter.Convert(expected, original);
        converter.Convert(image, image);
        const auto* const result = static_cast<const std::uint8_t*>(image.GetBuffer());
        EXPECT_EQ(Bytes(result, result + image.GetImageSize()), expected.pixels());
    }
}

TEST(Convert, RefusesBadSourcesAndLeavesTheDestination)
{
    struct Case
    {
        EPixelType input;
        std::size_t size;
        std::uint32_t width;
        std::uint32_t height;
        std::size_t padding;
        const char* text;
    };
    const auto unknown = static_cast<EPixelType>(0x01081234);
    const Case cases[] = {
        {GetPixelTypeByName("Coord3D_ABC32f"), 4096, 4, 4, 0, "Coord3D_ABC32f (0x026000C0)"},
        {GetPixelTypeByName("Mono8s"), 4096, 4, 4, 0, "Mono8s (0x01080002)"},
        {unknown, 4096, 4, 4, 0, "UnknownPixelFormat (0x01081234)"},
        {Undefined, 4096, 4, 4, 0, "InvalidPixelFormat (0xFFFFFFFF)"},
        {Mono8, 4096, 0, 4, 0, "0 x 4 pixels"},
        {Mono8, 4096, 4, 0, 0, "4 x 0 pixels"},
        {Mono8, 15, 4, 4, 0, "has 15 bytes, but needs 16"},
        {Mono8, 19, 4, 4, 1, "has 19 bytes, but needs 20"},
        {Mono10p, 7, 3, 2, 0, "has 7 bytes, but needs 8"},
        {Mono8, 4096, 4, 4, ~std::size_t{0}, "address space"},
        {RGB16Packed, 4096, 0xFFFFFFFF, 0xFFFFFFFF, 0, "address space"},
    };
    const Bytes source(4096);
    const CImageFormatConverter converter;
    for (const Case& test : cases) {
        SCOPED_TRACE(test.text);
        GuardedImage destination;
        destination.Reset(Mono8, 2, 2, 0, TopDown);
        try {
            converter.Convert(destination, source.data(), test.size, test.input, test.width, test.height,
                              test.padding, TopDown);
            ADD_FAILURE() << "was not refused";
        } catch (const GenICam::InvalidArgumentException& failure) {
            EXPECT_THAT(failure.GetDescription(), testing::HasSubstr(test.text));
        }
        EXPECT_EQ(destination.GetImageSize(), 4U);
    }
    GuardedImage destination;
    EXPECT_THROW(converter.Convert(destination, nullptr, 16, Mono8, 4, 4, 0, TopDown),
                 GenICam::InvalidArgumentException);
    EXPECT_THROW(
        converter.Convert(destination, source.data(), 16, Mono8, 4, 4, 0, static_cast<EImageOrientation>(2)),
        GenICam::InvalidArgumentException);
}

TEST(Parameters, DecideWhetherAnImageIsAsWanted)
{
    using Orientation = OutputOrientationEnums;
    CImageFormatConverter converter;
    converter.OutputPixelFormat.SetValue(Mono8);
    converter.OutputPaddingX.SetValue(4);
    EXPECT_TRUE(converter.ImageHasDestinationFormat(Mono8, 4, BottomUp));
    EXPECT_FALSE(converter.ImageHasDestinationFormat(Mono16, 4, BottomUp));
    EXPECT_FALSE(converter.ImageHasDestinationFormat(Mono8, 0, BottomUp));
    for (const auto& [wanted, topDown, bottomUp] :
         {std::tuple{Orientation::TopDown, true, false}, std::tuple{Orientation::BottomUp, false, true}})
    {
        converter.OutputOrientation.SetValue(wanted);
        EXPECT_EQ(converter.ImageHasDestinationFormat(Mono8, 4, TopDown), topDown);
        EXPECT_EQ(converter.ImageHasDestinationFormat(Mono8, 4, BottomUp), bottomUp);
    }
}

TEST(Parameters, RefuseOtherValuesAndKeepTheirs)
{
    CImageFormatConverter converter;
    EXPECT_THROW(converter.OutputPixelFormat.SetValue(Mono12), GenICam::InvalidArgumentException);
    EXPECT_EQ(converter.OutputPixelFormat.GetValue(), BGRA8Packed);
    EXPECT_THROW(converter.OutputPaddingX.SetValue(4294967296), GenICam::OutOfRangeException);
    EXPECT_THROW(converter.MaxNumThreads.SetValue(0), GenICam::OutOfRangeException);
    EXPECT_THROW(converter.MaxNumThreads.SetValue(65), GenICam::OutOfRangeException);
    EXPECT_NO_THROW(converter.MaxNumThreads.SetValue(64));
    EXPECT_EQ(converter.MaxNumThreads.GetTexts().displayName, "Max Num Threads");
    for (const EPixelType output : converter.OutputPixelFormat.GetEntries()) {
        EXPECT_TRUE(CImageFormatConverter::IsSupportedOutputFormat(output)) << GetPixelTypeName(output);
        EXPECT_TRUE(CImageFormatConverter::IsSupportedInputFormat(output)) << GetPixelTypeName(output);
    }
    EXPECT_EQ(converter.OutputPixelFormat.GetEntries().size(), Reference::outputs().size());
}

}  // namespace

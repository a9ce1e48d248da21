// The table of pixel formats: names, families and sizes of pictures.
#include <gtest/gtest.h>

#include <set>
#include <string>

#include "utility/pixelformats.h"

namespace {

using namespace Nivex;
using enum EPixelType;

EPixelType named(const char* name)
{
    return GetPixelTypeByName(name);
}

TEST(PixelFormats, AreUniqueAndConsistent)
{
    std::set<std::uint32_t> values;
    std::set<std::string> names;
    for (const PixelFormat& format : GetPixelFormats()) {
        SCOPED_TRACE(format.name);
        const auto type = static_cast<EPixelType>(format.value);
        EXPECT_TRUE(values.insert(format.value).second);
        EXPECT_TRUE(names.insert(format.name).second);
        EXPECT_TRUE(!format.alias || names.insert(format.alias).second);
        EXPECT_EQ(FindPixelFormat(type), FindPixelFormat(named(format.name)));
        EXPECT_STREQ(GetPixelTypeName(type), format.name);
        EXPECT_GE(BitsPerPixel(type), BitDepth(type));
        const std::string depth = format.bitDepth == 6 ? "565" : std::to_string(format.bitDepth);
        const bool custom = format.value >> 31 != 0;
        EXPECT_TRUE(custom || std::string(format.name).find(depth) != std::string::npos);
    }
    EXPECT_EQ(values.size(), 285U + 3U);
}

TEST(PixelFormats, AreFoundByValueAndByName)
{
    struct Case
    {
        std::uint32_t value;
        const char* name;
        const char* alias;
        std::uint32_t bits;
        std::uint32_t depth;
    };
    const Case cases[] = {
        {0x01080001, "Mono8", "Mono8", 8, 8},
        {0x01100007, "Mono16", "Mono16", 16, 16},
        {0x01010037, "Mono1p", "Mono1Packed", 1, 1},
        {0x0110000C, "BayerGR10", "BayerGR10", 16, 10},
        {0x010A0052, "BayerBG10p", "BayerBG10p", 10, 10},
        {0x0110002E, "BayerGR16", "BayerGR16", 16, 16},
        {0x010C002C, "BayerGB12Packed", "BayerGB12Packed", 12, 12},
        {0x020C005A, "YCbCr411_8", "YCbCr411_8", 12, 8},
        {0x021000A5, "BiColorRGBG8", "BiColorRGBG8", 16, 8},
        {0x02180014, "RGB8", "RGB8Packed", 24, 8},
        {0x02200017, "BGRa8", "BGRA8Packed", 32, 8},
        {0x0210001F, "YUV422_8_UYVY", "YUV422Packed", 16, 8},
        {0x02100032, "YUV422_8", "YUV422_YUYV_Packed", 16, 8},
        {0x010A00CA, "R10_Deprecated", "R10_Deprecated", 10, 10},
        {0x026000C0, "Coord3D_ABC32f", "Coord3D_ABC32f", 96, 32},
        // These differ in the upper half of the value only.
        {0x820C0040, "YUV420Planar", "YUV420Planar", 12, 8},
        {0x02180040, "YCbCr709_8_CbYCr", "YCbCr709_8_CbYCr", 24, 8},
    };
    for (const Case& test : cases) {
        SCOPED_TRACE(test.name);
        const auto type = static_cast<EPixelType>(test.value);
        EXPECT_STREQ(GetPixelTypeName(type), test.name);
        EXPECT_EQ(named(test.name), type);
        EXPECT_EQ(named(test.alias), type);
        EXPECT_EQ(BitsPerPixel(type), test.bits);
        EXPECT_EQ(BitDepth(type), test.depth);
    }
    for (const char* name : {"mono8", "Mono", "", static_cast<const char*>(nullptr)})
        EXPECT_EQ(named(name), Undefined);
    const auto unknown = static_cast<EPixelType>(0x01081234);
    EXPECT_STREQ(GetPixelTypeName(unknown), "UnknownPixelFormat");
    EXPECT_STREQ(GetPixelTypeName(Undefined), "InvalidPixelFormat");
    EXPECT_FALSE(HasPixelLayout(unknown));
    EXPECT_EQ(BitDepth(unknown), 0U);
}

TEST(PixelFormats, KnowTheirFamily)
{
    struct Case
    {
        EPixelType type;
        bool mono, bayer, color, planar;
    };
    const Case cases[] = {
        {Mono12p, true, false, false, false},       {BayerGB12p, false, true, false, false},
        {RGB12V1Packed, false, false, true, false}, {RGB8Planar, false, false, true, true},
        {YUV420Planar, false, false, true, true},   {YCbCr422_8_YY_CbCr_Semiplanar, false, false, true, true},
        {named("R8"), false, false, false, false},  {named("Confidence8"), false, false, false, false},
        {Undefined, false, false, false, false},
    };
    for (const Case& test : cases) {
        SCOPED_TRACE(GetPixelTypeName(test.type));
        EXPECT_EQ(IsMonochrome(test.type), test.mono);
        EXPECT_EQ(IsBayer(test.type), test.bayer);
        EXPECT_EQ(IsColor(test.type), test.color);
        EXPECT_EQ(IsPlanar(test.type), test.planar);
    }
    EXPECT_EQ(BayerOrder(BayerGR8), EBayerOrder::GR);
    EXPECT_EQ(BayerOrder(BayerRG10p), EBayerOrder::RG);
    EXPECT_EQ(BayerOrder(BayerGB16), EBayerOrder::GB);
    EXPECT_EQ(BayerOrder(BayerBG12Packed), EBayerOrder::BG);
    EXPECT_EQ(BayerOrder(Mono8), std::nullopt);
}

TEST(Layout, CountsBytesOfRowsAndPlanes)
{
    struct Case
    {
        EPixelType type;
        std::uint32_t width, height;
        std::size_t padding, stride, size;
    };
    const Case cases[] = {
        {Mono8, 7, 5, 0, 7, 35},
        {Mono10p, 7, 5, 0, 9, 45},
        {Mono12Packed, 7, 5, 2, 13, 65},
        {Mono1Packed, 9, 2, 0, 2, 4},
        {RGB12V1Packed, 3, 2, 0, 14, 28},
        {RGB8Planar, 7, 5, 1, 8, 120},
        {RGB16Planar, 7, 5, 0, 14, 210},
        {YUV444Planar, 7, 5, 0, 7, 105},
        {YUV422Planar, 7, 5, 0, 7, 35 + 2 * 20},
        {YUV420Planar, 7, 5, 0, 7, 35 + 2 * 12},
        {YUV420Planar, 7, 5, 3, 10, 50 + 2 * 21},
        {YCbCr422_8_YY_CbCr_Semiplanar, 7, 5, 0, 7, 35 + 40},
        {YCbCr420_8_YY_CbCr_Semiplanar, 7, 5, 1, 8, 40 + 27},
        {named("Coord3D_AC10p_Planar"), 3, 2, 0, 4, 16},
        {static_cast<EPixelType>(0x010C1234), 3, 2, 0, 5, 10},
    };
    for (const Case& test : cases) {
        SCOPED_TRACE(testing::Message() << GetPixelTypeName(test.type) << " padding " << test.padding);
        EXPECT_EQ(ComputeStride(test.type, test.width, test.padding), test.stride);
        EXPECT_EQ(ComputeImageSize(test.type, test.width, test.height, test.padding), test.size);
    }
}

TEST(Layout, RefusesWhatHasNoSize)
{
    const std::uint32_t most = 0xFFFFFFFF;
    EXPECT_EQ(ComputeImageSize(Undefined, 1, 1, 0), std::nullopt);
    EXPECT_EQ(ComputeImageSize(static_cast<EPixelType>(0x01000001), 1, 1, 0), std::nullopt);
    EXPECT_EQ(ComputeImageSize(Mono8, 0, 1, 0), std::nullopt);
    EXPECT_EQ(ComputeImageSize(Mono8, 1, 0, 0), std::nullopt);
    EXPECT_EQ(ComputeImageSize(RGB16Packed, most, most, 0), std::nullopt);
    EXPECT_EQ(ComputeImageSize(YUV444Planar, most, most, 0), std::nullopt);
    EXPECT_EQ(ComputeStride(Mono8, 1, ~std::size_t{0}), std::nullopt);
    EXPECT_EQ(ComputeImageSize(Mono8, most, most, 0), std::size_t{most} * most);
}

}  // namespace

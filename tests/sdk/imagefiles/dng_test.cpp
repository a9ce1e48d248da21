// DNG files, as LibRaw's programs and the TIFF group's see them.

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/mman.h>

#include <cstdlib>

#include "gcbase/exception.h"

#include "utility/imageformatconverter.h"
#include "utility/pixelformats.h"

#include "sdk/imagefiles/imagetesting.h"

using namespace Nivex;
using namespace ImageTesting;
using enum EPixelType;
using testing::HasSubstr;
using testing::ThrowsMessage;

namespace {

class DngFiles : public FolderTest
{
protected:
    void save(const IImage& picture) const
    {
        CImagePersistence::Save(EImageFileFormat::Dng, path.c_str(), picture);
    }

    /// What LibRaw makes of the file: 16-bit colours, linear, bilinear, not balanced, white at 65535.
    CNivexImage rendered(const char* options = "-o 0") const
    {
        runCommand("/usr/bin/dcraw_emu -4 -T -q 0 -c 0 -r 1 1 1 1 " + std::string(options) + " " + path);
        CNivexImage image;
        image.Load((path + ".tiff").c_str());
        EXPECT_EQ(image.GetPixelType(), RGB16Packed);
        return image;
    }

    std::string path = inFolder("p.dng");
};

std::vector<EPixelType> bayerTypes()
{
    std::vector<EPixelType> types;
    for (const PixelFormat& row : GetPixelFormats()) {
        const auto pixelType = static_cast<EPixelType>(row.value);
        if (IsBayer(pixelType) && row.bitDepth >= 8 && row.bitDepth != 14) types.push_back(pixelType);
    }
    return types;
}

/// Our colours as fractions of white, row by row from the top.
std::vector<double> colours(const IImage& picture)
{
    CNivexImage deep;
    CImageFormatConverter converter;
    converter.OutputPixelFormat.SetValue(RGB16Packed);
    converter.Convert(deep, picture);
    const std::vector<std::uint8_t> bytes = rowsOf(deep);
    const std::uint32_t depth = BitDepth(picture.GetPixelType());
    const double white = ((1U << depth) - 1) << (16 - depth);
    std::vector<double> values;
    for (std::size_t i = 0; i < bytes.size(); i += 2)
        values.push_back((bytes[i] | bytes[i + 1] << 8) / white);
    return values;
}

double largestDifference(const std::vector<double>& a, const std::vector<double>& b, std::size_t width,
                         std::size_t height, std::size_t border)
{
    double largest = a.size() == width * height * 3 && a.size() == b.size() ? 0 : 1;
    for (std::size_t y = border; y + border < height && largest < 1; ++y) {
        for (std::size_t i = (y * width + border) * 3; i < (y * width + width - border) * 3; ++i)
            largest = std::max(largest, std::abs(a[i] - b[i]));
    }
    return largest;
}

}  // namespace

// Every sample, its colour and its depth arrive: LibRaw's bilinear picture is ours within one step of the source.
TEST_F(DngFiles, ShowTheColoursOfBayerPictures)
{
    const std::vector<EPixelType> types = bayerTypes();
    ASSERT_EQ(types.size(), 32U);
    int turn = 0;
    for (const EPixelType pixelType : types) {
        for (const auto orientation : {EImageOrientation::TopDown, EImageOrientation::BottomUp}) {
            const std::uint32_t width = 60;
            const std::uint32_t height = ++turn % 2 ? 46 : 47;
            SCOPED_TRACE(testing::Message() << GetPixelTypeName(pixelType) << " of height " << height
                                            << (orientation == EImageOrientation::BottomUp ? " bottom-up" : ""));
            const CNivexImage picture = makePicture(pixelType, width, height, turn % 3, orientation);
            ASSERT_TRUE(CImagePersistence::CanSaveWithoutConversion(EImageFileFormat::Dng, pixelType, width,
                                                                    height, turn % 3, orientation));
            save(picture);
            const double step = 1.0 / ((1U << BitDepth(pixelType)) - 1);
            EXPECT_LE(largestDifference(colours(rendered()), colours(picture), width, height, 2),
                      step + 4.0 / 65535);
        }
    }
}

// Odd widths end within a group of packed samples.
TEST_F(DngFiles, HoldEveryWidthOfPackedPictures)
{
    for (const EPixelType pixelType : {BayerRG10Packed, BayerRG10p, BayerRG12Packed, BayerRG12p}) {
        for (std::uint32_t width = 61; width < 65; ++width) {
            SCOPED_TRACE(testing::Message() << GetPixelTypeName(pixelType) << " of width " << width);
            const CNivexImage picture = makePicture(pixelType, width, 30);
            save(picture);
            EXPECT_LE(largestDifference(colours(rendered()), colours(picture), width, 30, 2), 1.0 / 1023);
        }
    }
}

// The samples are those of linear sRGB: going there changes nothing. What needs a conversion gets it.
TEST_F(DngFiles, ShowColourPicturesAsTheyAre)
{
    const std::pair<EPixelType, EPixelType> cases[] = {
        {RGB8Packed, RGB8Packed}, {RGB16Packed, RGB16Packed}, {BGR8Packed, RGB8Packed},
        {RGB8Planar, RGB8Packed}, {BGR12Packed, RGB16Packed}, {YUV422Packed, RGB8Packed},
    };
    for (const auto& [pixelType, stored] : cases) {
        SCOPED_TRACE(GetPixelTypeName(pixelType));
        const bool isDirect = pixelType == stored;
        EXPECT_EQ(CImagePersistence::CanSaveWithoutConversion(EImageFileFormat::Dng, pixelType, 62, 41, 0,
                                                              EImageOrientation::TopDown),
                  isDirect);
        const CNivexImage picture = makePicture(pixelType, 62, 41, 0, EImageOrientation::BottomUp);
        save(picture);
        CNivexImage loaded;
        loaded.Load(path.c_str());
        EXPECT_EQ(loaded.GetPixelType(), stored);
        if (isDirect) {
            EXPECT_TRUE(rowsOf(loaded) == rowsOf(picture));
        }
        for (const char* options : {"-o 0", "-o 1"})
            EXPECT_LE(largestDifference(colours(rendered(options)), colours(loaded), 62, 41, 0), 0.001) << options;
    }
}

TEST_F(DngFiles, SayWhatTheyHold)
{
    const std::pair<EPixelType, std::vector<const char*>> cases[] = {
        {BayerGB10p, {"Bits/Sample: 16", "WhiteLevel: 1023", "CFAPattern: 1,2,0,1", "Samples/Pixel: 1"}},
        {BayerBG12, {"Bits/Sample: 16", "WhiteLevel: 4095", "CFAPattern: 2,1,1,0"}},
        {BayerGR8, {"Bits/Sample: 8", "WhiteLevel: 255", "CFAPattern: 1,0,2,1", "CFARepeatPatternDim: 2,2"}},
        {RGB16Packed, {"Bits/Sample: 16", "WhiteLevel: 65535,65535,65535", "Photometric Interpretation: 34892"}},
    };
    for (const auto& [pixelType, lines] : cases) {
        SCOPED_TRACE(GetPixelTypeName(pixelType));
        save(makePicture(pixelType, 64, 48));
        const auto printed = runCommand("/usr/bin/tiffinfo -D " + path + " 2>&1");
        const std::string text(printed.begin(), printed.end());
        for (const char* line : lines)
            EXPECT_THAT(text, HasSubstr(line));
        EXPECT_THAT(text, HasSubstr("DNGVersion: 1,4,0,0"));
        EXPECT_THAT(text, HasSubstr("AsShotNeutral: 1"));
        EXPECT_THAT(text, testing::Not(testing::ContainsRegex("[Ww]arning|[Ee]rror")));
        const auto identified = runCommand("/usr/bin/raw-identify " + path);
        EXPECT_THAT(std::string(identified.begin(), identified.end()), HasSubstr("is a Stagelet Camera image"));
        // Bayer samples are no picture yet, and nobody is shown a mosaic in its place.
        if (!IsBayer(pixelType)) continue;
        EXPECT_THAT([&] { CNivexImage().Load(path.c_str()); },
                    ThrowsMessage<GenICam::RuntimeException>(
                        testing::AllOf(HasSubstr(path), HasSubstr("colour filter pattern"))));
    }
}

TEST_F(DngFiles, TakeNoGreyAndEndAtFourGigabytes)
{
    for (const EPixelType pixelType : {Mono8, Mono12p, Mono16}) {
        EXPECT_FALSE(CImagePersistence::CanSaveWithoutConversion(EImageFileFormat::Dng, pixelType, 64, 48, 0,
                                                                 EImageOrientation::TopDown));
        EXPECT_THAT([&] { save(makePicture(pixelType, 64, 48)); },
                    ThrowsMessage<GenICam::RuntimeException>(HasSubstr(GetPixelTypeName(pixelType))));
    }
    const std::size_t bytes = std::size_t{30000} * 24000 * 6;
    void* const empty = ::mmap(nullptr, bytes, PROT_READ, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
    ASSERT_NE(empty, MAP_FAILED);
    EXPECT_THAT(
        [&] {
            CImagePersistence::Save(EImageFileFormat::Dng, path.c_str(), empty, bytes, RGB16Packed, 30000, 24000,
                                    0, EImageOrientation::TopDown);
        },
        ThrowsMessage<GenICam::RuntimeException>(HasSubstr("4 GiB")));
    ::munmap(empty, bytes);
    EXPECT_EQ(countFiles(), 0U);
}

// What is saved comes back, straight or through a conversion.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>

#include "gcbase/exception.h"

#include "sdk/imagefiles/imagetesting.h"

using namespace Nivex;
using namespace ImageTesting;
using enum EImageFileFormat;
using enum EPixelType;

namespace {

class RoundTrip : public FolderTest
{};

}  // namespace

// Odd sizes, padding and row order make no difference to the picture that comes back.
TEST_F(RoundTrip, LosslessFormatsKeepEveryPixel)
{
    constexpr std::pair<std::uint32_t, std::uint32_t> sizes[] = {{1, 1}, {3, 2}, {37, 21}, {5, 300}, {1000, 700}};
    const std::string path = inFolder("picture");
    for (const Lossless& c : losslessForms) {
        for (const auto& [width, height] : sizes) {
            for (const std::size_t paddingX : {0, 6}) {
                for (const auto orientation : {EImageOrientation::TopDown, EImageOrientation::BottomUp}) {
                    SCOPED_TRACE(testing::Message()
                                 << static_cast<int>(c.format) << " " << GetPixelTypeName(c.pixelType) << " "
                                 << width << "x" << height << "+" << paddingX);
                    ASSERT_TRUE(CImagePersistence::CanSaveWithoutConversion(c.format, c.pixelType, width, height,
                                                                            paddingX, orientation));
                    const CNivexImage saved = makePicture(c.pixelType, width, height, paddingX, orientation);
                    CImagePersistence::Save(c.format, path.c_str(), saved);
                    CNivexImage loaded;
                    loaded.Load(path.c_str());
                    ASSERT_EQ(loaded.GetPixelType(), c.pixelType);
                    ASSERT_EQ(loaded.GetWidth(), width);
                    ASSERT_EQ(loaded.GetHeight(), height);
                    ASSERT_EQ(loaded.GetPaddingX(), 0U);
                    ASSERT_EQ(loaded.GetOrientation(), EImageOrientation::TopDown);
                    ASSERT_TRUE(rowsOf(loaded) == rowsOf(saved));
                }
            }
        }
    }
    EXPECT_EQ(countFiles(), 1U);
}

// A colour that comes back in another place would be far off; JPEG's own losses on a smooth picture are small.
TEST_F(RoundTrip, JpegStaysClose)
{
    const std::string path = inFolder("picture.jpg");
    for (const EPixelType pixelType : {Mono8, RGB8Packed, BGR8Packed}) {
        const CNivexImage saved = makeSmoothPicture(pixelType, 33, 19);
        const CImagePersistenceOptions options{95};
        CImagePersistence::Save(Jpeg, path.c_str(), saved, &options);
        CNivexImage loaded;
        loaded.Load(path.c_str());
        ASSERT_EQ(loaded.GetPixelType(), pixelType == Mono8 ? Mono8 : RGB8Packed);
        const auto expected = rowsOf(saved);
        const auto rows = rowsOf(loaded);
        ASSERT_EQ(rows.size(), expected.size());
        for (std::size_t i = 0; i < rows.size(); ++i) {
            const std::size_t j = pixelType == BGR8Packed ? i - i % 3 + 2 - i % 3 : i;
            ASSERT_NEAR(rows[i], expected[j], 12) << GetPixelTypeName(pixelType) << " byte " << i;
        }
    }
}

TEST_F(RoundTrip, JpegQualityDecidesTheSize)
{
    const CNivexImage picture = makePicture(Mono8, 64, 64);
    const auto sizeAt = [&](int quality) {
        const CImagePersistenceOptions options{quality};
        CImagePersistence::Save(Jpeg, inFolder("q.jpg").c_str(), picture, &options);
        return std::filesystem::file_size(inFolder("q.jpg"));
    };
    EXPECT_LT(sizeAt(1), sizeAt(50));
    EXPECT_LT(sizeAt(50), sizeAt(100));
    EXPECT_EQ(sizeAt(0), sizeAt(90));
    EXPECT_THROW(sizeAt(-1), GenICam::InvalidArgumentException);
    EXPECT_THROW(sizeAt(101), GenICam::InvalidArgumentException);
}

TEST_F(RoundTrip, RawIsTheBufferAsItStands)
{
    const CNivexImage picture = makePicture(BayerRG12Packed, 7, 5, 3, EImageOrientation::BottomUp);
    CImagePersistence::Save(Raw, inFolder("p.raw").c_str(), picture);
    const auto* bytes = static_cast<const std::uint8_t*>(picture.GetBuffer());
    EXPECT_EQ(readFile(inFolder("p.raw")), std::vector<std::uint8_t>(bytes, bytes + picture.GetImageSize()));
}

// Twelve bits fill sixteen from the top, and eight take the upper ones.
TEST_F(RoundTrip, ConversionAlignsDepths)
{
    const std::uint16_t grey[] = {0xABC, 0x123};
    CNivexImage loaded;
    for (const auto format : {Png, Bmp}) {
        CImagePersistence::Save(format, inFolder("p").c_str(), grey, sizeof grey, Mono12, 2, 1, 0,
                                EImageOrientation::TopDown);
        loaded.Load(inFolder("p").c_str());
        const std::vector<std::uint8_t> deep = {0xC0, 0xAB, 0x30, 0x12};
        EXPECT_EQ(rowsOf(loaded), format == Png ? deep : (std::vector<std::uint8_t>{0xAB, 0x12}));
    }
}

// Rows of bottom-up pictures stay where the eye saw them when they are converted too.
TEST_F(RoundTrip, ConversionKeepsUpAndDown)
{
    const std::uint8_t buffer[] = {1, 2, 3, 9, 4, 5, 6, 9};
    CImagePersistence::Save(Tiff, inFolder("p").c_str(), buffer, sizeof buffer, BGR8Packed, 1, 2, 1,
                            EImageOrientation::BottomUp);
    CNivexImage loaded;
    loaded.Load(inFolder("p").c_str());
    EXPECT_EQ(rowsOf(loaded), (std::vector<std::uint8_t>{6, 5, 4, 3, 2, 1}));
}

TEST(CanSaveWithoutConversion, KnowsWhatIsNoImageAndWhatDoesNotFit)
{
    const auto can = [](EImageFileFormat format, EPixelType pixelType, std::uint32_t width, std::uint32_t height) {
        return CImagePersistence::CanSaveWithoutConversion(format, pixelType, width, height, 0,
                                                           EImageOrientation::TopDown);
    };
    EXPECT_TRUE(can(Raw, Mono12Packed, 5, 5));
    EXPECT_FALSE(can(Raw, Undefined, 5, 5));
    EXPECT_FALSE(can(Bmp, Mono8, 0, 5));
    EXPECT_FALSE(can(Bmp, Mono8, 5, 0));
    EXPECT_TRUE(can(Jpeg, Mono8, 65500, 1));
    EXPECT_FALSE(can(Jpeg, Mono8, 1, 65501));
    EXPECT_FALSE(can(Dng, BGR8Packed, 5, 5));
    EXPECT_FALSE(can(Jpeg, Mono16, 5, 5));
    EXPECT_THROW(can(EImageFileFormat{6}, Mono8, 5, 5), GenICam::InvalidArgumentException);
}

// Independent programs read what we write, and write what we read.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>

#include "gcbase/exception.h"

#include "sdk/imagefiles/imagetesting.h"

using namespace Nivex;
using namespace ImageTesting;
using enum EImageFileFormat;
using enum EPixelType;

namespace {

// Of ImageMagick, by the path at which Debian has it: other programs go by that name too.
const std::string magick = "/usr/bin/convert";

/// How ImageMagick prints the bytes that a picture of that pixel type holds.
std::string printed(EPixelType pixelType)
{
    switch (pixelType) {
        case Mono8:
            return " -alpha off -depth 8 gray:-";
        case Mono16:
            return " -alpha off -endian LSB -depth 16 gray:-";
        case RGB8Packed:
            return " -alpha off -depth 8 rgb:-";
        case BGR8Packed:
            return " -alpha off -depth 8 bgr:-";
        case RGB16Packed:
            return " -alpha off -endian LSB -depth 16 rgb:-";
        case RGBA8Packed:
            return " -depth 8 rgba:-";
        case BGRA8Packed:
            return " -depth 8 bgra:-";
        default:
            ADD_FAILURE() << "no files hold " << GetPixelTypeName(pixelType);
            return {};
    }
}

int largestDifference(const std::vector<std::uint8_t>& a, const std::vector<std::uint8_t>& b)
{
    int largest = a.size() == b.size() ? 0 : 256;
    for (std::size_t i = 0; i < std::min(a.size(), b.size()); ++i) {
        largest = std::max(largest, std::abs(a[i] - b[i]));
    }
    return largest;
}

class Judges : public FolderTest
{};

}  // namespace

TEST_F(Judges, ImageMagickReadsOurFiles)
{
    constexpr const char* endings[] = {".bmp", ".tiff", ".jpg", ".png"};
    for (const auto& [format, pixelType] : losslessForms) {
        SCOPED_TRACE(testing::Message()
                     << endings[static_cast<int>(format)] << " " << GetPixelTypeName(pixelType));
        const std::string path = inFolder("ours") + endings[static_cast<int>(format)];
        const CNivexImage picture = makePicture(pixelType, 37, 21, 2, EImageOrientation::BottomUp);
        CImagePersistence::Save(format, path.c_str(), picture);
        EXPECT_TRUE(runCommand(magick + " " + path + printed(pixelType)) == rowsOf(picture));
    }
}

TEST_F(Judges, StrictCheckersFindNoFault)
{
    for (const EPixelType pixelType : {Mono8, Mono16, RGB8Packed, RGB16Packed}) {
        const CNivexImage picture = makePicture(pixelType, 301, 203);
        CImagePersistence::Save(Png, inFolder("p.png").c_str(), picture);
        CImagePersistence::Save(Tiff, inFolder("p.tiff").c_str(), picture);
        runCommand("/usr/bin/pngcheck -q " + inFolder("p.png"));
        EXPECT_EQ(runCommand("/usr/bin/tiffinfo -D " + inFolder("p.tiff") + " 2>&1 >/dev/null").size(), 0U);
    }
}

// The JPEG group's program and we decode the same pixels.
TEST_F(Judges, DjpegAgrees)
{
    for (const EPixelType pixelType : {Mono8, RGB8Packed, BGR8Packed}) {
        CImagePersistence::Save(Jpeg, inFolder("p.jpg").c_str(), makePicture(pixelType, 37, 21));
        CNivexImage loaded;
        loaded.Load(inFolder("p.jpg").c_str());
        const auto pnm = runCommand("/usr/bin/djpeg -pnm " + inFolder("p.jpg"));
        const auto rows = rowsOf(loaded);
        ASSERT_GT(pnm.size(), rows.size());
        EXPECT_TRUE(std::equal(rows.begin(), rows.end(), pnm.end() - static_cast<std::ptrdiff_t>(rows.size())));
    }
}

// Files of every kind that ImageMagick makes are read as it reads them itself.
TEST_F(Judges, WeReadImageMagicksFiles)
{
    struct Case
    {
        const char* options;
        const char* file;
        EPixelType pixelType;
        int tolerance = 0;
        const char* refusal = nullptr;  ///< What we don't decode is not shown in wrong colours.
    };
    const Case cases[] = {
        {"-colors 16 -type Palette", "png8:p.png", RGB8Packed},
        {"-monochrome", "a.png", Mono8},
        {"-colorspace Gray -posterize 16 -depth 4", "b.png", Mono8},
        {"-colorspace Gray -depth 16", "c.png", Mono16},
        {"-interlace PNG -depth 8", "d.png", RGB8Packed},
        {"-interlace PNG -depth 16", "e.png", RGB16Packed},
        {"-alpha set -channel A -fx i/w +channel -depth 8", "f.png", RGBA8Packed},
        {"-alpha set -channel A -fx i/w +channel -depth 16", "png64:g.png", RGB16Packed},
        {"-colorspace Gray -alpha set -channel A -fx i/w +channel -depth 8", "png:h.png", Mono8},
        {"-depth 8 -fuzz 30% -transparent black -colors 9", "png8:i.png", RGBA8Packed},
        {"-depth 16 -define tiff:tile-geometry=16x16", "a.tif", RGB16Packed},
        {"-depth 8 -define tiff:tile-geometry=32x16 -compress Zip", "b.tif", RGB8Packed},
        {"-depth 8 -interlace plane", "c.tif", RGB8Packed},
        {"-depth 16 -interlace plane -compress LZW", "d.tif", RGB16Packed},
        {"-depth 16 -colorspace Gray -endian MSB", "e.tif", Mono16},
        {"-depth 8 -colorspace Gray -define quantum:polarity=min-is-white", "f.tif", Mono8},
        {"-depth 16 -colorspace Gray -define quantum:polarity=min-is-white", "g.tif", Mono16},
        {"-monochrome -compress Group4", "h.tif", Mono8},
        {"-monochrome -depth 1 -compress None", "i.tif", Mono8},
        {"-colors 100 -depth 8 -type Palette -compress RLE", "j.tif", RGB8Packed},
        {"-depth 8 -alpha set -channel A -fx i/w +channel", "k.tif", RGBA8Packed},
        {"-depth 8 -define tiff:rows-per-strip=3 -compress Zip -define tiff:predictor=2", "l.tif", RGB8Packed},
        {"-depth 8", "tiff64:m.tif", RGB8Packed},
        {"-depth 8 -compress JPEG -quality 95", "n.tif", RGB8Packed, 2},  // Rendered by the library from YCbCr.
        {"-depth 8", "BMP2:a.bmp", BGR8Packed},
        {"-depth 8 -alpha off", "BMP3:b.bmp", BGR8Packed},
        {"-colors 200 -type Palette -compress None", "BMP3:c.bmp", BGR8Packed},
        {"-colors 12 -type Palette -compress None", "BMP3:d.bmp", BGR8Packed},
        {"-colorspace Gray -depth 8 -compress None", "BMP3:e.bmp", BGR8Packed},
        {"-monochrome -compress None", "BMP3:f.bmp", Mono8},
        {"-depth 8 -alpha set -channel A -fx i/w +channel", "g.bmp", BGRA8Packed},
        {"-define bmp:subtype=RGB565", "h.bmp", BGR8Packed, 1},  // We round 5 bits to 8; they repeat bits.
        {"-interlace JPEG -quality 90", "a.jpg", RGB8Packed},
        {"-quality 90 -sampling-factor 1x1", "b.jpg", RGB8Packed},
        {"-colorspace Gray -interlace JPEG", "c.jpg", Mono8},
        {"-colorspace CMYK", "d.jpg", Undefined, 0, "colour space"},
        {"-colors 30 -type Palette -compress RLE", "BMP3:i.bmp", Undefined, 0, "run-length"},
    };
    const std::string source = inFolder("source.tiff");
    CImagePersistence::Save(Tiff, source.c_str(), makePicture(RGB16Packed, 37, 21));
    for (const Case& c : cases) {
        SCOPED_TRACE(c.file);
        const std::string name = c.file;
        const std::size_t colon = name.find(':');
        const std::string kind = name.substr(0, colon == std::string::npos ? 0 : colon + 1);
        const std::string path = inFolder(name.substr(kind.size()));
        runCommand(magick + " " + source + " " + c.options + " " + kind + path);
        CNivexImage loaded;
        if (c.refusal) {
            EXPECT_THAT([&] { loaded.Load(path.c_str()); },
                        testing::ThrowsMessage<GenICam::RuntimeException>(testing::HasSubstr(c.refusal)));
            continue;
        }
        ASSERT_NO_THROW(loaded.Load(path.c_str()));
        EXPECT_STREQ(GetPixelTypeName(loaded.GetPixelType()), GetPixelTypeName(c.pixelType));
        ASSERT_EQ(loaded.GetWidth(), 37U);
        const auto theirs = runCommand(magick + " " + path + printed(loaded.GetPixelType()));
        EXPECT_LE(largestDifference(theirs, rowsOf(loaded)), c.tolerance);
    }
}

// Pictures stored lying or mirrored are turned as their files say.
TEST_F(Judges, TiffOrientationsAreTurned)
{
    const std::string path = inFolder("p.tiff");
    for (const EPixelType pixelType : {Mono8, RGB16Packed}) {
        for (int orientation = 1; orientation <= 8; ++orientation) {
            SCOPED_TRACE(orientation);
            CImagePersistence::Save(Tiff, path.c_str(), makePicture(pixelType, 5, 3));
            runCommand("/usr/bin/tiffset -s 274 " + std::to_string(orientation) + " " + path);
            CNivexImage loaded;
            loaded.Load(path.c_str());
            EXPECT_EQ(loaded.GetWidth(), orientation > 4 ? 3U : 5U);
            EXPECT_TRUE(runCommand(magick + " " + path + " -auto-orient" + printed(pixelType)) == rowsOf(loaded));
        }
    }
}

// Image files from end to end: pictures of all kinds through a node into a folder, read back by the image library.
#include <gtest/gtest.h>

#include <algorithm>

#include "gcbase/exception.h"

#include "utility/imageformatconverter.h"
#include "utility/niveximage.h"
#include "utility/pixelformats.h"

#include "core/array.h"
#include "core/integer.h"
#include "datawritertest.h"

namespace DataWriterTest {
namespace {

using Core::LossCause;
using Nivex::EPixelType;

class ImageFiles : public FolderTest
{
protected:
    ImageFiles() : FolderTest("BMP") {}

    void writeOne(const char* mediaType, const Core::PinValues& values)
    {
        parameters.set("MediaType", mediaType);
        write({values});
    }
    Nivex::CNivexImage load(const std::string& name) const
    {
        Nivex::CNivexImage picture;
        picture.Load((folder.path() / name).c_str());
        return picture;
    }
};

/// The pixels of a picture as RGB of 8 or 16 bits, by the converter.
std::vector<std::uint8_t> pixels(const Nivex::IImage& picture, bool isDeep = false)
{
    Nivex::CImageFormatConverter converter;
    converter.OutputPixelFormat.SetValue(isDeep ? EPixelType::RGB16Packed : EPixelType::RGB8Packed);
    Nivex::CNivexImage converted;
    converter.Convert(converted, picture);
    const auto* bytes = static_cast<const std::uint8_t*>(converted.GetBuffer());
    return {bytes, bytes + converted.GetImageSize()};
}

TEST_F(ImageFiles, HoldThePicturesOfAllKindsOfSources)
{
    struct Case
    {
        EPixelType source;
        std::size_t padding;
    };
    const Case sources[] = {
        {EPixelType::Mono4Packed, 0},  {EPixelType::Mono8, 3},        {EPixelType::Mono12, 0},
        {EPixelType::Mono10Packed, 0}, {EPixelType::Mono12p, 0},      {EPixelType::Mono16, 2},
        {EPixelType::BayerGR8, 0},     {EPixelType::BayerRG12, 4},    {EPixelType::BayerGB10Packed, 0},
        {EPixelType::BayerBG12p, 0},   {EPixelType::RGB8Packed, 1},   {EPixelType::BGR8Packed, 0},
        {EPixelType::BGR12Packed, 0},  {EPixelType::RGB16Packed, 0},  {EPixelType::RGB8Planar, 0},
        {EPixelType::RGB16Planar, 2},  {EPixelType::YUV422Packed, 0}, {EPixelType::YUV420Planar, 0},
        {EPixelType::YUV444Planar, 0},
    };
    struct Format
    {
        const char* mediaType;
        const char* extension;
        bool isDeep;  ///< It keeps more than 8 bits.
        bool isExact = true;
        bool isRawBayer = false;
    };
    const Format formats[] = {{"BMP", ".bmp", false},
                              {"TIFF", ".tiff", true},
                              {"PNG", ".png", true},
                              {"JPEG", ".jpg", false, false},
                              {"DNG", ".dng", true, true, true}};
    std::size_t files = 0;
    for (const Format& format : formats) {
        for (const auto& [pixelType, padding] : sources) {
            if (format.isRawBayer && Nivex::IsMonochrome(pixelType)) continue;
            SCOPED_TRACE(std::string(format.mediaType) + " of " + Nivex::GetPixelTypeName(pixelType));
            const Core::Image source = image(pixelType, 8, 4, padding);
            writeOne(format.mediaType, onPin1(source));
            EXPECT_EQ(host.files, ++files);
            const std::string name = std::string("Image_Record1_Data1") + format.extension;
            if (format.isRawBayer && Nivex::IsBayer(pixelType)) {
                EXPECT_THROW(load(name), GenICam::RuntimeException);
                continue;
            }
            const Nivex::CNivexImage written = load(name);
            EXPECT_EQ(written.GetWidth(), 8u);
            EXPECT_EQ(written.GetHeight(), 4u);
            const bool isDeep = format.isDeep && Nivex::BitDepth(pixelType) > 8;
            EXPECT_EQ(Nivex::BitDepth(written.GetPixelType()), isDeep ? 16u : 8u);
            EXPECT_EQ(Nivex::IsMonochrome(written.GetPixelType()), Nivex::IsMonochrome(pixelType));
            if (format.isExact) {
                EXPECT_EQ(pixels(written, isDeep), pixels(source.getNivexImage(), isDeep));
            }
        }
    }
    EXPECT_TRUE(host.lost.empty());
    EXPECT_TRUE(log.messages().empty());
}

// No image can be appended to another: a new one takes the place of what has its name.
TEST_F(ImageFiles, ReplaceThoseThatExistInEveryFileMode)
{
    const Core::Image light = image(EPixelType::RGB8Packed);
    const Core::Image dark = image(EPixelType::RGB16Packed, 5, 3);
    for (const char* mediaType : {"BMP", "TIFF", "JPEG", "PNG", "RAW", "DNG"}) {
        std::set<std::uintmax_t> sizes;
        parameters.set("FileName", mediaType);
        for (const char* mode : {"Create", "CreateThenAppend", "Append"}) {
            SCOPED_TRACE(std::string(mediaType) + " " + mode);
            parameters.set("FileMode", mode);
            writeOne(mediaType, onPin1(light));
            writeOne(mediaType, onPin1(dark));
            const fs::path file = folder.path() / *folder.entries().begin();
            ASSERT_EQ(file.stem(), mediaType);
            sizes.insert(fs::file_size(file));
        }
        EXPECT_EQ(sizes.size(), 1u) << mediaType;
        EXPECT_EQ(folder.entries().size(), 1u);
        fs::remove_all(folder.path() / *folder.entries().begin());
    }
    EXPECT_EQ(host.files, 6u * 3 * 2);
}

TEST_F(ImageFiles, AreJpegOrTheBareBuffer)
{
    const Core::Image flat = [] {
        Nivex::CNivexImage picture;
        picture.Reset(EPixelType::Mono8, 16, 16);
        std::fill_n(static_cast<std::uint8_t*>(picture.GetBuffer()), picture.GetImageSize(), std::uint8_t{77});
        return Core::Image(picture, nullptr, false);
    }();
    writeOne("JPEG", onPin1(flat));
    EXPECT_EQ(pixels(load("Image_Record1_Data1.jpg")), pixels(flat.getNivexImage()));
    const auto jpegBytes = fs::file_size(folder.path() / "Image_Record1_Data1.jpg");
    EXPECT_EQ(host.bytes, jpegBytes);

    const Core::Image packed = image(EPixelType::BayerBG12p, 6, 3, 5);
    writeOne("RAW", onPin1(packed));
    EXPECT_EQ(fs::file_size(folder.path() / "Image_Record1_Data1.raw"), packed.getImageSize());
    EXPECT_EQ(host.bytes, jpegBytes + packed.getImageSize());
    EXPECT_EQ(host.files, 2u);
}

TEST_F(ImageFiles, AreNamedByTheTemplate)
{
    const Core::Image picture = image(EPixelType::Mono8);
    const Core::Array<Core::Image> pictures(std::vector<Core::Image>{picture, picture});
    writeOne("PNG", onPin1(pictures));
    parameters.set("FileName", "a/b {SessionIndex}.{PinIndex}.{ArraySize}.{ArrayIndex}.{MediaWriterIndex}{Width}");
    writeOne("RAW", onPin1(pictures));
    writeOne("BMP", onPin1(picture));
    EXPECT_EQ(folder.entries(), (std::set<std::string>{"Image_Record1_Data1_0.png", "Image_Record1_Data1_1.png",
                                                       "a_b 2.1.2.0.1{Width}.raw", "a_b 2.1.2.1.1{Width}.raw",
                                                       "a_b 3.1.0.0.1{Width}.bmp"}));
}

struct LossCase
{
    const char* name;
    const char* mediaType;
    const char* fileName;
    Core::PinValues values;
    LossCause cause;
    std::size_t logLines;
};

TEST_F(ImageFiles, AreCountedWhenTheyDoNotComeAbout)
{
    const Core::Image grey = image(EPixelType::Mono8);
    const Core::Image colour = image(EPixelType::RGB8Packed);
    const std::string tooLong(300, 'n');
    const std::vector<LossCase> cases = {
        {"error", "PNG", "", onPin1(Core::Image(error("no image"))), LossCause::InvalidInput, 0},
        {"empty image", "PNG", "", onPin1(Core::Image()), LossCause::InvalidInput, 0},
        {"array in error", "PNG", "", onPin1(Core::Array<Core::Image>(error("no images"))),
         LossCause::InvalidInput, 0},
        {"number", "PNG", "", onPin1(Core::Integer(1)), LossCause::Unsupported, 0},
        {"grey to DNG", "DNG", "", onPin1(grey), LossCause::Unsupported, 0},
        {"long name", "PNG", tooLong.c_str(), onPin1(grey), LossCause::FileNotWritten, 1},
        {"no conversion", "BMP", "", onPin1(image(static_cast<EPixelType>(0x8108FFF0))), LossCause::FileNotWritten,
         1},
    };
    for (const LossCase& row : cases) {
        SCOPED_TRACE(row.name);
        host.lost.clear();
        log.clear();
        parameters.set("FileName", row.fileName);
        writeOne(row.mediaType, row.values);
        EXPECT_EQ(host.lost, (std::map<LossCause, int>{{row.cause, 1}}));
        EXPECT_EQ(log.messages("nivex.dataprocessing.stagelet.DataWriter").size(), row.logLines);
    }
    EXPECT_EQ(folder.entries(), std::set<std::string>());
    EXPECT_EQ(host.records, 0u);
}

// An image in error is passed over; one that can't be converted ends the array, and those behind it count, too.
TEST_F(ImageFiles, OfAnArrayAreAllAccountedFor)
{
    const Core::Image good = image(EPixelType::Mono8);
    const std::vector<Core::Image> pictures = {Core::Image(error("no image")), good,
                                               image(static_cast<EPixelType>(0x8108FFF0)), good, good};
    writeOne("PNG", onPin1(Core::Array<Core::Image>(pictures)));
    EXPECT_EQ(folder.entries(), (std::set<std::string>{"Image_Record1_Data1_1.png"}));
    EXPECT_EQ(host.lost, (std::map<LossCause, int>{{LossCause::InvalidInput, 1}, {LossCause::FileNotWritten, 3}}));
    EXPECT_EQ(host.files, 1u);
}

TEST_F(ImageFiles, LeaveNothingBehindOnAFullDisk)
{
    {
        const FileSizeLimit full(1000);
        writeOne("RAW", onPin1(image(EPixelType::Mono8, 100, 100)));
    }
    EXPECT_EQ(folder.entries(), std::set<std::string>());
    EXPECT_EQ(host.lost, (std::map<LossCause, int>{{LossCause::FileNotWritten, 1}}));
    ASSERT_EQ(log.messages().size(), 1u);
    EXPECT_NE(log.messages()[0].find("Exception caught while writing media writer data."), std::string::npos);
}

}  // namespace
}  // namespace DataWriterTest

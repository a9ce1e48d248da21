// Files that are damaged, lie or are none, and disks that do not take what is written.

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <atomic>
#include <thread>

#include "gcbase/exception.h"

#include "filesizelimit.h"
#include "sdk/imagefiles/imagetesting.h"

using namespace Nivex;
using namespace ImageTesting;
using enum EImageFileFormat;
using enum EPixelType;
using Bytes = std::vector<std::uint8_t>;
using testing::AllOf;
using testing::HasSubstr;
using testing::ThrowsMessage;

namespace {

constexpr EImageFileFormat loadableFormats[] = {Bmp, Tiff, Jpeg, Png};

class Refusals : public FolderTest
{
protected:
    Bytes fileOf(EImageFileFormat format, EPixelType pixelType)
    {
        CImagePersistence::Save(format, inFolder("p").c_str(), makePicture(pixelType, 37, 21));
        return readFile(inFolder("p"));
    }

    static void put(Bytes& bytes, std::size_t at, std::initializer_list<std::uint8_t> values)
    {
        std::copy(values.begin(), values.end(), bytes.begin() + static_cast<std::ptrdiff_t>(at));
    }
};

struct PathCase
{
    std::string path;
    const char* cause;
};

/// The bytes give a whole picture or a failure of the family and an empty image; nothing is printed.
void expectWholeOrRefused(const Bytes& bytes, const Bytes* wholeRows = nullptr)
{
    CNivexImage image = makePicture(Mono8, 2, 2);
    try {
        CImagePersistence::LoadFromMemory(std::as_bytes(std::span(bytes)), image);
        if (wholeRows) {
            EXPECT_TRUE(rowsOf(image) == *wholeRows);
        }
    } catch (const GenICam::RuntimeException&) {
        EXPECT_FALSE(image.IsValid());
    }
}

}  // namespace

TEST_F(Refusals, TruncatedFilesAreNeverHalfRead)
{
    testing::internal::CaptureStderr();
    for (const EImageFileFormat format : loadableFormats) {
        for (const EPixelType pixelType : {Mono8, BGR8Packed}) {
            const Bytes whole = fileOf(format, pixelType);
            const Bytes rows = rowsOf(loadBytes(whole));
            for (std::size_t size = 0; size < whole.size(); size += 3) {
                SCOPED_TRACE(testing::Message() << static_cast<int>(format) << ", " << size << " bytes");
                expectWholeOrRefused(Bytes(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(size)),
                                     &rows);
            }
        }
    }
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

TEST_F(Refusals, DamagedFilesDoNoHarm)
{
    testing::internal::CaptureStderr();
    std::uint32_t state = 1;
    for (const EImageFileFormat format : loadableFormats) {
        const Bytes whole = fileOf(format, BGR8Packed);
        for (int i = 0; i < 600; ++i) {
            Bytes damaged = whole;
            // Headers and directories lie at the ends; most damage goes there.
            state = state * 1664525 + 1013904223;
            const std::size_t reach = i % 2 ? std::min<std::size_t>(whole.size(), 200) : whole.size();
            const std::size_t at = (state >> 8) % reach;
            damaged[i % 3 ? at : whole.size() - 1 - at] = static_cast<std::uint8_t>(state >> 24);
            expectWholeOrRefused(damaged);
        }
    }
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

// Sizes that only headers know are refused before memory is taken for them.
TEST_F(Refusals, LyingHeadersAreSeenThrough)
{
    struct Lie
    {
        EImageFileFormat format;
        std::size_t at;
        std::initializer_list<std::uint8_t> bytes;
        const char* text;
    };
    const Lie lies[] = {
        {Png, 16, {0, 0, 0xEA, 0x60, 0, 0, 0xEA, 0x60}, ""},  // 60000 x 60000, with a wrong check sum.
        {Bmp, 18, {0xFF, 0xFF, 0, 0, 0xFF, 0xFF, 0, 0}, "at most"},
        {Bmp, 18, {0, 0, 1, 0}, "1 to 65535 are allowed"},
        {Bmp, 18, {0x60, 0xEA}, "bytes, but it has"},
        {Bmp, 18, {0, 0, 0, 0x80}, "claims"},
        {Bmp, 22, {0, 0, 0, 0x80}, "1 to 65535 are allowed"},
        {Bmp, 22, {0, 0, 0, 0}, "claims"},
        {Bmp, 10, {0xFF, 0xFF, 0xFF, 0xFF}, "bytes, but it has"},
        {Bmp, 14, {200, 0, 0, 0}, "header of 200"},
        {Bmp, 28, {48}, "48 bits per pixel"},
        {Bmp, 30, {1}, "run-length"},
        {Bmp, 30, {3}, "bit masks"},
        {Bmp, 30, {4}, "compression 4"},
    };
    for (const Lie& lie : lies) {
        Bytes bytes = fileOf(lie.format, BGR8Packed);
        put(bytes, lie.at, lie.bytes);
        EXPECT_THAT([&] { loadBytes(bytes); }, ThrowsMessage<GenICam::RuntimeException>(
                                                   AllOf(HasSubstr("file in memory"), HasSubstr(lie.text))));
    }

    // A start of frame says the size of a JPEG picture.
    Bytes jpeg = fileOf(Jpeg, BGR8Packed);
    const Bytes startOfFrame = {0xFF, 0xC0};
    const auto frame = std::search(jpeg.begin(), jpeg.end(), startOfFrame.begin(), startOfFrame.end());
    put(jpeg, static_cast<std::size_t>(frame - jpeg.begin()) + 5, {0xEA, 0x60, 0xEA, 0x60});
    EXPECT_THAT([&] { loadBytes(jpeg); }, ThrowsMessage<GenICam::RuntimeException>(HasSubstr("at most")));

    // Width and height are the first two entries of the directory.
    Bytes tiff = fileOf(Tiff, BGR8Packed);
    const std::size_t directory = tiff[4] | tiff[5] << 8;
    constexpr std::uint8_t sizes[][3] = {{0x60, 0xEA, 0}, {0x98, 0x3A, 0}, {0xFF, 0xFF, 0x7F}};
    for (const auto& [low, middle, high] : sizes) {
        const std::initializer_list<std::uint8_t> size = {low, middle, high, high};
        put(tiff, directory + 2 + 2, {4, 0});
        put(tiff, directory + 2 + 8, size);
        put(tiff, directory + 14 + 2, {4, 0});
        put(tiff, directory + 14 + 8, size);
        EXPECT_THROW(loadBytes(tiff), GenICam::RuntimeException);
    }
}

// A well-formed PNG file of a few bytes that claims gigabytes: the limits speak, not the decoder.
TEST_F(Refusals, SizesBeyondTheLimitsAreNamed)
{
    const auto pngOf = [](std::uint8_t highWidth, std::uint32_t sum) {
        Bytes bytes = {0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n', 0, 0, 0, 13, 'I', 'H', 'D', 'R'};
        const Bytes header = {0, 0, highWidth, 0x60, 0, 0, highWidth, 0x60, 8, 2, 0, 0, 0};
        bytes.insert(bytes.end(), header.begin(), header.end());
        for (const int shift : {24, 16, 8, 0}) {
            bytes.push_back(static_cast<std::uint8_t>(sum >> shift));
        }
        const Bytes data = {0, 0, 0, 1, 'I', 'D', 'A', 'T', 0x78, 0x54, 0xF6, 0x5F, 0x3D};
        bytes.insert(bytes.end(), data.begin(), data.end());
        return bytes;
    };
    EXPECT_THAT([&] { loadBytes(pngOf(0xEA, 0x0FB0E215)); },
                ThrowsMessage<GenICam::RuntimeException>(HasSubstr("10800000000 bytes; at most 1073741824")));
    EXPECT_THAT([&] { loadBytes(pngOf(0x30, 0xEDF30E21)); },
                ThrowsMessage<GenICam::RuntimeException>(HasSubstr("cannot hold 12384 x 12384")));
}

// Whatever the path leads to: an answer at once that says what is wrong with which path.
TEST_F(Refusals, OnlyImageFilesAreRead)
{
    ASSERT_EQ(::mkfifo(inFolder("pipe.png").c_str(), 0600), 0);
    writeFile(folder / "empty.bmp", {});
    writeFile(folder / "text.png", {'h', 'e', 'l', 'l', 'o'});
    const PathCase cases[] = {
        {inFolder("missing.png"), "No such file"},
        {folder.string(), "is a directory"},
        {inFolder("pipe.png"), "no regular file"},
        {"/dev/zero", "no regular file"},
        {inFolder("empty.bmp"), "empty"},
        {inFolder("text.png"), "no BMP, JPEG, PNG or TIFF"},
        {inFolder("empty.bmp/x"), "Not a directory"},
    };
    for (const auto& row : cases) {
        CNivexImage image = makePicture(Mono8, 2, 2);
        EXPECT_THAT([&] { image.Load(row.path.c_str()); },
                    ThrowsMessage<GenICam::RuntimeException>(AllOf(HasSubstr(row.path), HasSubstr(row.cause))));
        EXPECT_TRUE(image.IsValid());
    }
    CNivexImage image;
    EXPECT_THROW(image.Load(GenICam::gcstring("a\0b", 3)), GenICam::RuntimeException);
    EXPECT_THROW(image.Load(""), GenICam::RuntimeException);
}

// A disk that runs full in the middle costs the new file, not the old one.
TEST_F(Refusals, FullDiskLeavesTheOldFile)
{
    const CNivexImage picture = makePicture(BGR8Packed, 600, 400);
    for (const EImageFileFormat format : {Bmp, Tiff, Jpeg, Png, Raw, Dng}) {
        SCOPED_TRACE(static_cast<int>(format));
        const std::string path = inFolder("p");
        writeFile(path, {1, 2, 3});
        {
            const FileSizeLimit tiny(20000);
            EXPECT_THAT(
                [&] { CImagePersistence::Save(format, path.c_str(), picture); },
                ThrowsMessage<GenICam::RuntimeException>(AllOf(HasSubstr(path), HasSubstr("File too large"))));
        }
        EXPECT_EQ(readFile(path), (Bytes{1, 2, 3}));
        EXPECT_EQ(countFiles(), 1U);
    }
}

TEST_F(Refusals, PlacesThatTakeNoFile)
{
    const CNivexImage picture = makePicture(Mono8, 5, 3);
    std::filesystem::create_directory(folder / "sub");
    const PathCase cases[] = {
        {inFolder("none/p.bmp"), "No such file"},
        {inFolder("sub"), "is a directory"},
        {"/dev/full", "no regular file"},
        {inFolder(std::string(300, 'x')), "name too long"},
        {"", "path is empty"},
    };
    for (const auto& row : cases) {
        EXPECT_THAT([&] { CImagePersistence::Save(Bmp, row.path.c_str(), picture); },
                    ThrowsMessage<GenICam::RuntimeException>(AllOf(HasSubstr(row.path), HasSubstr(row.cause))));
    }
    EXPECT_EQ(countFiles(), 1U);
    CImagePersistence::Save(Bmp, inFolder(std::string(250, 'y')).c_str(), picture);
    EXPECT_EQ(countFiles(), 2U);
}

TEST_F(Refusals, BadImagesAndFormatsAreNotSaved)
{
    const CNivexImage picture = makePicture(Mono8, 5, 3);
    const auto save = [&](EImageFileFormat format, const void* buffer, std::size_t size, std::uint32_t width) {
        CImagePersistence::Save(format, inFolder("p").c_str(), buffer, size, Mono8, width, 3, 0,
                                EImageOrientation::TopDown);
    };
    const void* const buffer = picture.GetBuffer();
    EXPECT_THROW(save(Bmp, buffer, 14, 5), GenICam::InvalidArgumentException);
    EXPECT_THROW(save(Bmp, nullptr, 15, 5), GenICam::InvalidArgumentException);
    EXPECT_THROW(save(Bmp, buffer, 15, 0), GenICam::InvalidArgumentException);
    EXPECT_THROW(save(EImageFileFormat{17}, buffer, 15, 5), GenICam::InvalidArgumentException);
    EXPECT_THROW(CImagePersistence::Save(Bmp, inFolder("p").c_str(), CNivexImage()),
                 GenICam::InvalidArgumentException);
    const Bytes wide(std::size_t{65501} * 3);
    EXPECT_THAT([&] { save(Jpeg, wide.data(), wide.size(), 65501); },
                ThrowsMessage<GenICam::RuntimeException>(HasSubstr("at most 65500")));
    EXPECT_EQ(countFiles(), 0U);
}

// Whoever saves last under a name wins it whole; readers in between see whole files too.
TEST_F(Refusals, ConcurrentSavesLeaveOneWholeFile)
{
    const std::string path = inFolder("p.png");
    const std::vector<CNivexImage> pictures = {makePicture(Mono8, 300, 200), makePicture(RGB8Packed, 200, 100),
                                               makePicture(Mono16, 64, 64)};
    CImagePersistence::Save(Png, path.c_str(), pictures[0]);
    const auto isOneOfThem = [&] {
        CNivexImage loaded;
        loaded.Load(path.c_str());
        return std::any_of(pictures.begin(), pictures.end(),
                           [&](const CNivexImage& picture) { return rowsOf(picture) == rowsOf(loaded); });
    };
    std::atomic<int> running = 3;
    std::vector<std::jthread> writers;
    for (const CNivexImage& picture : pictures) {
        writers.emplace_back([&] {
            for (int i = 0; i < 20; ++i) {
                CImagePersistence::Save(Png, path.c_str(), picture);
            }
            --running;
        });
    }
    while (running > 0) {
        ASSERT_TRUE(isOneOfThem());
    }
    writers.clear();
    EXPECT_TRUE(isOneOfThem());
    EXPECT_EQ(countFiles(), 1U);
}

// Videos as other programs see them: ffprobe and ffmpeg judge what is written.
#include "utility/videowriter.h"

#include <gmock/gmock.h>
#include <signal.h>
#include <stdlib.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>

#include "utility/imageformatconverter.h"
#include "utility/niveximage.h"

#include "filesizelimit.h"
#include "videojudge.h"

namespace {

namespace fs = std::filesystem;
using namespace Nivex;
using testing::AllOf;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;
using Colour = std::array<int, 3>;

class VideoWriter : public testing::Test
{
protected:
    CVideoWriter writer;
    fs::path folder;
    fs::path file;

    VideoWriter()
    {
        std::string pattern = (fs::temp_directory_path() / "videowriter-XXXXXX").string();
        folder = mkdtemp(pattern.data());
        file = folder / "a video.mp4";
    }
    ~VideoWriter() override { fs::remove_all(folder); }

    void open(std::uint32_t width, std::uint32_t height, double rate = 25)
    {
        writer.Width.SetValue(width);
        writer.Height.SetValue(height);
        writer.PlayBackFrameRate.SetValue(rate);
        writer.RecordingFrameRate.SetValue(rate);
        writer.Open(file.string());
    }
    std::vector<std::string> entries() const
    {
        std::vector<std::string> names;
        for (const auto& entry : fs::directory_iterator(folder))
            names.push_back(entry.path().filename());
        return names;
    }
};

/// A picture of one colour in any type that the converter gives, from RGB.
CNivexImage solid(Colour colour, std::uint32_t width, std::uint32_t height,
                  EPixelType type = EPixelType::RGB8Packed)
{
    CNivexImage rgb;
    rgb.Reset(EPixelType::RGB8Packed, width, height);
    auto* bytes = static_cast<std::uint8_t*>(rgb.GetBuffer());
    for (std::size_t i = 0; i < rgb.GetImageSize(); ++i)
        bytes[i] = static_cast<std::uint8_t>(colour[i % 3]);
    if (type == EPixelType::RGB8Packed) return rgb;
    CImageFormatConverter converter;
    converter.OutputPixelFormat.SetValue(type);
    CNivexImage converted;
    converter.Convert(converted, rgb);
    return converted;
}

/// A picture in any type, its memory filled with one byte.
CNivexImage filled(EPixelType type, int value, std::size_t padding = 0)
{
    CNivexImage image;
    image.Reset(type, 64, 48, padding);
    std::fill_n(static_cast<std::uint8_t*>(image.GetBuffer()), image.GetImageSize(),
                static_cast<std::uint8_t>(value));
    return image;
}

template <typename Exception>
std::string messageOf(const std::function<void()>& operation)
{
    try {
        operation();
    } catch (const Exception& error) {
        return error.GetDescription();
    }
    return "nothing was raised";
}

Colour pixel(const std::vector<std::uint8_t>& pictures, std::size_t index)
{
    return {pictures.at(3 * index), pictures.at(3 * index + 1), pictures.at(3 * index + 2)};
}

void expectNear(Colour seen, Colour expected, int levels)
{
    for (std::size_t i = 0; i < 3; ++i)
        EXPECT_NEAR(seen[i], expected[i], levels) << "channel " << i;
}

TEST_F(VideoWriter, HasCodecSizeRateAndEveryPicture)
{
    struct Case
    {
        std::uint32_t width, height;
        double rate;
        int pictures;
        const char* seenRate;
    };
    for (const Case& row : {Case{64, 48, 25, 60, "25/1"},
                            {320, 240, 29.97, 31, "2997/100"},
                            {16, 16, 1000, 1200, "1000/1"},
                            {64, 48, 0.01, 3, "1/100"},
                            {2, 2, 23.976, 1, "2997/125"}})
    {
        SCOPED_TRACE(row.rate);
        open(row.width, row.height, row.rate);
        for (int i = 0; i < row.pictures; ++i)
            writer.Add(solid({i % 256, 80, 200}, row.width, row.height));
        writer.Close();
        auto seen = VideoJudge::probe(file);
        EXPECT_EQ(seen["codec_name"], "h264");
        EXPECT_EQ(seen["width"], std::to_string(row.width));
        EXPECT_EQ(seen["height"], std::to_string(row.height));
        EXPECT_EQ(seen["nb_read_frames"], std::to_string(row.pictures));
        EXPECT_EQ(seen["nb_frames"], std::to_string(row.pictures));
        EXPECT_EQ(seen["avg_frame_rate"], row.seenRate);
        EXPECT_NEAR(std::stod(seen["duration"]), row.pictures / row.rate, 1e-3 / row.rate + 1e-6);
        EXPECT_EQ(seen["color_range"], "pc");
        EXPECT_EQ(seen["color_space"], "smpte170m");
    }
}

TEST_F(VideoWriter, ShowsTrueColours)
{
    const Colour colours[] = {{255, 0, 0},  {0, 255, 0},     {0, 0, 255},   {255, 255, 255}, {0, 0, 0},
                              {16, 16, 16}, {240, 240, 240}, {128, 64, 32}, {10, 200, 190}};
    open(64, 48);
    for (const Colour& colour : colours)
        writer.Add(solid(colour, 64, 48));
    writer.Close();
    const auto pictures = VideoJudge::decode(file);
    ASSERT_EQ(pictures.size(), std::size(colours) * 64 * 48 * 3);
    for (std::size_t i = 0; i < std::size(colours); ++i) {
        SCOPED_TRACE(i);
        expectNear(pixel(pictures, i * 64 * 48 + 64 * 20 + 30), colours[i], 4);
    }
}

// Bytes that mean the same grey in each type, and colours of those that can hold them.
TEST_F(VideoWriter, TakesAllKindsOfPictures)
{
    const EPixelType greys[] = {EPixelType::Mono1Packed, EPixelType::Mono4Packed,     EPixelType::Mono8,
                                EPixelType::Mono12p,     EPixelType::Mono16,          EPixelType::BayerGR8,
                                EPixelType::BayerBG12p,  EPixelType::BayerRG12Packed, EPixelType::BayerGB16,
                                EPixelType::RGBA8Packed, EPixelType::RGB12V1Packed,   EPixelType::RGB16Planar};
    const EPixelType colours[] = {EPixelType::BGR8Packed,  EPixelType::BGRA8Packed,  EPixelType::RGB16Packed,
                                  EPixelType::RGB8Planar,  EPixelType::YUV444Planar, EPixelType::YUV422Planar,
                                  EPixelType::YUV420Planar};
    const Colour colour{200, 100, 30};
    open(64, 48);
    for (const EPixelType type : greys)
        writer.Add(filled(type, 0xFF, 3));
    for (const EPixelType type : colours)
        writer.Add(solid(colour, 64, 48, type));
    writer.Close();
    const auto pictures = VideoJudge::decode(file);
    const std::size_t count = std::size(greys) + std::size(colours);
    ASSERT_EQ(pictures.size(), count * 64 * 48 * 3);
    for (std::size_t i = 0; i < count; ++i) {
        SCOPED_TRACE(i);
        expectNear(pixel(pictures, i * 64 * 48 + 64 * 20 + 30),
                   i < std::size(greys) ? Colour{255, 255, 255} : colour, 5);
    }
}

TEST_F(VideoWriter, TurnsBottomUpPictures)
{
    CNivexImage image = filled(EPixelType::Mono8, 0);
    std::fill_n(static_cast<std::uint8_t*>(image.GetBuffer()), 64 * 24, std::uint8_t{220});
    open(64, 48);
    for (const auto orientation : {EImageOrientation::TopDown, EImageOrientation::BottomUp})
        writer.Add(image.GetBuffer(), image.GetImageSize(), EPixelType::Mono8, 64, 48, 0, orientation);
    writer.Close();
    const auto pictures = VideoJudge::decode(file);
    ASSERT_EQ(pictures.size(), 2u * 64 * 48 * 3);
    EXPECT_GT(pixel(pictures, 64 * 5)[0], 200);
    EXPECT_LT(pixel(pictures, 64 * 43)[0], 20);
    EXPECT_LT(pixel(pictures, 64 * 48 + 64 * 5)[0], 20);
    EXPECT_GT(pixel(pictures, 64 * 48 + 64 * 43)[0], 200);
}

TEST_F(VideoWriter, RepeatsTheLastColumnAndRowOfOddSizes)
{
    struct Case
    {
        std::uint32_t width, height, seenWidth, seenHeight;
    };
    for (const Case& row : {Case{63, 48, 64, 48}, {64, 47, 64, 48}, {63, 47, 64, 48}, {1, 1, 2, 2}}) {
        SCOPED_TRACE(std::to_string(row.width) + " x " + std::to_string(row.height));
        const Colour colour{30, 180, 90};
        open(row.width, row.height);
        writer.Add(solid(colour, row.width, row.height));
        writer.Close();
        const auto picture = VideoJudge::decode(file);
        ASSERT_EQ(picture.size(), row.seenWidth * row.seenHeight * 3);
        for (std::size_t i = 0; i < picture.size() / 3; ++i)
            expectNear(pixel(picture, i), colour, 5);
    }
}

TEST_F(VideoWriter, IsAnOrdinaryFileOnceClosedAndFragmentedBefore)
{
    std::ofstream(file) << "an older video";
    open(64, 48);
    for (int i = 0; i < 30; ++i)
        writer.Add(filled(EPixelType::Mono8, i));
    EXPECT_THAT(VideoJudge::boxes(file), AllOf(Contains("moov"), Contains("moof")));
    EXPECT_GE(VideoJudge::countFrames(file), 18);
    EXPECT_TRUE(writer.IsOpen());
    writer.Close();
    EXPECT_FALSE(writer.IsOpen());
    EXPECT_THAT(VideoJudge::boxes(file), AllOf(Contains("moov"), Not(Contains("moof"))));
    EXPECT_EQ(VideoJudge::countFrames(file), 30);
    EXPECT_THAT(entries(), ElementsAre("a video.mp4"));
    writer.Close();

    open(64, 48);
    writer.Close();
    EXPECT_THAT(entries(), ElementsAre()) << "a video without pictures";
}

TEST_F(VideoWriter, CanBePlayedUpToTheLastSecondAfterTheProcessIsKilled)
{
    int counts[2];
    ASSERT_EQ(pipe(counts), 0);
    const pid_t child = fork();
    if (child == 0) {
        try {
            open(64, 48);
            for (int i = 0;; ++i) {
                writer.Add(filled(EPixelType::Mono8, i % 256));
                if (write(counts[1], &i, sizeof i) != sizeof i) _exit(2);
            }
        } catch (...) {
            _exit(1);
        }
    }
    close(counts[1]);
    int last = 0;
    while (last < 110 && read(counts[0], &last, sizeof last) == sizeof last) {
    }
    kill(child, SIGKILL);
    int status = 0;
    waitpid(child, &status, 0);
    close(counts[0]);
    ASSERT_TRUE(WIFSIGNALED(status)) << status;
    EXPECT_GE(VideoJudge::countFrames(file), last + 1 - 25);
}

TEST_F(VideoWriter, GoesOnWithoutAPictureThatDoesNotFit)
{
    open(64, 48);
    const CNivexImage good = filled(EPixelType::Mono8, 90);
    writer.Add(good);
    EXPECT_THAT(messageOf<GenICam::InvalidArgumentException>([&] {
                    writer.Add(solid({1, 2, 3}, 32, 48));
                }),
                AllOf(HasSubstr("32 x 48"), HasSubstr("64 x 48"), HasSubstr(file.string())));
    EXPECT_EQ(writer.GetLastFailure(), EVideoFailure::Encoder);
    const auto unknown = static_cast<EPixelType>(0x8108FFF0);
    for (const auto& [type, size] : {std::pair{unknown, good.GetImageSize()}, {EPixelType::Mono8, std::size_t{9}}})
    {
        EXPECT_THROW(writer.Add(good.GetBuffer(), size, type, 64, 48, 0, EImageOrientation::TopDown),
                     GenICam::InvalidArgumentException);
    }
    EXPECT_THROW(writer.Open((folder / "b.mp4").string()), GenICam::RuntimeException);
    writer.Add(good);
    EXPECT_EQ(writer.GetLastFailure(), EVideoFailure::None);
    writer.Close();
    EXPECT_EQ(VideoJudge::countFrames(file), 2);
    EXPECT_THROW(writer.Add(good), GenICam::RuntimeException) << "closed";
}

TEST_F(VideoWriter, LeavesNothingBehindWhereItCannotOpen)
{
    fs::create_directory(folder / "d.mp4");
    ASSERT_EQ(mkfifo((folder / "p.mp4").c_str(), 0600), 0);
    struct Case
    {
        std::string path, cause;
    };
    for (const Case& row : {Case{(folder / "no/v.mp4").string(), "No such file"},
                            {"", "is empty"},
                            {(folder / "d.mp4").string(), "no regular file"},
                            {(folder / "p.mp4").string(), "no regular file"},
                            {(folder / (std::string(300, 'n') + ".mp4")).string(), "name too long"}})
    {
        EXPECT_THAT(messageOf<GenICam::RuntimeException>([&] { writer.Open(row.path); }),
                    AllOf(HasSubstr("\"" + row.path + "\""), HasSubstr(row.cause)));
        EXPECT_FALSE(writer.IsOpen());
        EXPECT_EQ(writer.GetLastFailure(), EVideoFailure::File);
    }
    EXPECT_THAT(entries(), testing::UnorderedElementsAre("d.mp4", "p.mp4"));
    writer.Open(file.string());
    writer.Close();
}

TEST_F(VideoWriter, TakesTheFirstEncoderThatOpens)
{
    struct Case
    {
        std::vector<GenICam::gcstring> encoders;
        std::vector<const char*> refusal;  ///< What the text holds; none: it opens.
    };
    for (const Case& row : {Case{{"no_such", "mpeg4"}, {"no encoder for H.264", "installed", "no_such, mpeg4"}},
                            {{"libx264rgb"}, {"that takes yuv420p"}},
                            {{"no_such", "libx264"}, {}},
                            {{}, {}}})
    {
        writer.SetEncoders(row.encoders);
        const std::string text = messageOf<GenICam::RuntimeException>([&] { open(64, 48); });
        for (const char* part : row.refusal)
            EXPECT_THAT(text, AllOf(HasSubstr(part), HasSubstr(file.string())));
        EXPECT_EQ(writer.IsOpen(), row.refusal.empty()) << text;
        EXPECT_EQ(writer.GetLastFailure(), writer.IsOpen() ? EVideoFailure::None : EVideoFailure::Encoder);
        writer.Close();
        EXPECT_THAT(entries(), ElementsAre());
    }
}

// Most need hardware of theirs.
TEST_F(VideoWriter, GoesWithEachOtherEncoderOrTellsWhyNot)
{
    for (const char* name : {"libopenh264", "h264_v4l2m2m", "h264_omx", "h264_nvenc", "h264_qsv", "h264_amf"}) {
        SCOPED_TRACE(name);
        writer.SetEncoders({name});
        const std::string text = messageOf<GenICam::RuntimeException>([&] { open(640, 480); });
        if (!writer.IsOpen()) {
            EXPECT_THAT(text, AllOf(HasSubstr(name), HasSubstr("no encoder for H.264")));
            continue;
        }
        for (int i = 0; i < 30; ++i)
            writer.Add(solid({8 * i, 80, 200}, 640, 480));
        writer.Close();
        EXPECT_EQ(VideoJudge::countFrames(file), 30);
        EXPECT_EQ(VideoJudge::probe(file)["codec_name"], "h264");
    }
}

/// Noise, which takes room in a video.
CNivexImage noise(unsigned seed)
{
    CNivexImage image = filled(EPixelType::Mono8, 0);
    auto* bytes = static_cast<std::uint8_t*>(image.GetBuffer());
    for (std::size_t i = 0; i < image.GetImageSize(); ++i) {
        seed = seed * 1664525 + 1013904223;
        bytes[i] = static_cast<std::uint8_t>(seed >> 24);
    }
    return image;
}

TEST_F(VideoWriter, TellsOfAFullDiskAndKeepsWhatFitted)
{
    open(64, 48);
    const FileSizeLimit limit(100000);
    int taken = 0;
    const auto addMany = [&] {
        for (; taken < 500; ++taken)
            writer.Add(noise(static_cast<unsigned>(taken)));
    };
    EXPECT_THAT(messageOf<GenICam::RuntimeException>(addMany),
                AllOf(HasSubstr("write"), HasSubstr("File too large")));
    EXPECT_EQ(writer.GetLastFailure(), EVideoFailure::File);
    for (int more = 0; more < 3; ++more)
        EXPECT_THROW(writer.Add(noise(0)), GenICam::RuntimeException) << "taken, but lost";
    EXPECT_THROW(writer.Close(), GenICam::RuntimeException);
    EXPECT_EQ(writer.GetLastFailure(), EVideoFailure::File);
    EXPECT_FALSE(writer.IsOpen());
    const int kept = taken - static_cast<int>(writer.GetLateLossCount());
    EXPECT_GE(kept, 12);
    EXPECT_EQ(kept % 12, 0) << "whole fragments";
    EXPECT_GE(VideoJudge::countFrames(file), kept);
    EXPECT_THAT(entries(), ElementsAre("a video.mp4"));
    open(64, 48);
    EXPECT_EQ(writer.GetLateLossCount(), 0U) << "of another video";
}

TEST_F(VideoWriter, StaysPlayableWhereItsIndexCannotBeMade)
{
#ifdef __SANITIZE_ADDRESS__
    GTEST_SKIP() << "The sanitizer needs file descriptors for its own checks.";
#endif
    open(64, 48);
    for (int i = 0; i < 30; ++i)
        writer.Add(filled(EPixelType::Mono8, i));
    rlimit before;
    getrlimit(RLIMIT_NOFILE, &before);
    const int nextFree = dup(0);
    close(nextFree);
    const rlimit few{static_cast<rlim_t>(nextFree), before.rlim_max};
    setrlimit(RLIMIT_NOFILE, &few);
    const std::string text = messageOf<GenICam::RuntimeException>([&] { writer.Close(); });
    setrlimit(RLIMIT_NOFILE, &before);
    EXPECT_THAT(text, HasSubstr("Too many open files"));
    EXPECT_EQ(writer.GetLastFailure(), EVideoFailure::Index);
    EXPECT_EQ(writer.GetLateLossCount(), 0U);
    EXPECT_EQ(VideoJudge::countFrames(file), 30);
    EXPECT_THAT(entries(), ElementsAre("a video.mp4"));
}

TEST_F(VideoWriter, IsLostWhereItsNameIsNoLongerItsOwn)
{
    const std::function<void()> ways[] = {[&] { fs::remove(file); },
                                          [&] { fs::rename(file, folder / "moved.mp4"); },
                                          [&] {
                                              fs::remove(file);
                                              std::ofstream(file) << "another's";
                                          }};
    for (const auto& takeAway : ways) {
        open(64, 48);
        for (int i = 0; i < 30; ++i)
            writer.Add(filled(EPixelType::Mono8, i));
        takeAway();
        EXPECT_THAT(messageOf<GenICam::RuntimeException>([&] { writer.Close(); }),
                    AllOf(HasSubstr(file.string()), HasSubstr("no longer there")));
        EXPECT_EQ(writer.GetLastFailure(), EVideoFailure::File);
        EXPECT_EQ(writer.GetLateLossCount(), 30U);
    }
    EXPECT_EQ(fs::file_size(file), 9U);
}

TEST_F(VideoWriter, TakesThePlaceOfALink)
{
    const std::filesystem::path target = file.string() + ".old";
    std::ofstream(target) << "precious";
    std::filesystem::create_symlink(target, file);
    open(64, 48);
    writer.Add(filled(EPixelType::Mono8, 1));
    writer.Close();
    EXPECT_EQ(VideoJudge::countFrames(file), 1);
    EXPECT_EQ(std::filesystem::file_size(target), 8u);
    std::filesystem::remove(target);
}

TEST_F(VideoWriter, IsNotWrittenToByTwo)
{
    open(64, 48);
    CVideoWriter second;
    EXPECT_THAT(messageOf<GenICam::RuntimeException>([&] { second.Open(file.string()); }),
                AllOf(HasSubstr(file.string()), HasSubstr("another video is being written")));
    EXPECT_EQ(second.GetLastFailure(), EVideoFailure::File);
    writer.Add(filled(EPixelType::Mono8, 1));
    writer.Close();
    EXPECT_EQ(VideoJudge::countFrames(file), 1);
    second.Open(file.string());
}

TEST(VideoWriterParameters, CorrectValuesToTheNearest)
{
    CVideoWriter writer;
    for (const auto& [value, kept] : {std::pair{0.0, 0.01}, {-5.0, 0.01}, {29.97, 29.97}, {1e9, 1000.0}}) {
        writer.PlayBackFrameRate.SetValueCorrected(value);
        EXPECT_EQ(writer.PlayBackFrameRate.GetValue(), kept);
    }
    EXPECT_THROW(writer.PlayBackFrameRate.SetValueCorrected(std::nan("")), GenICam::OutOfRangeException);
    EXPECT_THROW(writer.RecordingFrameRate.SetValue(1000.5), GenICam::OutOfRangeException);
    EXPECT_THROW(writer.Width.SetValue(16385), GenICam::OutOfRangeException);
}

}  // namespace

// What the pictures show, in every pixel format. The judge of formats is the converter, which was tested against
// others' code.
#include <unistd.h>

#include <filesystem>
#include <fstream>

#include "utility/imageformatconverter.h"
#include "utility/imagepersistence.h"
#include "utility/niveximage.h"

#include "sdk/emulation/world.h"

using namespace EmulationTest;
namespace fs = std::filesystem;

namespace {

constexpr std::size_t width = 321;
constexpr std::size_t height = 200;

Settings Geometry(const Settings& further = {})
{
    return fast + Settings{{"Width", std::to_string(width)}, {"Height", std::to_string(height)}} + further;
}

std::vector<unsigned> Values(const Taken& taken)
{
    std::vector<unsigned> values;
    for (const std::byte byte : taken.bytes)
        values.push_back(std::to_integer<unsigned>(byte));
    return values;
}

std::vector<unsigned> Picture(const Settings& settings, std::size_t number = 1)
{
    return Values(World(settings).Take(number).back());
}

CNivexImage AsRgb(const Taken& taken)
{
    CImageFormatConverter converter;
    converter.OutputPixelFormat.SetValue(EPixelType::RGB8Packed);
    CNivexImage image;
    const SFrame& frame = taken.frame;
    converter.Convert(image, taken.bytes.data(), frame.imageSize, frame.pixelType, frame.width, frame.height,
                      frame.paddingX, EImageOrientation::TopDown);
    return image;
}

unsigned Sample(const CNivexImage& image, std::size_t index)
{
    return static_cast<const std::uint8_t*>(image.GetBuffer())[index];
}

/// Mean difference per sample. A grey picture is compared with the luma of the coloured one.
double Difference(const CNivexImage& colour, const CNivexImage& other, bool isGrey)
{
    double sum = 0;
    for (std::size_t i = 0; i < width * height * 3; i += 3) {
        const double luma =
            0.299 * Sample(colour, i) + 0.587 * Sample(colour, i + 1) + 0.114 * Sample(colour, i + 2);
        for (std::size_t c = 0; c < 3; ++c)
            sum += std::abs((isGrey ? luma : Sample(colour, i + c)) - Sample(other, i + c));
    }
    return sum / static_cast<double>(width * height * 3);
}

TEST(Pictures, LookAlikeInAllFormats)
{
    World world(Geometry());
    GenApi::StringList_t formats;
    dynamic_cast<GenApi::IEnumeration&>(*world.device->GetNodeMap()->GetNode("PixelFormat")).GetSymbolics(formats);
    for (const char* pattern : {"Off", "ColorBar"}) {
        world.Apply({{"TestPattern", pattern}, {"PixelFormat", "RGB8"}});
        const CNivexImage reference = AsRgb(world.Take(1)[0]);
        for (const auto& format : formats) {
            world.Apply({{"PixelFormat", format.str()}});
            const Taken taken = world.Take(1)[0];
            ASSERT_TRUE(taken.frame.isComplete);
            const EPixelType type = GetPixelTypeByName(format);
            EXPECT_EQ(taken.frame.pixelType, type);
            // What a format can't tell may differ: values between its steps, and colours at the edges of parts.
            const double steps = 200.0 / (1U << std::min(BitDepth(type), 8U));
            const bool guessesColour = IsBayer(type) || std::string_view(format).starts_with("YUV");
            EXPECT_LE(Difference(reference, AsRgb(taken), IsMonochrome(type)), steps + (guessesColour ? 2.5 : 0.6))
                << pattern << ' ' << format;
        }
    }
}

TEST(Pictures, Move)
{
    struct Row
    {
        const char* pattern;
        std::size_t right;  // what comes to a pixel's place stood so far to the right
        std::size_t below;  // and so far below
    };
    const Row rows[] = {{"Off", 0, 2},
                        {"Blobs", 0, 2},
                        {"GreyVerticalRampMoving", 0, 2},
                        {"GreyDiagonalRampMoving", 0, 2},
                        {"GreyDiagonalRampMoving", 2, 0},
                        {"GreyHorizontalRampMoving", 2, 0},
                        {"GreyHorizontalRamp", 0, 0},
                        {"GreyVerticalRamp", 0, 0},
                        {"ColorBar", 0, 0},
                        {"White", 0, 0}};
    for (const Row& row : rows) {
        SCOPED_TRACE(row.pattern);
        const auto taken = World(Geometry({{"TestPattern", row.pattern}})).Take(2);
        const auto before = Values(taken[0]);
        const auto after = Values(taken[1]);
        std::size_t different = 0;
        for (std::size_t y = 0; y < height - row.below; ++y)
            for (std::size_t x = 0; x < width - row.right; ++x)
                different += after[y * width + x] != before[(y + row.below) * width + x + row.right];
        EXPECT_EQ(different, 0U);
        EXPECT_EQ(before == after, row.right + row.below == 0);
    }
}

TEST(Pictures, AreTheRingOfABeltThatCloses)
{
    const Settings settings = Geometry({{"TestPattern", "GreyVerticalRampMoving"}});
    EXPECT_EQ(Picture(settings, 1), Picture(settings, 1 + 128));
}

TEST(Pictures, ShowThePartOfTheSensorThatIsAskedFor)
{
    const auto whole = Picture(Geometry());
    struct Row
    {
        const char* what;
        Settings settings;
        std::size_t columns;
        std::size_t rows;
        std::function<std::size_t(std::size_t, std::size_t)> place;  // in the whole picture
    };
    const Row rows[] = {
        {"offsets",
         {{"Width", "50"}, {"Height", "40"}, {"OffsetX", "13"}, {"OffsetY", "7"}},
         50,
         40,
         [](std::size_t x, std::size_t y) { return (y + 7) * width + x + 13; }},
        {"binning",
         {{"BinningHorizontal", "2"}, {"BinningVertical", "4"}, {"Width", "160"}, {"Height", "50"}},
         160,
         50,
         [](std::size_t x, std::size_t y) { return y * 4 * width + x * 2; }},
        {"mirror",
         {{"ReverseX", "1"}},
         width,
         height,
         [](std::size_t x, std::size_t y) { return y * width + width - 1 - x; }},
    };
    for (const Row& row : rows) {
        const auto part = Picture(Geometry() + row.settings);
        ASSERT_EQ(part.size(), row.columns * row.rows) << row.what;
        std::size_t different = 0;
        for (std::size_t y = 0; y < row.rows; ++y)
            for (std::size_t x = 0; x < row.columns; ++x)
                different += part[y * row.columns + x] != whole[row.place(x, y)];
        EXPECT_EQ(different, 0U) << row.what;
    }
    const auto ramp = Picture(Geometry({{"TestPattern", "GreyVerticalRamp"}}));
    const auto reversed = Picture(Geometry({{"TestPattern", "GreyVerticalRamp"}, {"ReverseY", "1"}}));
    EXPECT_GT(ramp[width], ramp[0]);
    EXPECT_LT(reversed[width], reversed[0]);
}

TEST(Pictures, FollowTheLight)
{
    // Grey, so that no colour reaches the limit alone.
    const auto grey = [](const Settings& settings) {
        return Picture(Geometry(Settings{{"TestPattern", "Blobs"}} + settings));
    };
    const auto plain = grey({});
    const std::pair<Settings, std::function<double(double)>> rows[] = {
        {{{"ExposureTime", "5000"}}, [](double v) { return v / 2; }},
        {{{"ExposureTime", "20000"}}, [](double v) { return std::min(2 * v, 255.0); }},
        {{{"Gain", "-6.0206"}}, [](double v) { return v / 2; }},
        {{{"BlackLevel", "20"}}, [](double v) { return std::min(v + 20, 255.0); }},
        {{{"TestPattern", "Black"}, {"BlackLevel", "20"}}, [](double) { return 0; }},
    };
    for (const auto& [settings, expected] : rows) {
        const auto seen = grey(settings);
        double worst = 0;
        for (std::size_t i = 0; i < seen.size(); ++i)
            worst = std::max(worst, std::abs(seen[i] - expected(plain[i])));
        EXPECT_LE(worst, 2) << settings[0].first << ' ' << settings[0].second;
    }
}

TEST(Pictures, ChangeWhileTheStreamIsUp)
{
    Sink sink(0);
    World world(Geometry({{"TestPattern", "Black"}}));
    sink.GiveBuffersBackTo(*world.device);
    Sink late(1);
    world.Start(sink);
    sink.WaitFor(3);
    world.Apply({{"TestPattern", "White"}});
    world.device->StopStream();
    late.GiveBuffersBackTo(*world.device);
    world.device->StartStream(late);
    world.device->QueueBuffer({world.buffers[0].data(), world.buffers[0].size(), 0});
    const Taken taken = late.WaitFor(1)[0];
    world.device->StopStream();
    EXPECT_EQ(Values(taken), std::vector<unsigned>(width * height, 255));
}

struct Folder
{
    Folder() { fs::create_directories(path); }
    ~Folder() { fs::remove_all(path); }

    /// An 8 x 6 picture all of one colour.
    void Save(const std::string& name, std::array<std::uint8_t, 3> colour) const
    {
        std::vector<std::uint8_t> pixels;
        for (int i = 0; i < 48; ++i)
            pixels.insert(pixels.end(), colour.begin(), colour.end());
        CImagePersistence::Save(EImageFileFormat::Png, (path / name).c_str(), pixels.data(), pixels.size(),
                                EPixelType::RGB8Packed, 8, 6, 0, EImageOrientation::TopDown);
    }

    const fs::path path = fs::temp_directory_path() / ("emulated_pictures_" + std::to_string(::getpid()));
};

TEST(Pictures, ComeFromAFolderOverAndOver)
{
    const Folder folder;
    folder.Save("b.png", {10, 20, 30});
    folder.Save("a.PNG", {200, 100, 0});
    std::ofstream(folder.path / "c.png") << "no picture";
    std::ofstream(folder.path / "readme.txt") << "no picture either";
    World world(fast + Settings{{"Width", "9"},
                                {"Height", "6"},
                                {"PixelFormat", "RGB8"},
                                {"ImageSource", "Folder"},
                                {"ImageFolder", folder.path.string()}});
    const auto taken = world.Take(5);
    const std::array<unsigned, 3> first[] = {{200, 100, 0}, {10, 20, 30}, {0, 0, 0}, {200, 100, 0}, {10, 20, 30}};
    for (std::size_t i = 0; i < 5; ++i) {
        const auto values = Values(taken[i]);
        EXPECT_THAT(std::vector(values.begin(), values.begin() + 3), testing::ElementsAreArray(first[i])) << i;
        EXPECT_EQ(values[8 * 3], 0U) << "beyond the picture's edge";
        EXPECT_EQ(taken[i].frame.isComplete, i != 2);
    }
    EXPECT_THAT(taken[2].frame.errorDescription,
                testing::HasSubstr("Could not load \"" + folder.path.string() + "/c.png\": "));
    // Each start looks at the folder anew.
    fs::remove(folder.path / "c.png");
    folder.Save("a.PNG", {1, 2, 3});
    const Taken third = world.Take(3).back();
    EXPECT_TRUE(third.frame.isComplete);
    EXPECT_EQ(Values(third)[2], 3U);
}

}  // namespace

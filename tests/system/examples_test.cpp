// The recipes that come with the program, as they stand.
#include <array>

#include "stagelettest.h"

namespace SystemTest {

namespace {

class ExamplesTest : public StageletTest
{
protected:
    ExamplesTest()
    {
        fs::copy(STAGELET_SOURCE_DIR "/examples", folder / "examples", fs::copy_options::recursive);
        fs::remove_all(output());
        fs::create_directory(output());
    }
    fs::path output() const { return folder / "examples/out"; }

    RunEnded runExample(const char* name) const { return run(folder / "examples" / name, {"--until-idle"}); }
    /// The files of a folder of the examples, in the order of loading.
    std::vector<fs::path> sources(const char* name) const
    {
        std::vector<fs::path> files;
        for (const std::string& file : listFiles(folder / "examples" / name))
            files.push_back(folder / "examples" / name / file);
        return files;
    }
};

using Colour = std::array<unsigned, 3>;

/// Red, green and blue of one pixel, 8 bits each: the upper ones of more.
Colour pixelAt(const CNivexImage& image, std::uint32_t x, std::uint32_t y)
{
    const auto* bytes = static_cast<const unsigned char*>(image.GetBuffer());
    const std::size_t row = image.GetImageSize() / image.GetHeight();
    const auto at = [&](std::size_t offset) -> unsigned { return bytes[y * row + offset]; };
    switch (image.GetPixelType()) {
        case EPixelType::Mono8:
            return {at(x), at(x), at(x)};
        case EPixelType::Mono16:
            return {at(2 * x + 1), at(2 * x + 1), at(2 * x + 1)};
        case EPixelType::RGB8Packed:
            return {at(3 * x), at(3 * x + 1), at(3 * x + 2)};
        case EPixelType::BGR8Packed:
            return {at(3 * x + 2), at(3 * x + 1), at(3 * x)};
        case EPixelType::RGB16Packed:
            return {at(6 * x + 1), at(6 * x + 3), at(6 * x + 5)};
        default:
            throw std::invalid_argument("a pixel type that no example has");
    }
}

std::size_t countDifferences(const CNivexImage& a, const CNivexImage& b)
{
    std::size_t count = 0;
    for (std::uint32_t y = 0; y < a.GetHeight(); ++y) {
        for (std::uint32_t x = 0; x < a.GetWidth(); ++x)
            count += pixelAt(a, x, y) != pixelAt(b, x, y);
    }
    return count;
}

void expectSamePicture(const fs::path& written, const fs::path& source)
{
    SCOPED_TRACE(written.filename().string() + " of " + source.filename().string());
    const CNivexImage a = loadImage(written);
    const CNivexImage b = loadImage(source);
    ASSERT_EQ(a.GetWidth(), b.GetWidth());
    ASSERT_EQ(a.GetHeight(), b.GetHeight());
    EXPECT_EQ(countDifferences(a, b), 0U);
}

}  // namespace

TEST_F(ExamplesTest, ReplayWritesEveryPictureAsItWas)
{
    const RunEnded ended = runExample("replay.json");
    EXPECT_EQ(ended.code, 0) << ended.err;
    EXPECT_EQ(ended.offered(), 24U);
    EXPECT_EQ(ended.finished(), 24U);
    EXPECT_EQ(ended.files(), 24U);

    const auto files = listFiles(output());
    const auto pictures = sources("images");
    ASSERT_EQ(files.size(), 24U);
    ASSERT_EQ(pictures.size(), 24U);
    std::uintmax_t bytes = 0;
    const fs::path session = sessionOf(output(), "Session");
    for (std::size_t i = 0; i < pictures.size(); ++i) {
        const fs::path written = session / ("Image_Record" + std::to_string(i + 1) + "_Data1.png");
        expectSamePicture(written, pictures[i]);
        bytes += fs::file_size(written);
    }
    EXPECT_EQ(ended.node("Writer").at("bytes"), bytes);
}

TEST_F(ExamplesTest, FoldersHoldAPictureInColourAndInGrey)
{
    const RunEnded ended = runExample("folders.json");
    EXPECT_EQ(ended.code, 0) << ended.err;
    EXPECT_EQ(ended.finished(), 6U);
    std::string folders;
    const fs::path session = sessionOf(output(), "Belt");
    for (const std::string& file : listFiles(session))
        folders += file + "\n";
    std::string expected;
    for (int i = 1; i <= 6; ++i) {
        const std::string number = std::to_string(i);
        expected += "Part_000" + number + "/colour_" + number + ".png\n";
        expected += "Part_000" + number + "/grey_" + number + ".tiff\n";
    }
    EXPECT_EQ(folders, expected);

    auto pictures = sources("images");
    std::reverse(pictures.begin(), pictures.end());  // the recipe sorts them so
    for (const std::string& file : listFiles(session)) {
        if (file.ends_with("tiff")) {
            EXPECT_EQ(loadImage(session / file).GetPixelType(), EPixelType::Mono16) << file;
        } else {
            expectSamePicture(session / file,
                              pictures.at(static_cast<std::size_t>(file.at(file.size() - 5) - '1')));
        }
    }
}

// Of each five files the third and the fourth are no pictures.
TEST_F(ExamplesTest, TriggersTellPicturesFromErrors)
{
    const RunEnded ended = runExample("triggers.json");
    EXPECT_EQ(ended.code, 0) << ended.err;
    EXPECT_EQ(ended.offered(), 15U);
    EXPECT_EQ(ended.finished(), 9U);
    EXPECT_EQ(ended.lost("load_failed"), 6U);
    const auto pictures = sources("mixed");
    const auto session = [this](const char* name) { return sessionOf(output(), name).filename(); };
    std::vector<std::string> expected;
    for (const int update : {1, 2, 5, 6, 7, 10, 11, 12, 15}) {
        const std::string name = session("Readable") / ("update_" + std::to_string(update) + ".png");
        expectSamePicture(output() / name, pictures.at(static_cast<std::size_t>(update - 1) % 5));
        expected.push_back(name);
    }
    for (const int update : {1, 6, 11})
        expected.push_back(session("EveryFifth") / ("update_" + std::to_string(update) + ".jpg"));
    expectWholePictures(output() / session("Readable"));
    expectWholePictures(output() / session("EveryFifth"));

    std::string failures = "Update\tFile\tError\n";
    for (const int update : {3, 4, 8, 9, 13, 14}) {
        const std::string file = pictures.at(static_cast<std::size_t>(update - 1) % 5).string();
        const char* cause = update % 5 == 3 ? "bad JPEG file: Premature end of input file."
                                            : "it is no BMP, JPEG, PNG or TIFF file.";
        failures += std::to_string(update) + "\t" + file + "\tCould not load \"" + file + "\": " + cause + "\n";
    }
    EXPECT_EQ(readFile(output() / session("Failures") / "failures.txt"), failures);
    expected.push_back(session("Failures") / "failures.txt");
    EXPECT_EQ(ended.files("Failures"), 1U);
    EXPECT_THAT(listFiles(output()), testing::UnorderedElementsAreArray(expected));
}

}  // namespace SystemTest

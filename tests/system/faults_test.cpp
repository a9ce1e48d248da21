// Runs over bad files and onto bad disks: they go on, count what was lost, and leave only whole files.
#include <sys/mount.h>

#include <array>
#include <random>

#include "../videojudge.h"
#include "stagelettest.h"

namespace SystemTest {

namespace {

class FaultsTest : public StageletTest
{
protected:
    /// So many files are written and so many updates lost for a cause, and the exit code says so.
    static void expectWritten(const RunEnded& ended, std::uint64_t files, const char* cause, std::uint64_t lost)
    {
        EXPECT_EQ(ended.finished(), files);
        EXPECT_EQ(ended.files(), files);
        EXPECT_EQ(ended.lost(cause), lost);
        EXPECT_EQ(ended.code, lost == 0 ? 0 : 7) << ended.err;
        EXPECT_EQ(countOf(ended.err, "output not written: "), lost == 0 ? 0U : 1U) << ended.err;
    }
    /// Each cause is logged once, however often it came.
    static void expectLoggedOnce(const RunEnded& ended, const char* what)
    {
        EXPECT_EQ(countOf(ended.err, "log 4 "), 1U) << ended.err;
        EXPECT_EQ(countOf(ended.err.substr(0, ended.err.find("\nNODE")), what), 1U) << ended.err;
    }
};

/// A file system in memory at a folder, for as long as the object lives.
class SmallDisk
{
public:
    SmallDisk(const fs::path& folder, const char* options)
        : folder_(folder), isMounted_(mount("none", folder.c_str(), "tmpfs", 0, options) == 0)
    {}
    ~SmallDisk()
    {
        if (isMounted_) umount2(folder_.c_str(), MNT_DETACH);
    }
    SmallDisk(const SmallDisk&) = delete;
    SmallDisk& operator=(const SmallDisk&) = delete;
    bool isMounted() const { return isMounted_; }

private:
    fs::path folder_;
    bool isMounted_;
};

/// Image files of every kind, good and bad, by chance.
class MixedFolder
{
public:
    static constexpr std::size_t sizeLimit = 16384;  ///< Big ones need more as BMP.

    MixedFolder(fs::path folder, unsigned seed) : folder_(std::move(folder)), random_(seed)
    {
        const std::function<void()> kinds[] = {
            [this] { ++small, save(16 + pick(25)); },
            [this] { ++big, save(150 + pick(50)); },
            [this] { ++bad, cutOff(save(40)); },
            [this] { ++bad, write(".png", ""); },
            [this] { ++bad, write(".tiff", "This is no picture."); },
            [this] { ++bad, write(".bmp", lyingBmp()); },
            [this] { ++bad, write(".jpg", noise("\xff\xd8\xff\xe0", 500)); },
            [this] { ++bad, write(".tif", noise("II*", 500)); },
            [this] { ++small, rename(save(20), anyExtension()); },
            [this] { rename(save(20), ".txt"); },
            [this] { fs::create_directory(folder_ / (next() + ".png")); },
        };
        for (int i = 0; i < 30; ++i)
            kinds[pick(std::size(kinds))]();
    }

    std::uint64_t small = 0;
    std::uint64_t big = 0;
    std::uint64_t bad = 0;

private:
    std::size_t pick(std::size_t count) { return random_() % count; }
    std::string next() { return std::to_string(1000 + number_++); }
    std::string anyExtension() { return std::array{".bmp", ".JPG", ".Png", ".tif"}[pick(4)]; }

    fs::path save(std::size_t size)
    {
        constexpr std::pair<EImageFileFormat, const char*> formats[] = {{EImageFileFormat::Bmp, ".bmp"},
                                                                        {EImageFileFormat::Tiff, ".tiff"},
                                                                        {EImageFileFormat::Jpeg, ".jpeg"},
                                                                        {EImageFileFormat::Png, ".png"}};
        constexpr EPixelType types[] = {EPixelType::Mono8, EPixelType::RGB8Packed};
        const auto& [format, extension] = formats[pick(4)];
        const auto side = static_cast<std::uint32_t>(size);
        fs::path file = folder_ / (next() + extension);
        CNivexImage image = solidImage(types[pick(2)], side, side, 0);
        for (std::size_t i = 0; i < image.GetImageSize(); ++i)
            static_cast<unsigned char*>(image.GetBuffer())[i] = static_cast<unsigned char>(random_());
        CImagePersistence::Save(format, file.string(), image);
        return file;
    }
    void cutOff(const fs::path& file) { fs::resize_file(file, 1 + pick(fs::file_size(file) * 3 / 4)); }
    static void rename(const fs::path& file, const std::string& extension)
    {
        fs::rename(file, fs::path(file).replace_extension(extension));
    }
    void write(const char* extension, const std::string& content)
    {
        std::ofstream(folder_ / (next() + extension), std::ios::binary) << content;
    }
    std::string noise(std::string start, std::size_t size)
    {
        while (start.size() < size)
            start += static_cast<char>(random_());
        return start;
    }
    /// It claims 60000 by 60000 pixels and holds none.
    static std::string lyingBmp()
    {
        const unsigned char header[54] = {'B', 'M', 54, 0,    0,    0, 0, 0,    0,    0, 54, 0, 0, 0, 40,
                                          0,   0,   0,  0x60, 0xEA, 0, 0, 0x60, 0xEA, 0, 0,  1, 0, 24};
        return {reinterpret_cast<const char*>(header), sizeof header};
    }

    fs::path folder_;
    std::mt19937 random_;
    int number_ = 0;
};

}  // namespace

TEST_F(FaultsTest, AnyMixtureOfFilesIsAccountedForExactly)
{
    for (unsigned seed = 1; seed <= 6; ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        fs::remove_all(images());
        fs::remove_all(out() / "S");
        fs::create_directory(images());
        const MixedFolder mixed(images(), seed);
        auto command = runCommand(writeRecipe(loadAndWrite({{"numberOfRuns", 2}, {"sortBy", 2}}).dump()),
                                  {"--until-idle=1s"});
        command.insert(command.begin(), {"prlimit", "--fsize=" + std::to_string(MixedFolder::sizeLimit)});
        const RunEnded ended = end(Program(command, folder / "logs"));
        ASSERT_FALSE(ended.stats.is_null()) << ended.code << ended.err;
        EXPECT_EQ(ended.offered(), 2 * (mixed.small + mixed.big + mixed.bad));
        EXPECT_EQ(ended.lost("load_failed"), 2 * mixed.bad);
        expectWritten(ended, 2 * mixed.small, "file_not_written", 2 * mixed.big);
        EXPECT_EQ(listFiles(out()).size(), 2 * mixed.small);
        expectWholePictures(out());
    }
}

// Two nodes tell of each file, under another name each time.
TEST_F(FaultsTest, ManyBadFilesMakeFewLines)
{
    for (char letter = 'a'; letter < 'u'; ++letter)
        std::ofstream(images() / (std::string("part ") + letter + ".png")) << "no picture";
    json recipe = loadAndWrite();
    recipe["Nodes"].push_back({{"Name", "Grey"}, {"Module", "ImageFormatConverter"}});
    recipe["Connections"] = {"Loader.Image -> Grey.Image", "Grey.Image -> Writer.Data1"};
    const RunEnded ended = run(recipe, {"--updates=20"});
    EXPECT_EQ(ended.code, 0) << ended.err;
    EXPECT_EQ(ended.lost("load_failed"), 20U);
    EXPECT_EQ(ended.node("Grey").at("failed"), 20U);
    EXPECT_EQ(countOf(ended.err, "log 4 "), 2U) << ended.err;
    EXPECT_EQ(countOf(ended.err, "log: 19 more like: "), 2U) << ended.err;
}

TEST_F(FaultsTest, ADiskThatFillsUp)
{
    const SmallDisk disk(out(), "size=400k");
    if (!disk.isMounted())
        GTEST_SKIP() << "This user may not mount a disk; the limit of file sizes stands for it.";
    saveNumbered(10, 100, EPixelType::RGB8Packed);
    const RunEnded ended = run(loadAndWrite({{"numberOfRuns", 4}}), {"--updates=40"});
    const auto files = listFiles(out());
    EXPECT_GE(files.size(), 5U);
    EXPECT_LT(files.size(), 40U);
    expectWritten(ended, files.size(), "file_not_written", 40 - files.size());
    expectLoggedOnce(ended, "No space left on device");
    expectWholePictures(out());
}

// Files that grow show a full disk late: text when the stream hands over what it buffers, videos at the end of a
// fragment. What they hold by then stays readable, and no update is unaccounted for.
TEST_F(FaultsTest, ADiskThatFillsUpWhileTextIsWritten)
{
    const SmallDisk disk(out(), "size=64k");
    if (!disk.isMounted())
        GTEST_SKIP() << "This user may not mount a disk; FileSizeLimit stands for it elsewhere.";
    saveNumbered(10, 8);
    const std::string padding(300, '.');
    const RunEnded ended =
        run(loadAndWrite({{"numberOfRuns", 40}},
                         {"MediaType = TXT", "FileScope = Session", "FileName = all.txt",
                          "TextFormatSelector = TextFormat_Data", "TextFormat = {RecordIndex}" + padding}),
            {"--updates=400"});
    EXPECT_EQ(ended.code, 7) << ended.err;
    EXPECT_EQ(ended.files(), 0U);
    EXPECT_EQ(ended.finished() + ended.lost("file_not_written"), 400U);
    expectLoggedOnce(ended, "No space left on device");
    std::string expected;
    for (int i = 1; i <= 400; ++i)
        expected += std::to_string(i) + padding + "\n";
    const std::string written = readFile(out() / "S/all.txt");
    EXPECT_GT(written.size(), 40000U);
    EXPECT_EQ(written, expected.substr(0, written.size()));
    constexpr std::size_t buffered = 8192;
    EXPECT_LE(ended.finished() * (padding.size() + 2), written.size() + buffered);
}

TEST_F(FaultsTest, ADiskThatFillsUpWhileAVideoIsWritten)
{
    const SmallDisk disk(out(), "size=300k");
    if (!disk.isMounted()) GTEST_SKIP() << "This user may not mount a disk; RLIMIT_FSIZE stands for it elsewhere.";
    std::mt19937 random(1);
    for (int picture = 0; picture < 10; ++picture) {
        CNivexImage noise = solidImage(EPixelType::Mono8, 64, 64, 0);
        for (std::size_t i = 0; i < noise.GetImageSize(); ++i)
            static_cast<unsigned char*>(noise.GetBuffer())[i] = static_cast<unsigned char>(random());
        CImagePersistence::Save(EImageFileFormat::Bmp, (images() / (std::to_string(picture) + ".bmp")).string(),
                                noise);
    }
    const RunEnded ended =
        run(loadAndWrite({{"numberOfRuns", 40}}, {"MediaType = MP4", "FileScope = Session", "PlayBackSpeed = 25"}),
            {"--updates=400"});
    EXPECT_EQ(ended.code, 7) << ended.err;
    EXPECT_EQ(ended.files(), 0U);
    // What shows at the very end belongs to no update: the file, and pictures of its last fragment.
    EXPECT_GT(ended.offered(), 400U);
    EXPECT_LE(ended.offered(), 401U + 14U);
    EXPECT_THAT(ended.err, HasSubstr("No space left on device"));
    EXPECT_EQ(listFiles(out()), std::vector<std::string>{"S/Video1.mp4"});
    // The node's account goes on where updates have ended.
    const int lost = ended.node("Writer").at("lost").at("file_not_written").get<int>() - 1;
    const int frames = VideoJudge::countFrames(out() / "S/Video1.mp4");
    EXPECT_GE(frames, 12);
    EXPECT_EQ(frames, 400 - lost) << "whole fragments, and nothing else";
}

TEST_F(FaultsTest, AnOutputFolderThatGoesAway)
{
    saveNumbered(10, 30);
    Program program(runCommand(writeRecipe(loadAndWrite({{"runContinuously", true}}).dump()), {}),
                    folder / "logs");
    EXPECT_TRUE(waitFor([&] { return countFiles(out()) >= 10; }));
    fs::rename(out() / "S", folder / "gone");
    EXPECT_TRUE(waitFor([&] { return program.readErr().find("log 4 ") != std::string::npos; }));
    program.send(SIGINT);
    const RunEnded ended = end(std::move(program));
    // Nobody can reach by its name the file that was being written when its folder went.
    for (const std::string& file : listFiles(folder / "gone")) {
        if (isTemporary(file)) fs::remove(folder / "gone" / file);
    }
    const auto files = listFiles(folder / "gone").size();
    expectWritten(ended, files, "file_not_written", ended.offered() - files - ended.lost("no_space"));
    expectLoggedOnce(ended, "No such file or directory");
    expectWholePictures(folder / "gone");
}

// Names come out of templates; none leads out of the output folder, and what cannot be made is told.
TEST_F(FaultsTest, NamesOfFoldersAndFiles)
{
    saveNumbered(3, 8);
    std::ofstream(out() / "taken") << "a file";
    const std::string longName(300, 'x');
    const struct
    {
        std::string parameter;
        const char* file;   ///< The third file that is written, or null: none.
        const char* cause;  ///< Of the losses.
        const char* text;   ///< Of the log; empty: nothing is logged.
    } cases[] = {
        {"SessionFolderName = ..", nullptr, "no_session", "creating session folder. Message: The template \"..\""},
        {"SessionFolderName = taken", nullptr, "no_session", "creating session folder. Message: "},
        {"SessionFolderName = " + longName, nullptr, "no_session", "creating session folder. Message: "},
        {"RecordFolderName = ..", nullptr, "file_not_written",
         "creating record folder. Message: The template \"..\""},
        {"FileName = " + longName, nullptr, "file_not_written", "writing media writer data. Message: "},
        {"OutputFolderName = nowhere", nullptr, "no_session", ""},
        {"OutputFolderName = images/1000.bmp", nullptr, "no_session", ""},
        {"OutputFolderName = /proc", nullptr, "no_session", "creating session folder. Message: "},
        {"SessionFolderName = .", "out/Image_Record3_Data1.bmp", "no_session", ""},
        {"RecordFolderName = .", "out/S/Image_Record3_Data1.bmp", "file_not_written", ""},
        {"FileName = ..{RecordIndex}", "out/S/..3.bmp", "file_not_written", ""},
        {"FileName = ../../{RecordIndex}", "out/S/.._.._3.bmp", "file_not_written", ""},
        {"FileName = /{RecordIndex}", "out/S/_3.bmp", "file_not_written", ""},
        {"RecordFolderName = ../{RecordIndex}", "out/S/.._3/Image_Record3_Data1.bmp", "file_not_written", ""},
        {"SessionFolderName = ../../S", "out/.._.._S/Image_Record3_Data1.bmp", "no_session", ""},
    };
    const std::size_t before = listFiles(folder).size() + 3;  // the recipe, stdout and stderr come to it
    for (const auto& c : cases) {
        SCOPED_TRACE(c.parameter.substr(0, 60));
        const RunEnded ended = run(loadAndWrite({}, {c.parameter}), {"--updates=3"});
        const std::uint64_t written = c.file ? 3 : 0;
        expectWritten(ended, written, c.cause, 3 - written);
        EXPECT_EQ(listFiles(folder).size(), before + written);
        EXPECT_TRUE(!c.file || fs::exists(folder / c.file));
        if (*c.text) {
            expectLoggedOnce(ended, c.text);
        } else {
            EXPECT_EQ(ended.err.find("log 4 "), std::string::npos) << ended.err;
        }
        EXPECT_EQ(countOf(ended.err, ": node \"Writer\": The output folder \""),
                  c.parameter.starts_with("OutputFolderName") && !*c.text ? 1U : 0U);
        for (const auto& entry : fs::directory_iterator(out())) {
            if (entry.path().filename() != "taken") fs::remove_all(entry.path());
        }
    }
}

}  // namespace SystemTest

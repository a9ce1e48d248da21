// Runs without faults: how they end, and that every update goes through whole, once and in order.
#include <span>

#include "stagelettest.h"

namespace SystemTest {

namespace {

class RunsTest : public StageletTest
{
protected:
    /// Signals a recipe that runs for ever as soon as it has written so many files.
    RunEnded interrupt(const json& recipe, int signal, int filesBefore) const
    {
        Program program(runCommand(writeRecipe(recipe.dump()), {}), folder / "logs");
        EXPECT_TRUE(waitFor([&] { return countFiles(out()) >= filesBefore; }));
        program.send(signal);
        return end(std::move(program));
    }
};

/// What a picture of saveNumbered shows.
int numberOf(const fs::path& file)
{
    const CNivexImage image = loadImage(file);
    const auto* bytes = static_cast<const unsigned char*>(image.GetBuffer());
    const std::span all(bytes, image.GetImageSize());
    EXPECT_TRUE(std::all_of(all.begin(), all.end(), [&](unsigned char byte) { return byte == all[0]; })) << file;
    return all[0];
}

}  // namespace

TEST_F(RunsTest, EndWhereTheyAreToldTo)
{
    saveNumbered(5, 8);
    const json noStart = json::object();
    const struct
    {
        const char* name;
        json loader;
        json startArguments;
        std::vector<std::string> options;
        std::uint64_t updates;
        int code;
    } cases[] = {
        {"one run", {}, noStart, {"--until-idle=1s"}, 5, 0},
        {"two runs of three", {{"numberOfImages", 3}, {"numberOfRuns", 2}}, noStart, {"--until-idle=1s"}, 6, 0},
        {"one file", {{"sourcePath", "images/1003.bmp"}, {"numberOfRuns", 2}}, noStart, {"--until-idle=1s"}, 2, 0},
        {"one frame",
         {{"runContinuously", true}},
         {{"AcquisitionMode", "SingleFrame"}},
         {"--until-idle=1s"},
         1,
         0},
        {"frames without end", {}, {{"AcquisitionMode", "Continuous"}}, {"--until-idle=1s"}, 5, 0},
        {"the first", {{"runContinuously", true}}, noStart, {"--updates", "1"}, 1, 0},
        {"so many", {{"runContinuously", true}}, noStart, {"--updates=123", "--for=100s"}, 123, 0},
        {"set",
         {{"runContinuously", true}},
         noStart,
         {"--set", "Loader.RunContinuously=0", "--set=Loader.NumberOfImages=2", "--until-idle=1s"},
         2,
         0},
        {"no more to come", {}, noStart, {"--updates=6", "--for=1500ms"}, 5, 9},
        {"idle too late", {}, noStart, {"--until-idle=100s", "--for=1500ms"}, 5, 9},
        {"time is over", {}, noStart, {"--for=1500ms"}, 5, 0},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        json recipe = loadAndWrite(c.loader);
        recipe["Nodes"][0]["StartArguments"] = c.startArguments;
        const RunEnded ended = run(recipe, c.options);
        EXPECT_EQ(ended.code, c.code) << ended.err;
        EXPECT_EQ(ended.offered(), c.updates);
        EXPECT_EQ(ended.finished(), c.updates);
        EXPECT_EQ(ended.files(), c.updates);
        EXPECT_EQ(listFiles(out()).size(), c.updates);
        fs::remove_all(out() / "S");
    }
}

// Two branches of unlike length meet at one writer. Each record must hold the two forms of one picture, and no
// picture may be lost, repeated or out of turn.
TEST_F(RunsTest, BranchesMeetInTheSameRecord)
{
    constexpr int count = 250;
    constexpr int updates = 1000;
    saveNumbered(count, 64);
    json recipe = loadAndWrite({{"runContinuously", true}}, {"NumInputDataPins = 2"});
    const std::pair<const char*, const char*> converters[] = {
        {"Colour", "BGR8Packed"}, {"Deep", "RGB16Packed"}, {"Planar", "RGB8Planar"}, {"Grey", "Mono8"}};
    for (const auto& [name, format] : converters) {
        recipe["Nodes"].push_back({{"Name", name},
                                   {"Module", "ImageFormatConverter"},
                                   {"Parameters", {std::string("OutputPixelFormat = ") + format}}});
    }
    recipe["Connections"] = {"Loader.Image -> Colour.Image", "Colour.Image -> Writer.Data1",
                             "Loader.Image -> Deep.Image",   "Deep.Image -> Planar.Image",
                             "Planar.Image -> Grey.Image",   "Grey.Image -> Writer.Data2"};
    const RunEnded ended = run(recipe, {"--updates", std::to_string(updates)});
    EXPECT_EQ(ended.code, 0) << ended.err;
    EXPECT_EQ(ended.finished(), static_cast<std::uint64_t>(updates));
    ASSERT_EQ(ended.files(), 2U * updates);
    for (int record = 1; record <= updates; ++record) {
        const std::string name = "S/Image_Record" + std::to_string(record) + "_Data";
        for (const char* pin : {"1", "2"})
            ASSERT_EQ(numberOf(out() / (name + pin + ".bmp")), (record - 1) % count) << name << pin;
    }
}

// One line per update, of what the loader sends beside the picture.
TEST_F(RunsTest, ListTheLoadedFilesAsText)
{
    saveNumbered(3, 8);
    json recipe =
        loadAndWrite({{"numberOfRuns", 2}},
                     {"NumInputDataPins = 2", "MediaType = TXT", "FileScope = Session", "FileName = list.csv",
                      "TextFormatSelector = TextFormat_SessionBegin", "TextFormat = file;run\\n",
                      "TextFormatSelector = TextFormat_DataEnd", "TextFormat = ;", "InputDataPinSelector = 2",
                      "TextFormatSelector = TextFormat_RecordEnd", "TextFormat = # {RecordIndex}\\n"});
    recipe["Connections"] = {"Loader.ImagePath -> Writer.Data1", "Loader.RunCount -> Writer.Data2"};
    const RunEnded ended = run(recipe, {"--until-idle=1s"});
    EXPECT_EQ(ended.code, 0) << ended.err;
    EXPECT_EQ(ended.finished(), 6U);
    EXPECT_EQ(ended.files(), 1U);
    std::string expected = "file;run\n";
    std::uint64_t bytes = 0;
    for (int record = 1; record <= 6; ++record) {
        const std::string data = (images() / std::to_string(1000 + (record - 1) % 3)).string() + ".bmp;" +
                                 (record > 3 ? "2" : "1") + "\n";
        bytes += data.size();
        expected += data + "# " + std::to_string(record) + "\n";
    }
    EXPECT_EQ(readFile(out() / "S/list.csv"), expected);
    EXPECT_EQ(ended.node("Writer").at("bytes"), bytes);
}

// Wherever a stop comes, all files are whole, and what was offered is accounted for.
TEST_F(RunsTest, SignalsStopInOrder)
{
    saveNumbered(5, 300, EPixelType::RGB8Packed);
    const std::pair<const char*, int> signals[] = {{"SIGINT", SIGINT}, {"SIGTERM", SIGTERM}};
    for (const auto& [name, signal] : signals) {
        for (const int filesBefore : {1, 2, 17, 100}) {
            SCOPED_TRACE(name + std::string(" after files: ") + std::to_string(filesBefore));
            const RunEnded ended =
                interrupt(loadAndWrite({{"runContinuously", true}}, {"MediaType = PNG"}), signal, filesBefore);
            EXPECT_EQ(ended.code, 0) << ended.err;
            const auto files = listFiles(out());
            EXPECT_GE(static_cast<int>(files.size()), filesBefore);
            EXPECT_EQ(ended.files(), files.size());
            EXPECT_EQ(ended.finished(), files.size());
            expectWholePictures(out());
            fs::remove_all(out() / "S");
        }
    }
}

TEST_F(RunsTest, SignalsWhileStarting)
{
    saveNumbered(5, 8);
    for (int delayMs = 0; delayMs < 40; delayMs += 4) {
        Program program(runCommand(writeRecipe(loadAndWrite({{"runContinuously", true}}).dump()), {}),
                        folder / "logs");
        std::this_thread::sleep_for(std::chrono::milliseconds(delayMs));
        program.send(SIGINT);
        const RunEnded ended = end(std::move(program));
        // Before the program has taken the signal over, it does what it does to all programs.
        EXPECT_THAT(ended.code, testing::AnyOf(0, -SIGINT)) << ended.err;
        EXPECT_EQ(ended.stats.is_null(), ended.code != 0);
        expectWholePictures(out());
    }
}

// What is told to nobody must not go into a file that took the number of a closed stream.
TEST_F(RunsTest, ClosedStreamsLeaveTheFilesAlone)
{
    saveNumbered(3, 8);
    std::ofstream(images() / "2.png") << "no picture, which is told on stderr";
    json recipe = loadAndWrite({}, {"MediaType = TXT", "FileScope = Session", "FileName = list.csv"});
    recipe["Connections"] = {"Loader.RunCount -> Writer.Data1"};
    const std::string file = writeRecipe(recipe.dump()).string();
    std::vector<std::string> written;
    for (const char* streams : {"", " <&- >&- 2>&-"}) {
        const std::string line = "exec \"$0\" run \"$1\" --updates=4" + std::string(streams);
        EXPECT_EQ(end(Program({"sh", "-c", line, command(), file}, folder / "logs")).code, 0);
        written.push_back(readFile(out() / "S/list.csv"));
        fs::remove_all(out() / "S");
    }
    EXPECT_NE(written[0], "");
    EXPECT_EQ(written[0], written[1]);
}

// At one image a second the stop takes a while.
TEST_F(RunsTest, SecondSignalEndsAtOnce)
{
    saveNumbered(5, 8);
    const json recipe = loadAndWrite({{"runContinuously", true}, {"framesPerSecond", 1}});
    Program program(runCommand(writeRecipe(recipe.dump()), {}), folder / "logs");
    EXPECT_TRUE(waitFor([&] { return countFiles(out()) > 0; }));
    EXPECT_TRUE(waitFor([&] {
        program.send(SIGINT);
        return program.hasEnded();
    }));
    const RunEnded ended = end(std::move(program));
    EXPECT_EQ(ended.code, 130) << ended.err;
    EXPECT_EQ(ended.out, "");
    expectWholePictures(out());
}

// `check` starts nothing and tells that all is well.
TEST_F(RunsTest, CheckStartsNothing)
{
    saveNumbered(1, 8);
    const Ended ended = stagelet({"check", writeRecipe(loadAndWrite().dump()).string()});
    EXPECT_EQ(ended.code, 0) << ended.err;
    EXPECT_THAT(ended.out, HasSubstr("in order, 2 nodes"));
    EXPECT_TRUE(fs::is_empty(out()));
}

}  // namespace SystemTest

// Recipes with cameras, emulated ones: what they record, how they end, and what is counted on the way.
#include <random>
#include <regex>
#include <sstream>

#include "stagelettest.h"

namespace SystemTest {

namespace {

std::vector<std::string> linesOf(const std::string& text)
{
    std::vector<std::string> lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);)
        lines.push_back(line);
    return lines;
}

/// The numbers of a line of a table.
std::vector<double> cellsOf(const std::string& line)
{
    std::vector<double> cells;
    std::istringstream stream(line);
    for (std::string cell; std::getline(stream, cell, ',');)
        cells.push_back(std::stod(cell));
    return cells;
}

class CameraTest : public StageletTest
{
protected:
    /// A camera of small pictures, with enough buffers for short runs on a busy machine, and a writer of BMP files
    /// into "out/S".
    static json recordCamera(std::vector<std::string> cameraParameters = {},
                             const std::vector<std::string>& writerParameters = {})
    {
        for (const char* setting :
             {"@CameraInstance/MaxNumBuffer = 200", "@CameraDevice/Width = 64", "@CameraDevice/Height = 32",
              "@CameraDevice/AcquisitionFrameRate = 500", "@CameraDevice/ExposureTime = 100"})
            cameraParameters.insert(cameraParameters.begin(), setting);
        json recipe = loadAndWrite({}, writerParameters);
        recipe["Nodes"][0] = {{"Name", "Camera"}, {"Module", "Camera"}, {"Parameters", cameraParameters}};
        recipe["Connections"] = {"Camera.Image -> Writer.Data1"};
        return recipe;
    }
    RunEnded runCamera(const json& recipe, std::vector<std::string> options, int cameras = 1) const
    {
        options.push_back("--emulated-cameras=" + std::to_string(cameras));
        return run(recipe, options);
    }
    RunEnded runExample(const char* name, std::vector<std::string> options, int cameras = 1) const
    {
        fs::copy(STAGELET_SOURCE_DIR "/examples/" + std::string(name), folder);
        options.push_back("--emulated-cameras=" + std::to_string(cameras));
        return run(folder / name, options);
    }
    /// Every update that finished is a whole file, and there are no others.
    void expectFilesOfAllFinished(const RunEnded& ended) const
    {
        EXPECT_EQ(ended.files(), ended.finished());
        EXPECT_EQ(countFiles(out()), static_cast<int>(ended.finished()));
        expectWholePictures(out());
    }
    /// Frames that were on their way at the end or, on a busy machine, found no buffer: nothing else is lost.
    static void expectLossesOfTheCameraOnly(const RunEnded& ended)
    {
        EXPECT_EQ(ended.offered() - ended.finished(), ended.lost("no_space") + ended.lost("frames_missed"));
        EXPECT_EQ(ended.stats.at("updates").at("lost"), ended.node("Camera").at("lost"));
    }
};

}  // namespace

TEST_F(CameraTest, TheExampleRecordsPicturesAndTheirChunks)
{
    const RunEnded ended =
        runExample("camera.json", {"--updates=12", "--set=Camera.@CameraDevice/TestPattern=ColorBar"});
    ASSERT_EQ(ended.code, 0) << ended.err;
    EXPECT_EQ(ended.offered(), 12U);
    EXPECT_EQ(ended.finished(), 12U);
    EXPECT_EQ(ended.files("Pictures"), 12U);

    const auto lines = linesOf(readFile(sessionOf(out(), "CameraTable") / "frames.csv"));
    ASSERT_EQ(lines.size(), 13U);
    EXPECT_EQ(lines[0], "frame,time_ns,exposure_us");
    double before = -1;
    for (std::size_t i = 1; i < lines.size(); ++i) {
        const auto cells = cellsOf(lines[i]);
        ASSERT_EQ(cells.size(), 3U) << lines[i];
        EXPECT_EQ(cells[0], static_cast<double>(i));
        EXPECT_GT(cells[1], before) << "the camera's clock";
        EXPECT_EQ(cells[2], 8000) << lines[i];
        before = cells[1];
    }

    constexpr unsigned char bars[8][3] = {{255, 255, 255}, {255, 255, 0}, {0, 255, 255}, {0, 255, 0},
                                          {255, 0, 255},   {255, 0, 0},   {0, 0, 255},   {0, 0, 0}};
    const fs::path pictures = sessionOf(out(), "Camera");
    for (int i = 1; i <= 12; ++i) {
        const CNivexImage image = loadImage(pictures / ("frame_" + std::to_string(i) + ".png"));
        ASSERT_EQ(image.GetPixelType(), EPixelType::RGB8Packed);
        ASSERT_EQ(image.GetWidth(), 640U);
        ASSERT_EQ(image.GetHeight(), 480U);
        const auto* bytes = static_cast<const unsigned char*>(image.GetBuffer());
        for (std::size_t bar = 0; bar < 8; ++bar) {
            const unsigned char* pixel = bytes + 3 * (240 * 640 + 80 * bar + 40);
            EXPECT_TRUE(std::equal(pixel, pixel + 3, bars[bar])) << "picture " << i << ", bar " << bar;
        }
    }
}

TEST_F(CameraTest, TheExampleRecordsEventsBesidePictures)
{
    const RunEnded ended = runExample("camera-events.json", {"--updates=20"});
    ASSERT_EQ(ended.code, 0) << ended.err;
    EXPECT_EQ(ended.finished(), 20U);
    const auto lines = linesOf(readFile(sessionOf(out(), "Events") / "events.csv"));
    EXPECT_EQ(lines.at(0), "event,end_of_exposure_ns");
    EXPECT_EQ(lines.size() - 1 + ended.files("Pictures"), 20U) << "each event is an update of its own";
    EXPECT_GE(lines.size(), 10U);
    for (std::size_t i = 1; i < lines.size(); ++i) {
        EXPECT_TRUE(std::regex_match(lines[i], std::regex(std::to_string(i) + R"(,\d+)"))) << lines[i];
        EXPECT_GT(cellsOf(lines[i])[1], i > 1 ? cellsOf(lines[i - 1])[1] : 0.0);
    }
}

TEST_F(CameraTest, TheExampleRecordsTwoCameras)
{
    const RunEnded ended = runExample("two-cameras.json", {"--updates=21"}, 2);
    ASSERT_EQ(ended.code, 0) << ended.err;
    EXPECT_EQ(ended.finished(), 21U);
    EXPECT_EQ(ended.files("LeftPictures") + ended.files("RightPictures"), 21U);
    EXPECT_GE(ended.files("LeftPictures"), 8U);
    EXPECT_GE(ended.files("RightPictures"), 8U);
    expectWholePictures(out());

    const Ended one =
        stagelet({"run", (folder / "two-cameras.json").string(), "--emulated-cameras=1", "--for=60s"});
    EXPECT_EQ(one.code, 5);
    EXPECT_THAT(one.err, HasSubstr("camera not available: node \"Right\": No suitable camera found to allocate.\n"
                                   "try: stagelet devices"));
}

TEST_F(CameraTest, RunsEndWithoutLossAndExactly)
{
    const struct
    {
        const char* name;
        std::vector<std::string> parameters;
        std::vector<std::string> options;
        std::uint64_t updates;
    } cases[] = {
        {"so many", {}, {"--updates=57"}, 57},
        {"the first", {}, {"--updates=1"}, 1},
        {"faster than the writer", {"@CameraDevice/AcquisitionFrameRateEnable = false"}, {"--updates=300"}, 300},
        {"one frame", {"AcquisitionMode = SingleFrame"}, {"--until-idle=1s"}, 1},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        const RunEnded ended = runCamera(recordCamera(c.parameters), c.options);
        EXPECT_EQ(ended.code, 0) << ended.err;
        EXPECT_EQ(ended.offered(), c.updates) << ended.out;
        EXPECT_EQ(ended.finished(), c.updates) << ended.out;
        expectFilesOfAllFinished(ended);
        fs::remove_all(out() / "S");
    }
}

TEST_F(CameraTest, ASignalStopsInOrder)
{
    auto command = runCommand(writeRecipe(recordCamera().dump()), {"--emulated-cameras=1"});
    Program program(command, folder / "logs");
    ASSERT_TRUE(waitFor([this] { return countFiles(out()) >= 5; }));
    program.send(SIGINT);
    const RunEnded ended = end(std::move(program));
    EXPECT_EQ(ended.code, 0) << ended.err;
    expectFilesOfAllFinished(ended);
    expectLossesOfTheCameraOnly(ended);
}

TEST_F(CameraTest, FailedAndMissingFramesAreCounted)
{
    const struct
    {
        const char* name;
        std::vector<std::string> parameters;
        std::uint64_t finished;
        std::uint64_t failed;
        std::uint64_t missed;
    } cases[] = {
        {"none", {}, 20, 0, 0},
        {"failed", {"@CameraDevice/FailedFramesEvery = 5"}, 16, 4, 0},
        {"repaired", {"@CameraDevice/FailedFramesEvery = 5", "FixCorruptImages = On"}, 20, 0, 0},
        // 20 frames of 1-4, 8-11, 15-18, 22-25, 29-32 come.
        {"missing", {"@CameraDevice/LostFramesEvery = 4", "@CameraDevice/LostFramesNumber = 3"}, 20, 0, 12},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        const RunEnded ended = runCamera(recordCamera(c.parameters), {"--updates=20"});
        EXPECT_EQ(ended.code, 0) << ended.err;
        EXPECT_EQ(ended.finished(), c.finished) << ended.out;
        EXPECT_EQ(ended.lost("grab_failed"), c.failed) << ended.out;
        EXPECT_EQ(ended.lost("frames_missed"), c.missed) << ended.out;
        EXPECT_EQ(ended.node("Camera").at("lost").value("frames_missed", 0U), c.missed);
        expectFilesOfAllFinished(ended);
        fs::remove_all(out() / "S");
    }
}

// Any mixture of faults: the camera's account is the run's, and what finished is in files.
TEST_F(CameraTest, FaultsOfAllKindsAreCountedExactly)
{
    for (unsigned seed = 1; seed <= 12; ++seed) {
        SCOPED_TRACE(seed);
        std::mt19937 random(seed);
        std::vector<std::string> parameters;
        const auto add = [&](const char* name, const std::vector<const char*>& values) {
            parameters.push_back(std::string(name) + " = " + values[random() % values.size()]);
        };
        add("@CameraInstance/MaxNumBuffer", {"1", "2", "10", "100"});
        add("@CameraDevice/AcquisitionFrameRate", {"500", "10000"});
        add("@CameraDevice/AcquisitionFrameRateEnable", {"0", "1"});
        add("@CameraDevice/ChunkModeActive", {"0", "1"});
        add("@CameraDevice/FailedFramesEvery", {"0", "1", "2", "7"});
        add("@CameraDevice/LostFramesEvery", {"0", "1", "3"});
        add("@CameraDevice/LostFramesNumber", {"1", "5", "20"});
        add("@CameraDevice/DamagedChunksEvery", {"0", "1", "3"});
        add("@CameraDevice/UnplugAfterFrames", {"0", "1", "5", "100"});
        add("FixCorruptImages", {"On", "Off"});
        const bool isPulled = !parameters.at(8).ends_with(" = 0");
        const RunEnded ended = runCamera(recordCamera(parameters), {"--updates=150", "--for=60s"});
        EXPECT_EQ(ended.code, isPulled ? 6 : 0) << ended.err;
        EXPECT_EQ(ended.stats.at("updates").at("lost"), ended.node("Camera").at("lost"));
        EXPECT_TRUE(isPulled || ended.offered() - ended.lost("frames_missed") == 150) << ended.out;
        expectFilesOfAllFinished(ended);
        fs::remove_all(out() / "S");
    }
}

TEST_F(CameraTest, APulledCableEndsTheRunInOrder)
{
    const std::string lost =
        "camera lost: node \"Camera\": Stagelet has stopped working because the camera has been disconnected.\n"
        "try: stagelet devices";
    for (const int frames : {0, 1, 7, 200}) {
        SCOPED_TRACE(frames);
        const std::string pull = frames == 0 ? "@CameraDevice/UnplugNow = Execute"
                                             : "@CameraDevice/UnplugAfterFrames = " + std::to_string(frames);
        const RunEnded ended = runCamera(recordCamera({pull}), {"--updates=100000"});
        EXPECT_EQ(ended.code, 6) << ended.err;
        EXPECT_THAT(ended.err, HasSubstr(lost));
        EXPECT_LE(ended.finished(), static_cast<std::uint64_t>(frames));
        expectFilesOfAllFinished(ended);
        expectLossesOfTheCameraOnly(ended);
        fs::remove_all(out() / "S");
    }
}

TEST_F(CameraTest, CamerasThatCannotBeHadAreToldWithAReason)
{
    const auto wants = [](const char* serial) {
        return std::vector<std::string>{"DevicePropertyAdd = Execute", "DevicePropertyKey = SerialNumber",
                                        std::string("DevicePropertyValue = ") + serial};
    };
    json twice = recordCamera(wants("0815-0000"));
    twice["Nodes"].push_back(twice["Nodes"][0]);
    twice["Nodes"][2]["Name"] = "Second";
    const auto set = [](const std::string& text) {
        return std::vector<std::string>{"ConfigurationSetStaged = " + text, "ConfigurationSetCommit = Execute"};
    };
    const struct
    {
        const char* name;
        json recipe;
        int cameras;
        const char* why;
    } cases[] = {
        {"none at all", recordCamera(), 0, "No suitable camera found to allocate."},
        {"none of that number", recordCamera(wants("0815-0002")), 2, "No suitable camera found to allocate."},
        {"one for two nodes", twice, 2, "No unused camera found to allocate."},
        {"settings it does not have", recordCamera(set("ExposureTime = 200\nNoSuchFeature = 1")), 1,
         "Failed to load camera feature stream from active configuration set."},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        const RunEnded ended = runCamera(c.recipe, {"--updates=1"}, c.cameras);
        EXPECT_EQ(ended.code, 5) << ended.err;
        EXPECT_THAT(ended.err, testing::ContainsRegex("camera not available: node \"(Camera|Second)\": "));
        EXPECT_THAT(ended.err, HasSubstr(c.why));
        EXPECT_EQ(countFiles(out()), 0);
    }
}

TEST_F(CameraTest, SettingsReachTheCamera)
{
    json recipe = recordCamera(
        {"ChunkPinAdd = Execute", "ChunkPinConfiguration = Exposure.Type=Float.ValueName=ChunkExposureTime",
         "ConfigurationSetStaged = ChunkModeActive = 1\nChunkSelector = ExposureTime\n"
         "ChunkEnable = 1\nExposureTime = 200",
         "ConfigurationSetCommit = Execute"},
        {"MediaType = TXT", "FileScope = Session", "FileName = exposure.txt"});
    recipe["Nodes"][0]["Parameters"].erase(0);  // the exposure time that would come after the set's
    recipe["Connections"] = {"Camera.Exposure -> Writer.Data1"};
    const RunEnded ended = runCamera(recipe, {"--updates=2"});
    EXPECT_EQ(ended.code, 0) << ended.err;
    EXPECT_EQ(readFile(out() / "S/exposure.txt"), "200\n200\n");
}

TEST_F(CameraTest, ValuesThatTheCameraRefusesAreToldWithTheirPlace)
{
    const json recipe = recordCamera({"@CameraDevice/Width = 4097", "@CameraDevice/ExposureTme = 5",
                                      "@CameraDevise/Height = 5", "@CameraDevice/DeviceVersion = 2"});
    const std::string file = writeRecipe(recipe.dump(2)).string();
    const Ended ended = stagelet({"run", file, "--emulated-cameras=1", "--for=60s"});
    EXPECT_EQ(ended.code, 3);
    EXPECT_EQ(countOf(ended.err, ": node \"Camera\": "), 4U) << ended.err;
    for (const char* part : {"\"Width\" does not take \"4097\"", "Allowed: 1 to 4096 px.",
                             "no parameter \"ExposureTme\". Did you mean \"ExposureTime\"?",
                             "no node map \"@CameraDevise\". Did you mean \"@CameraDevice\"?",
                             "\"DeviceVersion\" cannot be written now (its access is RO)"})
        EXPECT_THAT(ended.err, HasSubstr(part));
}

TEST_F(CameraTest, CamerasAreListedWithTheirProperties)
{
    const json devices = json::parse(stagelet({"devices", "--json", "--emulated-cameras=2"}).out).at("devices");
    ASSERT_EQ(devices.size(), 2U);
    for (std::size_t i = 0; i < 2; ++i) {
        EXPECT_EQ(devices[i].at("serial_number"), "0815-000" + std::to_string(i));
        EXPECT_EQ(devices[i].at("class"), "Emulated");
        EXPECT_EQ(devices[i].at("accessible"), true);
        EXPECT_EQ(devices[i].at("properties").at("SerialNumber"), devices[i].at("serial_number"));
    }
}

}  // namespace SystemTest

// Videos of whole recipes, as other programs see them.
#include "../videojudge.h"
#include "stagelettest.h"

namespace SystemTest {

class VideoTest : public StageletTest
{
protected:
    fs::path onlyVideo() const
    {
        const auto files = listFiles(folder);
        const auto isVideo = [](const std::string& file) { return file.ends_with(".mp4"); };
        EXPECT_EQ(std::count_if(files.begin(), files.end(), isVideo), 1);
        const auto found = std::find_if(files.begin(), files.end(), isVideo);
        return found == files.end() ? fs::path() : folder / *found;
    }
};

// At another pace than the recipe's, which is too slow for a test.
TEST_F(VideoTest, TheTimelapseExampleGivesAPlayableFile)
{
    fs::create_directory(folder / "examples");
    fs::copy(STAGELET_SOURCE_DIR "/examples/images", folder / "examples/images", fs::copy_options::recursive);
    fs::copy(STAGELET_SOURCE_DIR "/examples/timelapse.json", folder / "examples/timelapse.json");
    fs::create_directory(folder / "examples/out");
    const RunEnded ended = run(folder / "examples/timelapse.json",
                               {"--set", "Writer.RecordPeriodUnit=Update", "--set", "Writer.RecordPeriod=3",
                                "--set", "Loader.FramesPerSecond=200", "--updates", "60"});
    EXPECT_EQ(ended.code, 0) << ended.err;
    EXPECT_EQ(ended.finished(), 20U);
    EXPECT_EQ(ended.lost("refused_by_rule"), 40U);
    EXPECT_EQ(ended.files(), 1U);
    const auto seen = VideoJudge::probe(onlyVideo());
    EXPECT_EQ(seen.at("codec_name"), "h264");
    EXPECT_EQ(seen.at("width"), "320");
    EXPECT_EQ(seen.at("nb_read_frames"), "20");
    EXPECT_EQ(seen.at("avg_frame_rate"), "25/1");
}

TEST_F(VideoTest, AKilledRunLeavesAVideoThatPlays)
{
    saveNumbered(100, 64);
    const json recipe = loadAndWrite({{"framesPerSecond", 100}, {"numberOfRuns", 1000}},
                                     {"MediaType = MP4", "FileScope = Session", "PlayBackSpeed = 10"});
    Program program(runCommand(writeRecipe(recipe.dump(2)), {}), folder / "logs");
    const fs::path video = out() / "S/Video1.mp4";
    const auto hasGrown = [&] {
        std::error_code missing;
        const auto size = fs::file_size(video, missing);
        return !missing && size > 4000;
    };
    ASSERT_TRUE(waitFor(hasGrown)) << program.readErr();
    program.send(SIGKILL);
    EXPECT_EQ(program.wait().code, -SIGKILL);
    EXPECT_GE(VideoJudge::countFrames(video), 5);
}

}  // namespace SystemTest

// Videos from end to end: pictures through a node into a folder, counted by independent programs.
#include <gmock/gmock.h>

#include "../../videojudge.h"
#include "core/array.h"
#include "core/integer.h"
#include "datawritertest.h"

namespace DataWriterTest {
namespace {

using Core::LossCause;
using Nivex::EPixelType;
using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::StartsWith;

class VideoFiles : public FolderTest
{
protected:
    VideoFiles() : FolderTest("MP4") {}

    std::map<std::string, int> frames() const
    {
        std::map<std::string, int> counts;
        for (const std::string& name : folder.entries()) {
            if (name.ends_with(".mp4")) counts[name] = VideoJudge::countFrames(folder.path() / name);
        }
        return counts;
    }
    std::vector<std::string> videoLog() const
    {
        return log.messages("nivex.dataprocessing.stagelet.DataWriterVideo");
    }
};

const Core::Image grey = image(EPixelType::Mono8, 64, 48);

TEST_F(VideoFiles, LastAsLongAsTheirScopeSays)
{
    struct Case
    {
        const char *scope, *fileName, *recordFolder;
        std::map<std::string, int> frames;
    };
    const Case cases[] = {
        {"Session", "", "", {{"Video1.mp4", 3}}},
        {"Session", "s{RecordIndex}", "R{RecordIndex}", {{"s1.mp4", 3}}},
        {"Record", "", "", {{"Video1.mp4", 1}}},
        {"Record", "a/{RecordIndex}.mp4", "", {{"a_1.mp4", 1}, {"a_2.mp4", 1}, {"a_3.mp4", 1}}},
        {"Record", "", "R{RecordIndex}", {{"R1/Video1.mp4", 1}, {"R2/Video1.mp4", 1}, {"R3/Video1.mp4", 1}}},
        {"DataItem", "d{RecordIndex}_{PinIndex}.mp4", "R{RecordIndex}", {{"R1/d1_1.mp4", 3}}},
    };
    for (const Case& row : cases) {
        SCOPED_TRACE(std::string(row.scope) + " " + row.fileName + " " + row.recordFolder);
        for (const std::string& name : folder.entries())
            fs::remove_all(folder.path() / name);
        host.records = host.files = host.bytes = 0;
        parameters.set("FileScope", row.scope);
        parameters.set("FileName", row.fileName);
        parameters.set("RecordFolderName", row.recordFolder);
        write({onPin1(grey), onPin1(grey), onPin1(grey)});
        EXPECT_EQ(frames(), row.frames);
        const bool isPerRecord = std::string(row.scope) == "Record";
        EXPECT_EQ(host.files, isPerRecord ? 3u : 1u);
        std::uintmax_t bytes = 0;
        for (const auto& [name, frames] : row.frames)
            bytes += fs::file_size(folder.path() / name);
        if (host.files == row.frames.size()) {
            EXPECT_EQ(host.bytes, bytes);
        }
    }
    EXPECT_EQ(host.lost, (std::map<LossCause, int>()));
    const auto replaced = HasSubstr("Video1.mp4\" of this session is replaced");
    EXPECT_THAT(videoLog(), ElementsAre(replaced, replaced)) << "the one name for all records in one folder";
}

TEST_F(VideoFiles, HoldEachElementOfArraysAndPlayAtTheSpeedThatWasSet)
{
    parameters.set("FileScope", "Session");
    parameters.set("PlayBackSpeed", "29.97");
    const std::vector<Core::Image> pictures = {grey, Core::Image(error("no image")), grey};
    write({onPin1(Core::Array<Core::Image>(pictures)), onPin1(grey)});
    EXPECT_EQ(frames(), (std::map<std::string, int>{{"Video1.mp4", 3}}));
    EXPECT_EQ(VideoJudge::probe(folder.path() / "Video1.mp4").at("avg_frame_rate"), "2997/100");
    EXPECT_EQ(host.lost, (std::map<LossCause, int>{{LossCause::InvalidInput, 1}}));
}

TEST_F(VideoFiles, CountAndTellWhatDoesNotGoIn)
{
    fs::create_directory(folder.path() / "taken.mp4");
    struct Case
    {
        const char* fileName;
        std::vector<Core::PinValues> updates;
        LossCause cause;
        const char* doing;  ///< Of the log; null if there is no entry.
        int frames;
    };
    const Core::PinValues good = onPin1(grey);
    const Case cases[] = {
        {"", {onPin1(Core::Image(error("no image")))}, LossCause::InvalidInput, nullptr, 0},
        {"", {onPin1(Core::Image())}, LossCause::InvalidInput, nullptr, 0},
        {"", {onPin1(Core::Array<Core::Image>(error("none")))}, LossCause::InvalidInput, nullptr, 0},
        {"", {onPin1(Core::Integer(1))}, LossCause::Unsupported, nullptr, 0},
        {"", {onPin1(image(static_cast<EPixelType>(0x8108FFF0)))}, LossCause::Unsupported, nullptr, 0},
        {"taken", {good}, LossCause::FileNotWritten, "opening video", 0},
        {"", {onPin1(image(EPixelType::Mono8, 16385, 1))}, LossCause::EncoderFailed, "opening video", 0},
        {"",
         {good, onPin1(image(EPixelType::Mono8, 32, 48)), good},
         LossCause::EncoderFailed,
         "adding image to video",
         2},
    };
    parameters.set("FileScope", "Session");
    for (const Case& row : cases) {
        SCOPED_TRACE(testing::PrintToString(row.cause) + row.fileName);
        fs::remove(folder.path() / "Video1.mp4");
        host.lost.clear();
        host.files = 0;
        log.clear();
        parameters.set("FileName", row.fileName);
        write(row.updates);
        EXPECT_EQ(host.lost, (std::map<LossCause, int>{{row.cause, 1}}));
        EXPECT_EQ(fs::exists(folder.path() / "Video1.mp4"), row.frames > 0);
        EXPECT_EQ(host.files, row.frames > 0 ? 1u : 0u);
        if (row.frames > 0) {
            EXPECT_EQ(VideoJudge::countFrames(folder.path() / "Video1.mp4"), row.frames);
        }
        if (!row.doing) {
            EXPECT_THAT(videoLog(), ElementsAre());
            continue;
        }
        EXPECT_THAT(
            videoLog(),
            ElementsAre(AllOf(StartsWith("DataWriterVideo 0x"),
                              HasSubstr(std::string(": Exception caught while ") + row.doing + ". Message: "))));
    }
}

}  // namespace
}  // namespace DataWriterTest

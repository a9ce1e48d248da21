#pragma once

#include <gmock/gmock.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <regex>
#include <stdexcept>
#include <thread>

#include "utility/imagepersistence.h"
#include "utility/niveximage.h"
#include "utility/pixeltype.h"

#include "program.h"

namespace SystemTest {

using Nivex::CImagePersistence;
using Nivex::CNivexImage;
using Nivex::EImageFileFormat;
using Nivex::EPixelType;
using nlohmann::json;
using testing::HasSubstr;

/// The end of `stagelet run --stats json`.
struct RunEnded : Ended
{
    json stats;  ///< Null if there were none.

    std::uint64_t offered() const { return stats.at("updates").at("offered"); }
    std::uint64_t finished() const { return stats.at("updates").at("finished"); }
    std::uint64_t lost(const char* cause) const { return stats.at("updates").at("lost").value(cause, 0ULL); }
    /// The statistics of one node.
    const json& node(const std::string& name) const
    {
        for (const json& entry : stats.at("nodes")) {
            if (entry.at("name") == name) return entry;
        }
        throw std::out_of_range("no node " + name);
    }
    std::uint64_t files(const std::string& name = "Writer") const { return node(name).at("files"); }
};

/// A picture with the same value in all its bytes.
inline CNivexImage solidImage(EPixelType type, std::uint32_t width, std::uint32_t height, int value)
{
    CNivexImage image;
    image.Reset(type, width, height);
    std::memset(image.GetBuffer(), value, image.GetImageSize());
    return image;
}

inline CNivexImage loadImage(const fs::path& file)
{
    CNivexImage image;
    image.Load(file.string());
    return image;
}

/// All regular files below a folder, as paths from there, in order. The folder may change meanwhile.
inline std::vector<std::string> listFiles(const fs::path& folder)
{
    std::vector<std::string> files;
    std::error_code error;
    for (fs::recursive_directory_iterator entry(folder, error), end; !error && entry != end;
         entry.increment(error)) {
        std::error_code gone;
        if (entry->is_regular_file(gone)) files.push_back(entry->path().lexically_relative(folder).string());
    }
    std::sort(files.begin(), files.end());
    return files;
}

/// The one folder of that name and the time of a run, so that a further run gets a folder of its own.
inline fs::path sessionOf(const fs::path& output, const std::string& name)
{
    const std::regex timed(name + R"(__\d{4}-\d\d-\d\d__\d\d-\d\d-\d\d__\d{3})");
    std::vector<fs::path> found;
    for (const auto& entry : fs::directory_iterator(output)) {
        if (std::regex_match(entry.path().filename().string(), timed)) found.push_back(entry.path());
    }
    EXPECT_EQ(found.size(), 1U) << name;
    return found.empty() ? output : found.front();
}

inline bool isTemporary(const std::string& file)
{
    return file.find(".tmp-") != std::string::npos;
}

/// Those that have their final names.
inline int countFiles(const fs::path& folder)
{
    const auto files = listFiles(folder);
    return static_cast<int>(std::count_if(files.begin(), files.end(), std::not_fn(isTemporary)));
}

/// No temporary file is left, and all others are pictures that can be read to their end.
inline void expectWholePictures(const fs::path& folder)
{
    for (const std::string& file : listFiles(folder)) {
        EXPECT_FALSE(isTemporary(file)) << file;
        EXPECT_NO_THROW(loadImage(folder / file)) << file;
    }
}

inline std::size_t countOf(const std::string& text, const std::string& part)
{
    std::size_t count = 0;
    for (auto at = text.find(part); at != std::string::npos; at = text.find(part, at + part.size()))
        ++count;
    return count;
}

/// True as soon as the condition holds, false if it does not within a minute.
inline bool waitFor(const std::function<bool()>& condition)
{
    for (const auto end = std::chrono::steady_clock::now() + 60s; !condition();) {
        if (std::chrono::steady_clock::now() > end) return false;
        std::this_thread::sleep_for(2ms);
    }
    return true;
}

/// A folder of its own, with an output folder "out" and an empty source folder "images".
class StageletTest : public testing::Test
{
protected:
    StageletTest()
    {
        std::string pattern = (fs::temp_directory_path() / "stagelet_system_XXXXXX").string();
        if (!mkdtemp(pattern.data())) throw std::system_error(errno, std::generic_category(), "mkdtemp");
        folder = pattern;
        for (const char* name : {"out", "images", "logs"})
            fs::create_directory(folder / name);
    }
    ~StageletTest() override
    {
        std::error_code error;
        fs::remove_all(folder, error);
    }

    static std::string command() { return STAGELET_BIN_DIR "/stagelet"; }
    fs::path images() const { return folder / "images"; }
    fs::path out() const { return folder / "out"; }

    /// Runs the command with these arguments to its end.
    Ended stagelet(std::vector<std::string> arguments) const
    {
        arguments.insert(arguments.begin(), command());
        return end(Program(arguments, folder / "logs"));
    }

    fs::path writeRecipe(const std::string& text) const
    {
        std::ofstream(folder / "recipe.json") << text;
        return folder / "recipe.json";
    }

    /// A loader of "images" at 500 images a second and a writer of BMP files into "out/S", each with what is
    /// given.
    static json loadAndWrite(const json& loaderSettings = {},
                             const std::vector<std::string>& writerParameters = {})
    {
        json settings = {{"sourcePath", "images"}, {"numberOfImages", 999999999}, {"framesPerSecond", 500}};
        if (!loaderSettings.is_null()) settings.update(loaderSettings);
        json parameters = {"OutputFolderName = out", "SessionFolderName = S", "MediaType = BMP"};
        for (const std::string& parameter : writerParameters)
            parameters.push_back(parameter);
        return {{"Recipe", 1},
                {"Nodes",
                 {{{"Name", "Loader"}, {"Module", "ImageLoading"}, {"Settings", settings}},
                  {{"Name", "Writer"}, {"Module", "DataWriter"}, {"Parameters", parameters}}}},
                {"Connections", {"Loader.Image -> Writer.Data1"}}};
    }

    std::vector<std::string> runCommand(const fs::path& recipe, std::vector<std::string> options) const
    {
        options.insert(options.begin(), {command(), "run", recipe.string(), "--stats", "json"});
        return options;
    }
    RunEnded run(const fs::path& recipe, const std::vector<std::string>& options) const
    {
        return end(Program(runCommand(recipe, options), folder / "logs"));
    }
    RunEnded run(const json& recipe, const std::vector<std::string>& options) const
    {
        return run(writeRecipe(recipe.dump(2)), options);
    }

    /// Waits for the end. What holds for every run is expected here: it ends, and its ledger balances.
    static RunEnded end(Program&& program)
    {
        RunEnded ended{program.wait(), {}};
        EXPECT_FALSE(ended.timedOut) << ended.err;
        if (!ended.out.starts_with("{\n    \"schema\": \"stagelet-stats")) return ended;
        ended.stats = json::parse(ended.out);
        std::uint64_t lost = 0;
        for (const auto& cause : ended.stats.at("updates").at("lost").items())
            lost += cause.value().get<std::uint64_t>();
        EXPECT_EQ(ended.offered(), ended.finished() + lost) << ended.out;
        return ended;
    }

    /// Saves pictures "NUMBER.bmp", whose bytes have the value of their number.
    void saveNumbered(int count, std::uint32_t size, EPixelType type = EPixelType::Mono8) const
    {
        for (int i = 0; i < count; ++i) {
            std::string name = std::to_string(1000 + i);
            CImagePersistence::Save(EImageFileFormat::Bmp, (images() / (name + ".bmp")).string(),
                                    solidImage(type, size, size, i));
        }
    }

    fs::path folder;
};

}  // namespace SystemTest

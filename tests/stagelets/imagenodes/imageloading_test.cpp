#include "imageloading/imageloading.h"

#include <future>

#include "genapi/genapi.h"

#include "core/errors.h"
#include "framework/logcapture.h"
#include "support.h"

namespace Plugin::NivexStageletPackageBase::Test {
namespace {

constexpr const char* channel = "nivex.dataprocessing.stagelet.ImageLoading";

class ImageLoadingTest : public testing::Test
{
protected:
    void SetUp() override
    {
        node.attachHost(&host);
        node.setFramesPerSecond(500);
        node.setNumberOfImages(1000);
        node.setSourcePath(folder.string());
    }
    void TearDown() override { node.stop(); }

    /// "name/run" of each update, with "!" behind an image that holds an error.
    static std::vector<std::string> sequence(const std::vector<Core::PinValues>& updates)
    {
        std::vector<std::string> texts;
        for (const Core::PinValues& update : updates) {
            const std::filesystem::path path(update.at("ImagePath").getValue<Core::String>().get().str());
            texts.push_back(path.stem().string() + "/" +
                            std::to_string(update.at("RunCount").getValue<Core::Integer>().getUnsigned()) +
                            (update.at("Image").getValue<Core::Image>().hasError() ? "!" : ""));
        }
        return texts;
    }
    /// Starts the node on a host of its own and gives what comes until the worker has ended by itself.
    std::vector<std::string> play(const Core::NodeArgumentCollection& arguments)
    {
        FakeHost ownHost;
        node.attachHost(&ownHost);
        node.start(arguments);
        const auto updates = ownHost.waitForEndOfThread();
        EXPECT_EQ(node.getState(), Core::NodeState::Started);
        node.stop();
        node.attachHost(&host);
        return sequence(updates);
    }
    GenApi::CNodeMapRef map() { return node.getNodeMap("@Stagelet"); }
    std::string logged(const std::string& text) const
    {
        return GenICam::formatText("ImageLoading %p: ", static_cast<const void*>(&node)) + text;
    }

    ScopedLogCapture log;
    const TemporaryFolder folder;
    FakeHost host;
    ImageLoading node{nullptr};
};

using Sequence = std::vector<std::string>;

TEST_F(ImageLoadingTest, PutsOutRunsInOrder)
{
    folder.addImages({"b.png", "a.png", "c.png"});
    struct Row
    {
        const char* name;
        SortBy sortBy;
        unsigned long images;
        unsigned long runs;
        Sequence expected;
    };
    const Row rows[] = {
        {"all images twice", SortBy::Ascending, 1000, 2, {"a/1", "b/1", "c/1", "a/2", "b/2", "c/2"}},
        {"part of the images", SortBy::Descending, 2, 2, {"c/1", "b/1", "c/2", "b/2"}},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        node.setSettings(folder.string(), row.sortBy, row.images, 500, row.runs, false, true);
        EXPECT_EQ(play({}), row.expected);
    }
    EXPECT_TRUE(log.messages(channel).empty());
}

TEST_F(ImageLoadingTest, TakesTheAcquisitionModeSingleFrame)
{
    folder.addImages({"a.png", "b.png"});
    node.setNumberOfRuns(2);
    const Sequence all{"a/1", "b/1", "a/2", "b/2"};
    const Sequence ignored{
        logged("Argument \"AcquisitionMode\" is not of type \"String\" or invalid and is "
               "therefore ignored.")};
    const auto error = std::make_shared<Core::DeviceError>("none", Utils::DateTime::now());
    struct Row
    {
        Utils::Variant value;
        Sequence expected;
        Sequence log;
    };
    for (const Row& row :
         {Row{Utils::Variant(Core::String("SingleFrame")), {"a/1"}, {}},
          Row{Utils::Variant(Core::String("singleframe")), all, {}},
          Row{Utils::Variant(Core::Integer(1)), all, ignored}, Row{Utils::Variant(), all, ignored},
          Row{Utils::Variant(Core::String(error)), all, ignored}})
    {
        log.clear();
        Core::NodeArgumentCollection arguments;
        arguments.setArgument("AcquisitionMode", row.value);
        EXPECT_EQ(play(arguments), row.expected);
        EXPECT_EQ(log.messages(channel), row.log);
    }
}

TEST_F(ImageLoadingTest, RunsOnWhateverTheNumberOfRuns)
{
    folder.addImages({"a.png", "b.png"});
    node.setRunContinuously(true);
    node.start({});
    const auto texts = sequence(host.waitForUpdates(6));
    EXPECT_EQ(Sequence(texts.begin(), texts.begin() + 6), (Sequence{"a/1", "b/1", "a/2", "b/2", "a/3", "b/3"}));
}

TEST_F(ImageLoadingTest, ShufflesEachRunAnew)
{
    std::set<std::string> names;
    for (char name = 'a'; name <= 't'; ++name) {
        const std::string file = std::string(1, name) + ".png";
        folder.addImages({file.c_str()});
        names.insert(std::string(1, name));
    }
    node.setSortBy(SortBy::Random);
    node.setNumberOfRuns(2);
    node.start({});
    const auto texts = sequence(host.waitForEndOfThread());
    ASSERT_EQ(texts.size(), 40U);
    std::vector<std::string> runs[2];
    for (std::size_t i = 0; i < texts.size(); ++i)
        runs[i / 20].push_back(texts[i].substr(0, 1));
    EXPECT_NE(runs[0], runs[1]);
    EXPECT_EQ(std::set<std::string>(runs[0].begin(), runs[0].end()), names);
    EXPECT_EQ(std::set<std::string>(runs[1].begin(), runs[1].end()), names);
}

TEST_F(ImageLoadingTest, GivesAnErrorForAFileThatIsNoImage)
{
    folder.addImages({"a.png", "c.png"});
    folder.addText("b.png");
    node.start({});
    const auto updates = host.waitForEndOfThread();
    EXPECT_EQ(sequence(updates), (Sequence{"a/1", "b/1!", "c/1"}));
    const auto error = updates[1].at("Image").getValue<Core::Image>().getError();
    ASSERT_NE(dynamic_cast<Core::GenICamExceptionError*>(error.get()), nullptr);
    EXPECT_EQ(log.messages(channel), Sequence{"ImageLoading: Exception caught while loading image. Message: " +
                                              error->getDescription().str()});
    EXPECT_EQ(log.lines()[0].severity, 4);
    ASSERT_EQ(host.losses.size(), 1U);
    EXPECT_EQ(host.losses[0].first, Core::LossCause::LoadFailed);
    EXPECT_EQ(host.losses[0].second, host.updates()[1].get());
}

TEST_F(ImageLoadingTest, PassesImagesOverThatGetNoUpdate)
{
    folder.addImages({"a.png", "b.png", "c.png", "d.png", "e.png", "f.png"});
    int asked = 0;
    host.spaceAvailable = [&] { return ++asked != 2; };
    int made = 0;
    host.makeUpdate = [&]() -> std::shared_ptr<Core::IGraphUpdate> {
        switch (++made) {
            case 2:
                return nullptr;
            case 3:
                GENICAM_THROW(RuntimeException, "refused");
            case 4:
                throw std::runtime_error("broken");
            case 5:
                throw 1;
            default:
                return std::make_shared<FakeHost::Update>();
        }
    };
    node.start({});
    EXPECT_EQ(sequence(host.waitForEndOfThread()), Sequence{"a/1"});
    EXPECT_EQ(asked, 6);
    EXPECT_EQ(log.messages(channel), (Sequence{logged("Exception caught while creating update.. Message: refused"),
                                               logged("Exception caught while creating update.. Message: broken"),
                                               logged("Unknown exception caught while creating update..")}));
}

TEST_F(ImageLoadingTest, ReachesSinksOutsideAGraph)
{
    folder.addImages({"a.png"});
    node.attachHost(nullptr);
    struct Sink : Core::IOutputSink
    {
        void onOutput(const std::shared_ptr<Core::IGraphUpdate>&, const Utils::Variant& value) override
        {
            path.set_value(value.getValue<Core::String>().get());
        }
        std::promise<gcstring> path;
    };
    const auto sink = std::make_shared<Sink>();
    node.attachOutputSink("ImagePath", sink);
    node.start({});
    EXPECT_EQ(sink->path.get_future().get(), folder / "a.png");
}

TEST_F(ImageLoadingTest, RefusesToStartWithoutImages)
{
    folder.addText("text.txt");
    std::filesystem::create_directory(folder / "sub");
    folder.addImages({"sub/a.png"});
    constexpr const char* none = "No images found in specified image source path.";
    struct Row
    {
        std::string path;
        std::string refusal;
    };
    for (const Row& row : {Row{"", "No image source path was specified."}, Row{folder.string(), none},
                           Row{folder / "missing", none}, Row{folder / "text.txt", none}})
    {
        log.clear();
        node.setSourcePath(row.path);
        EXPECT_EQ(refusalOf<GenICam::RuntimeException>([&] { node.start({}); }), row.refusal);
        ASSERT_EQ(log.lines().size(), 1U);
        EXPECT_EQ(log.lines()[0].severity, 3);
        const std::string start = logged("onStarting failed. Message: \"" + row.refusal + "\" (imageloading:");
        EXPECT_EQ(log.lines()[0].message.substr(0, start.size()), start);
        EXPECT_EQ(node.getState(), Core::NodeState::Stopped);
        EXPECT_EQ(map().GetNode("SortBy")->GetAccessMode(), GenApi::RW);
    }
}

TEST_F(ImageLoadingTest, IsLockedWhileItRuns)
{
    folder.addImages({"a.png"});
    const char* const names[] = {"SourcePath",   "SortBy",          "NumberOfImages",   "FramesPerSecond",
                                 "NumberOfRuns", "RunContinuously", "StoreAbsolutePath"};
    GenApi::FeatureList_t features;
    dynamic_cast<GenApi::ICategory&>(*map().GetNode("Root")).GetFeatures(features);
    ASSERT_EQ(features.size(), std::size(names));
    for (std::size_t i = 0; i < std::size(names); ++i) {
        EXPECT_EQ(dynamic_cast<GenApi::INode&>(*features[i]).GetName(), names[i]);
        EXPECT_EQ(map().GetNode(names[i])->GetAccessMode(), GenApi::RW) << names[i];
    }
    int told = 0;
    const auto handle = map().GetNode("SortBy")->RegisterCallback([&](GenApi::INode*) { ++told; });
    node.start({});
    EXPECT_EQ(told, 1);
    for (const char* name : names)
        EXPECT_EQ(map().GetNode(name)->GetAccessMode(), GenApi::RO) << name;

    struct Row
    {
        const char* function;
        std::function<void()> call;
        const char* refusal = "Stagelet must not be running to set the settings.";
    };
    const Row rows[] = {
        {"setSourcePath", [&] { node.setSourcePath("x"); }},
        {"setSortBy", [&] { node.setSortBy(SortBy::Random); }},
        {"setNumberOfImages", [&] { node.setNumberOfImages(5); }},
        {"setNumberOfImages", [&] { node.setNumberOfImages(0); }, "NumberOfImages must be greater than 0."},
        {"setFramesPerSecond", [&] { node.setFramesPerSecond(5); }},
        {"setNumberOfRuns", [&] { node.setNumberOfRuns(5); }},
        {"setRunContinuously", [&] { node.setRunContinuously(true); }},
        {"setStoreAbsolutePath", [&] { node.setStoreAbsolutePath(true); }},
        {"setSettings", [&] { node.setSettings("x", SortBy::Random, 5, 5, 5, true, true); }},
    };
    for (const Row& row : rows) {
        log.clear();
        EXPECT_EQ(refusalOf<GenICam::RuntimeException>(row.call), row.refusal) << row.function;
        ASSERT_EQ(log.lines().size(), 1U);
        EXPECT_EQ(log.lines()[0].severity, 3);
        const std::string start =
            logged(std::string(row.function) + " failed. Message: \"" + row.refusal + "\" (imageloading:");
        EXPECT_EQ(log.lines()[0].message.substr(0, start.size()), start);
    }
    EXPECT_EQ(refusalOf<GenICam::InvalidArgumentException>(
                  [&] { node.setSettings("", SortBy::Random, 0, 5, 5, true, true); }),
              "Source path must not be empty.");
    node.stop();
    EXPECT_EQ(told, 2);
    map().GetNode("SortBy")->DeregisterCallback(handle);
    for (const char* name : names)
        EXPECT_EQ(map().GetNode(name)->GetAccessMode(), GenApi::RW) << name;
    EXPECT_EQ(node.getSortBy(), SortBy::Ascending);
    EXPECT_EQ(node.getNumberOfRuns(), 1U);
}

TEST_F(ImageLoadingTest, SettersNotifyOfChangesOnlyAndWithoutTheLock)
{
    int changes = 0;
    bool free = true;
    node.getSettingsChangedSignal().connect([&] {
        ++changes;
        free = free && std::async(std::launch::async, [&] {
                           const bool taken = node.getLock()->tryLock();
                           if (taken) node.getLock()->unlock();
                           return taken;
                       }).get();
    });
    node.setNumberOfRuns(1);
    node.setSourcePath(folder.string());
    EXPECT_EQ(changes, 0);
    node.setNumberOfRuns(2);
    EXPECT_EQ(changes, 1);
    EXPECT_EQ(refusalOf<GenICam::RuntimeException>([&] { node.setFramesPerSecond(0); }),
              "FramesPerSecond must be greater than 0.");
    EXPECT_EQ(refusalOf<GenICam::RuntimeException>([&] { node.setNumberOfRuns(0); }),
              "NumberOfRuns must be greater than 0.");
    struct Row
    {
        unsigned long images;
        unsigned long frames;
        unsigned long runs;
        const char* refusal;
    };
    for (const Row& row : {Row{0, 0, 0, "NumberOfImages must be greater than 0."},
                           Row{1, 0, 0, "FramesPerSecond must be greater than 0."},
                           Row{1, 1, 0, "NumberOfRuns must be greater than 0."}})
    {
        EXPECT_EQ(refusalOf<GenICam::InvalidArgumentException>([&] {
                      node.setSettings("x", SortBy::Random, row.images, row.frames, row.runs, true, true);
                  }),
                  row.refusal);
    }
    EXPECT_EQ(changes, 1);
    EXPECT_EQ(node.getSourcePath(), folder.string());

    node.setSettings("x", SortBy::Random, 2, 3, 4, true, true);
    EXPECT_EQ(changes, 2);
    gcstring path;
    SortBy sortBy{};
    unsigned long images = 0;
    unsigned long frames = 0;
    unsigned long runs = 0;
    bool continuously = false;
    bool absolute = false;
    node.getSettings(path, sortBy, images, frames, runs, continuously, absolute);
    EXPECT_EQ(path, "x");
    EXPECT_EQ(sortBy, SortBy::Random);
    EXPECT_EQ(std::vector<unsigned long>({images, frames, runs}), std::vector<unsigned long>({2, 3, 4}));
    EXPECT_TRUE(continuously && absolute);
    EXPECT_TRUE(free);
    auto& integer = dynamic_cast<GenApi::IInteger&>(*map().GetNode("FramesPerSecond"));
    EXPECT_EQ(integer.GetValue(), 3);
    EXPECT_EQ(integer.GetMax(), 500);
    EXPECT_ANY_THROW(integer.SetValue(501));
}

TEST_F(ImageLoadingTest, SavesPathsRelativeToTheRecipe)
{
    std::filesystem::create_directories(folder / "recipes");
    std::filesystem::create_directories(folder / "images");
    const std::string images = folder / "images";
    struct Row
    {
        const char* name;
        std::string path;
        bool absolute;
        std::string location;
        std::string stored;
    };
    const Row rows[] = {
        {"beside the recipe", images, false, folder / "recipes", "../images"},
        {"as absolute path", images, true, folder / "recipes", images},
        {"in a recipe never saved", images, false, "", images},
        {"of a folder that is gone", folder / "gone", false, folder / "recipes", folder / "gone"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        node.setSettings(row.path, SortBy::Descending, 2, 3, 4, true, row.absolute);
        const auto store = std::make_shared<FakeSettings>();
        store->location = row.location;
        node.saveSettings(store);
        EXPECT_EQ(store->order, (std::vector<gcstring>{"sourcePath", "sortBy", "numberOfImages", "framesPerSecond",
                                                       "numberOfRuns", "runContinuously"}));
        EXPECT_EQ(std::get<gcstring>(store->values["sourcePath"]), row.stored);
        EXPECT_EQ(std::get<std::uint64_t>(store->values["sortBy"]), 1U);

        ImageLoading other(nullptr);
        int changes = 0;
        other.getSettingsChangedSignal().connect([&] { ++changes; });
        other.loadSettings(store);
        EXPECT_EQ(changes, 1);
        EXPECT_EQ(other.getSourcePath(), row.path);
        EXPECT_EQ(other.getStoreAbsolutePath(), row.stored == row.path);
        EXPECT_EQ(other.getSortBy(), SortBy::Descending);
        EXPECT_EQ(other.getNumberOfImages() * 100 + other.getFramesPerSecond() * 10 + other.getNumberOfRuns(),
                  234U);
        EXPECT_TRUE(other.getRunContinuously());
        if (!row.location.empty()) {
            EXPECT_EQ(std::filesystem::current_path(), row.location);
        }
        other.loadSettings(store);
        EXPECT_EQ(changes, 1) << "the same settings once more";
    }
}

TEST_F(ImageLoadingTest, LoadsWhatTheStoreHolds)
{
    const auto store = std::make_shared<FakeSettings>();
    store->values["numberOfRuns"] = std::uint64_t{7};
    node.loadSettings(store);
    EXPECT_EQ(node.getSourcePath(), "");
    EXPECT_EQ(node.getNumberOfRuns(), 7U);
    EXPECT_EQ(node.getFramesPerSecond(), 500U);

    store->values["sourcePath"] = gcstring("relative");
    node.loadSettings(store);
    EXPECT_EQ(node.getSourcePath(), "relative");
    EXPECT_TRUE(node.getStoreAbsolutePath()) << "no base path is known";
    store->location = folder.string();
    node.loadSettings(store);
    EXPECT_EQ(node.getSourcePath(), "") << "the folder does not exist";
    EXPECT_FALSE(node.getStoreAbsolutePath());

    store->values["sortBy"] = std::uint64_t{3};
    EXPECT_THROW(node.loadSettings(store), GenICam::InvalidArgumentException);
    store->values.erase("sortBy");
    store->values["numberOfImages"] = std::uint64_t{3};
    store->values["framesPerSecond"] = std::uint64_t{0};
    int changes = 0;
    node.getSettingsChangedSignal().connect([&] { ++changes; });
    EXPECT_THROW(node.loadSettings(store), GenICam::RuntimeException);
    EXPECT_EQ(node.getNumberOfImages(), 3U) << "what was read before";
    EXPECT_EQ(changes, 1);
    store->location = folder / "missing";
    EXPECT_THROW(node.loadSettings(store), std::filesystem::filesystem_error);
    EXPECT_EQ(refusalOf<GenICam::InvalidArgumentException>([&] { node.loadSettings(nullptr); }),
              "ptrSettings is a nullptr");
    EXPECT_EQ(refusalOf<GenICam::InvalidArgumentException>([&] { node.saveSettings(nullptr); }),
              "ptrSettings is a nullptr");

    folder.addImages({"a.png"});
    node.setSourcePath(folder.string());
    node.start({});
    EXPECT_EQ(refusalOf<GenICam::RuntimeException>([&] { node.loadSettings(store); }),
              "Node must be in stopped state to deserialize.");
    EXPECT_EQ(refusalOf<GenICam::RuntimeException>([&] { node.saveSettings(store); }),
              "Node must be in stopped state to serialize.");
    EXPECT_EQ(node.getSourcePath(), folder.string());
}

}  // namespace
}  // namespace Plugin::NivexStageletPackageBase::Test

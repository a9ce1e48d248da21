// Recipes, packages and sources that are not in order: nothing starts, and the user is told what and where.
#include "stagelettest.h"

namespace SystemTest {

namespace {

struct ExpectedFault
{
    const char* at;  ///< What stands in the recipe where the fault is; once.
    std::vector<const char*> parts;
};

/// "LINE:COLUMN" of a text that occurs once.
std::string positionOf(const std::string& text, const std::string& part)
{
    EXPECT_EQ(countOf(text, part), 1U) << part;
    const std::string before = text.substr(0, text.find(part));
    const auto lineStart = before.rfind('\n');
    return std::to_string(countOf(before, "\n") + 1) + ":" +
           std::to_string(before.size() - (lineStart == std::string::npos ? 0 : lineStart + 1) + 1);
}

std::string lineWith(const std::string& text, const std::string& start)
{
    const auto at = ("\n" + text).find("\n" + start);
    return at == std::string::npos ? "" : text.substr(at, text.find('\n', at) - at);
}

class BadInputTest : public StageletTest
{
protected:
    /// Both commands give the same exit code and the same text, which they return; neither writes anything.
    std::string refuse(const std::string& recipe, int code, const std::vector<std::string>& options = {}) const
    {
        std::vector<std::string> texts;
        for (const char* verb : {"check", "run"}) {
            std::vector<std::string> arguments = {verb, recipe};
            arguments.insert(arguments.end(), options.begin(), options.end());
            if (*verb == 'r') arguments.emplace_back("--for=60s");
            const Ended ended = stagelet(arguments);
            EXPECT_EQ(ended.code, code) << verb << ": " << ended.err;
            EXPECT_EQ(ended.out, "");
            texts.push_back(ended.err);
        }
        EXPECT_EQ(texts[0], texts[1]);
        EXPECT_THAT(listFiles(out()), testing::IsEmpty());
        return texts[0];
    }
};

}  // namespace

TEST_F(BadInputTest, AllFaultsOfARecipeAreToldInOneGo)
{
    const std::string text = R"({ "Recipe": 1, "Author": "me",
  "Nodes": [
    { "Name": "Loader", "Module": "ImageLoading",
      "Settings": { "sourcePath": "images", "framesPerSecond": "fast", "runContinuously": "no" } },
    { "Name": "Second", "Module": "ImageLoadng", "Setings": {} },
    { "Name": "Grey", "Module": "ImageFormatConverter",
      "Parameters": [ "OutputPixelFormat = Mono9", "MaxNumThreads = 65" ] },
    { "Name": "Colour", "Module": "ImageFormatConverter" },
    { "Name": "Writer", "Module": "DataWriter",
      "Parameters": [ "NumInputDataPins = 2", "OutputFolderNam = out", "RecordPeriod = x", "@Camera/Gain = 1" ] },
    { "Name": "Eye", "Module": "Camera",
      "Settings": { "DeviceProperties": {"Key": "SerialNumber", "Value": "0815-0001"},
                    "EventConfiguration": null, "ChunkPinConfigurations": "Number.Type=Integer" } }
  ],
  "Connections": [
    "Loader.Image -> Writer.Data1",
    "Loader.Image -> Writer.Data3",
    "Loader.Imag -> Writer.Data2",
    "Loder.Image -> Writer.Data2",
    "Loader.RunCount -> Writer.Data1",
    "Loader.ImagePath -> Grey.Image",
    "Grey.Image -> Colour.Image",
    "Colour.Image -> Grey.Image"
  ]
})";
    const ExpectedFault expected[] = {
        {"\"Author\"", {"recipe: ", "The key \"Author\" is not known."}},
        {"\"fast\"", {"node \"Loader\": ", "framesPerSecond", "\"fast\""}},
        {"\"no\"", {"node \"Loader\": ", "runContinuously", "\"no\""}},
        {"\"ImageLoadng\"", {"node \"Second\": ", "Did you mean \"ImageLoading\"?"}},
        {"\"Setings\"", {"node \"Second\": ", "Did you mean \"Settings\"?"}},
        {"\"OutputPixelFormat = Mono9\"", {"node \"Grey\": ", "Did you mean \"Mono8\"?"}},
        {"\"MaxNumThreads = 65\"", {"node \"Grey\": ", "\"65\"", "1 to 64"}},
        {"\"OutputFolderNam = out\"", {"node \"Writer\": ", "Did you mean \"OutputFolderName\"?"}},
        {"\"RecordPeriod = x\"", {"node \"Writer\": ", "\"x\""}},
        {"\"@Camera/Gain = 1\"", {"node \"Writer\": ", "\"@Camera\"", "@Stagelet"}},
        {"{\"Key\": ", {"\"DeviceProperties\" is an object; wanted is a list"}},
        {"null", {"\"EventConfiguration\" is null; wanted is a list"}},
        {"\"Number.Type=Integer\"", {"\"ChunkPinConfigurations\" is \"Number.Type=Integer\"; wanted is a list"}},
        {"\"Loader.Image -> Writer.Data3\"", {"no input \"Data3\"", "Did you mean \"Data"}},
        {"\"Loader.Imag -> Writer.Data2\"", {"no output \"Imag\"", "Did you mean \"Image\"?"}},
        {"\"Loder.Image -> Writer.Data2\"", {"no node \"Loder\"", "Did you mean \"Loader\"?"}},
        {"\"Loader.RunCount -> Writer.Data1\"", {"\"Loader.Image -> Writer.Data1\" already"}},
        {"\"Loader.ImagePath -> Grey.Image\"", {"String", "Image"}},
        {"\"Colour.Image -> Grey.Image\"", {"\"Loader.ImagePath -> Grey.Image\" already"}},
    };
    const std::string recipe = writeRecipe(text).string();
    const std::string told = refuse(recipe, 3);
    for (const ExpectedFault& fault : expected) {
        const std::string line = lineWith(told, recipe + ":" + positionOf(text, fault.at) + ": ");
        EXPECT_NE(line, "") << "nothing is told of " << fault.at;
        for (const char* part : fault.parts)
            EXPECT_THAT(line, HasSubstr(part));
    }
    EXPECT_THAT(told, HasSubstr("\nrecipe invalid: " + recipe + ": " + std::to_string(std::size(expected)) +
                                " faults\ntry: "))
        << told;
}

TEST_F(BadInputTest, FaultsOfTheWholeRecipe)
{
    const auto nested = [](int depth) {
        return "{\"Recipe\": 1, \"Nodes\": [{\"Name\": \"L\", \"Module\": \"ImageLoading\", \"Settings\": "
               "{\"x\": " +
               std::string(static_cast<std::size_t>(depth), '[') +
               std::string(static_cast<std::size_t>(depth), ']') + "}}]}";
    };
    const auto writer = [](const std::string& name, const std::string& more) {
        return "{\"Recipe\": 1, \"Nodes\": [{\"Name\": \"" + name + "\", \"Module\": \"ImageFormatConverter\"}]" +
               more + "}";
    };
    const struct
    {
        const char* name;
        std::string text;
        std::vector<const char*> parts;
    } cases[] = {
        {"empty", "", {":1:1: "}},
        {"no JSON", "Recipe: 1\n", {":1:1: "}},
        {"ends early", "{\"Recipe\": 1,\n \"Nodes\": [", {":2:"}},
        {"comma too many", "{\"Recipe\": 1,\n \"Nodes\": [],\n}", {":3:1: "}},
        {"no UTF-8", "{\"Recipe\": 1,\n \"Nodes\": [\"\xff\"]}", {":2:"}},
        {"another version", "{\"Recipe\": 2, \"Nodes\": []}", {":1:12: ", "must be 1"}},
        {"name taken", writer("A\", \"Module\": \"DataWriter\"}, {\"Name\": \"A", ""), {":1:", "already"}},
        {"to itself", writer("A", R"(, "Connections": ["A.Image -> A.Image"])"), {"A.Image -> A.Image", "cycle"}},
        {"a longer way round",
         writer("A\", \"Module\": \"ImageFormatConverter\"}, {\"Name\": \"B", R"(,
          "Connections": ["A.Image -> B.Image",
           "B.Image -> A.Image"])"),
         {":3:12: ", "\"B.Image -> A.Image\"", "cycle", ": 1 fault\n"}},
        {"too deep", nested(65), {"64"}},
        {"much too deep", nested(1000000), {"64"}},
        {"too long",
         "{\"Recipe\": 1, \"Nodes\": [" + std::string(16U << 20U, ' ') + "]}",
         {"more than 16777216 bytes"}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        const std::string recipe = writeRecipe(c.text).string();
        const std::string told = refuse(recipe, 3);
        EXPECT_THAT(told, HasSubstr(recipe + ":"));
        for (const char* part : c.parts)
            EXPECT_THAT(told, HasSubstr(part));
    }
    EXPECT_THAT(refuse((folder / "none.json").string(), 3), HasSubstr("none.json: "));
    EXPECT_THAT(refuse(folder.string(), 3), HasSubstr("recipe not read: " + folder.string()));
}

TEST_F(BadInputTest, PackagesThatCannotBeUsed)
{
    saveNumbered(1, 8);
    const std::string recipe = writeRecipe(loadAndWrite().dump()).string();
    const std::string fakes = STAGELET_FAKE_DIR "/libfakepackage_";
    std::ofstream(folder / "text.so") << "This is no library.";
    const struct
    {
        std::string file;
        std::vector<const char*> parts;
    } cases[] = {
        {(folder / "none.so").string(), {"No such file"}},
        {(folder / "text.so").string(), {}},
        {folder.string(), {}},
        {STAGELET_LIB_DIR "/libGCBase.so", {"get_InterfaceVersion"}},
        {fakes + "version.so", {"version", "3", "2"}},
        {fakes + "manifest_broken.so", {"manifest"}},
        {fakes + "entry_missing.so", {"destroy_Sink"}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.file);
        const std::string told = refuse(recipe, 4, {"--package", c.file});
        EXPECT_TRUE(told.starts_with("package not loaded: " + c.file + ": ")) << told;
        for (const char* part : c.parts)
            EXPECT_THAT(told, HasSubstr(part));
        EXPECT_EQ(stagelet({"modules", "--package", c.file}).code, 4);
    }
    // The package is in order, but the recipe needs another one.
    EXPECT_THAT(refuse(recipe, 3, {"--package", fakes + "good.so"}),
                HasSubstr("There is no module \"ImageLoading\""));
}

// The recipe is in order, but a node refuses to start: the others are stopped again.
TEST_F(BadInputTest, SourcesWithoutPictures)
{
    std::ofstream(images() / "notes.txt") << "no picture";
    fs::create_directory(images() / "folder.png");
    constexpr const char* none = "No images found in specified image source path.";
    const std::pair<const char*, const char*> cases[] = {{"images", none},
                                                         {"images/notes.txt", none},
                                                         {"nowhere", none},
                                                         {"", "No image source path was specified."}};
    for (const auto& [path, text] : cases) {
        const RunEnded ended =
            run(loadAndWrite(), {"--for", "60s", "--set", std::string("Loader.SourcePath=") + path});
        EXPECT_EQ(ended.code, 1) << path;
        EXPECT_THAT(lineWith(ended.err, "recipe not started: "),
                    HasSubstr(std::string("Loader: The node cannot ") + "be started: " + text));
        EXPECT_THAT(listFiles(out()), testing::IsEmpty());
    }
    EXPECT_THAT(run(loadAndWrite({{"sourcePath", "nowhere"}}), {"--for", "60s"}).err,
                HasSubstr("Could not find source path 'nowhere'"));
}

}  // namespace SystemTest

// A package of another house: built outside this tree against an installed one, and run by it.
#include "runtime/package.h"

#include <dlfcn.h>

#include <regex>
#include <sstream>

#include "genapi/genapi.h"

#include "core/inodemapcontainer.h"
#include "core/simplenode.h"
#include "runtime/jsonsettings.h"
#include "stagelettest.h"

namespace SystemTest {

namespace {

/// A bright line of three pixels that falls to the right.
CNivexImage fallingLine()
{
    CNivexImage image = solidImage(EPixelType::Mono8, 8, 8, 10);
    for (int i = 2; i < 5; ++i)
        static_cast<unsigned char*>(image.GetBuffer())[9 * i] = 200;
    return image;
}

/// A picture of 40 by 30 with a bright rectangle inside, a larger one at the right border and a single bright
/// pixel.
CNivexImage twoRectangles()
{
    CNivexImage image = solidImage(EPixelType::Mono8, 40, 30, 10);
    auto* pixels = static_cast<unsigned char*>(image.GetBuffer());
    const auto fill = [pixels](int left, int top, int width, int height, int value) {
        for (int y = top; y < top + height; ++y)
            std::memset(pixels + y * 40 + left, value, static_cast<std::size_t>(width));
    };
    fill(5, 4, 10, 4, 200);
    fill(20, 20, 20, 6, 250);
    fill(0, 29, 1, 1, 255);
    return image;
}

class PackageTest : public StageletTest
{
protected:
    /// Runs a program that has to succeed.
    void must(const std::vector<std::string>& command) const
    {
        const Ended ended = Program(command, folder / "logs").wait();
        ASSERT_EQ(ended.code, 0) << command.at(1) << "\n" << ended.out << ended.err;
    }

    /// A recipe that finds blobs in "images" and writes every output but the pictures into "out/S/N.txt", one file
    /// per picture.
    static json findBlobs()
    {
        json recipe = loadAndWrite({{"numberOfRuns", 1}},
                                   {"MediaType = TXT", "FileName = {RecordIndex}.txt", "NumInputDataPins = 11"});
        recipe["Nodes"].push_back({{"Name", "Blobs"},
                                   {"Module", "BlobFinder"},
                                   {"Settings", {{"Polarity", 0}, {"Threshold", 255}, {"MinArea", 2}}},
                                   {"Parameters", {"Threshold = 150"}}});
        recipe["Connections"] = {"Loader.Image -> Blobs.Image"};
        int pin = 0;
        for (const char* name : {"Count", "Found", "MeanBrightness", "Label", "Centers", "BoundingBoxes",
                                 "Ellipses", "LargestCircle", "LargestLine", "LargestRegion", "Transformation"})
            recipe["Connections"].push_back("Blobs." + std::string(name) + " -> Writer.Data" +
                                            std::to_string(++pin));
        return recipe;
    }
};

}  // namespace

TEST_F(PackageTest, IsBuiltAgainstTheInstalledTreeAndRuns)
{
    const std::string installed = (folder / "first").string();
    ASSERT_NO_FATAL_FAILURE(must({STAGELET_CMAKE, "--install", STAGELET_BUILD_DIR, "--prefix", installed}));
    const std::string moved = (folder / "moved").string();
    fs::rename(installed, moved);
    fs::copy(STAGELET_SOURCE_DIR "/examples/package", folder / "package", fs::copy_options::recursive);
    const std::string build = (folder / "build").string();
    ASSERT_NO_FATAL_FAILURE(
        must({STAGELET_CMAKE, "-S", (folder / "package").string(), "-B", build, "-G", STAGELET_GENERATOR,
              "-DCMAKE_MAKE_PROGRAM=" STAGELET_MAKE_PROGRAM, "-DCMAKE_CXX_COMPILER=" STAGELET_CXX,
              "-DCMAKE_CXX_FLAGS=-Wall -Wextra -Werror " STAGELET_PACKAGE_FLAGS, "-DCMAKE_PREFIX_PATH=" + moved}));
    ASSERT_NO_FATAL_FAILURE(must({STAGELET_CMAKE, "--build", build}));

    CImagePersistence::Save(EImageFileFormat::Bmp, (images() / "1.bmp").string(), twoRectangles());
    CImagePersistence::Save(EImageFileFormat::Bmp, (images() / "2.bmp").string(),
                            solidImage(EPixelType::RGB8Packed, 8, 8, 149));
    std::ofstream(images() / "3.bmp") << "no picture";
    CImagePersistence::Save(EImageFileFormat::Bmp, (images() / "4.bmp").string(), fallingLine());
    const fs::path recipe = writeRecipe(findBlobs().dump());
    const RunEnded ended = end(
        Program({moved + "/bin/stagelet", "run", recipe.string(), "--stats", "json", "--updates", "4", "--package",
                 moved + "/lib/libNivexStageletPackageBase.so", "--package", build + "/libBlobPackage.so"},
                folder / "logs"));
    ASSERT_EQ(ended.code, 0) << ended.err;
    EXPECT_EQ(ended.lost("load_failed"), 1U);
    EXPECT_EQ(ended.node("Blobs").at("lost").value("invalid_input", 0), 1);
    const auto written = [this](const char* name) { return readFile(out() / "S" / name); };
    EXPECT_EQ(written("1.txt"),
              "2\n1\n237.5\n2 blobs\n"
              "Data5 Array[2]\nX=10;Y=6\nX=30;Y=23\n\n"
              "Data6 Array[2]\n"
              "Width=10;Height=4;Center.X=10;Center.Y=6;Rotation=0\n"
              "Width=20;Height=6;Center.X=30;Center.Y=23;Rotation=0\n\n"
              // A rectangle's side is the square root of 12 times its deviation, an ellipse's radius twice that.
              "Data7 Array[2]\n"
              "Radius1=5.7735;Radius2=2.3094;Rotation=0;Center.X=10;Center.Y=6\n"
              "Radius1=11.547;Radius2=3.4641;Rotation=0;Center.X=30;Center.Y=23\n\n"
              "Radius=6.18039;Center.X=30;Center.Y=23\n"
              "A.X=18.453;A.Y=23;B.X=41.547;B.Y=23\n"
              "ReferenceSize.Width=40;ReferenceSize.Height=30;BoundingBox.Left=20;BoundingBox.Top=20;"
              "BoundingBox.Width=20;BoundingBox.Height=6\n"
              "1;0;-30\n0;1;-23\n0;0;1\n");
    EXPECT_EQ(written("2.txt"),
              "0\n0\n0\n0 blobs\nData5 Array[0]\n\nData6 Array[0]\n\nData7 Array[0]\n\n1;0;0\n0;1;0\n0;0;1\n");
    EXPECT_EQ(countOf(written("3.txt"), "Input image is invalid.\n"), 11U);
    // Angles go counterclockwise as seen; the matrix takes the line to the x-axis.
    for (const char* part : {";Rotation=-0.785398;", "A.X=1.81675;A.Y=1.81675;B.X=5.18325;B.Y=5.18325\n",
                             "\n0.707107;0.707107;-4.94975\n-0.707107;0.707107;"})
        EXPECT_THAT(written("4.txt"), HasSubstr(part));
}

TEST_F(PackageTest, SavedSettingsMakeAnotherNodeEqual)
{
    namespace Core = Nivex::DataProcessing::Core;
    using namespace Nivex::DataProcessing::Runtime;
    const std::string library = STAGELET_LIB_DIR "/libBlobPackage.so";
    const auto isLoaded = [&library] {
        void* handle = dlopen(library.c_str(), RTLD_NOW | RTLD_NOLOAD);
        if (handle) dlclose(handle);
        return handle != nullptr;
    };
    {
        const Package package(library);
        const NodeHandle first = package.createNode("BlobFinder", nullptr);
        const NodeHandle second = package.createNode("BlobFinder", nullptr);
        const auto map = [](const NodeHandle& node) {
            return dynamic_cast<Core::INodeMapContainer&>(*node).getNodeMap("@Stagelet");
        };
        const auto valueOf = [](const GenApi::CNodeMapRef& nodes, const char* name) {
            return dynamic_cast<GenApi::IValue&>(*nodes.GetNode(name)).ToString().str();
        };
        const std::vector<std::pair<const char*, const char*>> values = {
            {"Polarity", "Dark"}, {"Threshold", "7"}, {"MinArea", "2147483647"}};
        for (const auto& [name, value] : values) {
            EXPECT_NE(valueOf(map(second), name), value);  // reads it into the map, which has to let go of it
            dynamic_cast<GenApi::IValue&>(*map(first).GetNode(name)).FromString(value);
        }
        const auto store = std::make_shared<JsonSettings>();
        dynamic_cast<Core::SimpleNode&>(*first).saveSettings(store);
        dynamic_cast<Core::SimpleNode&>(*second).loadSettings(store);
        for (const auto& [name, value] : values)
            EXPECT_EQ(valueOf(map(second), name), value) << store->toText();
        EXPECT_TRUE(isLoaded());
    }
    EXPECT_FALSE(isLoaded());
}

TEST_F(PackageTest, RefusesSettingsOutOfRange)
{
    for (const auto& [name, value] : std::vector<std::pair<std::string, std::int64_t>>{
             {"Polarity", 2}, {"Polarity", 0x100000000}, {"Threshold", 256}, {"Threshold", -1}, {"MinArea", 0}})
    {
        json recipe = findBlobs();
        recipe["Nodes"].back()["Settings"] = {{name, value}};
        const Ended ended = stagelet({"check", writeRecipe(recipe.dump()).string(), "--package",
                                      STAGELET_LIB_DIR "/libNivexStageletPackageBase.so", "--package",
                                      STAGELET_LIB_DIR "/libBlobPackage.so"});
        EXPECT_EQ(ended.code, 3) << ended.err;
        EXPECT_THAT(ended.err, HasSubstr(name + " is " + std::to_string(value) + " but must "));
    }
}

TEST_F(PackageTest, InspectionSortsPicturesByTheirBlobs)
{
    fs::copy(STAGELET_SOURCE_DIR "/examples/images", images());
    fs::copy(STAGELET_SOURCE_DIR "/examples/inspect.json", folder);
    const RunEnded ended = run(folder / "inspect.json",
                               {"--until-idle", "--package", STAGELET_LIB_DIR "/libNivexStageletPackageBase.so",
                                "--package", STAGELET_LIB_DIR "/libBlobPackage.so"});
    ASSERT_EQ(ended.code, 0) << ended.err;
    EXPECT_EQ(ended.finished(), 24U);

    // Each picture has lines in the table or is kept as a file, and none has both.
    std::istringstream table(readFile(sessionOf(out(), "Inspection") / "blobs.csv"));
    std::string line;
    ASSERT_TRUE(std::getline(table, line));
    EXPECT_EQ(line, "picture,blob,x,y,radius1,radius2,degrees");
    std::vector<std::string> pictures;
    while (std::getline(table, line)) {
        EXPECT_TRUE(std::regex_match(line, std::regex(R"(\d+,\d+(,-?\d+\.\d\d){5})"))) << line;
        const std::string number = line.substr(0, line.find(','));
        if (pictures.empty() || pictures.back() != number) pictures.push_back(number);
    }
    EXPECT_GT(pictures.size(), 0U);
    EXPECT_LT(pictures.size(), 24U);
    for (const std::string& file : listFiles(sessionOf(out(), "Empty")))
        pictures.push_back(file.substr(8, file.size() - 12));  // of "picture_N.png"
    std::vector<std::string> all;
    for (int i = 1; i <= 24; ++i)
        all.push_back(std::to_string(i));
    EXPECT_THAT(pictures, testing::UnorderedElementsAreArray(all));
}

}  // namespace SystemTest

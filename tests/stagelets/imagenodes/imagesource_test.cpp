// What a source path yields, and in which order.
#include "imageloading/imagesource.h"

#include <gmock/gmock.h>

#include <locale>

#include "support.h"

namespace Plugin::NivexStageletPackageBase::Test {
namespace {

TEST(ImageSource, HoldsTheImageFilesOfAFolder)
{
    namespace fs = std::filesystem;
    const TemporaryFolder folder;
    std::vector<gcstring> expected;
    for (const char* name :
         {"a.png", "B.PNG", "c.Jpg", "d.jpeg", "e.bmp", "f.tif", "g.tiff", "h.dib", "i.jpe", "two.dots.png"})
    {
        folder.addText(name);
        expected.emplace_back(folder / name);
    }
    for (const char* name : {"png", ".png", "text.txt", "noending.", "image.pngx"})
        folder.addText(name);
    fs::create_directory(folder / "folder.png");
    fs::create_directory(folder / "sub");
    folder.addText("sub/inside.png");
    fs::create_symlink(folder / "missing.png", folder / "dangling.png");
    fs::create_symlink(folder / "folder.png", folder / "tofolder.png");
    fs::create_symlink(folder / "a.png", folder / "link.png");
    expected.emplace_back(folder / "link.png");

    EXPECT_THAT(scanImageSource(folder.string()), testing::UnorderedElementsAreArray(expected));
    EXPECT_EQ(scanImageSource(folder / "a.png"), std::vector<gcstring>{folder / "a.png"});
    EXPECT_TRUE(scanImageSource(folder / "text.txt").empty());
    EXPECT_TRUE(scanImageSource(folder / "missing.png").empty());
    EXPECT_TRUE(scanImageSource(folder / "dangling.png").empty());
    EXPECT_TRUE(scanImageSource(folder / "sub/../missing").empty());
    EXPECT_TRUE(scanImageSource("").empty());
}

TEST(ImageSource, IsSortedByTheGlobalLocale)
{
    struct Backwards : std::collate<char>
    {
        int do_compare(const char* low1, const char* high1, const char* low2, const char* high2) const override
        {
            return -std::collate<char>::do_compare(low1, high1, low2, high2);
        }
    };
    std::vector<gcstring> paths = {"/b/1", "/a/2", "/a/10", "/B/0"};
    orderImages(paths, SortBy::Ascending);
    EXPECT_EQ(paths, (std::vector<gcstring>{"/B/0", "/a/10", "/a/2", "/b/1"}));
    orderImages(paths, SortBy::Descending);
    EXPECT_EQ(paths, (std::vector<gcstring>{"/b/1", "/a/2", "/a/10", "/B/0"}));
    const std::locale previous = std::locale::global(std::locale(std::locale(), new Backwards));
    orderImages(paths, SortBy::Descending);
    std::locale::global(previous);
    EXPECT_EQ(paths, (std::vector<gcstring>{"/B/0", "/a/10", "/a/2", "/b/1"}));
}

TEST(ImageSource, HasAnotherOrderWithEachShuffle)
{
    std::vector<gcstring> sorted;
    for (char name = 'a'; name <= 'z'; ++name)
        sorted.emplace_back(1, name);
    std::set<std::vector<gcstring>> orders;
    for (int i = 0; i < 4; ++i) {
        auto paths = sorted;
        orderImages(paths, SortBy::Random);
        orders.insert(paths);
        EXPECT_THAT(paths, testing::UnorderedElementsAreArray(sorted));
    }
    EXPECT_EQ(orders.size(), 4U) << "from the same start";
}

}  // namespace
}  // namespace Plugin::NivexStageletPackageBase::Test

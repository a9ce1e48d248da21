#include <gtest/gtest.h>

#include <map>
#include <sstream>
#include <unordered_set>

#include "gcbase/exception.h"
#include "gcbase/gcstring.h"

using namespace GenICam;

namespace {

TEST(Exceptions, TellTextKindAndSource)
{
    const int line = __LINE__ + 2;
    try {
        GENICAM_THROW(OutOfRangeException, "Value %d exceeds \"%s\".", 7, "Max");
    } catch (const GenericException& failure) {
        EXPECT_STREQ(failure.GetDescription(), "Value 7 exceeds \"Max\".");
        EXPECT_STREQ(failure.GetSourceFileName(), "gcbase/gcbase_test");
        EXPECT_EQ(failure.GetSourceLine(), line);
        EXPECT_NE(std::string(failure.what()).find("OutOfRangeException thrown (file 'gcbase/gcbase_test', line "),
                  std::string::npos);
        EXPECT_NE(dynamic_cast<const OutOfRangeException*>(&failure), nullptr);
    }
}

TEST(SourceUnitName, IsTheLastFolderAndTheNameWithoutEnding)
{
    const std::pair<const char*, const char*> cases[] = {{"/a/b/camera/camera.cpp", "camera/camera"},
                                                         {"utils/cowptr_impl.h", "utils/cowptr_impl"},
                                                         {"plain.cpp", "plain"},
                                                         {"/root.cpp", "/root"},
                                                         {"x/noending", "x/noending"},
                                                         {"", ""},
                                                         {nullptr, ""}};
    for (const auto& [file, name] : cases)
        EXPECT_EQ(sourceUnitName(file), name);
}

TEST(FormatText, MakesTextsOfAnyLength)
{
    const std::string empty;
    EXPECT_EQ(formatText("%s", empty.c_str()), "");
    EXPECT_EQ(formatText("%5.2f|%lld", 1.5, 1LL << 40), " 1.50|1099511627776");
    const std::string large(100000, 'x');
    EXPECT_EQ(formatText("%s!", large.c_str()), large + "!");
}

TEST(Gcstring, TreatsNullAsEmptyAndKeepsZeroBytes)
{
    const char* const none = nullptr;
    EXPECT_TRUE(gcstring(none).empty());
    EXPECT_TRUE(gcstring(none) == "" && gcstring("") == none && !(gcstring("x") == none));
    EXPECT_EQ("a" + gcstring("b") + none + 'c', "abc");
    const gcstring zero("a\0b", 3);
    EXPECT_EQ(zero.size(), 3U);
    EXPECT_STREQ(zero.c_str(), "a");
    EXPECT_NE(zero, "a");
    EXPECT_LT(gcstring("a"), zero);
    EXPECT_NE(std::hash<gcstring>()(zero), std::hash<gcstring>()("a"));
    EXPECT_EQ(zero.find('b'), 2U);
    EXPECT_EQ(zero.substr(2), "b");
    EXPECT_EQ(zero.substr(9), "");
}

TEST(Gcstring, IsOrderedByUnsignedBytesInContainersToo)
{
    EXPECT_LT(gcstring("z"), gcstring("\xC3\xA4"));
    EXPECT_GE(gcstring("b"), gcstring("ab"));
    const std::map<std::pair<gcstring, int>, int> pairs = {{{"b", 1}, 3}, {{"a", 2}, 2}, {{"a", 1}, 1}};
    int position = 0;
    for (const auto& [key, expected] : pairs)
        EXPECT_EQ(expected, ++position);
    std::ostringstream stream;
    stream << gcstring("a\0b", 3);
    EXPECT_EQ(stream.str().size(), 3U);
}

}  // namespace

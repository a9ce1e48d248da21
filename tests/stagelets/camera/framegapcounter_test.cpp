#include "camera/framegapcounter.h"

#include <gtest/gtest.h>

#include <vector>

namespace Plugin::NivexStageletPackageBase::Test {
namespace {

TEST(FrameGapCounterTest, CountsWhatIsMissingBeforeEachFrame)
{
    using Numbers = std::vector<std::uint64_t>;
    constexpr std::uint64_t top = ~std::uint64_t{0};
    struct Row
    {
        const char* name;
        std::uint64_t first;
        Numbers numbers;
        Numbers missing;
    };
    const Row rows[] = {
        {"no gap", 1, {1, 2, 3}, {0, 0, 0}},
        {"gaps", 1, {1, 3, 4, 10}, {0, 1, 0, 5}},
        {"a gap at the start", 1, {4, 5}, {3, 0}},
        {"a start that may be anywhere", 0, {4, 5, 7}, {0, 0, 1}},
        {"another first number", 0x10000, {0x10000, 0x10002}, {0, 1}},
        {"short numbers start again at 1", 0, {65534, 65535, 1, 2}, {0, 0, 0, 0}},
        {"with a gap over the end", 0, {65533, 3}, {0, 4}},
        {"no short numbers", 0, {65535, 65536, 65538}, {0, 0, 1}},
        {"a camera that counts anew", 1, {1, 2, 30000, 1, 3}, {0, 0, 29997, 0, 1}},
        {"one that counted far", 0, {70000, 1, 2}, {0, 0, 0}},
        {"the same number again", 1, {1, 1, 2}, {0, 0, 0}},
        {"no frame number at all", 1, {0, 0, 0}, {0, 0, 0}},
        {"results without number are no gap", 1, {1, 0, 3, 0, 0, 7}, {0, 0, 0, 0, 0, 1}},
        {"more of them than gap", 1, {1, 0, 0, 2, 4}, {0, 0, 0, 0, 1}},
        {"a senseless number", 1, {1, top, 2, 3}, {0, 0, 0, 0}},
        {"the end of the long numbers", 0, {top - 2, top}, {0, 1}},
        {"the largest gap", 1, {1, 0x80000001}, {0, 0x7FFFFFFF}},
        {"beyond it", 1, {1, 0x80000002}, {0, 0}},
    };
    FrameGapCounter counter;
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        counter.restart(row.first);
        Numbers missing;
        for (const std::uint64_t number : row.numbers) {
            missing.push_back(counter.count(number));
        }
        EXPECT_EQ(missing, row.missing);
    }
}

}  // namespace
}  // namespace Plugin::NivexStageletPackageBase::Test

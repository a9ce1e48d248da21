#include "units.h"

#include <gtest/gtest.h>

namespace Host {

using std::chrono::nanoseconds;

TEST(Units, ReadsDurations)
{
    const struct
    {
        const char* text;
        std::int64_t expected;  // 0: refused
    } cases[] = {
        {"90s", 90'000'000'000},
        {"5m", 300'000'000'000},
        {"2h", 7'200'000'000'000},
        {"250ms", 250'000'000},
        {"1.5s", 1'500'000'000},
        {"7us", 7'000},
        {"1ns", 1},
        {"292y", 0},
        {"", 0},
        {"s", 0},
        {"5", 0},
        {"5 s", 0},
        {"0s", 0},
        {"-1s", 0},
        {"1e3s", 0},
        {"1.2.3s", 0},
        {"0.1ns", 0},
        {"5S", 0},
        {"99999999999999h", 0},
        {"nans", 0},
    };
    for (const auto& c : cases)
        EXPECT_EQ(parseDuration(c.text).value_or(nanoseconds(0)).count(), c.expected) << c.text;
}

TEST(Units, ReadsCounts)
{
    EXPECT_EQ(parseCount("18446744073709551615"), ~std::uint64_t{0});
    for (const char* text : {"", "-1", "+1", " 1", "1 ", "0x10", "1.0", "18446744073709551616"})
        EXPECT_FALSE(parseCount(text)) << text;
}

// Each row stands just below or at a change of unit.
TEST(Units, WritesForAPerson)
{
    const std::pair<std::int64_t, const char*> durations[] = {
        {999'000, "999 us"},
        {999'600, "1 ms"},
        {999'000'000, "999 ms"},
        {999'600'000, "1.0 s"},
        {59'900'000'000, "59.9 s"},
        {59'960'000'000, "1 min 00 s"},
        {245'000'000'000, "4 min 05 s"},
        {7'620'000'000'000, "2 h 07 min"},
    };
    for (const auto& [count, text] : durations)
        EXPECT_EQ(formatDuration(nanoseconds(count)), text);
    const std::pair<std::uint64_t, const char*> sizes[] = {
        {0, "0 B"},          {1023, "1023 B"},      {1024, "1.00 KiB"},    {10235, "10.0 KiB"},
        {102400, "100 KiB"}, {1048063, "1023 KiB"}, {1048064, "1.00 MiB"}, {~std::uint64_t{0}, "16.0 EiB"},
    };
    for (const auto& [bytes, text] : sizes)
        EXPECT_EQ(formatSize(bytes), text);
}

}  // namespace Host

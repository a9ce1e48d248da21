#include "utils/log.h"

#include <gmock/gmock.h>

#include <thread>

#include "framework/logcapture.h"
#include "utils/helper.h"

namespace {

using namespace Nivex::DataProcessing::Utils;
using testing::ElementsAre;

TEST(LogTest, EntriesReachTheSinkRendered)
{
    const ScopedLogCapture log;
    const CatId channel = getCatId("test.log.a");
    EXPECT_EQ(getCatId("test.log.a"), channel);
    EXPECT_NE(getCatId("test.log.b"), channel);
    createLogEntry(SeverityRefused, channel, "%s has %d %%", "a", 5);
    createLogEntry(SeverityTrace, nullptr, "%s", std::string(5000, 'x').c_str());
    ASSERT_EQ(log.lines().size(), 2U);
    EXPECT_EQ(log.lines()[0].severity, 3);
    EXPECT_EQ(log.lines()[0].category, "test.log.a");
    EXPECT_EQ(log.lines()[0].format, "%s has %d %%");
    EXPECT_EQ(log.lines()[0].message, "a has 5 %");
    EXPECT_EQ(log.lines()[1].message, std::string(5000, 'x'));
}

TEST(LogTest, LevelsFilterAllChannelsOrOne)
{
    ScopedLogCapture log;
    const struct
    {
        int general;
        int ofA;  ///< -1: none of its own.
        std::vector<std::string> passed;
    } cases[] = {
        {7, -1, {"a4", "a7", "b4", "b7"}}, {4, -1, {"a4", "b4"}}, {3, -1, {}},
        {4, 7, {"a4", "a7", "b4"}},        {7, 0, {"b4", "b7"}},
    };
    for (const auto& c : cases) {
        setLogLevel(c.general);
        if (c.ofA >= 0) setLogLevel("test.level.a", c.ofA);
        for (const char* name : {"a", "b"}) {
            const CatId channel = getCatId((std::string("test.level.") + name).c_str());
            createLogEntry(SeverityFailure, channel, "%s4", name);
            createLogEntry(SeverityTrace, channel, "%s7", name);
        }
        EXPECT_EQ(log.messages(), c.passed) << c.general << " " << c.ofA;
        EXPECT_EQ(getLogLevel("test.level.a"), c.ofA >= 0 ? c.ofA : c.general);
        EXPECT_EQ(isLogged(SeverityTrace, getCatId("test.level.b")), c.general == 7);
        log.clear();
    }
}

struct CountingSink : ILogSink
{
    void write(const LogEntry& entry) override
    {
        ++count;
        if (entry.message == "fail") throw std::runtime_error("sink");
    }
    std::atomic<int> count{0};
};

TEST(LogTest, ASinkThatThrowsDisturbsNobody)
{
    const ScopedLogCapture log;
    const auto sink = std::make_shared<CountingSink>();
    const auto behind = std::make_shared<CountingSink>();
    addLogSink(sink);
    addLogSink(behind);
    addLogSink(nullptr);
    testing::internal::CaptureStderr();
    createLogEntry(SeverityFailure, getCatId("test.log.a"), "fail");
    const std::string complaint = "A log sink failed on: fail\n";
    EXPECT_EQ(testing::internal::GetCapturedStderr(), complaint + complaint);
    removeLogSink(sink);
    createLogEntry(SeverityFailure, getCatId("test.log.a"), "more");
    EXPECT_EQ(sink->count, 1);
    EXPECT_EQ(behind->count, 2);
    EXPECT_THAT(log.messages(), ElementsAre("fail", "more"));
}

TEST(LogTest, TheDefaultSinkWritesLinesToStderr)
{
    setLogSink(nullptr);
    testing::internal::CaptureStderr();
    createLogEntry(SeverityFailure, getCatId("test.log.a"), "shown {}");
    createLogEntry(SeverityProgress, getCatId("test.log.a"), "not shown");
    EXPECT_THAT(testing::internal::GetCapturedStderr(),
                testing::MatchesRegex("[0-9-]+ [0-9:.]+ 4 \\[test\\.log\\.a\\] shown \\{\\}\n"));
}

TEST(LogTest, StandsManyThreads)
{
    const ScopedLogCapture log;
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t) {
        threads.emplace_back([t] {
            for (int i = 0; i < 200; ++i) {
                const auto sink = std::make_shared<CountingSink>();
                addLogSink(sink);
                createLogEntry(SeverityFailure, getCatId(("test.many." + std::to_string(i)).c_str()), "%d", t);
                EXPECT_GE(sink->count, 1);
                removeLogSink(sink);
            }
        });
    }
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(log.lines().size(), 800U);
}

TEST(HelperTest, WorksOnAsciiOnly)
{
    const struct
    {
        const char* text;
        const char* upper;
        const char* trimmed;
    } cases[] = {
        {"", "", ""},
        {" \t\r\n\v\f", " \t\r\n\v\f", ""},
        {" a b\n", " A B\n", "a b"},
        {"z{`\xC3\xA4", "Z{`\xC3\xA4", "z{`\xC3\xA4"},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(Helper::toUpper(c.text), c.upper);
        EXPECT_EQ(Helper::trim(c.text), c.trimmed);
    }
}

TEST(DateTimeTest, IsShownInUtcToTheMillisecond)
{
    const std::pair<std::int64_t, const char*> cases[] = {
        {0, "1970-01-01T00:00:00.000Z"},
        {-1, "1969-12-31T23:59:59.999Z"},
        {1709209805007999999, "2024-02-29T12:30:05.007Z"},
    };
    for (const auto& [nanoseconds, text] : cases) {
        EXPECT_EQ(DateTime(std::chrono::nanoseconds(nanoseconds)).toString(), text);
    }
    const DateTime now = DateTime::now();
    EXPECT_LE(now, DateTime::now());
    EXPECT_GT(now, DateTime(std::chrono::hours(24 * 365 * 50)));
}

}  // namespace

// What reaches stderr: whole lines, progress, and log entries, each cause once.
#include "console.h"

#include <gmock/gmock.h>
#include <unistd.h>

#include "logreporter.h"

namespace Host {

namespace {

using namespace Nivex::DataProcessing;

/// A console that writes into a pipe.
class ConsoleTest : public testing::Test
{
protected:
    ConsoleTest() { EXPECT_EQ(pipe(ends_), 0); }
    ~ConsoleTest() override
    {
        close(ends_[0]);
        if (ends_[1] >= 0) close(ends_[1]);
    }

    int getEnd() const { return ends_[1]; }
    /// All that was written.
    std::string readAll()
    {
        close(ends_[1]);
        ends_[1] = -1;
        std::string text(4096, '\0');
        text.resize(static_cast<std::size_t>(std::max<ssize_t>(read(ends_[0], text.data(), text.size()), 0)));
        return text;
    }

private:
    int ends_[2] = {-1, -1};
};

void log(LogReporter& reporter, std::string_view format, std::string_view message, const char* category = "a.b")
{
    reporter.write({Utils::SeverityFailure, category, format, message, Utils::DateTime::now()});
}

}  // namespace

TEST_F(ConsoleTest, LinesStandAboveTheProgress)
{
    Console console(getEnd(), true);
    console.showProgress("10 %");
    console.writeLine("line");
    console.clearProgress();
    console.clearProgress();
    console.writeLine("end");
    EXPECT_EQ(readAll(), "\r\x1b[K10 %\r\x1b[Kline\n10 %\r\x1b[Kend\n");
}

TEST_F(ConsoleTest, NoProgressWithoutTerminal)
{
    Console console(getEnd(), false);
    console.showProgress("10 %");
    console.writeLine("line");
    console.clearProgress();
    EXPECT_EQ(readAll(), "line\n");
}

TEST_F(ConsoleTest, EachCauseOfALogEntryIsToldOnce)
{
    Console console(getEnd(), false);
    LogReporter reporter(console);
    log(reporter, "Node %p: %s", "Node 0x55aB: \"a.png\" is bad (src:10)\x1b[2J");
    log(reporter, "Node %p: %s", "Node 0x66: \"b.png\" is bad (src:9)\x1b[2J");
    log(reporter, "Node %p: %s", "Node 0x66: \"c.png\" is bad (src:9)\x1b[2J");
    log(reporter, "Node %p: %s", "Node 0x66: \"b.png\" is worse (src:9)");
    log(reporter, "Another %p: %s", "Node 0x66: \"b.png\" is worse (src:9)");
    log(reporter, "Node %p: %s", "Node 0x66: \"b.png\" is worse (src:9)", "a.c");
    reporter.reportRepeats();
    log(reporter, "Node %p: %s", "Node 0x66: \"b.png\" is worse (src:9)");
    EXPECT_EQ(readAll(),
              "log 4 a.b: Node 0x55aB: \"a.png\" is bad (src:10)\\x1b[2J\n"
              "log 4 a.b: Node 0x66: \"b.png\" is worse (src:9)\n"
              "log 4 a.b: Node 0x66: \"b.png\" is worse (src:9)\n"
              "log 4 a.c: Node 0x66: \"b.png\" is worse (src:9)\n"
              "log: 2 more like: Node 0x55aB: \"a.png\" is bad (src:10)\\x1b[2J\n"
              "log 4 a.b: Node 0x66: \"b.png\" is worse (src:9)\n");
}

TEST(LogReporter, ReducesMessagesToTheirCause)
{
    const std::pair<const char*, const char*> cases[] = {
        {"Node 0x7fA1: took 12.5 ms", "Node : took . ms"},
        {"\"a \" and \"b\"", " and "},
        {"Bad: \"Could not load \"in/belt a.png\": it ends.\" (\"c\", \"\")", "Bad:  (, )"},
        {"an open \"quote 3", "an open \"quote "},
        {"0x", ""},
        {"", ""},
    };
    for (const auto& [message, reduced] : cases)
        EXPECT_EQ(reduceMessage(message), reduced);
}

}  // namespace Host

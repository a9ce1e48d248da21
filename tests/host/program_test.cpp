// Command lines and exit codes, with a package of fake nodes. Runs with real nodes are in tests/system.
#include <gmock/gmock.h>
#include <signal.h>
#include <unistd.h>

#include <cstring>
#include <filesystem>
#include <fstream>
#include <future>
#include <sstream>

#include "commandline.h"
#include "jsonbuild.h"
#include "stopsignals.h"

namespace Host {

namespace {

using testing::HasSubstr;

constexpr const char* package = "--package=" STAGELET_FAKE_DIR "/libfakepackage_good.so";

struct Outcome
{
    int code;
    std::string out;
    std::string err;
};

Outcome run(std::vector<std::string> arguments)
{
    std::ostringstream out;
    testing::internal::CaptureStderr();
    const int code = runProgram(std::move(arguments), out);
    return {code, out.str(), testing::internal::GetCapturedStderr()};
}

/// True while the main thread blocks SIGINT, SIGTERM and SIGHUP, and those alone: starting a thread blocks all for
/// a moment.
bool hasTakenSignalsOver()
{
    std::ifstream status("/proc/self/status");
    const std::string text{std::istreambuf_iterator<char>(status), {}};
    const auto mask = std::stoull(text.substr(text.find("SigBlk:\t") + 8, 16), nullptr, 16);
    return mask == (1ULL << (SIGINT - 1) | 1ULL << (SIGTERM - 1) | 1ULL << (SIGHUP - 1));
}

class RunTest : public testing::Test
{
protected:
    /// A source of `count` updates and a sink; runs it with these options.
    Outcome runRecipe(int count, std::vector<std::string> options, const char* command = "run",
                      const char* source = "Source")
    {
        std::ofstream(file_) << R"({"Recipe": 1, "Nodes": [
            {"Name": "Source", "Module": ")"
                             << source << R"(", "Parameters": ["Count = )" << count
                             << R"("]}, {"Name": "Sink", "Module": "Sink"}],
            "Connections": ["Source.Text -> Sink.In1"]})";
        options.insert(options.begin(), {command, file_.string(), package});
        return run(options);
    }
    ~RunTest() override
    {
        std::filesystem::current_path(folder_);
        std::filesystem::remove(file_);
    }

    const std::filesystem::path folder_ = std::filesystem::current_path();
    const std::filesystem::path file_ =
        std::filesystem::temp_directory_path() / ("stagelet_run_" + std::to_string(getpid()) + ".json");
};

}  // namespace

TEST(CommandLine, FaultsAreToldWithACure)
{
    const struct
    {
        std::vector<std::string> arguments;
        int code;
        const char* what;
        const char* advice;
    } cases[] = {
        {{}, 2, "wrong command line: stagelet: ", "try: stagelet --help"},
        {{"rum"},
         2,
         "wrong command line: rum: There is no such command. Did you mean \"run\"?",
         "try: stagelet --help"},
        {{"run"}, 2, "RECIPE is required", "try: stagelet run --help"},
        {{"run", "x", "--fro=3s"},
         2,
         "stagelet run: It does not take \"--fro=3s\". Did you mean \"--for\"?",
         "try: stagelet run --help"},
        {{"check", "x", "--until-idle"}, 2, "stagelet check: It does not take \"--until-idle\".", "check --help"},
        {{"run", "/nowhere/x.json", "--until-idle", "3s"}, 3, "recipe not read: ", "try: "},
        {{"run", "--until-idle", "/nowhere/x.json"}, 3, "recipe not read: ", "try: "},
        {{"run", "x", "--for", "3"}, 2, "wrong command line: --for: \"3\" is no duration.", "90s"},
        {{"run", "x", "--until-idle=3"}, 2, "--until-idle: \"3\"", "90s"},
        {{"run", "x", "--updates", "0"}, 2, "--updates: \"0\"", "from 1 to"},
        {{"run", "x", "--max-drops", "-1"}, 2, "--max-drops: \"-1\"", "from 0 to"},
        {{"run", "x", "--log-level", "8"}, 2, "--log-level: \"8\"", "from 0 to 7"},
        {{"run", "x", "--stats", "xml"}, 2, "--stats: \"xml\"", "try: --stats json"},
        {{"run", "x", "--set", "A=3"}, 2, "--set: \"A=3\"", "NODE.PARAM=VALUE"},
        {{"run", "x", "--emulated-cameras", "65"}, 2, "--emulated-cameras: \"65\"", "from 0 to 64"},
        {{"devices", "--emulated-cameras", "x"}, 2, "--emulated-cameras: \"x\"", "from 0 to 64"},
        {{"params", "--map", "@Device", package}, 2, "--map: It needs a module.", "MODULE --map @Device"},
        {{"params", "Sink", "--map", "@Lat", package},
         2,
         "no node map \"@Lat\". Did you mean \"@Late\"?",
         "params"},
        {{"params", "Grabber", "--map", "@Device", package},
         5,
         "Grabber: No camera of that",
         "--emulated-cameras 1"},
        {{"params", "M", "--json", "--markdown"}, 2, "--markdown", "try: stagelet params --help"},
        {{"params", "M", "--visibility", "guru"}, 2, "--visibility: \"guru\"", "Guru"},
        {{"params", "Sorce", package},
         2,
         "unknown module: Sorce: No package has it. Did you mean \"Source\"?",
         "modules"},
        {{"modules", package, package}, 4, "It has a module \"Source\", as has", "one of the two"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::PrintToString(c.arguments));
        const Outcome outcome = run(c.arguments);
        EXPECT_EQ(outcome.code, c.code);
        EXPECT_EQ(outcome.out, "");
        const auto end = outcome.err.find('\n');
        EXPECT_THAT(outcome.err.substr(0, end), HasSubstr(c.what));
        EXPECT_TRUE(outcome.err.substr(end + 1).starts_with("try: ")) << outcome.err;
        EXPECT_THAT(outcome.err.substr(end + 1), HasSubstr(c.advice));
    }
}

TEST(CommandLine, ResultsGoToStdoutOnly)
{
    const struct
    {
        std::vector<std::string> arguments;
        const char* part;
    } cases[] = {
        {{"--help"}, "Exit codes:"},
        {{"run", "--help"}, "--until-idle"},
        {{"--version"}, "stagelet "},
        {{"modules", package}, "Source   1.0.0    A source"},
        {{"modules", "--json", package}, "\"display_name\": \"A sink\""},
        {{"params", package}, "Refuse  Integer  0      0 to 1"},
        {{"params", "Sink", "--markdown", package}, "| Pins | Integer | 1 | 1 to 9 |"},
        {{"params", "Grabber", "--map=@Device", "--emulated-cameras=1", package}, "Camera  Integer"},
        {{"pins", "Sink", package}, "Sink    In1  input      String\n"},
        {{"pins", package}, "Source   Text  output     String\n"},
        {{"settings", "Source", package}, "\"count\": 3\n"},
        {{"devices", "--json"}, "\"devices\": []"},
    };
    for (const auto& c : cases) {
        const Outcome outcome = run(c.arguments);
        EXPECT_EQ(outcome.code, 0) << outcome.err;
        EXPECT_THAT(outcome.out, HasSubstr(c.part));
        EXPECT_EQ(outcome.err, "");
    }
    EXPECT_THAT(run({"devices"}).err, HasSubstr("No camera was found.\ntry: --emulated-cameras"));
    const Outcome described = run({"describe", "Sink", package});
    EXPECT_TRUE(described.out.starts_with("<?xml")) << described.out;
    EXPECT_TRUE(described.out.ends_with("</RegisterDescription>"));
}

TEST_F(RunTest, ExitCodesTellWhatCameOfIt)
{
    const struct
    {
        const char* what;
        int count;
        std::vector<std::string> options;
        int code;
        const char* err;
    } cases[] = {
        {"ends at its updates", 50, {"--updates", "20"}, 0, "20 updates offered, 20 finished, 0 lost"},
        {"ends when idle", 5, {"--until-idle=500ms"}, 0, "5 updates offered, 5 finished, 0 lost"},
        {"ends after its time", 5, {"--for", "50ms"}, 0, "5 updates offered"},
        {"its time passes before its updates", 5, {"--for", "50ms", "--updates", "6"}, 9, "timed out: "},
        {"a node refuses", 5, {"--updates", "5", "--set", "Source.Refuse=1"}, 1, "It was told to refuse."},
        {"a map never comes", 5, {"--updates", "5", "--set", "Source.@Lat/Count=1"}, 2, "@Late"},
        {"losses are reported only",
         5,
         {"--updates", "5", "--set=Sink.Cause=7"},
         0,
         "0 finished, 5 lost (5 conversion_failed), in"},
        {"as many as allowed", 5, {"--updates", "5", "--set=Sink.Cause=7", "--max-drops=5"}, 0, "lost"},
        {"more than allowed", 5, {"--updates", "5", "--set=Sink.Cause=7", "--max-drops=4"}, 8, "allowed are 4"},
        {"a rule loses nothing",
         5,
         {"--updates", "5", "--set=Sink.Cause=13", "--max-drops=0"},
         0,
         "refused_by_rule"},
        {"files not written",
         5,
         {"--updates", "5", "--set=Sink.Cause=10", "--max-drops=0"},
         7,
         "try: see the log entries above, the output folder's existence and its free space\n"},
        {"no session", 5, {"--updates", "5", "--set=Sink.Cause=9"}, 7, "free space\n"},
        {"encoder failed",
         5,
         {"--updates", "5", "--set=Sink.Cause=11"},
         7,
         "log entries above; give a video pictures of one size"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        const Outcome outcome = runRecipe(c.count, c.options);
        EXPECT_EQ(outcome.code, c.code) << outcome.err;
        EXPECT_THAT(outcome.err, HasSubstr(c.err));
        EXPECT_EQ(outcome.out, "");
    }
}

TEST_F(RunTest, CamerasThatAreMissingOrLostHaveExitCodesOfTheirOwn)
{
    const struct
    {
        const char* what;
        std::vector<std::string> options;
        int code;
        const char* err;
        const char* advice;
    } cases[] = {
        {"there is none", {}, 5, "camera not available: node \"Source\": No camera of that number.\n", "devices"},
        {"all goes well", {"--emulated-cameras=2", "--set=Source.Camera=1"}, 0, "5 finished, 0 lost", ""},
        {"it goes before the start",
         {"--emulated-cameras=1", "--set=Source.Lost=1"},
         6,
         "camera lost: node \"Source\": The camera is gone.\n",
         "cable"},
        {"it goes meanwhile",
         {"--emulated-cameras=1", "--set=Source.Lost=2", "--updates=6"},
         6,
         "5 updates offered, 5 finished, 0 lost",
         "cable"},
        {"a late value that is refused",
         {"--emulated-cameras=1", "--set=Source.@Device/Count=-1"},
         2,
         "--set: Source.@Device/Count=-1: The parameter \"Count\" does not take",
         "params"},
        {"it goes, so values cannot be set",
         {"--emulated-cameras=1", "--set=Source.Lost=1", "--set=Source.@Device/Count=-1"},
         6,
         "camera lost: ",
         "cable"},
        {"the other node refuses", {"--emulated-cameras=1", "--set=Source.Refuse=1"}, 1, "told to refuse", "log"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        std::vector<std::string> options = c.options;
        options.insert(options.end(), {"--until-idle=500ms", "--for=60s"});
        const Outcome outcome = runRecipe(5, options, "run", "Grabber");
        EXPECT_EQ(outcome.code, c.code) << outcome.err;
        EXPECT_THAT(outcome.err, HasSubstr(c.err));
        EXPECT_THAT(outcome.err, HasSubstr(c.advice));
    }
    EXPECT_EQ(runRecipe(5, {"--set=Source.@Device/Count=-1"}, "check", "Grabber").out,
              file_.string() +
                  ": in order, 2 nodes; not checked: 1 parameters of node maps that are there in a run "
                  "only\n");
}

TEST_F(RunTest, StatisticsStandAloneOnStdoutAndRepeatsAreCounted)
{
    const Outcome outcome = runRecipe(5, {"--updates=5", "--stats", "json", "--set", "Sink.Cause=7"});
    const auto document = Nivex::DataProcessing::Runtime::parseJson(outcome.out);
    ASSERT_TRUE(document.root) << outcome.out;
    const auto updates = document.root->as<JsonObject>()->find("updates");
    EXPECT_EQ(updates->as<JsonObject>()->find("offered")->describe(), "5");
    EXPECT_THAT(outcome.err, HasSubstr("It was told to lose.\n"));
    EXPECT_THAT(outcome.err, HasSubstr("log: 4 more like: Sink "));
    EXPECT_EQ(runRecipe(5, {"--updates=5", "--log-level=3", "--set", "Sink.Cause=7"}).err.find("told to lose"),
              std::string::npos);
}

// A source that has sent all it has must not look like a program that hangs.
TEST_F(RunTest, SaysOnceThatItWaits)
{
    runRecipe(5, {}, "check");
    RunOptions options;
    options.recipe = file_.string();
    options.packages = {package + std::strlen("--package=")};
    options.updates = 6;
    options.time = std::chrono::milliseconds(200);
    options.idleNote = std::chrono::milliseconds(50);
    std::ostringstream out;
    testing::internal::CaptureStderr();
    EXPECT_EQ(Host::runRecipe(options, out), ExitCode::TimedOut);
    const std::string err = testing::internal::GetCapturedStderr();
    const auto note = err.find("Nothing has begun for 50 ms; ");
    ASSERT_NE(note, std::string::npos) << err;
    EXPECT_THAT(err, HasSubstr(" of 6 updates have come so far"));
    EXPECT_EQ(err.find("Nothing has begun", note + 1), std::string::npos) << err;
}

TEST_F(RunTest, CheckTellsTheFaultsOfTheFile)
{
    EXPECT_THAT(runRecipe(5, {}, "check").out, HasSubstr(": in order, 2 nodes\n"));
    const Outcome outcome = runRecipe(101, {}, "check");
    EXPECT_EQ(outcome.code, 3);
    EXPECT_EQ(outcome.out, "");
    EXPECT_TRUE(outcome.err.starts_with(file_.string() + ":2:67: node \"Source\": ")) << outcome.err;
    std::ofstream(file_) << R"({"Recipe": 1, "Nodes": [
        {"Name": "Source", "Module": "Source", "Settings": {"images": {"count": 3, "cuont": 3}, "refuze": 0}},
        {"Name": "Sink", "Module": "Sink"}]})";
    const Outcome doubtful = run({"check", file_.string(), package});
    EXPECT_EQ(doubtful.code, 0);
    const std::string warning = "warning: " + file_.string();
    EXPECT_EQ(doubtful.err,
              warning + ":2:9: node \"Source\": No output is connected; nothing takes what it gives.\n" + warning +
                  ":2:84: node \"Source\": The module does not read the setting \"images.cuont\".\n" + warning +
                  ":2:97: node \"Source\": The module does not read the setting \"refuze\". Did you mean "
                  "\"refuse\"?\n" +
                  warning + ":3:9: node \"Sink\": No input is connected; it will have nothing to do.\n");
    EXPECT_THAT(outcome.err, HasSubstr("recipe invalid: " + file_.string() + ": 1 fault\ntry: "));
}

TEST_F(RunTest, ASignalEndsTheRunInOrder)
{
    signal(SIGHUP, SIG_DFL);  // Whoever started the tests may have had them ignore it.
    for (const int number : {SIGINT, SIGTERM, SIGHUP}) {
        std::thread sender([number] {
            sigset_t all;
            sigfillset(&all);
            pthread_sigmask(SIG_BLOCK, &all, nullptr);
            // Before the run has taken the signal over, it would end the test.
            while (!hasTakenSignalsOver())
                std::this_thread::yield();
            kill(getpid(), number);
        });
        const Outcome outcome = runRecipe(5, {});
        sender.join();
        EXPECT_EQ(outcome.code, 0) << outcome.err;
        EXPECT_THAT(outcome.err, HasSubstr("0 lost"));
    }
}

// `timeout` sends its signal twice.
TEST(StopSignals, FirstCallsAndOnlyAnInterruptAfterItEnds)
{
    testing::FLAGS_gtest_death_test_style = "threadsafe";
    for (const auto& [second, code] : {std::pair(SIGINT, 130), std::pair(SIGTERM, 7)}) {
        EXPECT_EXIT(
            {
                {
                    StopSignals signals;
                    std::promise<void> came;
                    signals.onStop([&] { came.set_value(); });
                    kill(getpid(), SIGTERM);
                    came.get_future().wait();
                    kill(getpid(), second);
                }  // waits until the second one was looked at
                _exit(7);
            },
            testing::ExitedWithCode(code), "");
    }
}

}  // namespace Host

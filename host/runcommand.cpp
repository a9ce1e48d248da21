#include "runcommand.h"

#include <signal.h>
#include <unistd.h>

#include <algorithm>
#include <condition_variable>
#include <filesystem>
#include <ostream>
#include <thread>

#include "cameras.h"
#include "console.h"
#include "core/errors.h"
#include "recipewarnings.h"
#include "runreport.h"
#include "stopsignals.h"
#include "texttable.h"
#include "units.h"

namespace Host {

using namespace Nivex::DataProcessing;
using Runtime::Graph;
using Runtime::RunStatistics;

namespace {

/// Raises HostError after telling all faults.
void requireNoFaults(const std::string& file, const FaultList& faults)
{
    if (faults.empty()) return;
    for (const std::string& line : faults.toLines(file))
        getConsole().writeLine(line);
    throw HostError(ExitCode::RecipeInvalid, "recipe invalid", file,
                    std::to_string(faults.getCount()) + (faults.getCount() == 1 ? " fault" : " faults"),
                    "correct the places named above");
}

void requireNoFaults(const FaultList& assignmentFaults)
{
    const auto faults = assignmentFaults.getFaults();
    if (faults.empty()) return;
    for (std::size_t i = 0; i + 1 < faults.size(); ++i) {
        getConsole().writeLine("--set: " + escapeControls(faults[i].object) + ": " +
                               escapeControls(faults[i].message));
    }
    throw HostError(ExitCode::WrongCommandLine, "--set", escapeControls(faults.back().object),
                    escapeControls(faults.back().message), "stagelet params MODULE, for names and values");
}

Recipe readRecipeFile(const std::string& file, FaultList& faults)
{
    std::string text;
    try {
        text = Runtime::readTextFile(file);
    } catch (...) {
        throw HostError(ExitCode::RecipeInvalid, "recipe not read", file, describeCurrentException(),
                        "name a recipe file");
    }
    return readRecipe(text, faults);
}

LoadedRecipe load(const RunOptions& options)
{
    // Before the working directory changes.
    const auto file = std::filesystem::absolute(options.recipe);
    std::vector<std::string> packageFiles;
    for (const std::string& package : options.packages)
        packageFiles.push_back(std::filesystem::absolute(package).string());

    FaultList faults;
    FaultList assignmentFaults;
    const Recipe recipe = readRecipeFile(options.recipe, faults);
    if (recipe.nodes.empty()) requireNoFaults(options.recipe, faults);
    const PackageSet packages(packageFiles);
    std::filesystem::current_path(file.parent_path());
    LoadedRecipe loaded = loadRecipe(recipe, packages, makeResourcePool(options.emulatedCameras),
                                     file.parent_path().string(), options.assignments, faults, assignmentFaults);
    requireNoFaults(options.recipe, faults);
    requireNoFaults(assignmentFaults);
    addWarnings(recipe, *loaded.graph, loaded.warnings);
    for (const std::string& line : loaded.warnings.toLines(options.recipe))
        getConsole().writeLine("warning: " + line);
    return loaded;
}

/// Shows on a terminal how a run goes on, from its making to its end.
class ProgressDisplay
{
public:
    explicit ProgressDisplay(const Graph& graph) : graph_(graph)
    {
        if (getConsole().isTerminal()) thread_ = std::thread([this] { show(); });
    }
    ~ProgressDisplay()
    {
        {
            const std::lock_guard guard(mutex_);
            ending_ = true;
        }
        wake_.notify_all();
        if (thread_.joinable()) thread_.join();
        getConsole().clearProgress();
    }
    ProgressDisplay(const ProgressDisplay&) = delete;
    ProgressDisplay& operator=(const ProgressDisplay&) = delete;

private:
    void show()
    {
        constexpr auto period = std::chrono::milliseconds(200);
        RunStatistics before;
        std::unique_lock lock(mutex_);
        while (!wake_.wait_for(lock, period, [this] { return ending_; })) {
            RunStatistics now = graph_.getStatistics();
            getConsole().showProgress(formatProgress(now, before, getTerminalWidth(STDERR_FILENO)));
            before = std::move(now);
        }
    }

    const Graph& graph_;
    std::mutex mutex_;  // guards ending_
    std::condition_variable wake_;
    bool ending_ = false;
    std::thread thread_;
};

bool isOfDevice(const Core::IError& error)
{
    const auto& parents = error.getParentErrors();
    return dynamic_cast<const Core::DeviceError*>(&error) ||
           std::any_of(parents.begin(), parents.end(),
                       [](const auto& parent) { return parent && isOfDevice(*parent); });
}

/// Tells the errors of all nodes. CameraLost if one of them is a camera's, RunFailed otherwise.
ExitCode reportNodeErrors(const Graph& graph)
{
    ExitCode code = ExitCode::RunFailed;
    for (const std::string& name : graph.getNodeNames()) {
        for (const auto& error : graph.findNode(name)->getErrors()) {
            const bool isCamera = isOfDevice(*error);
            if (isCamera) code = ExitCode::CameraLost;
            getConsole().writeLine((isCamera ? "camera lost: " : "recipe stopped: ") + nodeObject(name) + ": " +
                                   escapeControls(error->getDescription().view()));
        }
    }
    getConsole().writeLine(code == ExitCode::CameraLost
                               ? "try: stagelet devices, after a look at the camera's cable and power"
                               : "try: stagelet run --log-level 7, to see more");
    return code;
}

/// For after a failure. That a camera is gone is told on a thread of its own, maybe a moment after the failure
/// that comes of it.
bool hasNodeErrorSoon(const LoadedRecipe& recipe)
{
    const bool usesDevices = std::any_of(recipe.resources.begin(), recipe.resources.end(),
                                         [](const auto& entry) { return entry.second->usesDevices(); });
    return recipe.graph->waitForNodeError(std::chrono::milliseconds(usesDevices ? 300 : 0));
}

void setLateParameters(const LoadedRecipe& recipe, const RunOptions& options)
{
    FaultList faults;
    FaultList assignmentFaults;
    applyPending(recipe, faults, assignmentFaults);
    // A camera that was lost refuses everything, which is no fault of the recipe.
    if ((!faults.empty() || !assignmentFaults.empty()) && hasNodeErrorSoon(recipe)) return;
    requireNoFaults(options.recipe, faults);
    requireNoFaults(assignmentFaults);
}

[[noreturn]] void refuseStart(const LoadedRecipe& recipe, const RunOptions& options,
                              const Runtime::NodeFailure& failure)
{
    if (failure.getStage() == Runtime::NodeFailure::Stage::Allocation &&
        recipe.resources.at(failure.getNode())->usesDevices())
    {
        throw HostError(ExitCode::CameraNotAvailable, "camera not available", nodeObject(failure.getNode()),
                        escapeControls(failure.getCause()),
                        "stagelet devices, for the cameras there are; --emulated-cameras N, for some without "
                        "hardware; the log above, for what a camera refused");
    }
    throw HostError(ExitCode::RunFailed, "recipe not started", options.recipe, failure.GetDescription(),
                    "stagelet run --log-level 7, to see more");
}

/// False if a node has an error that keeps it from starting.
bool startRecipe(LoadedRecipe& recipe, const RunOptions& options)
{
    try {
        recipe.graph->setUpdateLimit(options.updates);
        recipe.graph->allocate();
        setLateParameters(recipe, options);
        recipe.graph->start(recipe.startArguments);
        return true;
    } catch (const Runtime::NodeFailure& failure) {
        if (failure.getStage() == Runtime::NodeFailure::Stage::Start && hasNodeErrorSoon(recipe)) return false;
        refuseStart(recipe, options, failure);
    }
}

/// Tells once that a run which is to end otherwise has become idle: its sources may have sent all they have.
Graph::Event waitForEnd(Graph& graph, const RunOptions& options)
{
    using std::chrono::nanoseconds;
    const nanoseconds time = options.time.value_or(nanoseconds(0));
    const bool mayIdle = options.idle || (options.time && options.updates == 0);
    if (mayIdle) return graph.wait(time, options.idle.value_or(nanoseconds(0)));

    const auto begin = std::chrono::steady_clock::now();
    const Graph::Event event = graph.wait(time, options.idleNote);
    if (event != Graph::Event::Idle) return event;
    const std::string wanted = options.updates == 0 ? "" : " of " + std::to_string(options.updates);
    getConsole().writeLine("note: " + options.recipe + ": Nothing has begun for " +
                           formatDuration(options.idleNote) + "; " +
                           std::to_string(graph.getStatistics().offered) + wanted +
                           " updates have come so far, and the run waits for more.\n"
                           "try: Ctrl-C, which ends it in order, or next time --until-idle");
    if (!options.time) return graph.wait(nanoseconds(0), nanoseconds(0));
    return graph.wait(std::max<nanoseconds>(begin + time - std::chrono::steady_clock::now(), nanoseconds(1)),
                      nanoseconds(0));
}

/// From allocation to stop. What ended the run is the result.
Graph::Event execute(LoadedRecipe& recipe, const RunOptions& options, StopSignals& signals)
{
    Graph& graph = *recipe.graph;
    if (signals.hasCome()) return Graph::Event::StopRequested;
    if (!startRecipe(recipe, options)) return Graph::Event::NodeError;
    const ProgressDisplay progress(graph);
    signals.onStop([&graph] { graph.requestStop(); });
    const Graph::Event event = waitForEnd(graph, options);
    signals.onStop({});
    graph.stop();
    return event;
}

ExitCode judge(const RunOptions& options, Graph::Event event, const RunStatistics& statistics)
{
    const bool hasOtherEnd = options.updates != 0 || options.idle;
    if (const auto failures = countOutputFailures(statistics)) {
        getConsole().writeLine("output not written: " + options.recipe + ": " + std::to_string(failures) +
                               " times a file, a folder or a picture of a video could not be written.\ntry: " +
                               adviseOnOutput(statistics));
        return ExitCode::OutputNotWritten;
    }
    if (event == Graph::Event::TimeOver && hasOtherEnd) {
        getConsole().writeLine("timed out: " + options.recipe +
                               ": The time of --for passed before the other end was reached.\n"
                               "try: a longer --for");
        return ExitCode::TimedOut;
    }
    if (options.maxDrops && countDrops(statistics) > *options.maxDrops) {
        getConsole().writeLine("data lost: " + options.recipe + ": " + std::to_string(countDrops(statistics)) +
                               " updates were lost; allowed are " + std::to_string(*options.maxDrops) +
                               ".\ntry: a greater --max-drops, or see the causes above");
        return ExitCode::DataLost;
    }
    return ExitCode::Done;
}

}  // namespace

void checkRecipe(const RunOptions& options, std::ostream& out)
{
    const LoadedRecipe recipe = load(options);
    const std::size_t count = recipe.graph->getNodeNames().size();
    out << options.recipe << ": in order, " << count << (count == 1 ? " node" : " nodes");
    if (!recipe.pending.empty()) {
        out << "; not checked: " << recipe.pending.size()
            << " parameters of node maps that are there in a run only";
    }
    out << "\n";
}

ExitCode runRecipe(const RunOptions& options, std::ostream& out)
{
    // A reader of our output that goes away, or a limit on the size of files, fails the write and no more: the
    // other files have to be closed.
    signal(SIGPIPE, SIG_IGN);  // NOLINT(cert-err33-c)
    signal(SIGXFSZ, SIG_IGN);  // NOLINT(cert-err33-c)
    StopSignals signals;
    LoadedRecipe recipe = load(options);
    const Graph::Event event = execute(recipe, options, signals);
    const ExitCode failure = event == Graph::Event::NodeError ? reportNodeErrors(*recipe.graph) : ExitCode::Done;
    const RunStatistics statistics = recipe.graph->getStatistics();
    recipe.graph->free();
    getConsole().writeLine(formatSummary(statistics));
    if (options.wantsStatistics) out << formatStatisticsJson(statistics);
    return failure == ExitCode::Done ? judge(options, event, statistics) : failure;
}

}  // namespace Host

#include "commandline.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <ostream>

#include "base/emulation/emulatedbackend.h"

#include "console.h"
#include "logreporter.h"
#include "units.h"

namespace Host {

namespace {

constexpr const char* version = "stagelet 8.1.0";

struct VisibilityName
{
    const char* name;
    GenApi::EVisibility visibility;
};
constexpr VisibilityName visibilityNames[] = {{"Beginner", GenApi::Beginner},
                                              {"Expert", GenApi::Expert},
                                              {"Guru", GenApi::Guru},
                                              {"Invisible", GenApi::Invisible}};

const std::string usageText =
    "Exit codes: 0 done; 1 the run failed; 2 wrong command line; 3 recipe invalid; 4 package not loaded;\n"
    "5 camera not found, busy or refused; 6 camera lost; 7 output not written; 8 more lost than --max-drops;\n"
    "9 --for passed before another end; 130 forced end. Where several hold, the first of 6, 1, 7, 9, 8 counts.";

/// What is given as text and turned into values after the parser is done.
struct RawOptions
{
    bool isJson = false;
    bool isMarkdown = false;
    std::string visibility = "Invisible";
    std::string time;
    std::string updates;
    std::string idle;
    std::vector<std::string> assignments;
    std::string statistics;
    std::string logLevel = "4";
    std::string cameras = "0";
    std::string maxDrops;
};

[[noreturn]] void refuse(const std::string& object, const std::string& why, const std::string& advice)
{
    throw HostError(ExitCode::WrongCommandLine, "wrong command line", object, why, advice);
}

std::uint64_t requireCount(const char* option, const std::string& text, std::uint64_t least, std::uint64_t most)
{
    const auto count = parseCount(text);
    if (!count || *count < least || *count > most) {
        refuse(
            option, "\"" + text + "\" is not allowed.",
            std::string(option) + " with a number from " + std::to_string(least) + " to " + std::to_string(most));
    }
    return *count;
}

std::chrono::nanoseconds requireDuration(const char* option, const std::string& text)
{
    if (const auto duration = parseDuration(text)) return *duration;
    refuse(option, "\"" + text + "\" is no duration.",
           std::string(option) + " with a number and a unit, as in 500ms, 90s, 5m or 2h");
}

void addCameraOption(CLI::App& command, RawOptions& raw)
{
    command.add_option("--emulated-cameras", raw.cameras, "Number of emulated cameras (0)")->type_name("N");
}

void addModuleOptions(CLI::App& app, CommandLine& result, RawOptions& raw)
{
    const auto addPackages = [&](CLI::App* command) {
        command->add_option("--package", result.module.packages, "Package to load, instead of the one in ../lib")
            ->type_name("FILE")
            ->expected(1)
            ->take_all();
    };
    CLI::App* modules = app.add_subcommand("modules", "List the modules of the packages");
    modules->add_flag("--json", raw.isJson, "As JSON");
    addPackages(modules);

    CLI::App* params = app.add_subcommand("params", "List the parameters of a fresh node of a module");
    params->add_option("MODULE", result.module.module, "Its name; all modules if left out");
    params->add_option("--visibility", raw.visibility, "Only those for users up to that level")
        ->type_name("Beginner|Expert|Guru|Invisible");
    auto* json = params->add_flag("--json", raw.isJson, "As JSON");
    params->add_flag("--markdown", raw.isMarkdown, "As Markdown tables")->excludes(json);
    params
        ->add_option("--map", result.module.map,
                     "Another of its node maps, as \"@CameraDevice\"; allocates what the map needs")
        ->type_name("MAP");
    addCameraOption(*params, raw);
    addPackages(params);

    CLI::App* pins = app.add_subcommand("pins", "List the pins of a fresh node of a module");
    pins->add_option("MODULE", result.module.module, "Its name; all modules if left out");
    addPackages(pins);

    CLI::App* settings =
        app.add_subcommand("settings", "Write the settings of a fresh node, to begin a recipe with");
    settings->add_option("MODULE", result.module.module, "Its name")->required();
    addPackages(settings);

    CLI::App* describe = app.add_subcommand("describe", "Write the register description of a fresh node");
    describe->add_option("MODULE", result.module.module, "Its name")->required();
    addPackages(describe);

    CLI::App* devices = app.add_subcommand("devices", "List the cameras");
    devices->add_flag("--json", raw.isJson, "As JSON");
    addCameraOption(*devices, raw);
}

void addRecipeOptions(CLI::App& app, CommandLine& result, RawOptions& raw)
{
    const auto addCommon = [&](CLI::App* command) {
        command->add_option("RECIPE", result.run.recipe, "The recipe file")->required();
        command->add_option("--set", raw.assignments, "Set a parameter after the recipe's own; repeatable")
            ->type_name("NODE.PARAM=VALUE")
            ->expected(1)
            ->take_all();
        command
            ->add_option("--package", result.run.packages,
                         "Package to load, instead of the one in ../lib; repeatable")
            ->type_name("FILE")
            ->expected(1)
            ->take_all();
        command->add_option("--log-level", raw.logLevel, "Log entries up to that number reach stderr, 0 to 7 (4)")
            ->type_name("N");
        addCameraOption(*command, raw);
    };
    addCommon(app.add_subcommand("check", "Load and connect a recipe, start nothing"));
    CLI::App* run = app.add_subcommand("run", "Run a recipe until a signal or one of the ends below");
    addCommon(run);
    run->add_option("--for", raw.time, "Run that long; beside another end, the most it may take")
        ->type_name("DURATION");
    run->add_option("--updates", raw.updates, "End after exactly so many updates")->type_name("N");
    run->add_option("--until-idle", raw.idle, "End when no update was under way for that long (=2s)")
        ->type_name("[=DURATION]");
    run->add_option("--stats", raw.statistics, "Statistics on stdout at the end")->type_name("json");
    run->add_option("--max-drops", raw.maxDrops, "Fail if more updates than that are lost")->type_name("N");
    run->footer(usageText);
}

std::size_t requireCameraCount(const RawOptions& raw)
{
    constexpr auto most = Nivex::CEmulatedCameraBackend::maxCameras;
    return requireCount("--emulated-cameras", raw.cameras, 0, most);
}

void convertModuleOptions(const RawOptions& raw, ModuleOptions& options)
{
    options.form = raw.isMarkdown ? OutputForm::Markdown : raw.isJson ? OutputForm::Json : OutputForm::Text;
    options.emulatedCameras = requireCameraCount(raw);
    if (options.map != ownNodeMap && options.module.empty()) {
        refuse("--map", "It needs a module.", "stagelet params MODULE --map " + options.map);
    }
    for (const VisibilityName& entry : visibilityNames) {
        if (raw.visibility == entry.name) {
            options.visibility = entry.visibility;
            return;
        }
    }
    refuse("--visibility", "\"" + raw.visibility + "\" is no level.",
           "--visibility Beginner, Expert, Guru or Invisible");
}

void convertRunOptions(const RawOptions& raw, RunOptions& options)
{
    constexpr std::uint64_t most = ~std::uint64_t{0};
    if (!raw.time.empty()) options.time = requireDuration("--for", raw.time);
    if (!raw.idle.empty()) options.idle = requireDuration("--until-idle", raw.idle);
    if (!raw.updates.empty()) options.updates = requireCount("--updates", raw.updates, 1, most);
    if (!raw.maxDrops.empty()) options.maxDrops = requireCount("--max-drops", raw.maxDrops, 0, most);
    options.logLevel = static_cast<int>(requireCount("--log-level", raw.logLevel, 0, 7));
    options.emulatedCameras = requireCameraCount(raw);
    options.wantsStatistics = !raw.statistics.empty();
    if (options.wantsStatistics && raw.statistics != "json") {
        refuse("--stats", "\"" + raw.statistics + "\" is no form.", "--stats json");
    }
    for (const std::string& text : raw.assignments) {
        auto assignment = parseNodeAssignment(text);
        if (!assignment) refuse("--set", "\"" + text + "\" is no assignment.", "--set NODE.PARAM=VALUE");
        options.assignments.push_back(std::move(*assignment));
    }
}

struct CommandName
{
    const char* name;
    Command command;
};
constexpr CommandName commandNames[] = {{"modules", Command::Modules},   {"params", Command::Params},
                                        {"pins", Command::Pins},         {"settings", Command::Settings},
                                        {"describe", Command::Describe}, {"devices", Command::Devices},
                                        {"check", Command::Check},       {"run", Command::Run}};

/// The parser would only say that a command is missing.
void refuseUnknownCommand(const std::vector<std::string>& arguments)
{
    if (arguments.empty() || arguments.front().starts_with('-')) return;
    std::vector<std::string> names;
    for (const CommandName& entry : commandNames)
        names.emplace_back(entry.name);
    if (std::find(names.begin(), names.end(), arguments.front()) != names.end()) return;
    refuse(arguments.front(), "There is no such command." + suggest(arguments.front(), names), "stagelet --help");
}

Command commandOf(const CLI::App& app)
{
    const auto chosen = app.get_subcommands();
    for (const CommandName& entry : commandNames) {
        if (!chosen.empty() && chosen.front()->get_name() == entry.name) return entry.command;
    }
    return Command::Help;
}

/// Gives each --until-idle of `run` its duration: the one behind it, or 2 s, for the recipe may follow too.
void completeIdleOption(std::vector<std::string>& arguments)
{
    if (arguments.empty() || arguments.front() != "run") return;
    for (std::size_t i = 1; i < arguments.size() && arguments[i] != "--"; ++i) {
        if (arguments[i] != "--until-idle") continue;
        const bool hasDuration = i + 1 < arguments.size() && parseDuration(arguments[i + 1]);
        arguments[i] += "=" + (hasDuration ? arguments[i + 1] : "2s");
        if (hasDuration) arguments.erase(arguments.begin() + static_cast<std::ptrdiff_t>(i) + 1);
    }
}

/// What the parser did not know, with the option that is meant; empty if it knew all.
std::string describeExtras(const CLI::App& app)
{
    const auto chosen = app.get_subcommands();
    const auto extras = app.remaining(true);
    if (chosen.empty() || extras.empty()) return {};
    std::vector<std::string> known;
    for (const CLI::Option* option : chosen.front()->get_options()) {
        if (!option->get_positional()) known.push_back(option->get_name());
    }
    const std::string name = extras.front().substr(0, extras.front().find('='));
    return "It does not take \"" + extras.front() + "\"." +
           (name.starts_with('-') ? suggest(name, known) : std::string());
}

/// "stagelet", or "stagelet run".
std::string commandName(const CLI::App& app)
{
    const auto chosen = app.get_subcommands();
    return chosen.empty() ? "stagelet" : "stagelet " + chosen.front()->get_name();
}

int runCommand(const CommandLine& line, std::ostream& out)
{
    const LogToConsole log(line.run.logLevel);
    switch (line.command) {
        case Command::Help:
            out << line.text;
            break;
        case Command::Modules:
            showModules(line.module, out);
            break;
        case Command::Params:
            showParameters(line.module, out);
            break;
        case Command::Pins:
            showPins(line.module, out);
            break;
        case Command::Settings:
            showSettings(line.module, out);
            break;
        case Command::Describe:
            showDescription(line.module, out);
            break;
        case Command::Devices:
            showDevices(line.devices, out);
            break;
        case Command::Check:
            checkRecipe(line.run, out);
            break;
        case Command::Run:
            return static_cast<int>(runRecipe(line.run, out));
    }
    return 0;
}

}  // namespace

CommandLine parseCommandLine(std::vector<std::string> arguments)
{
    CommandLine result;
    RawOptions raw;
    CLI::App app("Runs recipes of image acquisition, conversion and recording.", "stagelet");
    app.set_version_flag("--version", version);
    app.require_subcommand(1);
    app.footer(usageText);
    addModuleOptions(app, result, raw);
    addRecipeOptions(app, result, raw);
    refuseUnknownCommand(arguments);
    completeIdleOption(arguments);
    std::reverse(arguments.begin(), arguments.end());  // the order the parser wants
    try {
        app.parse(arguments);
    } catch (const CLI::CallForVersion&) {
        result.text = std::string(version) + "\n";
        return result;
    } catch (const CLI::CallForHelp&) {
        const auto chosen = app.get_subcommands();
        result.text = chosen.empty() ? app.help() : chosen.front()->help("stagelet");
        return result;
    } catch (const CLI::ExtrasError&) {
        refuse(commandName(app), describeExtras(app), commandName(app) + " --help");
    } catch (const CLI::ParseError& e) {
        refuse(commandName(app), e.what(), commandName(app) + " --help");
    }
    convertModuleOptions(raw, result.module);
    result.devices = {result.module.emulatedCameras, raw.isJson};
    convertRunOptions(raw, result.run);
    result.command = commandOf(app);
    return result;
}

int runProgram(std::vector<std::string> arguments, std::ostream& out)
{
    try {
        const int code = runCommand(parseCommandLine(std::move(arguments)), out);
        out.flush();
        if (!out) {
            throw HostError(ExitCode::OutputNotWritten, "output not written", "stdout",
                            "It does not take the result.", "see where stdout goes");
        }
        return code;
    } catch (const HostError& e) {
        getConsole().writeLine(e.what());
        if (!e.getAdvice().empty()) getConsole().writeLine("try: " + e.getAdvice());
        return static_cast<int>(e.getCode());
    } catch (...) {
        getConsole().writeLine("failed: stagelet: " + describeCurrentException());
        return static_cast<int>(ExitCode::RunFailed);
    }
}

}  // namespace Host

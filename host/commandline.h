#pragma once

#include <iosfwd>
#include <string>
#include <vector>

#include "devicecommand.h"
#include "hosterror.h"
#include "modulecommands.h"
#include "runcommand.h"

namespace Host {

enum class Command
{
    Help,  ///< `text` is all there is to write.
    Modules,
    Params,
    Pins,
    Settings,
    Describe,
    Devices,
    Check,
    Run
};

struct CommandLine
{
    Command command = Command::Help;
    std::string text;
    ModuleOptions module;
    DeviceOptions devices;
    RunOptions run;
};

/// `arguments` without the program's name. Raises HostError (WrongCommandLine).
CommandLine parseCommandLine(std::vector<std::string> arguments);

/// The whole program: what a command gives goes to `out`, everything else to stderr; the result is the exit code.
int runProgram(std::vector<std::string> arguments, std::ostream& out);

}  // namespace Host

#pragma once

#include <exception>
#include <string>

#include "gcbase/exception.h"

namespace Host {

/// What the command ends with. Where several hold for a run, the first of this list counts:
/// ForcedEnd, CameraLost, RunFailed, OutputNotWritten, TimedOut, DataLost.
enum class ExitCode : int
{
    Done = 0,
    RunFailed = 1,  ///< A node refused to start or failed, or a fault of ours.
    WrongCommandLine = 2,
    RecipeInvalid = 3,
    PackageNotLoaded = 4,
    CameraNotAvailable = 5,  ///< A node that works with cameras got none: not found, busy or refused.
    CameraLost = 6,          ///< A camera failed or was disconnected while in use.
    OutputNotWritten = 7,
    DataLost = 8,  ///< Finished, but more was lost than allowed.
    TimedOut = 9,
    ForcedEnd = 130
};

/// A failure that ends the command: one line "what: object: why" and one line "try: advice" (left out if empty).
class HostError : public std::exception
{
public:
    HostError(ExitCode code, const std::string& what, const std::string& object, const std::string& why,
              std::string advice)
        : code_(code), text_(what + ": " + object + ": " + why), advice_(std::move(advice))
    {}

    ExitCode getCode() const { return code_; }
    const char* what() const noexcept override { return text_.c_str(); }
    const std::string& getAdvice() const { return advice_; }

private:
    ExitCode code_;
    std::string text_;
    std::string advice_;
};

using GenICam::describeCurrentException;

}  // namespace Host

#pragma once

#include <exception>
#include <string>

#include "gcbase/export.h"

namespace GenICam {

/// Base of every failure that the platform and the package raise: a text for a person, and the source file
/// (folder and file without ending, as in `utils/cowptr_impl`) and line that raised it.
/// `what()` is the whole line for a log; `GetDescription()` is the text alone.
class GENICAM_API GenericException : public std::exception
{
public:
    GenericException(std::string description, const char* sourceFile, int sourceLine,
                     const char* kind = "GenericException");
    ~GenericException() override;

    const char* GetDescription() const noexcept { return description_.c_str(); }
    const char* GetSourceFileName() const noexcept { return sourceFile_.c_str(); }
    int GetSourceLine() const noexcept { return sourceLine_; }
    const char* what() const noexcept override { return what_.c_str(); }

private:
    std::string description_;
    std::string sourceFile_;
    int sourceLine_;
    std::string what_;
};

#define GENICAM_EXCEPTION_CLASS(NAME)                                                 \
    class GENICAM_API NAME : public GenericException                                  \
    {                                                                                 \
    public:                                                                           \
        NAME(std::string description, const char* sourceFile, int sourceLine)         \
            : GenericException(std::move(description), sourceFile, sourceLine, #NAME) \
        {}                                                                            \
        ~NAME() override;                                                             \
    }

GENICAM_EXCEPTION_CLASS(BadAllocException);         ///< An object could not be made.
GENICAM_EXCEPTION_CLASS(InvalidArgumentException);  ///< The caller passed a value that is not allowed.
GENICAM_EXCEPTION_CLASS(OutOfRangeException);       ///< A value lies outside its limits.
GENICAM_EXCEPTION_CLASS(PropertyException);         ///< A property or node cannot answer as asked.
GENICAM_EXCEPTION_CLASS(RuntimeException);          ///< The operation failed for a reason outside the call.
GENICAM_EXCEPTION_CLASS(LogicalErrorException);     ///< The caller broke the order of calls.
GENICAM_EXCEPTION_CLASS(AccessException);           ///< A node is not readable, writable or present.
GENICAM_EXCEPTION_CLASS(TimeoutException);          ///< The wait ended before the event.
GENICAM_EXCEPTION_CLASS(DynamicCastException);      ///< An object is not of the wanted interface.

#undef GENICAM_EXCEPTION_CLASS

/// The path of a source file as failures name it: its last folder and its name without the ending.
GENICAM_API std::string sourceUnitName(const char* file);

/// The text, for a person, of the exception that is being handled: its description, `what()`, or "unknown
/// exception". Only within a catch block.
GENICAM_API std::string describeCurrentException();

/// A printf-style text.
GENICAM_API std::string formatText(const char* format, ...) __attribute__((format(printf, 1, 2)));

}  // namespace GenICam

/// Raises a failure of the family with a printf-style text, naming this source unit and line:
/// `GENICAM_THROW(RuntimeException, "Could not open \"%s\".", path)`.
#define GENICAM_THROW(TYPE, ...)                                                                           \
    throw ::GenICam::TYPE(::GenICam::formatText(__VA_ARGS__), ::GenICam::sourceUnitName(__FILE__).c_str(), \
                          __LINE__)

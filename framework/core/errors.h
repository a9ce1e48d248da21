#pragma once

#include <exception>

#include "gcbase/exception.h"

#include "core/ierror.h"

namespace Nivex::DataProcessing::Core {

/// The common form of all errors.
class GENICAM_API ErrorBase : public IError
{
public:
    GenICam::gcstring getName() const override { return name_; }
    GenICam::gcstring getDescription() const override { return description_; }
    Utils::DateTime getTimestamp() const override { return timestamp_; }
    const ErrorList& getParentErrors() const override { return parents_; }

protected:
    ErrorBase(GenICam::gcstring name, GenICam::gcstring description, Utils::DateTime timestamp,
              ErrorList parents = {});

private:
    const GenICam::gcstring name_;
    const GenICam::gcstring description_;
    const Utils::DateTime timestamp_;
    const ErrorList parents_;
};

/// An error made of a caught exception.
class GENICAM_API ExceptionErrorBase : public ErrorBase
{
public:
    using ExceptionPtr = std::exception_ptr;

    ExceptionErrorBase(const GenICam::gcstring& name, const GenICam::gcstring& description, ExceptionPtr exception,
                       Utils::DateTime timestamp, ErrorList parents = {});

    /// The exception itself; null if it was not to be had. Its library must stay loaded while the error lives.
    ExceptionPtr getException() const { return exception_; }

private:
    const ExceptionPtr exception_;
};

/// Made of a GenICam exception: its description is the message. Inside the catch clause of that exception the
/// error keeps it.
class GENICAM_API GenICamExceptionError : public ExceptionErrorBase
{
public:
    explicit GenICamExceptionError(const GenICam::GenericException& exception,
                                   Utils::DateTime timestamp = Utils::DateTime::now(), ErrorList parents = {});
};

/// Made of an exception of the standard library: its what() is the message. Otherwise as GenICamExceptionError.
class GENICAM_API StdExceptionError : public ExceptionErrorBase
{
public:
    explicit StdExceptionError(const std::exception& exception, Utils::DateTime timestamp = Utils::DateTime::now(),
                               ErrorList parents = {});
};

/// Made of an exception of unknown kind: `text` is the message.
class GENICAM_API UnknownExceptionError : public ExceptionErrorBase
{
public:
    UnknownExceptionError(const GenICam::gcstring& text, const GenICam::gcstring& fileName, int line,
                          Utils::DateTime timestamp);

    GenICam::gcstring getFileName() const { return fileName_; }
    int getLine() const { return line_; }

private:
    const GenICam::gcstring fileName_;
    const int line_;
};

/// A value that a node can't use.
class GENICAM_API InvalidValueError : public ErrorBase
{
public:
    InvalidValueError(const GenICam::gcstring& text, Utils::DateTime timestamp);
    InvalidValueError(const GenICam::gcstring& text, ErrorList parents, Utils::DateTime timestamp);
};

/// A failure of a camera.
class GENICAM_API DeviceError : public ErrorBase
{
public:
    DeviceError(const GenICam::gcstring& text, Utils::DateTime timestamp);
};

}  // namespace Nivex::DataProcessing::Core

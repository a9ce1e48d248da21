#include "core/errors.h"

#include <utility>

namespace Nivex::DataProcessing::Core {

ErrorBase::ErrorBase(GenICam::gcstring name, GenICam::gcstring description, Utils::DateTime timestamp,
                     ErrorList parents)
    : name_(std::move(name)),
      description_(std::move(description)),
      timestamp_(timestamp),
      parents_(std::move(parents))
{}

ExceptionErrorBase::ExceptionErrorBase(const GenICam::gcstring& name, const GenICam::gcstring& description,
                                       ExceptionPtr exception, Utils::DateTime timestamp, ErrorList parents)
    : ErrorBase(name, description, timestamp, std::move(parents)), exception_(std::move(exception))
{}

GenICamExceptionError::GenICamExceptionError(const GenICam::GenericException& exception, Utils::DateTime timestamp,
                                             ErrorList parents)
    : ExceptionErrorBase("GenICamExceptionError", exception.GetDescription(), std::current_exception(), timestamp,
                         std::move(parents))
{}

StdExceptionError::StdExceptionError(const std::exception& exception, Utils::DateTime timestamp, ErrorList parents)
    : ExceptionErrorBase("StdExceptionError", exception.what(), std::current_exception(), timestamp,
                         std::move(parents))
{}

UnknownExceptionError::UnknownExceptionError(const GenICam::gcstring& text, const GenICam::gcstring& fileName,
                                             int line, Utils::DateTime timestamp)
    : ExceptionErrorBase("UnknownExceptionError", text, std::current_exception(), timestamp),
      fileName_(fileName),
      line_(line)
{}

InvalidValueError::InvalidValueError(const GenICam::gcstring& text, Utils::DateTime timestamp)
    : InvalidValueError(text, {}, timestamp)
{}

InvalidValueError::InvalidValueError(const GenICam::gcstring& text, ErrorList parents, Utils::DateTime timestamp)
    : ErrorBase("InvalidValueError", text, timestamp, std::move(parents))
{}

DeviceError::DeviceError(const GenICam::gcstring& text, Utils::DateTime timestamp)
    : ErrorBase("DeviceError", text, timestamp)
{}

}  // namespace Nivex::DataProcessing::Core

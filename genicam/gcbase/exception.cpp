#include "gcbase/exception.h"

#include <cstdarg>
#include <cstdio>
#include <string_view>

namespace GenICam {

GenericException::GenericException(std::string description, const char* sourceFile, int sourceLine,
                                   const char* kind)
    : description_(std::move(description)), sourceFile_(sourceFile ? sourceFile : ""), sourceLine_(sourceLine)
{
    what_ = description_ + " : " + kind + " thrown (file '" + sourceFile_ + "', line " +
            std::to_string(sourceLine_) + ")";
}

GenericException::~GenericException() = default;
BadAllocException::~BadAllocException() = default;
InvalidArgumentException::~InvalidArgumentException() = default;
OutOfRangeException::~OutOfRangeException() = default;
PropertyException::~PropertyException() = default;
RuntimeException::~RuntimeException() = default;
LogicalErrorException::~LogicalErrorException() = default;
AccessException::~AccessException() = default;
TimeoutException::~TimeoutException() = default;
DynamicCastException::~DynamicCastException() = default;

std::string sourceUnitName(const char* file)
{
    std::string_view path = file ? file : "";
    const std::size_t nameStart = path.rfind('/');
    if (nameStart != std::string_view::npos && nameStart > 0) {
        const std::size_t folderStart = path.rfind('/', nameStart - 1);
        if (folderStart != std::string_view::npos) path.remove_prefix(folderStart + 1);
    }
    const std::size_t ending = path.rfind('.');
    if (ending != std::string_view::npos) path = path.substr(0, ending);
    return std::string(path);
}

std::string describeCurrentException()
{
    try {
        throw;
    } catch (const GenericException& e) {
        return e.GetDescription();
    } catch (const std::exception& e) {
        return e.what();
    } catch (...) {
        return "unknown exception";
    }
}

std::string formatText(const char* format, ...)
{
    std::va_list arguments;
    va_start(arguments, format);
    const int length = std::vsnprintf(nullptr, 0, format, arguments);
    va_end(arguments);
    if (length <= 0) return {};

    std::string text(static_cast<std::size_t>(length), ' ');
    va_start(arguments, format);
    std::vsnprintf(text.data(), text.size() + 1, format, arguments);
    va_end(arguments);
    return text;
}

}  // namespace GenICam

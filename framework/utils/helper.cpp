#include "utils/helper.h"

#include <algorithm>

namespace Nivex::DataProcessing::Utils {

GenICam::gcstring Helper::toUpper(const GenICam::gcstring& text)
{
    std::string upper = text.str();
    std::transform(upper.begin(), upper.end(), upper.begin(),
                   [](char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c; });
    return upper;
}

GenICam::gcstring Helper::trim(const GenICam::gcstring& text)
{
    constexpr std::string_view blanks = " \t\n\v\f\r";
    const std::string_view view = text.view();
    const std::size_t first = view.find_first_not_of(blanks);
    if (first == std::string_view::npos) return {};
    return GenICam::gcstring(view.substr(first, view.find_last_not_of(blanks) - first + 1));
}

}  // namespace Nivex::DataProcessing::Utils

#pragma once

#include <cstddef>
#include <string_view>

// The character classes of the C locale, whatever locale the process has.

namespace Plugin::NivexStageletPackageBase::Characters {

constexpr bool isLetter(char c)
{
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

constexpr bool isDigit(char c)
{
    return c >= '0' && c <= '9';
}

constexpr bool isAlnum(char c)
{
    return isLetter(c) || isDigit(c);
}

constexpr bool isSpace(char c)
{
    return c == ' ' || (c >= '\t' && c <= '\r');
}

/// The end of the run of members that begins at `start`.
template <typename IsMember>
std::size_t endOfRun(std::string_view text, std::size_t start, const IsMember& isMember)
{
    while (start < text.size() && isMember(text[start]))
        ++start;
    return start;
}

}  // namespace Plugin::NivexStageletPackageBase::Characters

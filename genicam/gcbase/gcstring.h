#pragma once

#include <compare>
#include <cstddef>
#include <functional>
#include <ostream>
#include <string>
#include <string_view>
#include <vector>

#include "gcbase/export.h"

namespace GenICam {

/// The text type at every edge of the platform: a byte string, UTF-8 by convention, that always ends in a
/// zero byte and may hold further ones. Ordered and compared byte by byte, as unsigned bytes.
/// A null `const char*` is an empty text. Not synchronised.
class GENICAM_API gcstring
{
public:
    static constexpr std::size_t npos = std::string::npos;

    gcstring() = default;
    gcstring(const char* text) : text_(text ? text : "") {}  // NOLINT: texts convert implicitly
    gcstring(const char* text, std::size_t length) : text_(text, length) {}
    gcstring(std::size_t count, char character) : text_(count, character) {}
    gcstring(std::string text) noexcept : text_(std::move(text)) {}  // NOLINT
    explicit gcstring(std::string_view text) : text_(text) {}

    gcstring& operator+=(const gcstring& other)
    {
        text_ += other.text_;
        return *this;
    }
    gcstring& operator+=(char character)
    {
        text_ += character;
        return *this;
    }

    const char* c_str() const noexcept { return text_.c_str(); }
    operator const char*() const noexcept { return text_.c_str(); }  // NOLINT
    const std::string& str() const noexcept { return text_; }
    std::string_view view() const noexcept { return text_; }

    std::size_t size() const noexcept { return text_.size(); }
    std::size_t length() const noexcept { return text_.size(); }
    bool empty() const noexcept { return text_.empty(); }
    void clear() noexcept { text_.clear(); }

    std::size_t find(const gcstring& part, std::size_t from = 0) const { return text_.find(part.text_, from); }
    std::size_t find(char character, std::size_t from = 0) const { return text_.find(character, from); }
    gcstring substr(std::size_t from = 0, std::size_t count = npos) const
    {
        return from <= text_.size() ? gcstring(text_.substr(from, count)) : gcstring();
    }

    friend bool operator==(const gcstring& a, const gcstring& b) noexcept { return a.text_ == b.text_; }
    friend bool operator!=(const gcstring& a, const gcstring& b) noexcept { return a.text_ != b.text_; }
    friend bool operator<(const gcstring& a, const gcstring& b) noexcept { return a.text_ < b.text_; }
    friend bool operator>(const gcstring& a, const gcstring& b) noexcept { return a.text_ > b.text_; }
    // Without this, pairs, tuples and containers of texts would be ordered by the addresses of their characters.
    friend std::strong_ordering operator<=>(const gcstring& a, const gcstring& b) noexcept
    {
        return a.text_ <=> b.text_;
    }
    friend bool operator==(const gcstring& a, const char* b) { return a.text_ == (b ? b : ""); }
    friend bool operator!=(const gcstring& a, const char* b) { return !(a == b); }
    friend bool operator==(const char* a, const gcstring& b) { return b == a; }
    friend bool operator!=(const char* a, const gcstring& b) { return !(b == a); }

    friend gcstring operator+(const gcstring& a, const gcstring& b) { return gcstring(a.text_ + b.text_); }
    friend gcstring operator+(const gcstring& a, const char* b) { return gcstring(a.text_ + (b ? b : "")); }
    friend gcstring operator+(const char* a, const gcstring& b) { return gcstring((a ? a : "") + b.text_); }
    friend gcstring operator+(const gcstring& a, char b) { return gcstring(a.text_ + b); }

    friend std::ostream& operator<<(std::ostream& stream, const gcstring& text) { return stream << text.text_; }

private:
    std::string text_;
};

using gcstring_vector = std::vector<gcstring>;

}  // namespace GenICam

template <>
struct std::hash<GenICam::gcstring>
{
    std::size_t operator()(const GenICam::gcstring& text) const noexcept
    {
        return std::hash<std::string>()(text.str());
    }
};

#include "base/featurereader.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <optional>

#include "gcbase/exception.h"
#include "genapi/genapi.h"

#include "base/featurewriter.h"

namespace Nivex {

using GenApi::IValue;
using GenICam::gcstring;

namespace {

constexpr std::size_t maxListed = 10;
constexpr std::size_t maxQuoted = 60;    ///< Bytes of a name or value in a message.
constexpr std::size_t maxCause = 300;    ///< Bytes of a cause, which may quote the value too.
constexpr double floatTolerance = 1e-4;  ///< Relative; cameras round to what their clocks and converters can do.

/// At most `limit` bytes of whole characters, without any that would spoil a message.
std::string shown(std::string_view text, std::size_t limit)
{
    const bool isCut = text.size() > limit;
    std::size_t end = std::min(text.size(), limit);
    while (isCut && end > 0 && (static_cast<unsigned char>(text[end]) & 0xC0) == 0x80)
        --end;
    std::string result(text.substr(0, end));
    std::replace_if(
        result.begin(), result.end(), [](char c) { return static_cast<unsigned char>(c) < ' '; }, '?');
    return isCut ? result + "..." : result;
}

template <typename Number>
std::optional<Number> numberIn(std::string_view text)
{
    Number number{};
    const auto [stop, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc{} || stop != text.data() + text.size()) return std::nullopt;
    return number;
}

std::optional<std::int64_t> integerIn(std::string_view text)
{
    if (!text.starts_with("0x") && !text.starts_with("0X")) return numberIn<std::int64_t>(text);
    std::uint64_t bits = 0;
    const auto [stop, error] = std::from_chars(text.data() + 2, text.data() + text.size(), bits, 16);
    if (error != std::errc{} || stop != text.data() + text.size()) return std::nullopt;
    return static_cast<std::int64_t>(bits);
}

bool isBlank(char c)
{
    return c == ' ' || c == '\t';
}

bool equalsIgnoringCase(std::string_view a, std::string_view b)
{
    const auto lower = [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; };
    return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                      [&](char left, char right) { return lower(left) == lower(right); });
}

bool isNear(GenApi::IFloat& node, double wanted)
{
    const double increment = node.HasInc() ? node.GetInc() : 0.0;
    return std::abs(node.GetValue(false, true) - wanted) <= std::max(std::abs(wanted) * floatTolerance, increment);
}

/// True if the device's value, not the cached one, is what `text` says, in whatever spelling.
bool holds(IValue& node, std::string_view text)
{
    const gcstring present = node.ToString(false, true);
    if (present.view() == text) return true;
    if (auto* real = dynamic_cast<GenApi::IFloat*>(&node)) {
        const auto wanted = numberIn<double>(text);
        return wanted && isNear(*real, *wanted);
    }
    if (dynamic_cast<GenApi::IBoolean*>(&node))
        return equalsIgnoringCase(text, present.view() == "1" ? "true" : "false");
    if (dynamic_cast<GenApi::IEnumeration*>(&node) || dynamic_cast<GenApi::IString*>(&node)) return false;
    if (auto* integer = dynamic_cast<GenApi::IInteger*>(&node)) {
        const auto wanted = integerIn(text);
        if (wanted) return *wanted == integer->GetValue();
    }
    return equalsIgnoringCase(present.view(), text);
}

}  // namespace

void FeatureReader::Read(std::string_view text)
{
    Split(text);
    ApplyAll();
    // A value may be refused only because of one that a later line changes, as an offset bounds a width.
    if (failures_ > 0) ApplyAll();
    if (failures_ == 0) return;
    const std::string more = failures_ > maxListed ? "\n... and more" : "";
    GENICAM_THROW(RuntimeException, "%zu of %zu lines could not be applied:%s%s", failures_, lines_.size(),
                  listed_.c_str(), more.c_str());
}

void FeatureReader::Split(std::string_view text)
{
    for (std::size_t number = 1; !text.empty(); ++number) {
        const std::size_t end = text.find('\n');
        std::string_view line = text.substr(0, end);
        text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
        if (line.ends_with('\r')) line.remove_suffix(1);
        const auto first = std::find_if_not(line.begin(), line.end(), isBlank);
        if (first == line.end() || *first == '#') continue;
        const std::size_t tab = line.find('\t');
        const bool hasTab = tab != std::string_view::npos;
        lines_.push_back({.number = number,
                          .name = line.substr(0, tab),
                          .value = hasTab ? line.substr(tab + 1) : std::string_view{},
                          .hasTab = hasTab});
    }
}

void FeatureReader::ApplyAll()
{
    failures_ = 0;
    listed_.clear();
    for (const Line& line : lines_) {
        const std::string cause = Apply(line);
        if (!cause.empty()) NoteFailure(line, cause);
    }
}

std::string FeatureReader::Apply(const Line& line) const
{
    if (!line.hasTab) return "there is no tab between name and value.";
    GenApi::INode* node = nodeMap_.GetNode(gcstring(line.name));
    if (!node) return "there is no feature of that name.";
    if (!isSetting(*node)) return "the feature is no setting.";
    try {
        IValue& value = dynamic_cast<IValue&>(*node);
        value.FromString(gcstring(line.value));
        if (verify_ && GenApi::IsReadable(node) && !holds(value, line.value))
            return "it is " + value.ToString(false, true).str() + " after it was written.";
        return {};
    } catch (const std::exception&) {
        return GenICam::describeCurrentException();
    }
}

void FeatureReader::NoteFailure(const Line& line, const std::string& cause)
{
    if (++failures_ > maxListed) return;
    const std::string value = line.hasTab ? " = \"" + shown(line.value, maxQuoted) + "\"" : "";
    listed_ += "\nline " + std::to_string(line.number) + ": " + shown(line.name, maxQuoted) + value + ": " +
               shown(cause, maxCause);
}

}  // namespace Nivex

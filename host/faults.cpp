#include "faults.h"

#include <algorithm>

#include "nearest.h"
#include "texttable.h"

namespace Host {

std::string suggest(std::string_view name, const std::vector<std::string>& known)
{
    constexpr std::size_t few = 12;
    if (const auto nearest = findNearest(name, known)) return " Did you mean \"" + *nearest + "\"?";
    if (known.empty() || known.size() > few) return {};
    std::string text = " Known: ";
    for (const std::string& entry : known) {
        if (&entry != &known.front()) text += ", ";
        text += entry;
    }
    return text + ".";
}

void FaultList::add(TextPosition position, std::string object, std::string message)
{
    if (count_++ < most) faults_.push_back({position, std::move(object), std::move(message)});
}

void FaultList::addUnknown(TextPosition position, std::string object, std::string message, std::string_view name,
                           const std::vector<std::string>& known)
{
    if (count_ < most) message += suggest(name, known);
    add(position, std::move(object), std::move(message));
}

std::vector<Fault> FaultList::getFaults() const
{
    std::vector<Fault> sorted = faults_;
    std::stable_sort(sorted.begin(), sorted.end(),
                     [](const Fault& a, const Fault& b) { return a.position < b.position; });
    return sorted;
}

std::vector<std::string> FaultList::toLines(const std::string& file) const
{
    std::vector<std::string> lines;
    for (const Fault& fault : getFaults()) {
        lines.push_back(file + ":" + std::to_string(fault.position.line) + ":" +
                        std::to_string(fault.position.column) + ": " + escapeControls(fault.object) + ": " +
                        escapeControls(fault.message));
    }
    if (count_ > most) lines.push_back(file + ": " + std::to_string(count_ - most) + " further faults.");
    return lines;
}

}  // namespace Host

#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "runtime/jsondocument.h"

namespace Host {

using Nivex::DataProcessing::Runtime::TextPosition;

/// Something wrong with a recipe: where in the file, on what, and why.
struct Fault
{
    TextPosition position;
    std::string object;  ///< As a person calls it: `node "Writer"`.
    std::string message;
};

/// Collects the faults of a recipe from all stages of loading it. Beyond `most` they are only counted.
class FaultList
{
public:
    static constexpr std::size_t most = 100;

    void add(TextPosition position, std::string object, std::string message);
    /// A name that is not known: the message is followed by the nearest of the known names, or else by the known
    /// names if they are few.
    void addUnknown(TextPosition position, std::string object, std::string message, std::string_view name,
                    const std::vector<std::string>& known);

    bool empty() const { return count_ == 0; }
    std::size_t getCount() const { return count_; }
    /// In the order of the file.
    std::vector<Fault> getFaults() const;
    /// One line each, "FILE:LINE:COLUMN: object: message", and how many there are beyond `most`.
    std::vector<std::string> toLines(const std::string& file) const;

private:
    std::size_t count_ = 0;
    std::vector<Fault> faults_;
};

/// The help that addUnknown gives, with a blank in front; empty if there is none.
std::string suggest(std::string_view name, const std::vector<std::string>& known);

}  // namespace Host

#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "genapi/inodemap.h"

namespace Nivex {

/// Applies the lines of a feature-stream text to a node map. For one use, under the map's lock. Takes time and
/// memory in proportion to the text, whatever is in it.
class FeatureReader
{
public:
    FeatureReader(GenApi::INodeMap& nodeMap, bool verify) : nodeMap_(nodeMap), verify_(verify) {}

    /// RuntimeException that lists the lines which failed.
    void Read(std::string_view text);

private:
    struct Line
    {
        std::size_t number;
        std::string_view name;
        std::string_view value;
        bool hasTab;
    };

    void Split(std::string_view text);
    void ApplyAll();
    /// Why it failed; empty if it did not.
    std::string Apply(const Line& line) const;
    void NoteFailure(const Line& line, const std::string& cause);

    GenApi::INodeMap& nodeMap_;
    const bool verify_;
    std::vector<Line> lines_;
    std::size_t failures_ = 0;
    std::string listed_;  ///< The first failures, a line each.
};

}  // namespace Nivex

#pragma once

#include <span>
#include <utility>
#include <vector>

#include "genapi/nodebase.h"
#include "genapi/number.h"

namespace GenApi {

/// Where an Integer or Float has its value: in a place of its own, in another node, or in one of several places
/// that an index chooses; with a value of another node also the nodes that get a copy of what is written.
template <typename Number>
class ValueSource
{
public:
    bool TakeElement(const ElementReader& element);
    /// Refuses a node without a value.
    void Finish(const ElementReader& own);

    /// The place that counts now; AccessException if the index cannot be read.
    const Source<Number>& Current() const;
    /// The node of the value, which never changes; none where an index chooses.
    const NumberRef& Fixed() const { return single_.Reference(); }
    /// The node of the value and those of its copies, in the order of the description; empty without copies.
    std::span<const NumberRef> Written() const
    {
        return copies_ ? std::span<const NumberRef>(written_) : std::span<const NumberRef>();
    }

    EAccessMode Mode() const;
    Number Read(bool ignoreCache) const { return Current().Read(ignoreCache); }
    /// Writes; true if the place is the node's own.
    bool Write(Number value);

private:
    static constexpr std::size_t notIndexed = SIZE_MAX;

    /// Which of the indexed places counts now, if one does.
    std::size_t Choice() const;
    static bool WriteTo(Source<Number>& place, Number value);

    Source<Number> single_;
    bool copies_ = false;
    std::vector<NumberRef> written_;
    NumberRef index_;
    std::vector<std::pair<int64_t, Source<Number>>> indexed_;  // in the order of the indices
    Source<Number> otherwise_;
};

extern template class ValueSource<int64_t>;
extern template class ValueSource<double>;

}  // namespace GenApi

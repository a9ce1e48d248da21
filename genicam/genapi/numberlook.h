#pragma once

#include <optional>

#include "genapi/number.h"

namespace GenApi {

class ElementReader;

/// Unit and representation: a node's own, else those of the node its value comes from.
class NumberLook
{
public:
    bool TakeElement(const ElementReader& element);
    /// `source` may be no node.
    gcstring Unit(const NumberRef& source) const;
    ERepresentation Representation(const NumberRef& source) const;

private:
    gcstring unit_;
    std::optional<ERepresentation> representation_;
};

}  // namespace GenApi

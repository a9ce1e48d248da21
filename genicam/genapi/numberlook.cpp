#include "genapi/numberlook.h"

#include "genapi/nodebuilder.h"

namespace GenApi {

namespace {

constexpr Word<ERepresentation> representations[] = {
    {"Linear", Linear},       {"Logarithmic", Logarithmic}, {"Boolean", Boolean},      {"PureNumber", PureNumber},
    {"HexNumber", HexNumber}, {"IPV4Address", IPV4Address}, {"MACAddress", MACAddress}};

}  // namespace

bool NumberLook::TakeElement(const ElementReader& element)
{
    if (element.Is("Unit")) {
        unit_ = gcstring(element.Text());
    } else if (element.Is("Representation")) {
        representation_ = element.AnyWordOf(representations, PureNumber);
    } else {
        return false;
    }
    return true;
}

gcstring NumberLook::Unit(const NumberRef& source) const
{
    return unit_.empty() && source ? source->Unit() : unit_;
}

ERepresentation NumberLook::Representation(const NumberRef& source) const
{
    if (representation_) return *representation_;
    return source ? source->Representation() : PureNumber;
}

}  // namespace GenApi

#include "genapi/floatnode.h"

#include <limits>

#include "genapi/nodebuilder.h"

namespace GenApi {

void CFloatNode::WriteFloat(double value)
{
    CountCopies(value_.Written().size());
    Stored(value_.Write(value));
}

double CFloatNode::MinFloat()
{
    if (min_.IsGiven()) return min_.ReadChecked();
    const NumberRef& value = Value();
    return value ? value->MinFloat() : std::numeric_limits<double>::lowest();
}

double CFloatNode::MaxFloat()
{
    if (max_.IsGiven()) return max_.ReadChecked();
    const NumberRef& value = Value();
    return value ? value->MaxFloat() : std::numeric_limits<double>::max();
}

std::optional<double> CFloatNode::IncFloat()
{
    if (inc_.IsGiven()) return inc_.ReadChecked();
    const NumberRef& value = Value();
    return value ? value->IncFloat() : std::nullopt;
}

bool CFloatNode::TakeElement(ElementReader& element)
{
    if (value_.TakeElement(element)) return true;
    if (element.Is("pMin"))
        min_.Refer(element.Number(Link::Limit));
    else if (element.Is("pMax"))
        max_.Refer(element.Number(Link::Limit));
    else if (element.Is("pInc"))
        inc_.Refer(element.Number(Link::Limit));
    else if (element.Is("Min"))
        min_.Set(element.Float());
    else if (element.Is("Max"))
        max_.Set(element.Float());
    else if (element.Is("Inc"))
        inc_.Set(element.Float());
    else
        return CFloatBase::TakeElement(element);
    return true;
}

void CFloatNode::Finish(ElementReader& own)
{
    CFloatBase::Finish(own);
    value_.Finish(own);
}

}  // namespace GenApi

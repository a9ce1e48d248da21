#include "genapi/integernode.h"

#include <algorithm>
#include <limits>

#include "gcbase/exception.h"
#include "genapi/nodebuilder.h"
#include "genapi/textconversion.h"

namespace GenApi {

int64_t CIntegerNode::MinInteger()
{
    if (min_.IsGiven()) return min_.ReadChecked();
    return value_.Reference() ? value_.Reference()->MinInteger() : std::numeric_limits<int64_t>::min();
}

int64_t CIntegerNode::MaxInteger()
{
    if (max_.IsGiven()) return max_.ReadChecked();
    return value_.Reference() ? value_.Reference()->MaxInteger() : std::numeric_limits<int64_t>::max();
}

int64_t CIntegerNode::IncInteger()
{
    if (inc_.IsGiven()) return inc_.ReadChecked();
    return value_.Reference() ? value_.Reference()->IncInteger() : 1;
}

bool CIntegerNode::TakeElement(ElementReader& element)
{
    if (element.Is("pValue"))
        value_.Refer(element.Number(Link::Value));
    else if (element.Is("Value"))
        value_.Set(element.Integer());
    else if (element.Is("pMin"))
        min_.Refer(element.Number(Link::Parameter));
    else if (element.Is("pMax"))
        max_.Refer(element.Number(Link::Parameter));
    else if (element.Is("pInc"))
        inc_.Refer(element.Number(Link::Parameter));
    else if (element.Is("Min"))
        min_.Set(element.Integer());
    else if (element.Is("Max"))
        max_.Set(element.Integer());
    else if (element.Is("Inc"))
        inc_.Set(element.Integer());
    else if (element.Is("ValidValueSet"))
        TakeValidValues(element);
    else if (element.IsOneOf({"pValueCopy", "pIndex"}))
        element.RefuseUnsupported();
    else
        return CIntegerBase::TakeElement(element);
    return true;
}

void CIntegerNode::TakeValidValues(const ElementReader& element)
{
    for (std::string_view rest = element.Text(); !rest.empty();) {
        const std::size_t end = std::min(rest.find(';'), rest.size());
        const std::string_view word = Trimmed(rest.substr(0, end));
        if (!word.empty()) validValues_.push_back(element.IntegerOf(word));
        rest.remove_prefix(std::min(end + 1, rest.size()));
    }
    std::sort(validValues_.begin(), validValues_.end());
}

void CIntegerNode::Finish(ElementReader& own)
{
    CIntegerBase::Finish(own);
    if (!value_.IsGiven()) own.Refuse("it has neither <Value> nor <pValue>");
}

std::vector<int64_t> CIntegerNode::ValidValues()
{
    if (!validValues_.empty() || !value_.Reference()) return validValues_;
    return value_.Reference()->ValidValues();
}

void CIntegerNode::CheckFurther(int64_t value)
{
    const std::vector<int64_t> valid = ValidValues();
    if (valid.empty() || std::binary_search(valid.begin(), valid.end(), value)) return;
    GENICAM_THROW(OutOfRangeException, "Node \"%s\": %lld is none of its valid values.", Name().c_str(),
                  static_cast<long long>(value));
}

}  // namespace GenApi

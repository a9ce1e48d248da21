#include "genapi/integernode.h"

#include <algorithm>
#include <limits>

#include "gcbase/exception.h"
#include "genapi/nodebuilder.h"
#include "genapi/nodemap.h"
#include "genapi/textconversion.h"

namespace GenApi {

void CIntegerNode::WriteInteger(int64_t value)
{
    CountCopies(value_.Written().size());
    Stored(value_.Write(value));
}

int64_t CIntegerNode::MinInteger()
{
    if (min_.IsGiven()) return min_.ReadChecked();
    return OfValue(&INumber::MinInteger, std::numeric_limits<int64_t>::min(), std::max<int64_t>);
}

int64_t CIntegerNode::MaxInteger()
{
    if (max_.IsGiven()) return max_.ReadChecked();
    return OfValue(&INumber::MaxInteger, std::numeric_limits<int64_t>::max(), std::min<int64_t>);
}

int64_t CIntegerNode::IncInteger()
{
    if (inc_.IsGiven()) return inc_.ReadChecked();
    return OfValue(&INumber::IncInteger, 1, std::max<int64_t>);
}

int64_t CIntegerNode::OfValue(int64_t (INumber::*limit)(), int64_t otherwise,
                              const int64_t& (*better)(const int64_t&, const int64_t&)) const
{
    const NumberRef& value = value_.Current().Reference();
    if (!value) return otherwise;
    int64_t result = (value.operator->()->*limit)();
    for (const NumberRef& written : Written())
        result = better(result, (written.operator->()->*limit)());
    return result;
}

// Nothing could be written that all of them take.
bool CIntegerNode::IncrementsDiffer() const
{
    const auto written = Written();
    return !inc_.IsGiven() && std::any_of(written.begin(), written.end(), [&](const NumberRef& each) {
        return each->IncInteger() != written.front()->IncInteger();
    });
}

std::span<const NumberRef> CIntegerNode::Written() const
{
    const auto written = value_.Written();
    Map().CountStep(*this, static_cast<int>(written.size()));
    return written;
}

EAccessMode CIntegerNode::BaseMode() const
{
    const EAccessMode mode = value_.Mode();
    return IsWritable(mode) && IncrementsDiffer() ? Combine(mode, RO) : mode;
}

bool CIntegerNode::TakeElement(ElementReader& element)
{
    if (value_.TakeElement(element)) return true;
    if (element.Is("pMin"))
        min_.Refer(element.Number(Link::Limit));
    else if (element.Is("pMax"))
        max_.Refer(element.Number(Link::Limit));
    else if (element.Is("pInc"))
        inc_.Refer(element.Number(Link::Limit));
    else if (element.Is("Min"))
        min_.Set(element.Integer());
    else if (element.Is("Max"))
        max_.Set(element.Integer());
    else if (element.Is("Inc"))
        inc_.Set(element.Integer());
    else if (element.Is("ValidValueSet"))
        TakeValidValues(element);
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
    value_.Finish(own);
}

std::vector<int64_t> CIntegerNode::ValidValues()
{
    if (!validValues_.empty()) return validValues_;
    const NumberRef& value = value_.Current().Reference();
    return value ? value->ValidValues() : std::vector<int64_t>();
}

void CIntegerNode::CheckFurther(int64_t value)
{
    const std::vector<int64_t> valid = ValidValues();
    if (valid.empty() || std::binary_search(valid.begin(), valid.end(), value)) return;
    GENICAM_THROW(OutOfRangeException, "Node \"%s\": %lld is none of its valid values.", Name().c_str(),
                  static_cast<long long>(value));
}

}  // namespace GenApi

#include "genapi/valuesource.h"

#include <algorithm>

#include "genapi/nodebuilder.h"

namespace GenApi {

namespace {

void set(Source<int64_t>& source, const ElementReader& element)
{
    source.Set(element.Integer());
}

void set(Source<double>& source, const ElementReader& element)
{
    source.Set(element.Float());
}

void writeTo(const NumberRef& node, int64_t value)
{
    node->WriteInteger(value);
}

void writeTo(const NumberRef& node, double value)
{
    node->WriteFloat(value);
}

int64_t indexOf(const ElementReader& element)
{
    return element.IntegerOf(element.Attribute("Index"));
}

}  // namespace

template <typename Number>
bool ValueSource<Number>::TakeElement(const ElementReader& element)
{
    if (element.Is("Value")) {
        set(single_, element);
    } else if (element.Is("pValue")) {
        single_.Refer(element.Number(Link::Value));
        written_.push_back(single_.Reference());
    } else if (element.Is("pValueCopy")) {
        written_.push_back(element.Number(Link::Copy));
        copies_ = true;
    } else if (element.Is("pIndex")) {
        index_ = element.Number(Link::Parameter);
    } else if (element.Is("ValueIndexed")) {
        set(indexed_.emplace_back(indexOf(element), Source<Number>()).second, element);
    } else if (element.Is("pValueIndexed")) {
        indexed_.emplace_back(indexOf(element), Source<Number>()).second.Refer(element.Number(Link::Value));
    } else if (element.Is("ValueDefault")) {
        set(otherwise_, element);
    } else if (element.Is("pValueDefault")) {
        otherwise_.Refer(element.Number(Link::Value));
    } else {
        return false;
    }
    return true;
}

template <typename Number>
void ValueSource<Number>::Finish(const ElementReader& own)
{
    std::stable_sort(indexed_.begin(), indexed_.end(),
                     [](const auto& a, const auto& b) { return a.first < b.first; });
    if (index_) {
        if (single_.IsGiven()) own.Refuse("it has <pIndex> beside <Value> or <pValue>");
        if (!otherwise_.IsGiven()) own.Refuse("it has neither <ValueDefault> nor <pValueDefault>");
        return;
    }
    if (!single_.IsGiven()) own.Refuse("it has neither <Value> nor <pValue>");
    if (copies_ && !single_.Reference()) own.Refuse("it has <pValueCopy> without <pValue>");
    // Its increment counts for the access mode like those of the copies.
    if (copies_) own.NumberOf(single_.Reference().Node().Name().view(), Link::Copy);
    if (!indexed_.empty() || otherwise_.IsGiven()) own.Refuse("it has indexed values without <pIndex>");
}

template <typename Number>
std::size_t ValueSource<Number>::Choice() const
{
    const int64_t index = index_.Readable().ReadInteger(false);
    const auto found = std::lower_bound(indexed_.begin(), indexed_.end(), index,
                                        [](const auto& entry, int64_t wanted) { return entry.first < wanted; });
    const bool isThere = found != indexed_.end() && found->first == index;
    return isThere ? static_cast<std::size_t>(found - indexed_.begin()) : notIndexed;
}

template <typename Number>
const Source<Number>& ValueSource<Number>::Current() const
{
    if (!index_) return single_;
    const std::size_t choice = Choice();
    return choice == notIndexed ? otherwise_ : indexed_[choice].second;
}

template <typename Number>
EAccessMode ValueSource<Number>::Mode() const
{
    if (index_ && !index_.IsReadable()) return NA;
    const NumberRef& node = Current().Reference();
    const EAccessMode mode = node ? node.Node().Mode() : RW;
    const auto written = Written();
    const bool allWritable = std::all_of(written.begin(), written.end(),
                                         [](const NumberRef& each) { return IsWritable(each.Node().Mode()); });
    return allWritable ? mode : Combine(mode, RO);
}

template <typename Number>
bool ValueSource<Number>::WriteTo(Source<Number>& place, Number value)
{
    place.Write(value);
    return !place.Reference();
}

template <typename Number>
bool ValueSource<Number>::Write(Number value)
{
    if (copies_) {
        for (const NumberRef& node : written_)
            writeTo(node, value);
        return false;
    }
    if (!index_) return WriteTo(single_, value);
    const std::size_t choice = Choice();
    return WriteTo(choice == notIndexed ? otherwise_ : indexed_[choice].second, value);
}

template class ValueSource<int64_t>;
template class ValueSource<double>;

}  // namespace GenApi

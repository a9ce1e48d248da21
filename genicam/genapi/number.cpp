#include "genapi/number.h"

#include <cmath>
#include <limits>

#include "gcbase/exception.h"
#include "genapi/nodebase.h"

namespace GenApi {

namespace {

constexpr double integerEnd = 9223372036854775808.0;  // 2^63, the first that is too large

double readAs(INumber& number, bool ignoreCache, double /*kind*/)
{
    return number.ReadFloat(ignoreCache);
}

int64_t readAs(INumber& number, bool ignoreCache, int64_t /*kind*/)
{
    return number.ReadInteger(ignoreCache);
}

void writeAs(INumber& number, double value)
{
    number.WriteFloat(value);
}

void writeAs(INumber& number, int64_t value)
{
    number.WriteInteger(value);
}

}  // namespace

int64_t RoundToInteger(double value)
{
    const double rounded = std::round(value);
    if (!(rounded >= -integerEnd && rounded < integerEnd))
        GENICAM_THROW(OutOfRangeException, "%g is no 64-bit integer.", value);
    return static_cast<int64_t>(rounded);
}

int64_t ClampToInteger(double value, int64_t ifNone)
{
    if (std::isnan(value)) return ifNone;
    if (value >= integerEnd) return std::numeric_limits<int64_t>::max();
    if (value <= -integerEnd) return std::numeric_limits<int64_t>::min();
    return static_cast<int64_t>(std::round(value));
}

bool NumberRef::IsReadable() const
{
    return GenApi::IsReadable(node_->Mode());
}

INumber& NumberRef::Readable() const
{
    node_->RequireReadable();
    return *number_;
}

template <typename Number>
Number Source<Number>::Read(bool ignoreCache) const
{
    return reference_ ? readAs(*reference_.operator->(), ignoreCache, Number()) : own_.value_or(Number());
}

template <typename Number>
Number Source<Number>::ReadChecked() const
{
    return reference_ ? readAs(reference_.Readable(), false, Number()) : own_.value_or(Number());
}

template <typename Number>
void Source<Number>::Write(Number value)
{
    if (reference_) {
        writeAs(*reference_.operator->(), value);
    } else {
        own_ = value;
    }
}

template class Source<int64_t>;
template class Source<double>;

}  // namespace GenApi

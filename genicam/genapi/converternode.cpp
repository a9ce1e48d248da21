#include "genapi/converternode.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "gcbase/exception.h"
#include "genapi/nodemap.h"

namespace GenApi {

namespace {

using IntegerLimits = std::numeric_limits<int64_t>;
using FloatLimits = std::numeric_limits<double>;

// Not a limit: the end of the type.
std::optional<FormulaNumber> unlessEnd(int64_t value)
{
    if (value == IntegerLimits::min() || value == IntegerLimits::max()) return std::nullopt;
    return value;
}

std::optional<FormulaNumber> unlessEnd(double value)
{
    if (!(std::abs(value) < FloatLimits::max())) return std::nullopt;
    return value;
}

}  // namespace

bool ConverterFormulas::TakeElement(ElementReader& element)
{
    static constexpr Word<Slope> slopes[] = {{"Increasing", Slope::Increasing},
                                             {"Decreasing", Slope::Decreasing},
                                             {"Varying", Slope::Varying},
                                             {"Automatic", Slope::Automatic}};
    if (element.Is("FormulaTo"))
        toText_.emplace(element);
    else if (element.Is("FormulaFrom"))
        fromText_.emplace(element);
    else if (element.Is("pValue"))
        value_ = element.Number(Link::Value);
    else if (element.Is("Slope"))
        slope_ = element.AnyWordOf(slopes, Slope::Automatic);
    else if (element.Is("IsLinear"))
        linear_ = element.YesNo();
    else
        return variables_.TakeElement(element);
    return true;
}

void ConverterFormulas::Finish(ElementReader& own)
{
    if (!value_) own.Refuse("it has no <pValue>");
    if (!toText_) own.Refuse("it has no <FormulaTo>");
    if (!fromText_) own.Refuse("it has no <FormulaFrom>");
    to_ = variables_.Compile(*toText_, "FROM");
    from_ = variables_.Compile(*fromText_, "TO");
    hasRange_ = slope_ != Slope::Varying && variables_.IsFunctionOf(from_, value_.Node());
    toText_.reset();
    fromText_.reset();
    variables_.EndCompilation();
}

EAccessMode ConverterFormulas::Mode() const
{
    const EAccessMode mode = value_.Node().Mode();
    if (!IsAvailable(mode)) return mode;
    const bool reads = IsReadable(mode) && variables_.AreAllReadable();
    const bool writes = IsWritable(mode) && variables_.AreReadable(to_);
    if (reads) return writes ? RW : RO;
    return writes ? WO : NA;
}

FormulaNumber ConverterFormulas::Read(bool ignoreCache) const
{
    const FormulaNumber device = NaturalValue(*value_.operator->(), variables_.Kind(), ignoreCache);
    return variables_.Evaluate(from_, device, {.ignoreCache = ignoreCache});
}

FormulaNumber ConverterFormulas::ToDevice(FormulaNumber value) const
{
    // What the formula takes from the node that is about to be written must be what the device has.
    return variables_.Evaluate(to_, value, {.fresh = &value_.Node()});
}

void ConverterFormulas::Write(FormulaNumber value) const
{
    const FormulaNumber device = ToDevice(value);
    const bool asInteger = variables_.Kind() == FormulaKind::Integer || value_->IsIntegral();
    if (asInteger && !device.IsFloat()) {
        value_->WriteInteger(device.AsInteger());
    } else {
        value_->WriteFloat(device.AsFloat());
    }
}

void ConverterFormulas::CheckValidValues(FormulaNumber value) const
{
    const std::vector<int64_t> valid = value_->ValidValues();
    if (valid.empty()) return;
    const FormulaNumber device = ToDevice(value);
    const int64_t number = device.IsFloat() ? RoundToInteger(device.AsFloat()) : device.AsInteger();
    if (std::find(valid.begin(), valid.end(), number) != valid.end()) return;
    GENICAM_THROW(
        OutOfRangeException, "Node \"%s\": %g becomes %lld, which is none of the valid values of \"%s\".",
        owner_.Name().c_str(), value.AsFloat(), static_cast<long long>(number), value_.Node().Name().c_str());
}

std::optional<FormulaNumber> ConverterFormulas::FromDevice(const std::optional<FormulaNumber>& value) const
{
    if (!value) return std::nullopt;
    const auto converted = variables_.TryEvaluate(from_, *value);
    return converted && std::isnan(converted->AsFloat()) ? std::nullopt : converted;
}

ConverterFormulas::Range ConverterFormulas::DeviceLimits() const
{
    if (value_->IsIntegral()) return {unlessEnd(value_->MinInteger()), unlessEnd(value_->MaxInteger())};
    return {unlessEnd(value_->MinFloat()), unlessEnd(value_->MaxFloat())};
}

ConverterFormulas::Range ConverterFormulas::Limits() const
{
    owner_.Map().CountStep(owner_);
    if (!hasRange_) return {};
    const Range device = DeviceLimits();
    Range range = {FromDevice(device.min), FromDevice(device.max)};
    if (IsDecreasing(device)) std::swap(range.min, range.max);
    return range;
}

FormulaNumber ConverterFormulas::DeviceStep() const
{
    if (value_->IsIntegral()) return std::max<int64_t>(value_->IncInteger(), 1);
    return value_->IncFloat().value_or(1);
}

// What becomes of an end of the device's numbers, or of one that lies a step `inwards` of it where that has no
// result; where there is no such end, of one beyond the other.
std::optional<FormulaNumber> ConverterFormulas::FromNear(const std::optional<FormulaNumber>& end,
                                                         const std::optional<FormulaNumber>& otherEnd,
                                                         double inwards) const
{
    if (!end) return otherEnd ? FromDevice(otherEnd->AsFloat() - inwards) : std::nullopt;
    const auto converted = FromDevice(end);
    return converted ? converted : FromDevice(end->AsFloat() + inwards);
}

bool ConverterFormulas::IsDecreasing(const Range& device) const
{
    if (slope_ != Slope::Automatic) return slope_ == Slope::Decreasing;
    const double step = DeviceStep().AsFloat();
    const auto low = FromNear(device.min, device.max, step);
    const auto high = FromNear(device.max, device.min, -step);
    return low && high && low->AsFloat() > high->AsFloat();
}

std::optional<FormulaNumber> ConverterFormulas::Increment() const
{
    if (!linear_ || (!value_->IsIntegral() && !value_->IncFloat())) return std::nullopt;
    const auto step = variables_.TryEvaluate(from_, DeviceStep());
    const auto origin = variables_.TryEvaluate(from_, int64_t{0});
    if (!step || !origin) return std::nullopt;
    if (step->IsFloat() || origin->IsFloat()) return std::abs(step->AsFloat() - origin->AsFloat());
    int64_t difference = 0;
    const auto [low, high] = std::minmax({step->AsInteger(), origin->AsInteger()});
    if (__builtin_sub_overflow(high, low, &difference)) return std::nullopt;
    return difference;
}

void CConverterNode::WriteFloat(double value)
{
    formulas_.Write(value);
    Stored(false);
}

double CConverterNode::MinFloat()
{
    return formulas_.Limits().min.value_or(FloatLimits::lowest()).AsFloat();
}

double CConverterNode::MaxFloat()
{
    return formulas_.Limits().max.value_or(FloatLimits::max()).AsFloat();
}

std::optional<double> CConverterNode::IncFloat()
{
    const auto increment = formulas_.Increment();
    return increment ? std::optional<double>(increment->AsFloat()) : std::nullopt;
}

bool CConverterNode::TakeElement(ElementReader& element)
{
    return formulas_.TakeElement(element) || CFloatBase::TakeElement(element);
}

void CConverterNode::Finish(ElementReader& own)
{
    CFloatBase::Finish(own);
    formulas_.Finish(own);
}

void CIntConverterNode::WriteInteger(int64_t value)
{
    formulas_.Write(value);
    Stored(false);
}

int64_t CIntConverterNode::MinInteger()
{
    return formulas_.Limits().min.value_or(IntegerLimits::min()).AsInteger();
}

int64_t CIntConverterNode::MaxInteger()
{
    return formulas_.Limits().max.value_or(IntegerLimits::max()).AsInteger();
}

int64_t CIntConverterNode::IncInteger()
{
    return formulas_.Increment().value_or(int64_t{1}).AsInteger();
}

bool CIntConverterNode::TakeElement(ElementReader& element)
{
    return formulas_.TakeElement(element) || CIntegerBase::TakeElement(element);
}

void CIntConverterNode::Finish(ElementReader& own)
{
    CIntegerBase::Finish(own);
    formulas_.Finish(own);
}

}  // namespace GenApi

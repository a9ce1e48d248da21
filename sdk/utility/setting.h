#pragma once

#include <algorithm>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "gcbase/exception.h"
#include "gcbase/gcstring.h"

namespace Nivex {

/// The fixed texts of a setting.
struct ParameterTexts
{
    GenICam::gcstring name;
    GenICam::gcstring displayName;
    GenICam::gcstring toolTip;
    GenICam::gcstring description;
};

/// An integer with limits, owned by an SDK object. Not synchronised.
class CIntegerSetting
{
public:
    CIntegerSetting(ParameterTexts texts, std::int64_t value, std::int64_t min, std::int64_t max,
                    std::int64_t inc = 1)
        : texts_(std::move(texts)), value_(value), min_(min), max_(max), inc_(inc)
    {}

    std::int64_t GetValue() const { return value_; }
    std::int64_t GetMin() const { return min_; }
    std::int64_t GetMax() const { return max_; }
    std::int64_t GetInc() const { return inc_; }
    const ParameterTexts& GetTexts() const { return texts_; }

    /// Raises OutOfRangeException, and keeps the value, if `value` is outside the limits or off the increment.
    void SetValue(std::int64_t value)
    {
        if (value < min_ || value > max_ || (value - min_) % inc_ != 0) {
            GENICAM_THROW(OutOfRangeException, "%s: value %lld is not one of %lld to %lld in steps of %lld.",
                          texts_.name.c_str(), static_cast<long long>(value), static_cast<long long>(min_),
                          static_cast<long long>(max_), static_cast<long long>(inc_));
        }
        value_ = value;
    }

private:
    ParameterTexts texts_;
    std::int64_t value_;
    std::int64_t min_;
    std::int64_t max_;
    std::int64_t inc_;
};

/// A floating-point number with limits, owned by an SDK object. Not synchronised.
class CFloatSetting
{
public:
    CFloatSetting(ParameterTexts texts, double value, double min, double max)
        : texts_(std::move(texts)), value_(value), min_(min), max_(max)
    {}

    double GetValue() const { return value_; }
    double GetMin() const { return min_; }
    double GetMax() const { return max_; }
    const ParameterTexts& GetTexts() const { return texts_; }

    /// Raises OutOfRangeException, and keeps the value, if `value` is outside the limits or no number.
    void SetValue(double value)
    {
        if (!(value >= min_ && value <= max_)) {
            GENICAM_THROW(OutOfRangeException, "%s: value %g is not one of %g to %g.", texts_.name.c_str(), value,
                          min_, max_);
        }
        value_ = value;
    }
    /// Sets the nearest value within the limits. Raises OutOfRangeException for what is no number.
    void SetValueCorrected(double value) { SetValue(value < min_ ? min_ : value > max_ ? max_ : value); }

private:
    ParameterTexts texts_;
    double value_;
    double min_;
    double max_;
};

/// A choice among given values, owned by an SDK object. Not synchronised.
template <typename E>
class CEnumSetting
{
public:
    CEnumSetting(ParameterTexts texts, E value, std::vector<E> entries)
        : texts_(std::move(texts)), value_(value), entries_(std::move(entries))
    {}

    E GetValue() const { return value_; }
    const std::vector<E>& GetEntries() const { return entries_; }
    const ParameterTexts& GetTexts() const { return texts_; }

    /// Raises InvalidArgumentException, and keeps the value, if `value` is none of the entries.
    void SetValue(E value)
    {
        if (std::find(entries_.begin(), entries_.end(), value) != entries_.end()) {
            value_ = value;
            return;
        }
        std::string allowed;
        for (const E entry : entries_)
            allowed += (allowed.empty() ? "" : ", ") + std::to_string(static_cast<std::uint64_t>(entry));
        GENICAM_THROW(InvalidArgumentException, "%s: value %llu is none of %s.", texts_.name.c_str(),
                      static_cast<unsigned long long>(value), allowed.c_str());
    }

private:
    ParameterTexts texts_;
    E value_;
    std::vector<E> entries_;
};

}  // namespace Nivex

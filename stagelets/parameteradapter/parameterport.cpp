#include "parameteradapter/parameterport.h"

#include <algorithm>

namespace AnythingToNodeMapAdapter {

IntegerParameterPortBase::IntegerParameterPortBase(const PortTexts& texts, const IntegerRange& range,
                                                   const char* representation, const char* unit,
                                                   const PortFlags& flags)
    : BasicDataParameterPort<IIntegerParameterPort>(texts, flags),
      min_(range.min),
      max_(range.max),
      inc_(range.inc),
      representation_(representation),
      unit_(unit)
{}

bool IntegerParameterPortBase::changeLimits(std::int64_t newMin, std::int64_t newMax)
{
    if (min_ == newMin && max_ == newMax) return false;
    min_ = newMin;
    max_ = newMax;
    notifyObserver();
    return true;
}

FloatParameterPortBase::FloatParameterPortBase(const PortTexts& texts, const FloatRange& range,
                                               const char* representation, const char* unit,
                                               const PortFlags& flags)
    : BasicDataParameterPort<IFloatParameterPort>(texts, flags),
      min_(range.min),
      max_(range.max),
      representation_(representation),
      unit_(unit)
{}

bool FloatParameterPortBase::setRange(double newMin, double newMax)
{
    if (min_ == newMin && max_ == newMax) return false;
    min_ = newMin;
    max_ = newMax;
    notifyObserver();
    return true;
}

CategoryParameterPort::CategoryParameterPort(const char* name, const char* displayName, const char* toolTip,
                                             const char* description, const char* visibility)
    : BasicParameterPort<ICategoryParameterPort>({name, displayName, toolTip, description, visibility})
{}

void copyText(const GenICam::gcstring& text, char* buffer, std::size_t length)
{
    const std::size_t count = std::min(text.size(), length);
    std::memcpy(buffer, text.c_str(), count);
    std::memset(buffer + count, 0, length - count);
}

}  // namespace AnythingToNodeMapAdapter

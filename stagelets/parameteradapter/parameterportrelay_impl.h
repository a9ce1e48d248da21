#pragma once

#include "parameteradapter/parameterportrelay.h"

namespace AnythingToNodeMapAdapter {

template <typename V, typename N, auto getter, auto setter>
std::int64_t IntegerParameterPortRelay<V, N, getter, setter>::getValue() const
{
    return static_cast<std::int64_t>((node_->*getter)());
}

template <typename V, typename N, auto getter, auto setter>
void IntegerParameterPortRelay<V, N, getter, setter>::setValue(std::int64_t value, bool fromNodeMap)
{
    change(
        fromNodeMap, [this] { return getValue(); }, [this, value] { (node_->*setter)(static_cast<V>(value)); });
}

template <typename N, auto getter, auto setter>
double FloatParameterPortRelay<N, getter, setter>::getValue() const
{
    return (node_->*getter)();
}

template <typename N, auto getter, auto setter>
void FloatParameterPortRelay<N, getter, setter>::setValue(double value, bool fromNodeMap)
{
    change(
        fromNodeMap, [this] { return getValue(); }, [this, value] { (node_->*setter)(value); });
}

template <typename N, auto getter, auto setter>
bool BooleanParameterPortRelay<N, getter, setter>::getValue() const
{
    return (node_->*getter)();
}

template <typename N, auto getter, auto setter>
void BooleanParameterPortRelay<N, getter, setter>::setValue(bool value, bool fromNodeMap)
{
    change(
        fromNodeMap, [this] { return getValue(); }, [this, value] { (node_->*setter)(value); });
}

template <typename N, auto getter, auto setter>
void StringParameterPortRelay<N, getter, setter>::getValue(char* buffer, std::size_t length) const
{
    copyText(GenICam::gcstring((node_->*getter)()), buffer, length);
}

template <typename N, auto getter, auto setter>
void StringParameterPortRelay<N, getter, setter>::setValue(const char* text, bool fromNodeMap)
{
    change(
        fromNodeMap, [this] { return GenICam::gcstring((node_->*getter)()); },
        [this, text] { (node_->*setter)(GenICam::gcstring(text)); });
}

template <typename E, typename N, auto getter, auto setter>
std::int64_t EnumParameterPortRelay<E, N, getter, setter>::getIntValue() const
{
    return static_cast<std::int64_t>((node_->*getter)());
}

template <typename E, typename N, auto getter, auto setter>
void EnumParameterPortRelay<E, N, getter, setter>::setIntValue(std::int64_t value, bool fromNodeMap)
{
    change(
        fromNodeMap, [this] { return getIntValue(); }, [this, value] { (node_->*setter)(static_cast<E>(value)); });
}

}  // namespace AnythingToNodeMapAdapter

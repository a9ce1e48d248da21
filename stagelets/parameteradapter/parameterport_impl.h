#pragma once

#include "parameteradapter/parameterport.h"

namespace AnythingToNodeMapAdapter {

template <typename T>
BasicParameterPort<T>::BasicParameterPort(const PortTexts& texts)
    : name_(texts.name),
      displayName_(texts.displayName),
      description_(texts.description),
      toolTip_(texts.toolTip),
      visibility_(texts.visibility)
{}

template <typename T>
void BasicParameterPort<T>::notifyObserver()
{
    if (observer_) observer_->onParameterChanged(*this);
}

template <typename T>
template <typename Get, typename Set>
void BasicParameterPort<T>::change(bool fromNodeMap, const Get& get, const Set& set)
{
    if (fromNodeMap) {
        set();
        return;
    }
    const auto before = get();
    set();
    if (get() != before) notifyObserver();
}

template <typename T>
BasicDataParameterPort<T>::BasicDataParameterPort(const PortTexts& texts, const PortFlags& flags)
    : BasicParameterPort<T>(texts),
      available(flags.available),
      writable(flags.writable),
      availableRegister_(flags.availableRegister),
      lockedRegister_(flags.lockedRegister)
{}

template <typename T>
bool BasicDataParameterPort<T>::changeFlag(bool& flag, bool value)
{
    if (flag == value) return false;
    flag = value;
    this->notifyObserver();
    return true;
}

template <typename Value, typename Action>
StringParameterPort<Value, Action>::StringParameterPort(const Value& value, std::uint64_t maxLength,
                                                        const char* name, const char* displayName,
                                                        const char* toolTip, const char* description,
                                                        const char* visibility, bool initiallyAvailable,
                                                        bool initiallyWritable, bool availableRegister,
                                                        bool lockedRegister)
    : BasicDataParameterPort<IStringParameterPort>(
          {name, displayName, toolTip, description, visibility},
          {initiallyAvailable, initiallyWritable, availableRegister, lockedRegister}),
      value_(value),
      maxLength_(maxLength)
{}

template <typename Value, typename Action>
void StringParameterPort<Value, Action>::getValue(char* buffer, std::size_t length) const
{
    copyText(value_, buffer, length);
}

template <typename Value, typename Action>
void StringParameterPort<Value, Action>::setValue(const char* text, bool fromNodeMap)
{
    change(
        fromNodeMap, [this] { return value_; },
        [this, text] {
            value_ = Value(text);
            Action()(value_);
        });
}

template <typename E>
EnumEntryParameterPort<E>::EnumEntryParameterPort(E value, const PortTexts& texts, const PortFlags& flags)
    : BasicDataParameterPort<IEnumEntryParameterPort>(texts, flags), value_(value)
{}

}  // namespace AnythingToNodeMapAdapter

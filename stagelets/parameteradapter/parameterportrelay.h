#pragma once

#include <type_traits>

#include "parameteradapter/parameterport.h"

/// Ports that hold no value: each calls a getter and a setter of a node, both bound at compile time. A port must
/// not outlive its node. The getter and setter take the node's lock themselves; a port adds none.
///
/// @tparam N is the node's class.
/// @tparam getter, setter are pointers to public member functions of N (or its bases).

namespace AnythingToNodeMapAdapter {

/// @tparam V is the value's type, signed or unsigned.
template <typename V, typename N, auto getter, auto setter>
class IntegerParameterPortRelay : public IntegerParameterPortBase
{
public:
    IntegerParameterPortRelay(N& node, const PortTexts& texts, const IntegerRange& range,
                              const char* representation, const char* unit = "", const PortFlags& flags = {})
        : IntegerParameterPortBase(texts, range, representation, unit, flags), node_(&node)
    {}

    bool isSigned() const override { return std::is_signed_v<V>; }
    std::int64_t getValue() const override;
    void setValue(std::int64_t value, bool fromNodeMap) override;

private:
    N* node_;
};

template <typename N, auto getter, auto setter>
class FloatParameterPortRelay : public FloatParameterPortBase
{
public:
    FloatParameterPortRelay(N& node, const PortTexts& texts, const FloatRange& range, const char* representation,
                            const char* unit = "", const PortFlags& flags = {})
        : FloatParameterPortBase(texts, range, representation, unit, flags), node_(&node)
    {}

    double getValue() const override;
    void setValue(double value, bool fromNodeMap) override;

private:
    N* node_;
};

template <typename N, auto getter, auto setter>
class BooleanParameterPortRelay : public BasicDataParameterPort<IBooleanParameterPort>
{
public:
    BooleanParameterPortRelay(N& node, const PortTexts& texts, const PortFlags& flags = {})
        : BasicDataParameterPort<IBooleanParameterPort>(texts, flags), node_(&node)
    {}

    bool getValue() const override;
    void setValue(bool value, bool fromNodeMap) override;

private:
    N* node_;
};

/// The getter gives, and the setter takes, something that GenICam::gcstring converts to.
template <typename N, auto getter, auto setter>
class StringParameterPortRelay : public BasicDataParameterPort<IStringParameterPort>
{
public:
    /// `maxLength` in bytes, without an ending zero.
    StringParameterPortRelay(N& node, const PortTexts& texts, std::uint64_t maxLength, const PortFlags& flags = {})
        : BasicDataParameterPort<IStringParameterPort>(texts, flags), node_(&node), maxLength_(maxLength)
    {}

    std::uint64_t getLength() const override { return maxLength_; }
    void getValue(char* buffer, std::size_t length) const override;
    void setValue(const char* text, bool fromNodeMap) override;

private:
    N* node_;
    std::uint64_t maxLength_;
};

/// @tparam E is an enumeration or an integer type.
template <typename E, typename N, auto getter, auto setter>
class EnumParameterPortRelay : public BasicDataParameterPort<IEnumParameterPort>
{
public:
    EnumParameterPortRelay(N& node, const PortTexts& texts, const PortFlags& flags = {})
        : BasicDataParameterPort<IEnumParameterPort>(texts, flags), node_(&node)
    {}

    std::int64_t getIntValue() const override;
    void setIntValue(std::int64_t value, bool fromNodeMap) override;
    virtual E getEnumValue() const { return static_cast<E>(getIntValue()); }
    /// Writes from the node's side.
    virtual void setEnumValue(E value) { setIntValue(static_cast<std::int64_t>(value), false); }

private:
    N* node_;
};

/// @tparam isExecutingGetter tells whether the command is at work.
/// @tparam executeFunction starts it.
template <typename N, auto isExecutingGetter, auto executeFunction>
class CommandParameterPortRelay : public BasicDataParameterPort<ICommandParameterPort>
{
public:
    CommandParameterPortRelay(N& node, const PortTexts& texts, bool writeOnly = false, const PortFlags& flags = {})
        : BasicDataParameterPort<ICommandParameterPort>(texts, flags), node_(&node), writeOnly_(writeOnly)
    {}

    bool isWriteOnly() const override { return writeOnly_; }
    bool isExecuting() const override { return (node_->*isExecutingGetter)(); }
    void execute(bool /*fromNodeMap*/) override { (node_->*executeFunction)(); }

private:
    N* node_;
    bool writeOnly_;
};

}  // namespace AnythingToNodeMapAdapter

#include "parameteradapter/parameterportrelay_impl.h"

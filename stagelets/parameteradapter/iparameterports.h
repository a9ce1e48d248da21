#pragma once

#include <cstddef>
#include <cstdint>

namespace AnythingToNodeMapAdapter {

class IBasicParameterPort;

/// Hears of changes that a parameter made on the node's side.
class IParameterPortObserver
{
public:
    /// Called on the thread that changed the value or state, with whatever locks that thread holds.
    virtual void onParameterChanged(IBasicParameterPort& port) = 0;

protected:
    ~IParameterPortObserver() = default;
};

/// The neutral face of one parameter of a node: name, texts, flags, value and limits.
///
/// Texts are written into the register description as they are, without escaping: a text that holds a markup
/// character is passed in escaped (or as a CDATA section). Texts stay valid as long as the port.
/// Ports have no lock of their own and add no failures: what a node's getter or setter throws reaches the caller.
class IBasicParameterPort
{
public:
    virtual ~IBasicParameterPort() = default;
    IBasicParameterPort() = default;
    IBasicParameterPort(const IBasicParameterPort&) = delete;
    IBasicParameterPort& operator=(const IBasicParameterPort&) = delete;

    virtual const char* getName() const = 0;
    virtual const char* getDisplayName() const = 0;
    virtual const char* getDescription() const = 0;
    virtual const char* getToolTip() const = 0;
    /// "Beginner", "Expert", "Guru" or "Invisible".
    virtual const char* getVisibility() const = 0;
    /// Bytes of the value in a register: 8 for a number, the maximum length for a string.
    virtual std::uint64_t getLength() const = 0;
    /// Replaces the one observer; null means none.
    virtual void setObserver(IParameterPortObserver* observer) = 0;
};

class IBasicDataParameterPort : public IBasicParameterPort
{
public:
    virtual bool isAvailable() const = 0;
    virtual bool isWritable() const = 0;
    /// True if availability can change at run time, so that clients must be able to read it.
    virtual bool hasAvailableRegister() const = 0;
    /// The same for being writable.
    virtual bool hasLockedRegister() const = 0;
};

// In all setters `fromNodeMap` tells who writes. With true the value comes from a client of the node map: the
// node's setter is called and nothing else. With false it comes from the node's side: the observer is told
// afterwards if the value changed.

class IIntegerParameterPort : public IBasicDataParameterPort
{
public:
    /// "Linear", "Logarithmic", "PureNumber", "HexNumber", "IPV4Address" or "MACAddress".
    virtual const char* getRepresentation() const = 0;
    virtual const char* getUnit() const = 0;
    virtual bool isSigned() const = 0;
    virtual std::int64_t getValue() const = 0;
    virtual std::int64_t getMax() const = 0;
    virtual std::int64_t getMin() const = 0;
    virtual std::int64_t getInc() const = 0;
    virtual void setValue(std::int64_t value, bool fromNodeMap) = 0;
};

class IFloatParameterPort : public IBasicDataParameterPort
{
public:
    /// "Linear", "Logarithmic" or "PureNumber".
    virtual const char* getRepresentation() const = 0;
    virtual const char* getUnit() const = 0;
    virtual double getValue() const = 0;
    virtual double getMax() const = 0;
    virtual double getMin() const = 0;
    virtual void setValue(double value, bool fromNodeMap) = 0;
};

class IBooleanParameterPort : public IBasicDataParameterPort
{
public:
    virtual bool getValue() const = 0;
    virtual void setValue(bool value, bool fromNodeMap) = 0;
};

class IStringParameterPort : public IBasicDataParameterPort
{
public:
    /// Copies at most `length` bytes of the text and fills the rest of the buffer with zeros. A text of `length`
    /// bytes or more leaves no ending zero.
    virtual void getValue(char* buffer, std::size_t length) const = 0;
    virtual void setValue(const char* text, bool fromNodeMap) = 0;
};

class IEnumParameterPort : public IBasicDataParameterPort
{
public:
    virtual std::int64_t getIntValue() const = 0;
    virtual void setIntValue(std::int64_t value, bool fromNodeMap) = 0;
};

class IEnumEntryParameterPort : public IBasicDataParameterPort
{
public:
    virtual std::int64_t getValue() const = 0;
};

class ICommandParameterPort : public IBasicDataParameterPort
{
public:
    /// True if clients can't ask whether the command is still at work.
    virtual bool isWriteOnly() const = 0;
    virtual bool isExecuting() const = 0;
    virtual void execute(bool fromNodeMap) = 0;
};

/// A group of parameters. `getLength` has no meaning for it.
class ICategoryParameterPort : public IBasicParameterPort
{};

}  // namespace AnythingToNodeMapAdapter

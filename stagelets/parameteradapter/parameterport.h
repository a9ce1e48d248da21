#pragma once

#include <cstring>

#include "gcbase/gcstring.h"

#include "parameteradapter/iparameterports.h"

namespace AnythingToNodeMapAdapter {

/// The texts that a port copies at construction. Null stands for an empty text.
struct PortTexts
{
    const char* name;
    const char* displayName = "";
    const char* toolTip = "";
    const char* description = "";
    const char* visibility = "Expert";
};

/// The flags of a port; the last two say which of the first two can change at run time.
struct PortFlags
{
    bool available = true;
    bool writable = true;
    bool availableRegister = false;
    bool lockedRegister = false;
};

/// Texts and observer of every port.
/// @tparam T is one of the port interfaces.
template <typename T>
class BasicParameterPort : public T
{
public:
    const char* getName() const override { return name_.c_str(); }
    const char* getDisplayName() const override { return displayName_.c_str(); }
    const char* getDescription() const override { return description_.c_str(); }
    const char* getToolTip() const override { return toolTip_.c_str(); }
    const char* getVisibility() const override { return visibility_.c_str(); }
    void setObserver(IParameterPortObserver* newObserver) override { observer_ = newObserver; }
    /// Takes effect at the next build of a node map.
    virtual void setVisibility(const char* newVisibility) { visibility_ = newVisibility; }

    /// Tells the observer, if there is one, that the value or the state changed.
    void notifyObserver();

protected:
    explicit BasicParameterPort(const PortTexts& texts);

    /// Calls `set`; with `fromNodeMap` false it also compares what `get` gives before and after, and tells the
    /// observer of a change.
    template <typename Get, typename Set>
    void change(bool fromNodeMap, const Get& get, const Set& set);

    GenICam::gcstring name_;
    GenICam::gcstring displayName_;
    GenICam::gcstring description_;
    GenICam::gcstring toolTip_;
    GenICam::gcstring visibility_;
    IParameterPortObserver* observer_ = nullptr;
};

/// Flags of every port that has a value.
template <typename T>
class BasicDataParameterPort : public BasicParameterPort<T>
{
public:
    bool isAvailable() const override { return available; }
    bool isWritable() const override { return writable; }
    bool hasAvailableRegister() const override { return availableRegister_; }
    bool hasLockedRegister() const override { return lockedRegister_; }
    std::uint64_t getLength() const override { return 8; }

    /// These two also tell the observer of a change; the return value says whether there was one.
    bool changeAvailable(bool newAvailable) { return changeFlag(available, newAvailable); }
    bool changeWritable(bool newWritable) { return changeFlag(writable, newWritable); }

    // The owner may set the first two at any time; clients see it at their next read.
    bool available;
    bool writable;

protected:
    BasicDataParameterPort(const PortTexts& texts, const PortFlags& flags);

    bool availableRegister_;
    bool lockedRegister_;

private:
    bool changeFlag(bool& flag, bool value);
};

struct IntegerRange
{
    std::int64_t min;
    std::int64_t max;
    std::int64_t inc = 1;
};

class IntegerParameterPortBase : public BasicDataParameterPort<IIntegerParameterPort>
{
public:
    const char* getRepresentation() const override { return representation_.c_str(); }
    const char* getUnit() const override { return unit_.c_str(); }
    std::int64_t getMax() const override { return max_; }
    std::int64_t getMin() const override { return min_; }
    std::int64_t getInc() const override { return inc_; }

    /// Stores the limits, tells the observer if one of them changed, and returns whether one did.
    bool changeLimits(std::int64_t newMin, std::int64_t newMax);

protected:
    IntegerParameterPortBase(const PortTexts& texts, const IntegerRange& range, const char* representation,
                             const char* unit, const PortFlags& flags);

    std::int64_t min_;
    std::int64_t max_;
    std::int64_t inc_;
    GenICam::gcstring representation_;
    GenICam::gcstring unit_;
};

struct FloatRange
{
    double min;
    double max;
};

class FloatParameterPortBase : public BasicDataParameterPort<IFloatParameterPort>
{
public:
    const char* getRepresentation() const override { return representation_.c_str(); }
    const char* getUnit() const override { return unit_.c_str(); }
    double getMax() const override { return max_; }
    double getMin() const override { return min_; }

    /// Stores the limits, tells the observer if one of them changed, and returns whether one did.
    virtual bool setRange(double newMin, double newMax);

protected:
    FloatParameterPortBase(const PortTexts& texts, const FloatRange& range, const char* representation,
                           const char* unit, const PortFlags& flags);

    double min_;
    double max_;
    GenICam::gcstring representation_;
    GenICam::gcstring unit_;
};

class CategoryParameterPort : public BasicParameterPort<ICategoryParameterPort>
{
public:
    CategoryParameterPort(const char* name, const char* displayName, const char* toolTip, const char* description,
                          const char* visibility);

    std::uint64_t getLength() const override { return 0; }
};

/// What StringParameterPort does after its value was written: nothing.
struct NoAction
{
    template <typename Value>
    void operator()(const Value&) const
    {}
};

/// A text that the port holds itself.
/// @tparam Value is GenICam::gcstring.
/// @tparam Action is called with each value written.
template <typename Value, typename Action = NoAction>
class StringParameterPort : public BasicDataParameterPort<IStringParameterPort>
{
public:
    StringParameterPort(const Value& value, std::uint64_t maxLength, const char* name, const char* displayName,
                        const char* toolTip, const char* description, const char* visibility,
                        bool initiallyAvailable, bool initiallyWritable, bool availableRegister,
                        bool lockedRegister);

    std::uint64_t getLength() const override { return maxLength_; }
    void getValue(char* buffer, std::size_t length) const override;
    void setValue(const char* text, bool fromNodeMap) override;

private:
    Value value_;
    std::uint64_t maxLength_;
};

/// One choice of an enumeration.
/// @tparam E is an enumeration or an integer type.
template <typename E>
class EnumEntryParameterPort : public BasicDataParameterPort<IEnumEntryParameterPort>
{
public:
    EnumEntryParameterPort(E value, const PortTexts& texts, const PortFlags& flags = {});

    std::int64_t getValue() const override { return static_cast<std::int64_t>(value_); }
    virtual E getEnumValue() const { return value_; }

private:
    E value_;
};

/// Copies at most `length` bytes and fills the rest of the buffer with zeros.
void copyText(const GenICam::gcstring& text, char* buffer, std::size_t length);

}  // namespace AnythingToNodeMapAdapter

#include "parameteradapter/parameterport_impl.h"

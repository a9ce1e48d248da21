#pragma once

#include <optional>
#include <vector>

#include "genapi/types.h"

namespace GenApi {

class CNodeBase;

/// What a reference may ask of a node that has a number, whatever its kind: integers, floats, booleans and
/// enumerations stand in for each other. All under the map's lock; access is the caller's to check.
class INumber
{
public:
    virtual int64_t ReadInteger(bool ignoreCache) = 0;
    virtual double ReadFloat(bool ignoreCache) = 0;
    /// True if the value is not zero.
    virtual bool ReadTruth() = 0;
    /// OutOfRangeException for what the node cannot hold.
    virtual void WriteInteger(int64_t value) = 0;
    virtual void WriteFloat(double value) = 0;

    /// True if the value is an integer by nature, and asking for a float would only lose bits of it.
    virtual bool IsIntegral() const = 0;
    /// The integer without the fraction, where ReadInteger rounds.
    virtual int64_t ReadTruncated(bool ignoreCache) { return ReadInteger(ignoreCache); }
    /// The only values that the node takes, in ascending order; empty if it takes all within its limits.
    virtual std::vector<int64_t> ValidValues() { return {}; }

    virtual int64_t MinInteger() = 0;
    virtual int64_t MaxInteger() = 0;
    virtual int64_t IncInteger() = 0;
    virtual double MinFloat() = 0;
    virtual double MaxFloat() = 0;
    virtual std::optional<double> IncFloat() = 0;

    virtual gcstring Unit() const = 0;
    virtual ERepresentation Representation() const = 0;

protected:
    ~INumber() = default;
};

/// The nearest integer; OutOfRangeException for what has none.
int64_t RoundToInteger(double value);
/// The nearest integer that there is; `ifNone` for what is no number.
int64_t ClampToInteger(double value, int64_t ifNone);

/// A reference to a node with a number, or to none.
class NumberRef
{
public:
    NumberRef() = default;
    NumberRef(CNodeBase& node, INumber& number) : node_(&node), number_(&number) {}

    explicit operator bool() const { return node_ != nullptr; }
    CNodeBase& Node() const { return *node_; }
    INumber* operator->() const { return number_; }
    bool IsReadable() const;
    /// The same as `->`, but AccessException if the node is not readable.
    INumber& Readable() const;

private:
    CNodeBase* node_ = nullptr;
    INumber* number_ = nullptr;
};

/// Where a node takes a number from: another node, a place of its own, or nowhere.
template <typename Number>
class Source
{
public:
    void Set(Number value) { own_ = value; }
    void Refer(NumberRef reference) { reference_ = reference; }

    bool IsGiven() const { return own_ || reference_; }
    /// The node it comes from, if any.
    const NumberRef& Reference() const { return reference_; }
    /// The own number, or that of a node whose access the caller has checked.
    Number Read(bool ignoreCache = false) const;
    /// The same, checking the access.
    Number ReadChecked() const;
    /// Writes to the node it comes from, or changes the own number.
    void Write(Number value);

private:
    std::optional<Number> own_;
    NumberRef reference_;
};

using IntegerSource = Source<int64_t>;
using FloatSource = Source<double>;

extern template class Source<int64_t>;
extern template class Source<double>;

}  // namespace GenApi

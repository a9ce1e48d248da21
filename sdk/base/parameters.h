#pragma once

#include <cstdint>

#include "gcbase/gcstring.h"
#include "genapi/inodemap.h"

namespace GenApi {
class IBoolean;
class ICommand;
class IEnumeration;
class IFloat;
class IInteger;
class IString;
class IValue;
}  // namespace GenApi

namespace Nivex {

/// A feature of a node map, found by name, that need not exist: such an object is not valid, its queries say no
/// and its Try operations give false. GetValue, SetValue and the like raise AccessException that names the
/// feature. Keeps the map alive. Any thread may call it; each call works under the map's lock.
template <typename Interface>
class GENICAM_API CParameter
{
public:
    CParameter() = default;
    /// A null map or a node of another kind makes an object that is not valid.
    CParameter(GenApi::NodeMapPtr nodeMap, const GenICam::gcstring& name);

    bool IsValid() const { return feature_ != nullptr; }
    bool IsReadable() const;
    bool IsWritable() const;
    const GenICam::gcstring& GetName() const { return name_; }

protected:
    /// Raises AccessException if the object is not valid.
    Interface& Feature() const;

    GenApi::NodeMapPtr nodeMap_;
    GenICam::gcstring name_;
    Interface* feature_ = nullptr;  ///< A node of nodeMap_.
};

/// A feature with a value.
template <typename Interface, typename Value>
class GENICAM_API CValueParameter : public CParameter<Interface>
{
public:
    using CParameter<Interface>::CParameter;

    Value GetValue() const;
    void SetValue(const Value& value);
    /// The value, or `defaultValue` if it can't be read.
    Value GetValueOrDefault(const Value& defaultValue) const;
    /// False, and nothing changed, if the value can't be written.
    bool TrySetValue(const Value& value);
};

/// An integer feature.
class GENICAM_API CIntegerParameter : public CValueParameter<GenApi::IInteger, std::int64_t>
{
public:
    using CValueParameter::CValueParameter;
    std::int64_t GetMin() const;
    std::int64_t GetMax() const;
    std::int64_t GetInc() const;
};

/// A floating-point feature.
class GENICAM_API CFloatParameter : public CValueParameter<GenApi::IFloat, double>
{
public:
    using CValueParameter::CValueParameter;
    double GetMin() const;
    double GetMax() const;
};

/// A feature that is on or off.
using CBooleanParameter = CValueParameter<GenApi::IBoolean, bool>;

/// A choice by name.
class GENICAM_API CEnumParameter : public CValueParameter<GenApi::IEnumeration, GenICam::gcstring>
{
public:
    using CValueParameter::CValueParameter;
    /// True if there is an entry of that name which can be chosen now.
    bool CanSetValue(const GenICam::gcstring& value) const;
};

/// A text feature.
using CStringParameter = CValueParameter<GenApi::IString, GenICam::gcstring>;

/// An action.
class GENICAM_API CCommandParameter : public CParameter<GenApi::ICommand>
{
public:
    using CParameter::CParameter;
    void Execute();
    bool IsDone() const;
    bool TryExecute();
};

}  // namespace Nivex

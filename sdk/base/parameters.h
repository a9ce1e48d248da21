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

/// An integer feature.
class GENICAM_API CIntegerParameter : public CParameter<GenApi::IInteger>
{
public:
    using CParameter::CParameter;
    std::int64_t GetValue() const;
    void SetValue(std::int64_t value);
    std::int64_t GetMin() const;
    std::int64_t GetMax() const;
    std::int64_t GetInc() const;
    /// The value, or `defaultValue` if it can't be read.
    std::int64_t GetValueOrDefault(std::int64_t defaultValue) const;
    /// False, and nothing changed, if the value can't be written.
    bool TrySetValue(std::int64_t value);
};

/// A floating-point feature.
class GENICAM_API CFloatParameter : public CParameter<GenApi::IFloat>
{
public:
    using CParameter::CParameter;
    double GetValue() const;
    void SetValue(double value);
    double GetMin() const;
    double GetMax() const;
    double GetValueOrDefault(double defaultValue) const;
    bool TrySetValue(double value);
};

/// A feature that is on or off.
class GENICAM_API CBooleanParameter : public CParameter<GenApi::IBoolean>
{
public:
    using CParameter::CParameter;
    bool GetValue() const;
    void SetValue(bool value);
    bool GetValueOrDefault(bool defaultValue) const;
    bool TrySetValue(bool value);
};

/// A choice by name.
class GENICAM_API CEnumParameter : public CParameter<GenApi::IEnumeration>
{
public:
    using CParameter::CParameter;
    GenICam::gcstring GetValue() const;
    void SetValue(const GenICam::gcstring& value);
    GenICam::gcstring GetValueOrDefault(const GenICam::gcstring& defaultValue) const;
    bool TrySetValue(const GenICam::gcstring& value);
    /// True if there is an entry of that name which can be chosen now.
    bool CanSetValue(const GenICam::gcstring& value) const;
};

/// A text feature.
class GENICAM_API CStringParameter : public CParameter<GenApi::IString>
{
public:
    using CParameter::CParameter;
    GenICam::gcstring GetValue() const;
    void SetValue(const GenICam::gcstring& value);
    GenICam::gcstring GetValueOrDefault(const GenICam::gcstring& defaultValue) const;
    bool TrySetValue(const GenICam::gcstring& value);
};

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

#include "base/parameters.h"

#include "gcbase/exception.h"
#include "genapi/genapi.h"

namespace Nivex {

using GenICam::gcstring;

namespace {

/// The answer of `read`, or `otherwise` if the feature or its device raises.
template <typename Read>
auto orElse(decltype(std::declval<Read>()()) otherwise, const Read& read) -> decltype(read())
{
    try {
        return read();
    } catch (const std::exception&) {
        return otherwise;
    }
}

template <typename Action>
bool succeeds(const Action& action)
{
    return orElse(false, [&] {
        action();
        return true;
    });
}

}  // namespace

template <typename Interface>
CParameter<Interface>::CParameter(GenApi::NodeMapPtr nodeMap, const gcstring& name)
    : nodeMap_(std::move(nodeMap)),
      name_(name),
      feature_(nodeMap_ ? dynamic_cast<Interface*>(nodeMap_->GetNode(name)) : nullptr)
{}

template <typename Interface>
bool CParameter<Interface>::IsReadable() const
{
    return orElse(false, [this] { return GenApi::IsReadable(feature_); });
}

template <typename Interface>
bool CParameter<Interface>::IsWritable() const
{
    return orElse(false, [this] { return GenApi::IsWritable(feature_); });
}

template <typename Interface>
Interface& CParameter<Interface>::Feature() const
{
    if (!feature_)
        GENICAM_THROW(AccessException, "The camera has no feature \"%s\" of the kind that is asked for.",
                      name_.c_str());
    return *feature_;
}

template class CParameter<GenApi::IInteger>;
template class CParameter<GenApi::IFloat>;
template class CParameter<GenApi::IBoolean>;
template class CParameter<GenApi::IEnumeration>;
template class CParameter<GenApi::IString>;
template class CParameter<GenApi::ICommand>;

std::int64_t CIntegerParameter::GetValue() const
{
    return Feature().GetValue();
}

void CIntegerParameter::SetValue(std::int64_t value)
{
    Feature().SetValue(value);
}

std::int64_t CIntegerParameter::GetMin() const
{
    return Feature().GetMin();
}

std::int64_t CIntegerParameter::GetMax() const
{
    return Feature().GetMax();
}

std::int64_t CIntegerParameter::GetInc() const
{
    return Feature().GetInc();
}

std::int64_t CIntegerParameter::GetValueOrDefault(std::int64_t defaultValue) const
{
    return orElse(defaultValue, [this] { return GetValue(); });
}

bool CIntegerParameter::TrySetValue(std::int64_t value)
{
    return succeeds([&] { SetValue(value); });
}

double CFloatParameter::GetValue() const
{
    return Feature().GetValue();
}

void CFloatParameter::SetValue(double value)
{
    Feature().SetValue(value);
}

double CFloatParameter::GetMin() const
{
    return Feature().GetMin();
}

double CFloatParameter::GetMax() const
{
    return Feature().GetMax();
}

double CFloatParameter::GetValueOrDefault(double defaultValue) const
{
    return orElse(defaultValue, [this] { return GetValue(); });
}

bool CFloatParameter::TrySetValue(double value)
{
    return succeeds([&] { SetValue(value); });
}

bool CBooleanParameter::GetValue() const
{
    return Feature().GetValue();
}

void CBooleanParameter::SetValue(bool value)
{
    Feature().SetValue(value);
}

bool CBooleanParameter::GetValueOrDefault(bool defaultValue) const
{
    return orElse(defaultValue, [this] { return GetValue(); });
}

bool CBooleanParameter::TrySetValue(bool value)
{
    return succeeds([&] { SetValue(value); });
}

gcstring CEnumParameter::GetValue() const
{
    return Feature().ToString();
}

void CEnumParameter::SetValue(const gcstring& value)
{
    Feature().FromString(value);
}

gcstring CEnumParameter::GetValueOrDefault(const gcstring& defaultValue) const
{
    return orElse(defaultValue, [this] { return GetValue(); });
}

bool CEnumParameter::TrySetValue(const gcstring& value)
{
    return succeeds([&] { SetValue(value); });
}

bool CEnumParameter::CanSetValue(const gcstring& value) const
{
    return orElse(false, [&] {
        return GenApi::IsWritable(feature_) && GenApi::IsAvailable(feature_->GetEntryByName(value));
    });
}

gcstring CStringParameter::GetValue() const
{
    return Feature().GetValue();
}

void CStringParameter::SetValue(const gcstring& value)
{
    Feature().SetValue(value);
}

gcstring CStringParameter::GetValueOrDefault(const gcstring& defaultValue) const
{
    return orElse(defaultValue, [this] { return GetValue(); });
}

bool CStringParameter::TrySetValue(const gcstring& value)
{
    return succeeds([&] { SetValue(value); });
}

void CCommandParameter::Execute()
{
    Feature().Execute();
}

bool CCommandParameter::IsDone() const
{
    return Feature().IsDone();
}

bool CCommandParameter::TryExecute()
{
    return succeeds([this] { Execute(); });
}

}  // namespace Nivex

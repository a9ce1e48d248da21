#include "base/parameters.h"

#include <type_traits>

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

template <typename Interface, typename Value>
Value CValueParameter<Interface, Value>::GetValue() const
{
    if constexpr (std::is_same_v<Interface, GenApi::IEnumeration>)
        return this->Feature().ToString();
    else
        return this->Feature().GetValue();
}

template <typename Interface, typename Value>
void CValueParameter<Interface, Value>::SetValue(const Value& value)
{
    if constexpr (std::is_same_v<Interface, GenApi::IEnumeration>)
        this->Feature().FromString(value);
    else
        this->Feature().SetValue(value);
}

template <typename Interface, typename Value>
Value CValueParameter<Interface, Value>::GetValueOrDefault(const Value& defaultValue) const
{
    return orElse(defaultValue, [this] { return GetValue(); });
}

template <typename Interface, typename Value>
bool CValueParameter<Interface, Value>::TrySetValue(const Value& value)
{
    return succeeds([&] { SetValue(value); });
}

template class CParameter<GenApi::IInteger>;
template class CParameter<GenApi::IFloat>;
template class CParameter<GenApi::IBoolean>;
template class CParameter<GenApi::IEnumeration>;
template class CParameter<GenApi::IString>;
template class CParameter<GenApi::ICommand>;
template class CValueParameter<GenApi::IInteger, std::int64_t>;
template class CValueParameter<GenApi::IFloat, double>;
template class CValueParameter<GenApi::IBoolean, bool>;
template class CValueParameter<GenApi::IEnumeration, gcstring>;
template class CValueParameter<GenApi::IString, gcstring>;

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

double CFloatParameter::GetMin() const
{
    return Feature().GetMin();
}

double CFloatParameter::GetMax() const
{
    return Feature().GetMax();
}

bool CEnumParameter::CanSetValue(const gcstring& value) const
{
    return orElse(false, [&] {
        return GenApi::IsWritable(feature_) && GenApi::IsAvailable(feature_->GetEntryByName(value));
    });
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

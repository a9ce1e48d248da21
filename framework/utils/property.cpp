#include "utils/property.h"

#include "threading/uniquelock.h"

namespace Nivex::DataProcessing::Utils {

using Lock = Threading::UniqueLock<Threading::RecursiveMutex>;

ResettablePropertyBase::ResettablePropertyBase(TypeInfo required) : required_(required) {}

ResettablePropertyBase& ResettablePropertyBase::operator=(const ResettablePropertyBase& other)
{
    assign(other);
    return *this;
}

bool ResettablePropertyBase::hasValue() const
{
    const Lock lock(lock_);
    return value_.isValid();
}

Variant ResettablePropertyBase::getVariant() const
{
    const Lock lock(lock_);
    if (!value_.isValid()) GENICAM_THROW(PropertyException, "Property is resetted.");
    return value_;
}

Variant ResettablePropertyBase::getSubProperty(std::string_view path) const
{
    return PropertyInfo::getValue(getVariant(), path);
}

void ResettablePropertyBase::setVariant(const Variant& value)
{
    if (!value.isValid()) GENICAM_THROW(InvalidArgumentException, "Invalid variant passed.");
    if (required_.isValid() && !value.get(required_, false)) {
        GENICAM_THROW(InvalidArgumentException, "Variant returned invalid value.");
    }
    replace(value);
}

void ResettablePropertyBase::setSubProperty(std::string_view path, const Variant& value)
{
    {
        const Lock lock(lock_);
        if (!value_.isValid()) {
            GENICAM_THROW(PropertyException, "Cannot set a subproperty of a resetted property.");
        }
        PropertyInfo::setValue(value_, path, value);
    }
    changed_();
}

void ResettablePropertyBase::assign(const IReadOnlyProperty& other)
{
    if (&other == static_cast<const IReadOnlyProperty*>(this)) return;
    const auto* resettable = dynamic_cast<const IResettableProperty*>(&other);
    if (resettable && !resettable->hasValue()) {
        reset();
    } else {
        setVariant(other.getVariant());
    }
}

void ResettablePropertyBase::reset()
{
    replace({});
}

void ResettablePropertyBase::replace(Variant value)
{
    {
        const Lock lock(lock_);
        std::swap(value_, value);
    }
    changed_();
}

}  // namespace Nivex::DataProcessing::Utils

#include "utils/propertyinfo.h"

namespace Nivex::DataProcessing::Utils {

Variant PropertyInfo::getValue(const Variant& owner) const
{
    return getter_(owner.get(getOwnerType()));
}

void PropertyInfo::setValue(Variant& owner, const Variant& value) const
{
    if (!setter_) GENICAM_THROW(AccessException, "Property \"%s\" can only be read.", name_.c_str());
    setter_(owner.write(getOwnerType()), value);
}

Variant PropertyInfo::getValue(const Variant& owner, std::string_view path)
{
    std::string_view head;
    std::string_view rest;
    const bool nested = TypeInfo::splitPath(path, head, rest);
    const Variant part = owner.getValueType().getProperty(head)->getValue(owner);
    return nested ? getValue(part, rest) : part;
}

void PropertyInfo::setValue(Variant& owner, std::string_view path, const Variant& value)
{
    std::string_view head;
    std::string_view rest;
    const bool nested = TypeInfo::splitPath(path, head, rest);
    const PropertyInfo* property = owner.getValueType().getProperty(head);
    if (!nested) {
        property->setValue(owner, value);
        return;
    }
    Variant part = property->getValue(owner);
    setValue(part, rest, value);
    property->setValue(owner, part);
}

}  // namespace Nivex::DataProcessing::Utils

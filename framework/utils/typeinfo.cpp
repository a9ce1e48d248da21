#include "utils/typeinfo.h"

#include "utils/propertyinfo.h"

namespace Nivex::DataProcessing::Utils {

bool TypeInfo::canConvert(const TypeInfo& other) const noexcept
{
    if (!data_ || !other.data_) return false;
    const ITypeInfoData* type = data_->getValueType();
    // A shared form shows the object as its own type only.
    const bool othersBaseCounts = other.data_->getValueType() == other.data_;
    return type == other.data_->getValueType() || (othersBaseCounts && type->hasBase(other.data_));
}

const PropertyInfo* TypeInfo::getProperty(std::string_view path, bool throwOnError) const
{
    std::string_view head;
    std::string_view rest;
    const bool nested = splitPath(path, head, rest);
    const PropertyInfo* property = data_ ? data_->getValueType()->findProperty(head) : nullptr;
    if (property && nested) return property->getType().getProperty(rest, throwOnError);
    if (!property && throwOnError) {
        GENICAM_THROW(InvalidArgumentException, "Type \"%s\" has no property \"%.*s\".", getName().c_str(),
                      static_cast<int>(path.size()), path.data());
    }
    return property;
}

bool TypeInfo::splitPath(std::string_view path, std::string_view& head, std::string_view& rest) noexcept
{
    const std::size_t dot = path.find('.');
    head = path.substr(0, dot);
    rest = dot == std::string_view::npos ? std::string_view() : path.substr(dot + 1);
    return dot != std::string_view::npos;
}

}  // namespace Nivex::DataProcessing::Utils

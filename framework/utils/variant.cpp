#include "utils/variant.h"

namespace Nivex::DataProcessing::Utils {

Variant Variant::makeDefault(const TypeInfo& type)
{
    const TypeInfo::Factory factory = type.isValid() ? type.getData()->getFactory() : nullptr;
    if (!factory) {
        GENICAM_THROW(InvalidArgumentException, "Type \"%s\" has no default value.", type.getName().c_str());
    }
    Variant value;
    factory(value);
    return value;
}

const void* Variant::get(const TypeInfo& type, bool throwOnError) const
{
    if (!type.isValid()) {
        if (throwOnError) GENICAM_THROW(RuntimeException, "Requested type is not registered.");
        return nullptr;
    }
    const void* value = data_ ? data_->get(type.getData()) : nullptr;
    if (!value && throwOnError) {
        GENICAM_THROW(RuntimeException, "Could not cast variant value to requested type.");
    }
    return value;
}

void* Variant::write(const TypeInfo& type)
{
    if (!data_ || data_->getType() != type.getData()) {
        GENICAM_THROW(RuntimeException, "Could not cast variant value to requested type.");
    }
    data_ = data_->copy();
    return data_->write();
}

}  // namespace Nivex::DataProcessing::Utils

#include "utils/typeregistrar.h"

#include "utils/log.h"

namespace Nivex::DataProcessing::Utils {

TypeRegistrarBase::~TypeRegistrarBase()
{
    for (TypeInfo::ITypeInfoData* data : registered_)
        TypeInfo::destroyTypeInfoData(data, this);
}

TypeInfo::ITypeInfoData* TypeRegistrarBase::add(const std::string& name, std::size_t size,
                                                TypeInfo::Factory factory)
{
    registered_.reserve(registered_.size() + 1);
    TypeInfo::ITypeInfoData* data = TypeInfo::createTypeInfoData(name.c_str(), size, factory, this);
    if (!data) GENICAM_THROW(RuntimeException, "Could not create type info data.");
    registered_.push_back(data);
    return data;
}

void TypeRegistrarBase::logCaught() const noexcept
{
    static const CatId category = getCatId("nivex.dataprocessing.utils.TypeInfo");
    constexpr const char* caught = "TypeInfo %p: Exception caught while registering a type. Message: %s";
    try {
        throw;
    } catch (const GenICam::GenericException& e) {
        createLogEntry(SeverityFailure, category, caught, static_cast<const void*>(this), e.GetDescription());
    } catch (const std::exception& e) {
        createLogEntry(SeverityFailure, category, caught, static_cast<const void*>(this), e.what());
    } catch (...) {
        createLogEntry(SeverityFailure, category,
                       "TypeInfo %p: Unknown exception caught while registering a type.",
                       static_cast<const void*>(this));
    }
}

}  // namespace Nivex::DataProcessing::Utils

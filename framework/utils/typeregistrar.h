#pragma once

#include <initializer_list>
#include <vector>

#include "utils/propertyinfo.h"

namespace Nivex::DataProcessing::Utils {

/// The part of a registrar that doesn't know the type.
class GENICAM_API TypeRegistrarBase
{
public:
    TypeRegistrarBase(const TypeRegistrarBase&) = delete;
    TypeRegistrarBase& operator=(const TypeRegistrarBase&) = delete;

protected:
    TypeRegistrarBase() = default;
    ~TypeRegistrarBase();

    /// Raises RuntimeException if there is no record to be had.
    TypeInfo::ITypeInfoData* add(const std::string& name, std::size_t size, TypeInfo::Factory factory);
    /// Logs the exception in flight. Inside a catch clause only.
    void logCaught() const noexcept;

private:
    std::vector<TypeInfo::ITypeInfoData*> registered_;
};

/// Registers a type T while the registrar lives: for static initialisation, so that the type is known from the
/// moment its library is loaded until it is unloaded. With T, its shared form COWPtr<T> is registered if values of
/// T can be copied. The bases have to be registered before: in the same source file further up, or by a library
/// that this one links. Never throws: a failure is logged at severity 4 on "nivex.dataprocessing.utils.TypeInfo".
/// @code
/// const Utils::TypeRegistrar<Camera, Core::AdvancedNode, Core::INodeMapContainer> registrar;
/// @endcode
template <typename T, typename... Bases>
class TypeRegistrar : public TypeRegistrarBase
{
public:
    TypeRegistrar(std::initializer_list<PropertyInfo> properties = {}) noexcept;  // NOLINT: reads as a table
};

}  // namespace Nivex::DataProcessing::Utils

#include "utils/typeregistrar_impl.h"

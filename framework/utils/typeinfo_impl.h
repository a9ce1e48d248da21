#pragma once

#include <algorithm>
#include <string>
#include <type_traits>

#include "gcbase/exception.h"

#include "utils/typeinfo.h"

namespace Nivex::DataProcessing::Utils {

namespace Detail {

/// The name of T in the signature text of TypeInfo::getTypeIdentifier<T>.
constexpr std::string_view nameInSignature(std::string_view signature)
{
#ifdef __clang__
    const std::size_t start = signature.find("T = ") + 4;
#else
    constexpr std::size_t start = 93;
#endif
    return signature.substr(start, signature.size() - start - 1);
}

/// GCC's spelling of a name without template arguments, or with such as aren't all types.
GENICAM_API std::string spellAsGcc(std::string_view name);
/// The name in front of the last group of template arguments.
GENICAM_API std::string_view templateName(std::string_view name);

template <typename T>
std::string typeIdentifier()
{
    int length = 0;
    TypeInfo::getTypeIdentifier<T>(nullptr, &length);
    std::string text(static_cast<std::size_t>(length), '\0');
    TypeInfo::getTypeIdentifier<T>(text.data(), &length);
    return text;
}

template <typename... Args>
std::string typeIdentifierList()
{
    std::string list;
    ((list += (list.empty() ? "" : ", ") + typeIdentifier<Args>()), ...);
    return list;
}

/// Spells T out. Signature texts leave out default template arguments and differ between compilers, so templates
/// over types are put together from their parts.
template <typename T>
struct TypeSpelling
{
    static std::string get(std::string_view name) { return spellAsGcc(name); }
};

template <template <typename...> class Template, typename... Args>
struct TypeSpelling<Template<Args...>>
{
    static std::string get(std::string_view name)
    {
        const std::string list = typeIdentifierList<Args...>();
        return spellAsGcc(templateName(name)) + "<" + list + (list.ends_with('>') ? " >" : ">");
    }
};

template <typename Result, typename... Args>
struct TypeSpelling<Result(Args...)>
{
    static std::string get(std::string_view)
    {
        return typeIdentifier<Result>() + "(" + typeIdentifierList<Args...>() + ")";
    }
};

}  // namespace Detail

template <typename T>
void TypeInfo::getTypeIdentifier(char* buffer, int* length)
{
    const std::string text = Detail::TypeSpelling<T>::get(Detail::nameInSignature(__PRETTY_FUNCTION__));
    *length = static_cast<int>(text.size());
    if (buffer) std::copy_n(text.c_str(), text.size() + 1, buffer);
}

template <typename T>
const TypeInfo::ITypeEntry* TypeInfo::getEntry()
{
    static const ITypeEntry* const entry = getTypeRegistration().getEntry(Detail::typeIdentifier<T>().c_str());
    return entry;
}

template <typename T>
TypeInfo TypeInfo::get(bool throwOnError)
{
    const ITypeEntry* entry = getEntry<T>();
    if (!entry) {
        if (throwOnError) GENICAM_THROW(RuntimeException, "Could not get registered type.");
        return {};
    }
    const ITypeInfoData* data = entry->getData();
    if (!data && throwOnError) GENICAM_THROW(RuntimeException, "The requested type is not registered.");
    return TypeInfo(data);
}

template <typename T, typename B>
void TypeInfo::addBaseType(ITypeInfoData* data)
{
    static_assert(std::is_base_of_v<B, T>, "a base type is one that T derives from");
    if (!data) GENICAM_THROW(InvalidArgumentException, "No type info data passed.");
    const ITypeEntry* entry = getEntry<B>();
    if (!entry) GENICAM_THROW(RuntimeException, "Could not get registered type.");
    const ITypeInfoData* base = entry->getData();
    if (!base) GENICAM_THROW(RuntimeException, "Base type is not registered.");
    data->addBase(base, [](const void* object) -> const void* {
        return static_cast<const B*>(static_cast<const T*>(object));
    });
}

}  // namespace Nivex::DataProcessing::Utils

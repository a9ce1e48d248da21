#pragma once

#include <cstddef>
#include <string_view>
#include <vector>

#include "gcbase/export.h"
#include "gcbase/gcstring.h"

namespace Nivex::DataProcessing::Utils {

class PropertyInfo;
class Variant;

/// Names a type at run time, the same in all shared libraries of the process, without the compiler's type records.
/// A handle, copied freely, usable from any thread. It stays valid when the library that registered the type is
/// unloaded; the type is then no longer registered, and registered again if the library comes back.
///
/// A type is registered by a file-level `TypeRegistrar<T, Bases...>` (utils/typeregistrar.h) in one source file.
class GENICAM_API TypeInfo
{
public:
    /// Puts a default-made value of the type into the variant; a function of the library that registered the type.
    using Factory = void (*)(Variant& target);
    /// The address of an object's base part.
    using UpCast = const void* (*)(const void* object);

    /// The record of one type identifier. There is one for each text, and it lives as long as the process.
    class GENICAM_API ITypeInfoData
    {
    public:
        virtual ~ITypeInfoData() = default;

        virtual const char* getName() const noexcept = 0;  ///< The type identifier.
        virtual std::size_t getSize() const noexcept = 0;  ///< Of an object, in bytes; 0 when not registered.
        virtual bool isRegistered() const noexcept = 0;
        /// Null for a type without default value, or when not registered.
        virtual Factory getFactory() const noexcept = 0;

        // The next three describe the latest registration of the type; LogicalErrorException if there is none.

        /// Adds a direct base type. Raises InvalidArgumentException for null or a base that would make a cycle.
        virtual void addBase(const ITypeInfoData* base, UpCast upCast) = 0;
        /// Says that this type is the shared form (COWPtr) of another; both convert to each other.
        virtual void setSharedFormOf(const ITypeInfoData* type) = 0;
        virtual void addProperty(const PropertyInfo& property) = 0;

        /// The type itself, or the one that it is the shared form of.
        virtual const ITypeInfoData* getValueType() const noexcept = 0;
        /// The address of an object of this type as a `target`, itself or one of its bases; null if it is none.
        virtual const void* convert(const void* object, const ITypeInfoData* target) const noexcept = 0;
        virtual bool hasBase(const ITypeInfoData* base) const noexcept = 0;  ///< Direct or indirect.
        /// A property of this type or of one of its bases; null if there is none of that name.
        virtual const PropertyInfo* findProperty(std::string_view name) const noexcept = 0;
    };

    /// The place of one identifier in the registry, whether the type is registered or not. Lives as long as the
    /// process.
    class GENICAM_API ITypeEntry
    {
    public:
        virtual ~ITypeEntry() = default;

        /// Null while the type is not registered.
        virtual const ITypeInfoData* getData() const noexcept = 0;
    };

    /// The registry of the process. For any thread.
    class GENICAM_API ITypeRegistration
    {
    public:
        virtual ~ITypeRegistration() = default;

        /// The entry of that identifier, made if need be; null for an empty text or without memory.
        virtual const ITypeEntry* getEntry(const char* identifier) noexcept = 0;
        /// The types registered at this moment.
        virtual std::vector<TypeInfo> getTypes() const = 0;
    };

    TypeInfo() noexcept = default;
    explicit TypeInfo(const ITypeInfoData* data) noexcept : data_(data) {}

    /// The type's full name with all its template arguments, as GCC spells it in a function's signature text
    /// ("long int", "> >"). `length` is set to its length in bytes; `buffer`, if not null, gets the text and a
    /// zero byte, so must have room for length plus one bytes.
    template <typename T>
    static void getTypeIdentifier(char* buffer, int* length);

    /// The type's handle. Looks the identifier up once per type and library. When T isn't registered: an empty
    /// handle, or with `throwOnError` RuntimeException.
    template <typename T>
    static TypeInfo get(bool throwOnError = true);

    static ITypeRegistration& getTypeRegistration();

    /// Registers a type under its identifier and gives its record. Of several registrations of one type, the first
    /// one counts until it ends. `owner` is any address that tells this registration from others. Null for an
    /// empty name or without memory.
    static ITypeInfoData* createTypeInfoData(const char* name, std::size_t size, Factory factory,
                                             const void* owner) noexcept;
    /// Ends the owner's registration. Nothing that it said is used afterwards.
    static void destroyTypeInfoData(ITypeInfoData* data, const void* owner) noexcept;

    /// Adds B as a base of T to T's record. Raises InvalidArgumentException for null data, RuntimeException if B
    /// isn't registered.
    template <typename T, typename B>
    static void addBaseType(ITypeInfoData* data);

    bool isValid() const noexcept { return data_ != nullptr; }
    const ITypeInfoData* getData() const noexcept { return data_; }
    /// The type identifier; empty for an empty handle.
    GenICam::gcstring getName() const { return data_ ? data_->getName() : ""; }

    /// True if a value of this type can be read as `other`: the types are equal, `other` is a base, or one of them
    /// is the shared form (COWPtr) of the other or of a type derived from it. False if a handle is empty.
    bool canConvert(const TypeInfo& other) const noexcept;

    /// A property by its path, as in "Center.X". If there is none: null, or with `throwOnError`
    /// InvalidArgumentException that names path and type.
    const PropertyInfo* getProperty(std::string_view path, bool throwOnError = true) const;
    /// Splits a path at its first dot. False, with `rest` empty, if there is no dot.
    static bool splitPath(std::string_view path, std::string_view& head, std::string_view& rest) noexcept;

    friend bool operator==(const TypeInfo& a, const TypeInfo& b) noexcept { return a.data_ == b.data_; }

private:
    template <typename T>
    static const ITypeEntry* getEntry();

    const ITypeInfoData* data_ = nullptr;
};

}  // namespace Nivex::DataProcessing::Utils

#include "utils/typeinfo_impl.h"

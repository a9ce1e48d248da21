#include <algorithm>
#include <atomic>
#include <map>
#include <memory>
#include <mutex>
#include <new>
#include <vector>

#include "utils/propertyinfo.h"
#include "utils/typeinfo.h"

namespace Nivex::DataProcessing::Utils {

namespace {

using Factory = TypeInfo::Factory;
using UpCast = TypeInfo::UpCast;

struct Base
{
    const TypeInfo::ITypeInfoData* type;
    UpCast upCast;
};

/// What one registration of a type said; its functions live in the library that registered.
struct Registration
{
    const void* owner = nullptr;
    std::size_t size = 0;
    Factory factory = nullptr;
    std::vector<Base> bases;
    std::vector<std::shared_ptr<const PropertyInfo>> properties;
    const TypeInfo::ITypeInfoData* sharedFormOf = nullptr;
};

/// The registrations in force; the first one counts. Never changed once readers may see it; a change makes a new
/// one.
using Registrations = std::vector<Registration>;

/// Readers take no lock: they follow one atomic pointer. Lists of the past are kept for readers that still look at
/// them; there are a few for each loading of a library.
class TypeInfoData final : public TypeInfo::ITypeInfoData, public TypeInfo::ITypeEntry
{
public:
    TypeInfoData(std::string name, std::mutex& mutex) : name_(std::move(name)), mutex_(mutex) { publish({}); }

    const char* getName() const noexcept override { return name_.c_str(); }
    bool isRegistered() const noexcept override { return !all().empty(); }
    std::size_t getSize() const noexcept override { return first().size; }
    Factory getFactory() const noexcept override { return first().factory; }
    const TypeInfo::ITypeInfoData* getData() const noexcept override { return isRegistered() ? this : nullptr; }

    const TypeInfo::ITypeInfoData* getValueType() const noexcept override
    {
        const TypeInfo::ITypeInfoData* type = first().sharedFormOf;
        return type ? type : this;
    }

    void addBase(const TypeInfo::ITypeInfoData* base, UpCast upCast) override
    {
        if (!base) GENICAM_THROW(InvalidArgumentException, "No base type passed.");
        if (base == this || base->hasBase(this)) {
            GENICAM_THROW(InvalidArgumentException, "Type \"%s\" cannot have itself as a base.", name_.c_str());
        }
        changeLast([&](Registration& registration) { registration.bases.push_back({base, upCast}); });
    }

    void setSharedFormOf(const TypeInfo::ITypeInfoData* type) override
    {
        changeLast([&](Registration& registration) { registration.sharedFormOf = type; });
    }

    void addProperty(const PropertyInfo& property) override
    {
        changeLast([&](Registration& registration) {
            registration.properties.push_back(std::make_shared<const PropertyInfo>(property));
        });
    }

    const void* convert(const void* object, const TypeInfo::ITypeInfoData* target) const noexcept override
    {
        if (target == this) return object;
        for (const Base& base : first().bases) {
            if (const void* found = base.type->convert(base.upCast(object), target)) return found;
        }
        return nullptr;
    }

    bool hasBase(const TypeInfo::ITypeInfoData* target) const noexcept override
    {
        const auto& bases = first().bases;
        return std::any_of(bases.begin(), bases.end(),
                           [&](const Base& base) { return base.type == target || base.type->hasBase(target); });
    }

    const PropertyInfo* findProperty(std::string_view name) const noexcept override
    {
        for (const auto& property : first().properties) {
            if (property->getName() == name) return property.get();
        }
        for (const Base& base : first().bases) {
            if (const PropertyInfo* inherited = base.type->findProperty(name)) return inherited;
        }
        return nullptr;
    }

    void beginRegistration(Registration registration)
    {
        change([&](Registrations& registrations) { registrations.push_back(std::move(registration)); });
    }

    void endRegistration(const void* owner)
    {
        change([&](Registrations& registrations) {
            std::erase_if(registrations, [&](const Registration& entry) { return entry.owner == owner; });
        });
    }

private:
    const Registrations& all() const noexcept { return *current_.load(std::memory_order_acquire); }

    const Registration& first() const noexcept
    {
        static const Registration none;
        const Registrations& registrations = all();
        return registrations.empty() ? none : registrations.front();
    }

    template <typename Change>
    void change(const Change& apply)
    {
        const std::lock_guard lock(mutex_);
        Registrations changed = all();
        apply(changed);
        publish(std::move(changed));
    }

    /// Static initialisation is one thread's work, so the last registration is the one being described.
    template <typename Change>
    void changeLast(const Change& apply)
    {
        change([&](Registrations& registrations) {
            if (registrations.empty()) {
                GENICAM_THROW(LogicalErrorException, "Type \"%s\" is not registered.", name_.c_str());
            }
            apply(registrations.back());
        });
    }

    void publish(Registrations registrations)
    {
        past_.push_back(std::make_unique<const Registrations>(std::move(registrations)));
        current_.store(past_.back().get(), std::memory_order_release);
    }

    const std::string name_;
    std::mutex& mutex_;
    std::vector<std::unique_ptr<const Registrations>> past_;
    std::atomic<const Registrations*> current_{nullptr};
};

class TypeRegistry final : public TypeInfo::ITypeRegistration
{
public:
    const TypeInfo::ITypeEntry* getEntry(const char* identifier) noexcept override { return find(identifier); }

    TypeInfoData* find(const char* identifier) noexcept
    {
        if (!identifier || !*identifier) return nullptr;
        try {
            const std::lock_guard lock(mutex_);
            auto& entry = entries_[identifier];
            if (!entry) entry = std::make_unique<TypeInfoData>(identifier, recordMutex_);
            return entry.get();
        } catch (const std::bad_alloc&) {
            return nullptr;
        }
    }

    std::vector<TypeInfo> getTypes() const override
    {
        const std::lock_guard lock(mutex_);
        std::vector<TypeInfo> types;
        for (const auto& [name, entry] : entries_) {
            if (entry && entry->isRegistered()) types.emplace_back(entry.get());
        }
        return types;
    }

private:
    mutable std::mutex mutex_;
    std::mutex recordMutex_;
    std::map<std::string, std::unique_ptr<TypeInfoData>> entries_;
};

/// Never destroyed: libraries unregister in whatever order the process unloads them.
TypeRegistry& registry()
{
    static TypeRegistry& instance = *new TypeRegistry;
    return instance;
}

}  // namespace

TypeInfo::ITypeRegistration& TypeInfo::getTypeRegistration()
{
    return registry();
}

TypeInfo::ITypeInfoData* TypeInfo::createTypeInfoData(const char* name, std::size_t size, Factory factory,
                                                      const void* owner) noexcept
{
    TypeInfoData* data = registry().find(name);
    if (!data) return nullptr;
    try {
        Registration registration;
        registration.owner = owner;
        registration.size = size;
        registration.factory = factory;
        data->beginRegistration(std::move(registration));
        return data;
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

void TypeInfo::destroyTypeInfoData(ITypeInfoData* data, const void* owner) noexcept
{
    if (data) static_cast<TypeInfoData*>(data)->endRegistration(owner);
}

namespace Detail {

namespace {

struct Spelling
{
    std::string_view other;
    std::string_view gcc;
};

constexpr Spelling spellings[] = {
    {"short", "short int"},
    {"unsigned short", "short unsigned int"},
    {"long", "long int"},
    {"unsigned long", "long unsigned int"},
    {"long long", "long long int"},
    {"unsigned long long", "long long unsigned int"},
    {"std::basic_string", "std::__cxx11::basic_string"},
};

}  // namespace

std::string spellAsGcc(std::string_view name)
{
    for (const Spelling& spelling : spellings) {
        if (name == spelling.other) return std::string(spelling.gcc);
    }
    std::string text(name);
    for (std::size_t i = text.find(">>"); i != std::string::npos; i = text.find(">>", i))
        text.replace(i, 2, "> >");
    return text;
}

std::string_view templateName(std::string_view name)
{
    int depth = 0;
    for (std::size_t i = name.size(); i-- > 0;) {
        if (name[i] == '>') ++depth;
        if (name[i] == '<' && --depth == 0) return name.substr(0, i);
    }
    return name;
}

}  // namespace Detail

}  // namespace Nivex::DataProcessing::Utils

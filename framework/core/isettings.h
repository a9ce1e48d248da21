#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <variant>
#include <vector>

#include "gcbase/gcstring.h"

namespace Nivex::DataProcessing::Core {

/// The way to a key of a settings store: names of objects and indices into lists, outermost first.
class SettingsPath
{
public:
    using Element = std::variant<GenICam::gcstring, std::size_t>;

    SettingsPath() = default;
    /// A path of one name.
    SettingsPath(const char* name) { addElement(name); }               // NOLINT: paths are mostly one name
    SettingsPath(const GenICam::gcstring& name) { addElement(name); }  // NOLINT
    SettingsPath& addElement(const char* name) { return addElement(GenICam::gcstring(name)); }
    SettingsPath& addElement(const GenICam::gcstring& name)
    {
        elements_.emplace_back(name);
        return *this;
    }
    SettingsPath& addElement(std::size_t index)
    {
        elements_.emplace_back(index);
        return *this;
    }
    const std::vector<Element>& getElements() const { return elements_; }

private:
    std::vector<Element> elements_;
};

/// A store of settings, a tree of named values. Getters raise RuntimeException that names the path if the key is
/// missing or holds a value of another kind; an integer serves where a double is read, nothing else is
/// converted. Setters make the key and the objects and lists on the way to it. Used by one thread at a time.
class GENICAM_API ISettings
{
public:
    virtual ~ISettings() = default;

    virtual bool hasKey(const SettingsPath& path) const = 0;

    virtual std::int64_t getSigned(const SettingsPath& path) const = 0;
    virtual std::uint64_t getUnsigned(const SettingsPath& path) const = 0;
    virtual double getDouble(const SettingsPath& path) const = 0;
    virtual bool getBool(const SettingsPath& path) const = 0;
    virtual GenICam::gcstring getString(const SettingsPath& path) const = 0;

    virtual void setSigned(const SettingsPath& path, std::int64_t value) = 0;
    virtual void setUnsigned(const SettingsPath& path, std::uint64_t value) = 0;
    virtual void setDouble(const SettingsPath& path, double value) = 0;
    virtual void setBool(const SettingsPath& path, bool value) = 0;
    virtual void setString(const SettingsPath& path, const GenICam::gcstring& value) = 0;

    /// The store below a key; raises RuntimeException naming the path if there is none.
    virtual std::shared_ptr<ISettings> openChild(const SettingsPath& path) const = 0;
    /// The store below a key, made if there is none.
    virtual std::shared_ptr<ISettings> createChild(const SettingsPath& path) = 0;

    /// True when the store belongs to a saved file.
    virtual bool hasLocation() const = 0;
    /// The folder of that file; empty without location.
    virtual GenICam::gcstring getLocation() const = 0;

    /// The number of entries of a list. An object without members counts as an empty list.
    virtual std::size_t getSize(const SettingsPath& path) const = 0;
    /// Makes an empty list if there is no key; raises RuntimeException if it holds anything but a list.
    virtual void createList(const SettingsPath& path) = 0;
};

}  // namespace Nivex::DataProcessing::Core

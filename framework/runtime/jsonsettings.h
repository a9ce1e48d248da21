#pragma once

#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "core/isettings.h"
#include "runtime/jsondocument.h"

namespace Nivex::DataProcessing::Runtime {

/// A settings store over a JSON tree, such as a node's "Settings" in a recipe. New keys go behind those that are
/// there. Texts of failures name the whole path ("PinConfig0.WriteEnable", "list[2]") and the value found.
///
/// Beyond what ISettings says: a setter that would put a value in place of an object or a list, make a list entry
/// beyond the end of its list, or store a number or a text that JSON has none for (infinity, no UTF-8), raises
/// RuntimeException.
class GENICAM_API JsonSettings : public Core::ISettings
{
public:
    /// An empty store without location.
    JsonSettings();
    /// Works on `tree` itself, and on children of it in stores that openChild gives. `location` is the folder of
    /// the file that the tree belongs to; empty if there is none. Raises InvalidArgumentException unless `tree` is
    /// an object.
    explicit JsonSettings(std::shared_ptr<JsonValue> tree, GenICam::gcstring location = {});
    ~JsonSettings() override;

    /// The store as JSON text, see formatJson.
    std::string toText() const;
    /// Where in the file the value, or the object that lacks it, stands that this store or a child of it refused
    /// last.
    std::optional<TextPosition> getRefusalPosition() const;
    /// Puts what `instead` has at the path that was refused last in its place, so that a reader who begins anew
    /// gets on to what else it refuses. False if nothing was refused, `instead` has
    /// nothing there, or it fits nowhere.
    bool replaceRefused(const JsonSettings& instead);

    /// A value that nobody asked for, through this store or a child of it, or only for what would stand below it.
    struct Unread
    {
        TextPosition position;
        std::string path;
        std::string name;
        std::vector<std::string> missed;  ///< What was asked for in the same object and is not there.
    };
    /// Of an object or a list that nobody asked for only itself.
    std::vector<Unread> listUnread() const;

    bool hasKey(const Core::SettingsPath& path) const override;
    std::int64_t getSigned(const Core::SettingsPath& path) const override;
    std::uint64_t getUnsigned(const Core::SettingsPath& path) const override;
    double getDouble(const Core::SettingsPath& path) const override;
    bool getBool(const Core::SettingsPath& path) const override;
    GenICam::gcstring getString(const Core::SettingsPath& path) const override;
    void setSigned(const Core::SettingsPath& path, std::int64_t value) override;
    void setUnsigned(const Core::SettingsPath& path, std::uint64_t value) override;
    void setDouble(const Core::SettingsPath& path, double value) override;
    void setBool(const Core::SettingsPath& path, bool value) override;
    void setString(const Core::SettingsPath& path, const GenICam::gcstring& value) override;
    std::shared_ptr<Core::ISettings> openChild(const Core::SettingsPath& path) const override;
    std::shared_ptr<Core::ISettings> createChild(const Core::SettingsPath& path) override;
    bool hasLocation() const override;
    GenICam::gcstring getLocation() const override;
    std::size_t getSize(const Core::SettingsPath& path) const override;
    void createList(const Core::SettingsPath& path) override;

private:
    struct Refusal
    {
        TextPosition position;
        Core::SettingsPath path;
    };
    /// What a store and its children have in common.
    struct File
    {
        GenICam::gcstring location;
        std::optional<Refusal> refusal;
        std::map<std::string, std::set<std::string>> asked;  ///< Names and "[INDEX]" by the path they stand below.
    };

    JsonSettings(std::shared_ptr<JsonValue> tree, std::shared_ptr<File> file, Core::SettingsPath prefix);

    Core::SettingsPath fullPath(const Core::SettingsPath& path) const;
    std::string pathText(const Core::SettingsPath& path) const;
    /// The value at the path and null, or null and the last value on the way to it.
    std::pair<std::shared_ptr<JsonValue>, std::shared_ptr<JsonValue>> find(const Core::SettingsPath& path) const;
    void addUnread(const JsonValue& value, const std::string& path, std::vector<Unread>& unread) const;
    std::shared_ptr<JsonValue> require(const Core::SettingsPath& path) const;
    JsonValue& make(const Core::SettingsPath& path);
    void store(const Core::SettingsPath& path, JsonValue::Data&& data);
    [[noreturn]] void refuse(const Core::SettingsPath& path, const JsonValue& found, const char* wanted) const;

    std::shared_ptr<JsonValue> tree_;
    std::shared_ptr<File> file_;
    Core::SettingsPath prefix_;  ///< The path of tree_ in the whole store.
};

}  // namespace Nivex::DataProcessing::Runtime

#pragma once

#include <memory>
#include <optional>
#include <string>

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

private:
    /// What a store and its children have in common.
    struct File
    {
        GenICam::gcstring location;
        std::optional<TextPosition> refusal;
    };

    JsonSettings(std::shared_ptr<JsonValue> tree, std::shared_ptr<File> file, std::string prefix);

    std::string pathText(const Core::SettingsPath& path) const;
    const JsonValue& require(const Core::SettingsPath& path) const;
    JsonValue& make(const Core::SettingsPath& path);
    void store(const Core::SettingsPath& path, JsonValue::Data&& data);
    [[noreturn]] void refuse(const Core::SettingsPath& path, const JsonValue& found, const char* wanted) const;

    std::shared_ptr<JsonValue> tree_;
    std::shared_ptr<File> file_;
    std::string prefix_;  ///< The path of tree_ in the whole store.
};

}  // namespace Nivex::DataProcessing::Runtime

#include "runtime/jsonsettings.h"

#include <cmath>
#include <limits>

#include "gcbase/exception.h"

namespace Nivex::DataProcessing::Runtime {

using Core::SettingsPath;
using GenICam::gcstring;

namespace {

using ValuePtr = std::shared_ptr<JsonValue>;

/// Null if the value has no such child.
ValuePtr findChild(const JsonValue& value, const SettingsPath::Element& element)
{
    if (const auto* name = std::get_if<gcstring>(&element)) {
        const auto* object = value.as<JsonObject>();
        return object ? object->find(name->view()) : nullptr;
    }
    const auto* list = value.as<JsonArray>();
    const std::size_t index = std::get<std::size_t>(element);
    return list && index < list->items.size() ? list->items[index] : nullptr;
}

/// Null if the value is of a kind that takes no such child.
ValuePtr addChild(JsonValue& value, const SettingsPath::Element& element)
{
    auto child = std::make_shared<JsonValue>();
    if (const auto* name = std::get_if<gcstring>(&element)) {
        if (value.as<std::monostate>()) value.data = JsonObject();
        auto* object = value.as<JsonObject>();
        if (!object) return nullptr;
        object->members.push_back({name->str(), {}, child});
        return child;
    }
    if (value.as<std::monostate>()) value.data = JsonArray();
    auto* list = value.as<JsonArray>();
    if (!list || std::get<std::size_t>(element) != list->items.size()) return nullptr;
    list->items.push_back(child);
    return child;
}

bool isContainer(const JsonValue& value)
{
    return value.as<JsonArray>() || value.as<JsonObject>();
}

std::string appendPath(std::string text, const SettingsPath& path)
{
    for (const auto& element : path.getElements()) {
        if (const auto* name = std::get_if<gcstring>(&element)) {
            if (!text.empty()) text += '.';
            text += name->str();
        } else {
            text += "[" + std::to_string(std::get<std::size_t>(element)) + "]";
        }
    }
    return text;
}

}  // namespace

JsonSettings::JsonSettings() : JsonSettings(std::make_shared<JsonValue>(JsonObject())) {}

JsonSettings::JsonSettings(std::shared_ptr<JsonValue> tree, gcstring location)
    : JsonSettings(std::move(tree), std::make_shared<File>(File{std::move(location), {}}), {})
{
    if (!tree_ || !tree_->as<JsonObject>()) {
        GENICAM_THROW(InvalidArgumentException, "A settings store needs an object.");
    }
}

JsonSettings::JsonSettings(std::shared_ptr<JsonValue> tree, std::shared_ptr<File> file, std::string prefix)
    : tree_(std::move(tree)), file_(std::move(file)), prefix_(std::move(prefix))
{}

JsonSettings::~JsonSettings() = default;

std::string JsonSettings::toText() const
{
    return formatJson(*tree_);
}

std::optional<TextPosition> JsonSettings::getRefusalPosition() const
{
    return file_->refusal;
}

std::string JsonSettings::pathText(const SettingsPath& path) const
{
    return appendPath(prefix_, path);
}

bool JsonSettings::hasKey(const SettingsPath& path) const
{
    ValuePtr value = tree_;
    for (const auto& element : path.getElements()) {
        value = findChild(*value, element);
        if (!value) return false;
    }
    return true;
}

const JsonValue& JsonSettings::require(const SettingsPath& path) const
{
    const JsonValue* value = tree_.get();
    for (const auto& element : path.getElements()) {
        const ValuePtr child = findChild(*value, element);
        if (!child) {
            file_->refusal = value->position;
            GENICAM_THROW(RuntimeException, "The setting \"%s\" is missing.", pathText(path).c_str());
        }
        value = child.get();
    }
    return *value;
}

void JsonSettings::refuse(const SettingsPath& path, const JsonValue& found, const char* wanted) const
{
    file_->refusal = found.position;
    GENICAM_THROW(RuntimeException, "The setting \"%s\" is %s; wanted is %s.", pathText(path).c_str(),
                  found.describe().c_str(), wanted);
}

std::int64_t JsonSettings::getSigned(const SettingsPath& path) const
{
    constexpr auto greatest = static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max());
    const JsonValue& value = require(path);
    if (const auto* number = value.as<std::int64_t>()) return *number;
    const auto* number = value.as<std::uint64_t>();
    if (!number || *number > greatest) {
        refuse(path, value, "an integer from -9223372036854775808 to 9223372036854775807");
    }
    return static_cast<std::int64_t>(*number);
}

std::uint64_t JsonSettings::getUnsigned(const SettingsPath& path) const
{
    const JsonValue& value = require(path);
    const auto* number = value.as<std::uint64_t>();
    if (!number) refuse(path, value, "an integer from 0 to 18446744073709551615");
    return *number;
}

double JsonSettings::getDouble(const SettingsPath& path) const
{
    const JsonValue& value = require(path);
    if (const auto* number = value.as<double>()) return *number;
    if (const auto* number = value.as<std::int64_t>()) return static_cast<double>(*number);
    const auto* number = value.as<std::uint64_t>();
    if (!number) refuse(path, value, "a number");
    return static_cast<double>(*number);
}

bool JsonSettings::getBool(const SettingsPath& path) const
{
    const JsonValue& value = require(path);
    const auto* flag = value.as<bool>();
    if (!flag) refuse(path, value, "true or false");
    return *flag;
}

gcstring JsonSettings::getString(const SettingsPath& path) const
{
    const JsonValue& value = require(path);
    const auto* text = value.as<std::string>();
    if (!text) refuse(path, value, "a text");
    return gcstring(*text);
}

JsonValue& JsonSettings::make(const SettingsPath& path)
{
    JsonValue* value = tree_.get();
    for (const auto& element : path.getElements()) {
        ValuePtr child = findChild(*value, element);
        if (!child) child = addChild(*value, element);
        if (!child) {
            GENICAM_THROW(RuntimeException,
                          "The setting \"%s\" cannot be made: %s on the way to it takes no such entry.",
                          pathText(path).c_str(), value->describe().c_str());
        }
        value = child.get();
    }
    return *value;
}

void JsonSettings::store(const SettingsPath& path, JsonValue::Data&& data)
{
    JsonValue& value = make(path);
    if (isContainer(value)) {
        GENICAM_THROW(RuntimeException, "The setting \"%s\" is %s, which a single value cannot replace.",
                      pathText(path).c_str(), value.describe().c_str());
    }
    value.data = std::move(data);
}

void JsonSettings::setSigned(const SettingsPath& path, std::int64_t value)
{
    if (value < 0) {
        store(path, value);
    } else {
        store(path, static_cast<std::uint64_t>(value));
    }
}

void JsonSettings::setUnsigned(const SettingsPath& path, std::uint64_t value)
{
    store(path, value);
}

void JsonSettings::setDouble(const SettingsPath& path, double value)
{
    if (!std::isfinite(value)) {
        GENICAM_THROW(RuntimeException, "The setting \"%s\" cannot be stored as %f; only finite numbers can.",
                      pathText(path).c_str(), value);
    }
    store(path, value);
}

void JsonSettings::setBool(const SettingsPath& path, bool value)
{
    store(path, value);
}

void JsonSettings::setString(const SettingsPath& path, const gcstring& value)
{
    try {
        formatJson(JsonValue(value.str()));
    } catch (const GenICam::RuntimeException&) {
        GENICAM_THROW(RuntimeException, "The setting \"%s\" cannot be stored: its text is no UTF-8.",
                      pathText(path).c_str());
    }
    store(path, value.str());
}

std::shared_ptr<Core::ISettings> JsonSettings::openChild(const SettingsPath& path) const
{
    const JsonValue& found = require(path);
    if (!found.as<JsonObject>()) refuse(path, found, "an object");
    ValuePtr value = tree_;
    for (const auto& element : path.getElements())
        value = findChild(*value, element);
    return std::shared_ptr<JsonSettings>(new JsonSettings(value, file_, pathText(path)));
}

std::shared_ptr<Core::ISettings> JsonSettings::createChild(const SettingsPath& path)
{
    JsonValue& value = make(path);
    if (value.as<std::monostate>()) value.data = JsonObject();
    return openChild(path);
}

bool JsonSettings::hasLocation() const
{
    return !file_->location.empty();
}

gcstring JsonSettings::getLocation() const
{
    return file_->location;
}

}  // namespace Nivex::DataProcessing::Runtime

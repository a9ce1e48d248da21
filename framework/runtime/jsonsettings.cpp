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

std::string elementText(const SettingsPath::Element& element)
{
    if (const auto* name = std::get_if<gcstring>(&element)) return name->str();
    return "[" + std::to_string(std::get<std::size_t>(element)) + "]";
}

std::string joinPath(const std::string& path, const std::string& element)
{
    return path.empty() || element.starts_with('[') ? path + element : path + "." + element;
}

std::string describePath(const SettingsPath& path)
{
    std::string text;
    for (const auto& element : path.getElements())
        text = joinPath(text, elementText(element));
    return text;
}

}  // namespace

JsonSettings::JsonSettings() : JsonSettings(std::make_shared<JsonValue>(JsonObject())) {}

JsonSettings::JsonSettings(std::shared_ptr<JsonValue> tree, gcstring location)
    : JsonSettings(std::move(tree), std::make_shared<File>(File{std::move(location), {}, {}}), {})
{
    if (!tree_ || !tree_->as<JsonObject>()) {
        GENICAM_THROW(InvalidArgumentException, "A settings store needs an object.");
    }
}

JsonSettings::JsonSettings(std::shared_ptr<JsonValue> tree, std::shared_ptr<File> file, SettingsPath prefix)
    : tree_(std::move(tree)), file_(std::move(file)), prefix_(std::move(prefix))
{}

JsonSettings::~JsonSettings() = default;

std::string JsonSettings::toText() const
{
    return formatJson(*tree_);
}

std::optional<TextPosition> JsonSettings::getRefusalPosition() const
{
    if (!file_->refusal) return std::nullopt;
    return file_->refusal->position;
}

bool JsonSettings::replaceRefused(const JsonSettings& instead)
{
    if (!file_->refusal) return false;
    const Refusal refusal = *file_->refusal;
    const ValuePtr found = instead.find(refusal.path).first;
    if (!found) return false;
    try {
        JsonValue& value = make(refusal.path);
        value.data = found->data;
        value.position = refusal.position;
        return true;
    } catch (const GenICam::RuntimeException&) {
        return false;
    }
}

void JsonSettings::addUnread(const JsonValue& value, const std::string& path, std::vector<Unread>& unread) const
{
    const auto entry = file_->asked.find(path);
    const std::set<std::string> asked = entry == file_->asked.end() ? std::set<std::string>() : entry->second;
    const auto* object = value.as<JsonObject>();
    std::vector<std::string> missed;
    for (const std::string& name : asked) {
        if (object && !object->find(name)) missed.push_back(name);
    }
    const auto visit = [&](const std::string& name, const JsonValue& child, TextPosition position) {
        const std::string childPath = joinPath(path, name);
        const bool isUsed = asked.count(name) != 0 && (isContainer(child) || file_->asked.count(childPath) == 0);
        if (isUsed) return addUnread(child, childPath, unread);
        unread.push_back({position, childPath, name, missed});
    };
    if (object) {
        for (const JsonMember& member : object->members)
            visit(member.name, *member.value, member.namePosition);
    } else if (const auto* list = value.as<JsonArray>()) {
        for (std::size_t i = 0; i < list->items.size(); ++i)
            visit(elementText(i), *list->items[i], list->items[i]->position);
    }
}

std::vector<JsonSettings::Unread> JsonSettings::listUnread() const
{
    std::vector<Unread> unread;
    addUnread(*tree_, pathText({}), unread);
    return unread;
}

SettingsPath JsonSettings::fullPath(const SettingsPath& path) const
{
    SettingsPath full = prefix_;
    for (const auto& element : path.getElements())
        std::visit([&full](const auto& part) { full.addElement(part); }, element);
    return full;
}

std::string JsonSettings::pathText(const SettingsPath& path) const
{
    return describePath(fullPath(path));
}

std::pair<ValuePtr, ValuePtr> JsonSettings::find(const SettingsPath& path) const
{
    ValuePtr value = tree_;
    std::string text = describePath(prefix_);
    for (const auto& element : path.getElements()) {
        const std::string name = elementText(element);
        file_->asked[text].insert(name);
        text = joinPath(text, name);
        ValuePtr child = findChild(*value, element);
        if (!child) return {nullptr, value};
        value = std::move(child);
    }
    return {value, nullptr};
}

bool JsonSettings::hasKey(const SettingsPath& path) const
{
    return find(path).first != nullptr;
}

ValuePtr JsonSettings::require(const SettingsPath& path) const
{
    const auto [value, last] = find(path);
    if (value) return value;
    file_->refusal = Refusal{last->position, fullPath(path)};
    GENICAM_THROW(RuntimeException, "The setting \"%s\" is missing.", pathText(path).c_str());
}

void JsonSettings::refuse(const SettingsPath& path, const JsonValue& found, const char* wanted) const
{
    file_->refusal = Refusal{found.position, fullPath(path)};
    GENICAM_THROW(RuntimeException, "The setting \"%s\" is %s; wanted is %s.", pathText(path).c_str(),
                  found.describe().c_str(), wanted);
}

std::int64_t JsonSettings::getSigned(const SettingsPath& path) const
{
    constexpr auto greatest = static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max());
    const ValuePtr value = require(path);
    if (const auto* number = value->as<std::int64_t>()) return *number;
    const auto* number = value->as<std::uint64_t>();
    if (!number || *number > greatest) {
        refuse(path, *value, "an integer from -9223372036854775808 to 9223372036854775807");
    }
    return static_cast<std::int64_t>(*number);
}

std::uint64_t JsonSettings::getUnsigned(const SettingsPath& path) const
{
    const ValuePtr value = require(path);
    const auto* number = value->as<std::uint64_t>();
    if (!number) refuse(path, *value, "an integer from 0 to 18446744073709551615");
    return *number;
}

double JsonSettings::getDouble(const SettingsPath& path) const
{
    const ValuePtr value = require(path);
    if (const auto* number = value->as<double>()) return *number;
    if (const auto* number = value->as<std::int64_t>()) return static_cast<double>(*number);
    const auto* number = value->as<std::uint64_t>();
    if (!number) refuse(path, *value, "a number");
    return static_cast<double>(*number);
}

bool JsonSettings::getBool(const SettingsPath& path) const
{
    const ValuePtr value = require(path);
    const auto* flag = value->as<bool>();
    if (!flag) refuse(path, *value, "true or false");
    return *flag;
}

gcstring JsonSettings::getString(const SettingsPath& path) const
{
    const ValuePtr value = require(path);
    const auto* text = value->as<std::string>();
    if (!text) refuse(path, *value, "a text");
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
    const ValuePtr value = require(path);
    if (!value->as<JsonObject>()) refuse(path, *value, "an object");
    return std::shared_ptr<JsonSettings>(new JsonSettings(value, file_, fullPath(path)));
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

std::size_t JsonSettings::getSize(const SettingsPath& path) const
{
    const ValuePtr value = require(path);
    if (const auto* list = value->as<JsonArray>()) return list->items.size();
    const auto* object = value->as<JsonObject>();
    if (!object || !object->members.empty()) refuse(path, *value, "a list");
    return 0;
}

void JsonSettings::createList(const SettingsPath& path)
{
    JsonValue& value = make(path);
    if (value.as<std::monostate>()) value.data = JsonArray();
    if (!value.as<JsonArray>()) refuse(path, value, "a list");
}

}  // namespace Nivex::DataProcessing::Runtime

// The settings of Camera in a recipe.
#include "camera/camera_private.h"
#include "camera/cameraparametertexts.h"
#include "core/isettings.h"

namespace Plugin::NivexStageletPackageBase {

namespace Core = Nivex::DataProcessing::Core;
using namespace CameraDetail;
using Core::SettingsPath;
using GenICam::gcstring;

namespace {

constexpr const char* devicePropertiesKey = "DeviceProperties";
constexpr const char* propertyKeyKey = "Key";
constexpr const char* propertyValueKey = "Value";
constexpr const char* eventConfigurationKey = "EventConfiguration";
constexpr const char* chunkConfigurationsKey = "ChunkPinConfigurations";
constexpr const char* acquisitionModeKey = "AcquisitionMode";
constexpr const char* fixCorruptImagesKey = "FixCorruptImages";
constexpr const char* featureStreamsKey = "FeatureStreams";

SettingsPath entry(const char* list, std::size_t index)
{
    return SettingsPath(list).addElement(index);
}

SettingsPath field(const char* list, std::size_t index, const char* name)
{
    return entry(list, index).addElement(name);
}

/// Calls `read` with each index of a list, in order. Raises RuntimeException for anything but a list.
template <typename Read>
void forEachEntry(const Core::ISettings& settings, const char* list, const Read& read)
{
    const std::size_t size = settings.getSize(list);
    for (std::size_t i = 0; i < size; ++i)
        read(i);
}

/// An empty list is saved too, so that loading it empties the list.
template <typename Items, typename Save>
void saveList(Core::ISettings& settings, const char* key, const Items& items, const Save& save)
{
    settings.createList(key);
    for (std::size_t i = 0; i < items.size(); ++i)
        save(i, items[i]);
}

void saveLines(Core::ISettings& settings, const char* key, const std::vector<gcstring>& lines)
{
    saveList(settings, key, lines,
             [&](std::size_t i, const gcstring& line) { settings.setString(entry(key, i), line); });
}

std::vector<gcstring> loadLines(const Core::ISettings& settings, const char* key)
{
    std::vector<gcstring> lines;
    forEachEntry(settings, key, [&](std::size_t i) { lines.push_back(settings.getString(entry(key, i))); });
    return lines;
}

void saveProperties(Core::ISettings& settings, DeviceProperties properties)
{
    std::erase_if(properties, [](const DeviceProperty& row) { return row.second == notYetConfigured; });
    saveList(settings, devicePropertiesKey, properties, [&](std::size_t i, const DeviceProperty& row) {
        settings.setString(field(devicePropertiesKey, i, propertyKeyKey), row.first);
        settings.setString(field(devicePropertiesKey, i, propertyValueKey), row.second);
    });
}

DeviceProperties loadProperties(const Core::ISettings& settings)
{
    DeviceProperties properties;
    forEachEntry(settings, devicePropertiesKey, [&](std::size_t i) {
        properties.push_back({settings.getString(field(devicePropertiesKey, i, propertyKeyKey)),
                              settings.getString(field(devicePropertiesKey, i, propertyValueKey))});
    });
    return properties;
}

/// The symbolic name of a value; raises InvalidArgumentException for one without.
template <typename Rows, typename Value>
gcstring nameOf(const Rows& rows, Value value, const char* parameter)
{
    for (const auto& row : rows) {
        if (row.value == value) return row.name;
    }
    GENICAM_THROW(InvalidArgumentException, "%s holds %u, which is none of its entries.", parameter,
                  static_cast<unsigned>(value));
}

template <typename Rows>
auto valueOf(const Rows& rows, const gcstring& name, const char* parameter)
{
    gcstring allowed;
    for (const auto& row : rows) {
        if (name == row.name) return row.value;
        allowed += (allowed.empty() ? "\"" : ", \"") + gcstring(row.name) + "\"";
    }
    GENICAM_THROW(InvalidArgumentException, "%s is \"%s\", but must be one of %s.", parameter, name.c_str(),
                  allowed.c_str());
}

}  // namespace

void Camera::saveSettings(const std::shared_ptr<Core::ISettings>& settings)
{
    constexpr const char* function = "saveSettings";
    if (!settings) NODE_REFUSE(InvalidArgumentException, cameraLog, this, function, "No settings passed.");
    const Guard guard(*getLock());
    if (getState() != Core::NodeState::Stopped) {
        NODE_REFUSE(RuntimeException, cameraLog, this, function, "Stagelet must not be running to save.");
    }
    const Impl& own = *impl_;
    saveProperties(*settings, own.assignment.properties().items());
    saveLines(*settings, eventConfigurationKey, own.pins.getEventLines().items());
    saveLines(*settings, chunkConfigurationsKey, own.pins.getChunkLines().items());
    settings->setString(acquisitionModeKey,
                        nameOf(CameraTexts::acquisitionModes, own.acquisitionMode, acquisitionModeKey));
    settings->setString(fixCorruptImagesKey,
                        nameOf(CameraTexts::fixCorruptImagesEntries, own.fixCorruptImages, fixCorruptImagesKey));
    const auto streams = settings->createChild(featureStreamsKey);
    for (const auto& [identifier, text] : own.configurationSets.getActiveTexts())
        streams->setString(identifier, text);
}

void Camera::loadSettings(const std::shared_ptr<Core::ISettings>& settings)
{
    constexpr const char* function = "loadSettings";
    if (!settings) NODE_REFUSE(InvalidArgumentException, cameraLog, this, function, "No settings passed.");
    if (getState() != Core::NodeState::Stopped) {
        NODE_REFUSE(RuntimeException, cameraLog, this, function, "Stagelet must not be running to load.");
    }
    if (settings->hasKey(devicePropertiesKey)) {
        setDeviceProperties(function, [&](auto& list) { list.assign(loadProperties(*settings)); });
    }
    if (settings->hasKey(eventConfigurationKey)) {
        setConfigurationLines(true, function,
                              [&](auto& lines) { lines.assign(loadLines(*settings, eventConfigurationKey)); });
    }
    if (settings->hasKey(chunkConfigurationsKey)) {
        setConfigurationLines(false, function,
                              [&](auto& lines) { lines.assign(loadLines(*settings, chunkConfigurationsKey)); });
    }
    if (settings->hasKey(featureStreamsKey)) {
        const auto streams = settings->openChild(featureStreamsKey);
        ConfigurationSets::Texts texts;
        for (const auto& row : CameraTexts::configurationSets) {
            const char* const identifier = nodeMapIdentifier(row.value);
            if (streams->hasKey(identifier)) texts.emplace(identifier, streams->getString(identifier));
        }
        edit([&](Notices& notices) {
            Impl& own = *impl_;
            const ConfigurationSets::Texts before = own.configurationSets.getActiveTexts();
            own.configurationSets.setActiveTexts(texts);
            if (own.configurationSets.getActiveTexts() == before) return;
            own.showConfigurationSet(notices);
            notices.settingsChanged = true;
        });
    }
    if (settings->hasKey(acquisitionModeKey)) {
        setAcquisitionMode(
            valueOf(CameraTexts::acquisitionModes, settings->getString(acquisitionModeKey), acquisitionModeKey));
    }
    if (settings->hasKey(fixCorruptImagesKey)) {
        setFixCorruptImages(valueOf(CameraTexts::fixCorruptImagesEntries, settings->getString(fixCorruptImagesKey),
                                    fixCorruptImagesKey));
    }
}

}  // namespace Plugin::NivexStageletPackageBase

#include "camera/cameraparameters.h"

#include "camera/camera.h"
#include "camera/cameraparametertexts.h"
#include "parameteradapter/parameterportrelay.h"

namespace Plugin::NivexStageletPackageBase {

namespace Adapter = AnythingToNodeMapAdapter;
using GenICam::gcstring;

namespace {

// In bytes. They bound what a write through the node map may hold and what is shown of longer texts.
constexpr std::uint64_t maxNameLength = 256;
constexpr std::uint64_t maxPropertyLength = 1024;
constexpr std::uint64_t maxLineLength = 16384;
constexpr std::uint64_t maxConfigurationSetLength = 1 << 20;

/// For parameters that are not available while the node runs.
constexpr PortFlags stoppedOnly{.availableRegister = true};

template <auto getter, auto setter>
using TextRelay = Adapter::StringParameterPortRelay<Camera, getter, setter>;
template <auto isExecuting, auto execute>
using CommandRelay = Adapter::CommandParameterPortRelay<Camera, isExecuting, execute>;

/// Its range follows the length of a list.
template <auto getter, auto setter>
class SelectorRelay : public Adapter::IntegerParameterPortRelay<unsigned long, Camera, getter, setter>
{
public:
    SelectorRelay(Camera& node, const PortTexts& texts, const char* representation,
                  std::function<std::int64_t()> maximum)
        : Adapter::IntegerParameterPortRelay<unsigned long, Camera, getter, setter>(
              node, texts, IntegerRange{.min = 0, .max = 0}, representation, "", stoppedOnly),
          maximum_(std::move(maximum))
    {}

    std::int64_t getMax() const override { return maximum_(); }

private:
    std::function<std::int64_t()> maximum_;
};

/// Puts parameters into one category after the other.
class Builder
{
public:
    Builder(Camera& node, StageletNodeMapBase& nodeMap) : node_(node), nodeMap_(nodeMap) {}

    void category(const CameraTexts::CategoryRow& row)
    {
        category_ = row.name;
        nodeMap_.addFeature(std::make_shared<Adapter::CategoryParameterPort>(
            row.name, row.displayName, row.toolTip, row.description, "Expert"));
    }
    template <typename Port>
    void add(const std::shared_ptr<Port>& port)
    {
        nodeMap_.adapter().addParameter(port);
        nodeMap_.adapter().addLink(Adapter::LinkKey::feature, category_, port->getName());
    }
    void add(const ShownText& text) { add(text.port()); }
    template <typename Relay, typename Port, typename... Args>
    void relay(Port& port, const Args&... args)
    {
        const auto made = std::make_shared<Relay>(node_, args...);
        add(made);
        port = made;
    }
    template <auto isExecuting, auto execute>
    void command(CameraParameters::CommandPort& port, const PortTexts& texts, const PortFlags& flags = {})
    {
        relay<CommandRelay<isExecuting, execute>>(port, texts, false, flags);
    }

private:
    Camera& node_;
    StageletNodeMapBase& nodeMap_;
    const char* category_ = "Root";
};

void addAcquisition(CameraParameters& own, StageletNodeMapBase& nodeMap, Builder& builder)
{
    builder.category(CameraTexts::acquisitionControl);
    builder.relay<Adapter::EnumParameterPortRelay<AcquisitionMode, Camera, &Camera::getAcquisitionMode,
                                                  &Camera::setAcquisitionMode>>(own.acquisitionMode,
                                                                                CameraTexts::acquisitionMode);
    nodeMap.addEntries<AcquisitionMode>(CameraTexts::acquisitionMode.name, CameraTexts::acquisitionModes);
    builder.relay<Adapter::EnumParameterPortRelay<FixCorruptImages, Camera, &Camera::getFixCorruptImages,
                                                  &Camera::setFixCorruptImages>>(own.fixCorruptImages,
                                                                                 CameraTexts::fixCorruptImages);
    nodeMap.addEntries<FixCorruptImages>(CameraTexts::fixCorruptImages.name, CameraTexts::fixCorruptImagesEntries);
}

void addDeviceList(CameraParameters& own, Builder& builder, const CameraParameters::Limits& limits)
{
    builder.category(CameraTexts::deviceEnumerationControl);
    builder.command<&Camera::isExecutingDeviceListUpdate, &Camera::executeDeviceListUpdate>(
        own.deviceListUpdate, CameraTexts::deviceListUpdate, stoppedOnly);
    builder.relay<SelectorRelay<&Camera::getDeviceSelector, &Camera::setDeviceSelector>>(
        own.deviceSelector, CameraTexts::deviceSelector, "Linear", limits.device);
    builder.add(own.deviceModelName);
    builder.add(own.deviceVendorName);
    builder.add(own.deviceSerialNumber);
    builder.add(own.deviceUserDefinedName);
    builder.command<&Camera::isExecutingDeviceChoose, &Camera::executeDeviceChoose>(
        own.deviceChoose, CameraTexts::deviceChoose, stoppedOnly);
}

void addDeviceProperties(CameraParameters& own, Builder& builder, const CameraParameters::Limits& limits)
{
    builder.relay<SelectorRelay<&Camera::getDevicePropertySelector, &Camera::setDevicePropertySelector>>(
        own.devicePropertySelector, CameraTexts::devicePropertySelector, "PureNumber", limits.deviceProperty);
    builder.relay<TextRelay<&Camera::getDevicePropertyKey, &Camera::setDevicePropertyKey>>(
        own.devicePropertyKey, CameraTexts::devicePropertyKey, maxNameLength, stoppedOnly);
    builder.relay<TextRelay<&Camera::getDevicePropertyValue, &Camera::setDevicePropertyValue>>(
        own.devicePropertyValue, CameraTexts::devicePropertyValue, maxPropertyLength, stoppedOnly);
    builder.command<&Camera::isExecutingDevicePropertyAdd, &Camera::executeDevicePropertyAdd>(
        own.devicePropertyAdd, CameraTexts::devicePropertyAdd, stoppedOnly);
    builder.command<&Camera::isExecutingDevicePropertyRemove, &Camera::executeDevicePropertyRemove>(
        own.devicePropertyRemove, CameraTexts::devicePropertyRemove, stoppedOnly);
}

void addEventPins(CameraParameters& own, Builder& builder, const CameraParameters::Limits& limits)
{
    builder.category(CameraTexts::eventOutputControl);
    builder.relay<SelectorRelay<&Camera::getEventPinSelector, &Camera::setEventPinSelector>>(
        own.eventPinSelector, CameraTexts::eventPinSelector, "PureNumber", limits.eventPin);
    builder.relay<TextRelay<&Camera::getEventPinConfiguration, &Camera::setEventPinConfiguration>>(
        own.eventPinConfiguration, CameraTexts::eventPinConfiguration, maxLineLength, stoppedOnly);
    builder.command<&Camera::isExecutingEventPinAdd, &Camera::executeEventPinAdd>(
        own.eventPinAdd, CameraTexts::eventPinAdd, stoppedOnly);
    builder.command<&Camera::isExecutingEventPinRemove, &Camera::executeEventPinRemove>(
        own.eventPinRemove, CameraTexts::eventPinRemove, stoppedOnly);
}

void addChunkPins(CameraParameters& own, Builder& builder, const CameraParameters::Limits& limits)
{
    builder.category(CameraTexts::chunkOutputControl);
    builder.relay<SelectorRelay<&Camera::getChunkPinSelector, &Camera::setChunkPinSelector>>(
        own.chunkPinSelector, CameraTexts::chunkPinSelector, "PureNumber", limits.chunkPin);
    builder.relay<TextRelay<&Camera::getChunkPinConfiguration, &Camera::setChunkPinConfiguration>>(
        own.chunkPinConfiguration, CameraTexts::chunkPinConfiguration, maxLineLength, stoppedOnly);
    builder.command<&Camera::isExecutingChunkPinAdd, &Camera::executeChunkPinAdd>(
        own.chunkPinAdd, CameraTexts::chunkPinAdd, stoppedOnly);
    builder.command<&Camera::isExecutingChunkPinRemove, &Camera::executeChunkPinRemove>(
        own.chunkPinRemove, CameraTexts::chunkPinRemove, stoppedOnly);
}

void addConfigurationSets(CameraParameters& own, StageletNodeMapBase& nodeMap, Builder& builder)
{
    builder.category(CameraTexts::configurationSetPersistence);
    builder.relay<
        Adapter::EnumParameterPortRelay<StreamType, Camera, &Camera::getStreamType, &Camera::setStreamType>>(
        own.configurationSetSelector, CameraTexts::configurationSetSelector);
    nodeMap.addEntries<StreamType>(CameraTexts::configurationSetSelector.name, CameraTexts::configurationSets);
    builder.command<&Camera::isExecutingCfgSetFetch, &Camera::executeCfgSetFetch>(
        own.configurationSetFetch, CameraTexts::configurationSetFetch);
    builder.relay<TextRelay<&Camera::getCfgSetStagedContent, &Camera::setCfgSetStagedContent>>(
        own.configurationSetStaged, CameraTexts::configurationSetStaged, maxConfigurationSetLength);
    builder.command<&Camera::isExecutingCfgSetCommit, &Camera::executeCfgSetCommit>(
        own.configurationSetCommit, CameraTexts::configurationSetCommit);
    builder.add(own.configurationSetActive);
    builder.command<&Camera::isExecutingCfgSetClear, &Camera::executeCfgSetClear>(
        own.configurationSetClear, CameraTexts::configurationSetClear);
}

/// What belongs to which item of a list.
constexpr std::pair<const char*, const char*> selections[] = {
    {"DeviceSelector", "DeviceModelName"},
    {"DeviceSelector", "DeviceVendorName"},
    {"DeviceSelector", "DeviceSerialNumber"},
    {"DeviceSelector", "DeviceUserDefinedName"},
    {"DevicePropertySelector", "DevicePropertyKey"},
    {"DevicePropertySelector", "DevicePropertyValue"},
    {"EventPinSelector", "EventPinConfiguration"},
    {"ChunkPinSelector", "ChunkPinConfiguration"},
    {"ConfigurationSetSelector", "ConfigurationSetStaged"},
    {"ConfigurationSetSelector", "ConfigurationSetActive"},
};

}  // namespace

ShownText::ShownText(const PortTexts& texts, const gcstring& initial, std::uint64_t maxLength,
                     bool canBeUnavailable)
    : text_(initial),
      port_(std::make_shared<Port>(initial, maxLength, texts.name, texts.displayName, texts.toolTip,
                                   texts.description, texts.visibility, true, false, canBeUnavailable, false))
{}

bool ShownText::show(const gcstring& text)
{
    if (text == text_) return false;
    text_ = text;
    port_->setValue(text.c_str(), true);
    return true;
}

CameraParameters::CameraParameters(Camera& node, StageletNodeMapBase& nodeMap, const Limits& limits)
    : selectedDeviceModelName(CameraTexts::selectedDeviceModelName, noDeviceListed, maxPropertyLength, true),
      selectedDeviceSerialNumber(CameraTexts::selectedDeviceSerialNumber, noDeviceListed, maxPropertyLength, true),
      selectedDeviceVendorName(CameraTexts::selectedDeviceVendorName, noDeviceListed, maxPropertyLength, true),
      selectedDeviceUserDefinedName(CameraTexts::selectedDeviceUserDefinedName, noDeviceListed, maxPropertyLength,
                                    true),
      deviceModelName(CameraTexts::deviceModelName, noDeviceListed, maxPropertyLength, false),
      deviceVendorName(CameraTexts::deviceVendorName, noDeviceListed, maxPropertyLength, false),
      deviceSerialNumber(CameraTexts::deviceSerialNumber, noDeviceListed, maxPropertyLength, false),
      deviceUserDefinedName(CameraTexts::deviceUserDefinedName, noDeviceListed, maxPropertyLength, false),
      configurationSetActive(CameraTexts::configurationSetActive, "", maxConfigurationSetLength, false)
{
    Builder builder(node, nodeMap);
    addAcquisition(*this, nodeMap, builder);
    addDeviceList(*this, builder, limits);
    addDeviceProperties(*this, builder, limits);
    builder.category(CameraTexts::selectedDeviceInformation);
    forEachSelectedDeviceText([&](const ShownText& text) { builder.add(text); });
    addEventPins(*this, builder, limits);
    addChunkPins(*this, builder, limits);
    addConfigurationSets(*this, nodeMap, builder);
    for (const auto& [selector, selected] : selections)
        nodeMap.addSelected(selector, selected);
    nodeMap.build();
}

}  // namespace Plugin::NivexStageletPackageBase

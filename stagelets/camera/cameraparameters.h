#pragma once

#include <functional>
#include <memory>

#include "gcbase/gcstring.h"

#include "parameteradapter/stageletnodemapbase.h"

namespace Plugin::NivexStageletPackageBase {

class Camera;

/// A parameter that only shows a text. Used under the node's lock.
class ShownText
{
public:
    using Port = AnythingToNodeMapAdapter::StringParameterPort<GenICam::gcstring>;

    ShownText(const AnythingToNodeMapAdapter::PortTexts& texts, const GenICam::gcstring& initial,
              std::uint64_t maxLength, bool canBeUnavailable);

    /// True if that changes the text. The observer is left to the caller.
    bool show(const GenICam::gcstring& text);
    const std::shared_ptr<Port>& port() const { return port_; }

private:
    GenICam::gcstring text_;
    std::shared_ptr<Port> port_;
};

/// The parameter ports of a camera node, each bound to the node's getters and setters, and the node map made of
/// them. Observers are not told by themselves: the node does that when it has released its lock.
class CameraParameters
{
    template <typename Interface>
    using PortOf = std::shared_ptr<AnythingToNodeMapAdapter::BasicDataParameterPort<Interface>>;

public:
    using EnumPort = PortOf<AnythingToNodeMapAdapter::IEnumParameterPort>;
    using IntegerPort = PortOf<AnythingToNodeMapAdapter::IIntegerParameterPort>;
    using StringPort = PortOf<AnythingToNodeMapAdapter::IStringParameterPort>;
    using CommandPort = PortOf<AnythingToNodeMapAdapter::ICommandParameterPort>;

    /// The greatest values of the selectors, asked under the node's lock.
    struct Limits
    {
        std::function<std::int64_t()> device;
        std::function<std::int64_t()> deviceProperty;
        std::function<std::int64_t()> eventPin;
        std::function<std::int64_t()> chunkPin;
    };

    /// Builds the node map. The ports must not outlive the node.
    CameraParameters(Camera& node, StageletNodeMapBase& nodeMap, const Limits& limits);

    ShownText selectedDeviceModelName;
    ShownText selectedDeviceSerialNumber;
    ShownText selectedDeviceVendorName;
    ShownText selectedDeviceUserDefinedName;

    EnumPort acquisitionMode;
    EnumPort fixCorruptImages;

    CommandPort deviceListUpdate;
    IntegerPort deviceSelector;
    ShownText deviceModelName;
    ShownText deviceVendorName;
    ShownText deviceSerialNumber;
    ShownText deviceUserDefinedName;
    CommandPort deviceChoose;
    IntegerPort devicePropertySelector;
    StringPort devicePropertyKey;
    StringPort devicePropertyValue;
    CommandPort devicePropertyAdd;
    CommandPort devicePropertyRemove;

    IntegerPort eventPinSelector;
    StringPort eventPinConfiguration;
    CommandPort eventPinAdd;
    CommandPort eventPinRemove;

    IntegerPort chunkPinSelector;
    StringPort chunkPinConfiguration;
    CommandPort chunkPinAdd;
    CommandPort chunkPinRemove;

    EnumPort configurationSetSelector;
    CommandPort configurationSetFetch;
    StringPort configurationSetStaged;
    CommandPort configurationSetCommit;
    ShownText configurationSetActive;
    CommandPort configurationSetClear;

    /// Calls `apply` with each port that is not available while the node runs.
    template <typename Apply>
    void forEachStoppedOnly(const Apply& apply) const;
    /// Calls `apply` with each text about the camera held.
    template <typename Apply>
    void forEachSelectedDeviceText(const Apply& apply);
};

template <typename Apply>
void CameraParameters::forEachStoppedOnly(const Apply& apply) const
{
    apply(deviceListUpdate);
    apply(deviceSelector);
    apply(deviceChoose);
    apply(devicePropertySelector);
    apply(devicePropertyKey);
    apply(devicePropertyValue);
    apply(devicePropertyAdd);
    apply(devicePropertyRemove);
    apply(eventPinSelector);
    apply(eventPinConfiguration);
    apply(eventPinAdd);
    apply(eventPinRemove);
    apply(chunkPinSelector);
    apply(chunkPinConfiguration);
    apply(chunkPinAdd);
    apply(chunkPinRemove);
}

template <typename Apply>
void CameraParameters::forEachSelectedDeviceText(const Apply& apply)
{
    apply(selectedDeviceModelName);
    apply(selectedDeviceSerialNumber);
    apply(selectedDeviceVendorName);
    apply(selectedDeviceUserDefinedName);
}

}  // namespace Plugin::NivexStageletPackageBase

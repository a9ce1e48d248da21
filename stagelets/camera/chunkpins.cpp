#include "camera/chunkpins.h"

#include <stdexcept>

#include "camera/cameralog.h"
#include "camera/nodevalues.h"
#include "core/array.h"
#include "core/errors.h"

namespace Plugin::NivexStageletPackageBase {

namespace Core = Nivex::DataProcessing::Core;
namespace Utils = Nivex::DataProcessing::Utils;
using GenICam::gcstring;

namespace {

/// The value, or one with an error if it can't be read.
template <typename Value, typename Parameter>
Value readValue(const Parameter& parameter)
{
    Core::ErrorList causes;
    try {
        if (parameter.IsReadable()) return Value(parameter.GetValue());
    } catch (const GenICam::GenericException& e) {
        causes.push_back(std::make_shared<Core::GenICamExceptionError>(e));
    }
    return Value(std::make_shared<Core::InvalidValueError>("Failed to get chunk data value.", std::move(causes),
                                                           Utils::DateTime::now()));
}

/// The value as a pin with so many value names puts it out.
template <typename Value>
Utils::Variant toPinValue(Value value, std::size_t nameCount)
{
    if (nameCount < 2) return Utils::Variant(Utils::COWPtr<Value>(std::move(value)));
    Core::Array<Value> values(nameCount);
    values.set(0, std::move(value));
    return Utils::Variant(Utils::COWPtr<Core::Array<Value>>(std::move(values)));
}

/// A property without values is one whose reading failed.
const GenICam::gcstring_vector& requireValues(const PinMapping& pin, PinProperty property)
{
    const auto values = pin.properties.find(property);
    if (values != pin.properties.end() && values->second.size() != 0) return values->second;
    throw std::out_of_range(std::string("The pin has no ") + toText(property) +
                            ". What stands behind an error of the chunk pin configuration is not read.");
}

Utils::Variant readPin(const PinMapping& pin, const GenApi::NodeMapPtr& nodeMap)
{
    if (pin.properties.count(PinProperty::SelectorName) != 0) {
        const gcstring& entry = requireValues(pin, PinProperty::SelectorValue).at(0);
        Nivex::CEnumParameter(nodeMap, requireValues(pin, PinProperty::SelectorName).at(0)).SetValue(entry);
    }
    Utils::Variant pinValue;
    const GenICam::gcstring_vector& names = requireValues(pin, PinProperty::ValueName);
    for (const gcstring& name : names) {
        const GenApi::INode* node = nodeMap->GetNode(name);
        if (!node) continue;
        readByInterface(*node, [&]<typename Value, typename Parameter>() {
            pinValue = toPinValue(readValue<Value>(Parameter(nodeMap, name)), names.size());
        });
    }
    return pinValue;
}

/// Empty if some value name is a parameter that pins put out, or if there are none: then each frame tells.
std::string whySilent(const PinMapping& pin, const GenApi::INodeMap& nodeMap)
{
    std::string cause;
    const auto names = pin.properties.find(PinProperty::ValueName);
    if (names == pin.properties.end()) return cause;
    for (const gcstring& name : names->second) {
        const GenApi::INode* node = nodeMap.GetNode(name);
        if (node && readByInterface(*node, []<typename Value, typename Parameter>() {})) return {};
        if (!cause.empty()) continue;
        cause = node ? "The camera's parameter \"" + name.str() + "\" is of a kind that pins don't put out."
                     : "The camera has no parameter \"" + name.str() + "\".";
    }
    return cause;
}

}  // namespace

void readChunkPins(const PinMappings& pins, const Nivex::CGrabResultData& result, Core::PinValues& values,
                   const void* node)
{
    std::size_t failed = 0;
    std::string cause;
    for (const auto& [name, pin] : pins) {
        try {
            values[pin.name] = readPin(pin, result.GetChunkDataNodeMap());
        } catch (...) {
            if (failed++ == 0) cause = GenICam::describeCurrentException();
            Utils::createLogEntry(Utils::SeverityProgress, cameraChannel(),
                                  "Camera %p: Failed to get chunk data value for \"%s\" pin.", node, name.c_str());
        }
    }
    if (failed == 0) return;
    Utils::createLogEntry(Utils::SeverityFailure, cameraChannel(),
                          "Camera %p: %zu of %zu chunk pins got no value. Message: %s", node, failed, pins.size(),
                          cause.c_str());
}

void logSilentChunkPins(const PinMappings& pins, const GenApi::NodeMapPtr& nodeMap, const void* node)
{
    if (pins.empty()) return;
    for (const auto& [name, pin] : pins) {
        const std::string cause = whySilent(pin, *nodeMap);
        if (cause.empty()) continue;
        Utils::createLogEntry(Utils::SeverityFailure, cameraChannel(),
                              "Camera %p: Chunk pin \"%s\" is without values. Message: %s", node, name.c_str(),
                              cause.c_str());
    }
    const Nivex::CBooleanParameter mode(nodeMap, "ChunkModeActive");
    if (!mode.IsReadable() || mode.GetValue()) return;
    Utils::createLogEntry(Utils::SeverityFailure, cameraChannel(),
                          "Camera %p: Chunk pins are without values: ChunkModeActive of the camera is off.", node);
}

}  // namespace Plugin::NivexStageletPackageBase

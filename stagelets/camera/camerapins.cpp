#include "camera/camerapins.h"

#include <set>

#include "camera/cameralog.h"
#include "camera/characters.h"
#include "core/array.h"
#include "core/boolean.h"
#include "core/float.h"
#include "core/image.h"
#include "core/integer.h"
#include "core/string.h"
#include "utils/cowptr.h"

namespace Plugin::NivexStageletPackageBase {

namespace Core = Nivex::DataProcessing::Core;
namespace Utils = Nivex::DataProcessing::Utils;
using GenICam::gcstring;
using Utils::TypeInfo;

namespace {

bool isBlank(const gcstring& line)
{
    return Characters::endOfRun(line.view(), 0, Characters::isSpace) == line.size();
}

template <typename T>
TypeInfo typeOf(bool isArray)
{
    return isArray ? TypeInfo::get<Core::Array<T>>() : TypeInfo::get<T>();
}

TypeInfo typeOf(PinValueType type, bool isArray)
{
    switch (type) {
        case PinValueType::Boolean:
            return typeOf<Core::Boolean>(isArray);
        case PinValueType::Float:
            return typeOf<Core::Float>(isArray);
        case PinValueType::Integer:
            return typeOf<Core::Integer>(isArray);
        case PinValueType::String:
            return typeOf<Core::String>(isArray);
        case PinValueType::Invalid:
            break;
    }
    return {};
}

bool hasSeveralValues(const PinMapping& pin)
{
    const auto names = pin.properties.find(PinProperty::ValueName);
    return names != pin.properties.end() && names->second.size() > 1;
}

}  // namespace

void CameraPins::setEventLines(Lines lines)
{
    EventPins pins;
    for (const gcstring& line : lines.items()) {
        if (isBlank(line)) continue;
        EventPinDescription description = readEventPin(line);
        if (description.valid) pins.push_back({line, std::move(description)});
    }
    eventLines_ = std::move(lines);
    readEventPins_ = std::move(pins);
    resolve();
}

void CameraPins::setChunkLines(Lines lines)
{
    PinMappingParser parser;
    PinMappings pins;
    try {
        parser.parse(PinMappingType::ChunkData, lines.items(), pins);
    } catch (const GenICam::RuntimeException& e) {
        Utils::createLogEntry(Utils::SeverityRefused, cameraChannel(), "Camera: (%d,%d): Error : %s",
                              static_cast<int>(parser.getLine()), static_cast<int>(parser.getColumn()),
                              e.GetDescription());
    }
    chunkLines_ = std::move(lines);
    readChunkPins_ = std::move(pins);
    resolve();
}

void CameraPins::resolve()
{
    std::set<gcstring> taken = {imagePin, imageCorruptPin};
    const auto take = [&taken](const gcstring& name) {
        const bool isFree = taken.insert(name).second;
        if (!isFree) {
            Utils::createLogEntry(Utils::SeverityRefused, cameraChannel(), "Camera: Duplicate name '%s' as pin.",
                                  name.c_str());
        }
        return isFree;
    };
    chunkPins_.clear();
    for (const auto& [name, pin] : readChunkPins_) {
        if (take(name)) chunkPins_.emplace(name, pin);
    }
    eventPins_.clear();
    for (const EventPin& pin : readEventPins_) {
        if (take(pin.description.pinName)) eventPins_.push_back(pin);
    }
}

GenICam::gcstring_vector CameraPins::getUsedEventLines() const
{
    GenICam::gcstring_vector lines;
    for (const EventPin& pin : eventPins_)
        lines.push_back(pin.line);
    return lines;
}

std::vector<CameraOutput> CameraPins::getOutputs(FixCorruptImages fix) const
{
    std::vector<CameraOutput> outputs;
    outputs.push_back({imagePin, "The image output.", TypeInfo::get<Utils::COWPtr<Core::Image>>()});
    if (fix == FixCorruptImages::On) {
        outputs.push_back(
            {imageCorruptPin, "Determines if the output image is corrupt.", TypeInfo::get<Core::Boolean>()});
    }
    for (const EventPin& pin : eventPins_) {
        const EventPinDescription& description = pin.description;
        outputs.push_back({description.pinName, "A camera event.", typeOf(description.valueType, false),
                           PinMappingType::Event, description.valueType});
    }
    for (const auto& [name, pin] : chunkPins_) {
        outputs.push_back({name, "A chunk data pin.", typeOf(pin.valueType, hasSeveralValues(pin)),
                           PinMappingType::ChunkData, pin.valueType});
    }
    return outputs;
}

}  // namespace Plugin::NivexStageletPackageBase

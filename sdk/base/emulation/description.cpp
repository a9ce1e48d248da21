#include "base/emulation/description.h"

#include <functional>
#include <string_view>
#include <vector>

#include "gcbase/exception.h"

#include "base/emulation/featuretable.h"
#include "base/emulation/frametables.h"
#include "base/emulation/pixelencoder.h"

// The text is put together from the tables: a feature's node, and below it a register node "<name>Reg" or, for
// the registers of a selector, one such node that the selector indexes and one "<name>Reg<n>" for each.
namespace Nivex::Emulation {
namespace {

using GenICam::formatText;

std::string text(std::int64_t value)
{
    return std::to_string(value);
}

std::string text(double value)
{
    return formatText("%.15g", value);
}

std::string element(const char* name, const std::string& content)
{
    return content.empty() ? "" : formatText("  <%s>%s</%s>\n", name, content.c_str(), name);
}

std::string node(const char* kind, const std::string& name, const std::string& body, bool standard = true)
{
    return formatText("<%s Name=\"%s\" NameSpace=\"%s\">\n%s</%s>\n", kind, name.c_str(),
                      standard ? "Standard" : "Custom", body.c_str(), kind);
}

std::string registerName(const Feature& feature)
{
    return std::string(feature.name) + "Reg";
}

const char* kindName(EKind kind)
{
    switch (kind) {
        case EKind::Integer:
            return "Integer";
        case EKind::Float:
            return "Float";
        case EKind::Boolean:
            return "Boolean";
        case EKind::Enumeration:
        case EKind::FormatChoice:
            return "Enumeration";
        case EKind::Command:
            return "Command";
        case EKind::Text:
            return "String";
        case EKind::Node:
            break;
    }
    return "Node";
}

const char* levelName(ELevel level)
{
    constexpr const char* names[] = {"Beginner", "Expert", "Invisible"};
    return names[static_cast<std::size_t>(level)];
}

std::string entry(const char* name, std::int64_t value, const char* toolTip)
{
    return formatText("  <EnumEntry Name=\"%s\">%s<Value>%lld</Value></EnumEntry>\n", name,
                      *toolTip ? formatText("<ToolTip>%s</ToolTip>", toolTip).c_str() : "",
                      static_cast<long long>(value));
}

std::string pixelFormatEntries()
{
    std::string entries;
    for (const PixelFormat* const format : PixelEncoder::Formats())
        entries += entry(format->name, format->value, "");
    return entries;
}

std::string entriesOf(const Feature& feature)
{
    if (feature.kind == EKind::FormatChoice) return pixelFormatEntries();
    std::string entries;
    for (const Choice& choice : feature.choices)
        entries += entry(choice.name, choice.value, choice.toolTip);
    return entries;
}

std::string limitsOf(const Feature& feature)
{
    const bool isNumber = feature.kind == EKind::Integer || feature.kind == EKind::Float;
    if (!isNumber || feature.readOnly) return "";
    const auto limit = [&](double value) {
        return feature.kind == EKind::Float ? text(value) : text(static_cast<std::int64_t>(value));
    };
    return element("Min", limit(feature.min)) +
           (feature.maxNode ? element("pMax", feature.maxNode) : element("Max", limit(feature.max)));
}

/// The features that an enumeration selects.
std::string selectedBy(const Feature& selector)
{
    std::string selected;
    for (const Placed& place : placedFeatures)
        if (place.feature->selector && place.feature->selector == std::string_view(selector.name))
            selected += element("pSelected", place.feature->name);
    return selected;
}

bool isStreamable(const Placed& place)
{
    const Feature& feature = *place.feature;
    return place.category->isStandard && !feature.readOnly && !feature.isVolatile &&
           feature.level != ELevel::Invisible && feature.kind != EKind::Command &&
           feature.name != std::string_view("DeviceUserID");
}

std::string featureNode(const Placed& place)
{
    const Feature& feature = *place.feature;
    std::string body = element("ToolTip", feature.toolTip) + element("Visibility", levelName(feature.level)) +
                       element("pIsLocked", feature.locked ? "TLParamsLocked" : "") +
                       element("Streamable", isStreamable(place) ? "Yes" : "") + entriesOf(feature) +
                       element("pValue", registerName(feature)) + limitsOf(feature) +
                       element("Unit", feature.unit) +
                       (feature.kind == EKind::Command ? element("CommandValue", "1") : "") +
                       (feature.choices.empty() ? "" : selectedBy(feature));
    return node(kindName(feature.kind), feature.name, body, place.category->isStandard);
}

std::string registerNode(const Placed& place, const std::string& name, std::uint32_t address, const char* index)
{
    const Feature& feature = *place.feature;
    const bool isVolatile = feature.readOnly || feature.isVolatile || feature.kind == EKind::Command;
    const bool isNumber = feature.kind != EKind::Text && feature.kind != EKind::Float;
    const std::string body =
        element("Address", formatText("0x%X", address)) +
        (index ? formatText("  <pIndex Offset=\"%u\">%s</pIndex>\n", place.ElementSize(), index) : "") +
        element("Length", std::to_string(place.ElementSize())) +
        element("AccessMode", feature.readOnly ? "RO" : "RW") + element("pPort", "Device") +
        element("Cachable", isVolatile ? "NoCache" : "WriteThrough") +
        (isNumber ? element("Sign", "Signed") : "") +
        (feature.kind != EKind::Text ? element("Endianess", "LittleEndian") : "");
    const char* const kind = feature.kind == EKind::Text    ? "StringReg"
                             : feature.kind == EKind::Float ? "FloatReg"
                                                            : "IntReg";
    return node(kind, name, body, false);
}

std::string registersOf(const Placed& place)
{
    const Feature& feature = *place.feature;
    std::string nodes = registerNode(place, registerName(feature), place.address, feature.selector);
    if (!feature.selector) return nodes;
    for (std::uint32_t i = 0; i < place.count; ++i)
        nodes += registerNode(place, registerName(feature) + std::to_string(i),
                              place.address + i * place.ElementSize(), nullptr);
    return nodes;
}

std::string nodesOf(const Placed& place)
{
    const Feature& feature = *place.feature;
    if (feature.kind == EKind::Node) return std::string(feature.xml) + "\n";
    return (feature.raw ? "" : featureNode(place)) + registersOf(place);
}

/// A chunk's or an event's own port, and a number there.
std::string port(const std::string& name, const char* idName, std::uint64_t id)
{
    return node("Port", name, element(idName, formatText("%llX", static_cast<unsigned long long>(id))), false);
}

struct DataNumber
{
    EKind kind;
    std::string name;
    std::string port;
    std::size_t address;
    const char* unit;
    std::string toolTip;
    const char* selector;
};

std::string numberNode(const DataNumber& number)
{
    const bool isFloat = number.kind == EKind::Float;
    return node(isFloat ? "FloatReg" : "IntReg", number.name,
                element("ToolTip", number.toolTip) + element("Address", std::to_string(number.address)) +
                    (number.selector ? formatText("  <pIndex Offset=\"8\">%s</pIndex>\n", number.selector) : "") +
                    element("Length", "8") + element("AccessMode", "RO") + element("pPort", number.port) +
                    element("Cachable", "WriteThrough") + (isFloat ? "" : element("Sign", "Signed")) +
                    element("Endianess", "LittleEndian") + element("Unit", number.unit));
}

std::string chunkGainSelector(const std::string& selected)
{
    std::string entries;
    for (const Choice& choice : gainChoices)
        entries += entry(choice.name, choice.value, choice.toolTip);
    return node("Enumeration", "ChunkGainSelector",
                element("ToolTip", "The colours that ChunkGain is about.") + entries + element("Value", "0") +
                    element("pSelected", selected));
}

std::string chunkNodes(const ChunkRow& chunk, std::vector<std::string>& features)
{
    const std::string name = std::string("Chunk") + chunk.name;
    const bool isList = chunk.size > 8;
    const bool isPixelFormat = chunk.kind == EKind::FormatChoice;
    std::string nodes = port(name + "Port", "ChunkID", chunk.id);
    nodes += numberNode({chunk.kind, isPixelFormat ? name + "Reg" : name, name + "Port", 0, chunk.unit,
                         isPixelFormat ? "" : chunk.toolTip, isList ? "ChunkGainSelector" : nullptr});
    if (isPixelFormat)
        nodes += node("Enumeration", name,
                      element("ToolTip", chunk.toolTip) + pixelFormatEntries() + element("pValue", name + "Reg"));
    if (isList) {
        nodes += chunkGainSelector(name);
        features.emplace_back("ChunkGainSelector");
    }
    features.push_back(name);
    return nodes;
}

std::string allChunkNodes(std::vector<std::string>& features)
{
    std::string nodes;
    for (const ChunkRow& chunk : chunks)
        nodes += chunkNodes(chunk, features);
    return nodes;
}

std::string categoryNode(const std::string& name, const std::string& toolTip,
                         const std::vector<std::string>& features, bool standard = true)
{
    std::string body = element("ToolTip", toolTip);
    for (const std::string& feature : features)
        body += element("pFeature", feature);
    return node("Category", name, body, standard);
}

/// The event's category with its number, its time, and its frame.
std::string eventNodes(const EventRow& event, std::vector<std::string>& categoryFeatures)
{
    const std::string name = std::string("Event") + event.name;
    const std::string id = formatText("%llX", static_cast<unsigned long long>(event.id));
    std::vector<std::string> features = {name, name + "Timestamp"};
    std::string nodes =
        port(name + "Port", "EventID", event.id) +
        node("Integer", name,
             element("ToolTip", std::string("Number of the event. ") + event.toolTip) + element("EventID", id) +
                 element("ImposedAccessMode", "RO") + element("Value", std::to_string(event.id))) +
        numberNode({EKind::Integer, features.back(), name + "Port", 0, "ns", "When it happened.", nullptr});
    if (event.hasFrameId) {
        features.push_back(name + "FrameID");
        nodes +=
            numberNode({EKind::Integer, features.back(), name + "Port", 8, "", "Number of the frame.", nullptr});
    }
    categoryFeatures.push_back(name + "Data");
    return nodes + categoryNode(name + "Data", event.toolTip, features);
}

std::string allEventNodes(std::vector<std::string>& categoryFeatures)
{
    std::string nodes;
    for (const EventRow& event : events)
        nodes += eventNodes(event, categoryFeatures);
    return nodes;
}

std::string variable(const std::string& name, const std::string& target)
{
    return formatText("  <pVariable Name=\"%s\">%s</pVariable>\n", name.c_str(), target.c_str());
}

/// The sum of what components and chunks take, if they are enabled.
std::string payloadSizeNode(std::vector<std::string>& categoryFeatures)
{
    std::string variables = variable("WIDTH", "WidthReg") + variable("HEIGHT", "HeightReg") +
                            variable("FORMAT", "PixelFormatReg") + variable("CHUNKMODE", "ChunkModeActiveReg");
    std::string pictures;
    for (std::size_t i = 0; i < std::size(components); ++i) {
        const std::string index = std::to_string(i);
        const EPixelType type = components[i].pixelType;
        const std::string bits = type == EPixelType::Undefined ? "((FORMAT &gt;&gt; 16) &amp; 0xFF)"
                                                               : std::to_string(BitsPerPixel(type));
        variables += variable("COMPONENT" + index, "ComponentEnableReg" + index);
        pictures +=
            (i > 0 ? " + " : "") + formatText("COMPONENT%zu * ((WIDTH * %s + 7) / 8) * HEIGHT", i, bits.c_str());
    }
    std::string data = std::to_string(trailerSize);
    for (std::size_t i = 0; i < std::size(chunks); ++i) {
        variables += variable("CHUNK" + std::to_string(i), "ChunkEnableReg" + std::to_string(i));
        data += formatText(" + CHUNK%zu * %zu", i, chunks[i].size + trailerSize);
    }
    categoryFeatures.emplace_back("PayloadSize");
    return node("IntSwissKnife", "PayloadSize",
                element("ToolTip", "Bytes of a frame.") + variables +
                    element("Formula", pictures + " + CHUNKMODE * (" + data + ")") + element("Unit", "B"));
}

/// What the tables of chunks and events add to a category.
struct FurtherNodes
{
    std::string_view category;
    std::string (*make)(std::vector<std::string>& categoryFeatures);
};

constexpr FurtherNodes furtherNodes[] = {
    {"ChunkDataControl", allChunkNodes},
    {"EventControl", allEventNodes},
    {"TransportLayerControl", payloadSizeNode},
};

std::string document(const char* model, const std::string& nodes)
{
    return formatText(
               "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
               "<RegisterDescription ModelName=\"%s\" VendorName=\"Nivex\" StandardNameSpace=\"None\""
               " SchemaMajorVersion=\"1\" SchemaMinorVersion=\"1\" SchemaSubMinorVersion=\"0\""
               " MajorVersion=\"1\" MinorVersion=\"0\" SubMinorVersion=\"0\""
               " ProductGuid=\"5A1B0E64-3F7D-4C5B-9C1E-0815EC000001\""
               " VersionGuid=\"5A1B0E64-3F7D-4C5B-9C1E-0815EC000100\""
               " xmlns=\"http://www.genicam.org/GenApi/Version_1_1\">\n",
               model) +
           nodes + "</RegisterDescription>\n";
}

}  // namespace

std::string describeMap(EMap map)
{
    std::string nodes;
    std::vector<std::string> shown;
    for (const Category& category : categories) {
        if (category.map != map) continue;
        shown.emplace_back(category.name);
        std::vector<std::string> features;
        for (const Placed& place : placedFeatures) {
            if (place.category != &category) continue;
            nodes += nodesOf(place);
            if (!place.feature->raw) features.emplace_back(place.feature->name);
        }
        for (const FurtherNodes& further : furtherNodes)
            if (category.name == further.category) nodes += further.make(features);
        nodes += categoryNode(category.name, category.toolTip, features, category.isStandard);
    }
    constexpr const char* models[] = {"EmulatedCamera", "EmulatedTransport", "EmulatedStream"};
    return document(models[static_cast<std::size_t>(map)],
                    categoryNode("Root", "", shown) + nodes + node("Port", "Device", "", false));
}

std::string describeChunks()
{
    std::vector<std::string> features;
    const std::string nodes = allChunkNodes(features);
    return document("EmulatedChunks", categoryNode("Root", "", {"ChunkDataControl"}) + nodes +
                                          categoryNode("ChunkDataControl", "Data of this frame.", features));
}

}  // namespace Nivex::Emulation

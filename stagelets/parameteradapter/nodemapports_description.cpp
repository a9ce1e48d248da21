// The texts of the kinds of parameters in the register description.
#include "parameteradapter/anythingtonodemapadapterbase.h"
#include "parameteradapter/descriptionwriter.h"
#include "parameteradapter/nodemapports.h"

namespace AnythingToNodeMapAdapter::Detail {

using GenICam::gcstring;
using enum ParameterWriter::RegisterKind;

void CIntegerNodeMapPort::writeDescription(std::ostream& stream, bool perParameterPort, const gcstring& portName,
                                           const gcstring& prefix, std::int64_t& address) const
{
    if (!parameter()) return;
    const char* sign = parameter()->isSigned() ? "Signed" : "Unsigned";
    ParameterWriter writer(stream, *this, *parameter(), prefix + getName(), portName, address);
    writer.begin("Integer");
    writer.streamable();
    writer.reference("pValue", "Value");
    writer.reference("pMin", "Min");
    writer.reference("pMax", "Max");
    writer.reference("pInc", "Inc");
    writer.optional("Unit", parameter()->getUnit());
    writer.element(ParameterWriter::elementIndent, "Representation", parameter()->getRepresentation());
    writer.links("pSelected", LinkKey::selected);
    writer.end("Integer");
    writer.registerNode(
        {.suffix = "Value", .accessMode = writer.valueAccessMode(), .sign = sign, .invalidators = true});
    writer.registerNode({.suffix = "Max", .offset = 8, .sign = sign});
    writer.registerNode({.suffix = "Min", .offset = 16, .sign = sign});
    writer.registerNode({.suffix = "Inc", .offset = 24, .sign = sign});
    writer.companions(32, sign);
    writer.ownPort(perParameterPort);
    address += 48;
}

void CFloatNodeMapPort::writeDescription(std::ostream& stream, bool perParameterPort, const gcstring& portName,
                                         const gcstring& prefix, std::int64_t& address) const
{
    if (!parameter()) return;
    ParameterWriter writer(stream, *this, *parameter(), prefix + getName(), portName, address);
    writer.begin("Float");
    writer.streamable();
    writer.reference("pValue", "Value");
    writer.reference("pMin", "Min");
    writer.reference("pMax", "Max");
    writer.optional("Unit", parameter()->getUnit());
    writer.element(ParameterWriter::elementIndent, "Representation", parameter()->getRepresentation());
    writer.end("Float");
    writer.registerNode(
        {.kind = Float, .suffix = "Value", .accessMode = writer.valueAccessMode(), .invalidators = true});
    writer.registerNode({.kind = Float, .suffix = "Max", .offset = 8});
    writer.registerNode({.kind = Float, .suffix = "Min", .offset = 16});
    writer.companions(24);
    writer.ownPort(perParameterPort);
    address += 48;  // 8 more than the registers take
}

void CBooleanNodeMapPort::writeDescription(std::ostream& stream, bool perParameterPort, const gcstring& portName,
                                           const gcstring& prefix, std::int64_t& address) const
{
    if (!parameter()) return;
    ParameterWriter writer(stream, *this, *parameter(), prefix + getName(), portName, address);
    writer.begin("Boolean");
    writer.streamable();
    writer.reference("pValue", "Value");
    writer.end("Boolean");
    writer.registerNode({.suffix = "Value", .accessMode = writer.valueAccessMode()});
    writer.companions(8);
    writer.ownPort(perParameterPort);
    address += 24;
}

void CStringNodeMapPort::writeDescription(std::ostream& stream, bool perParameterPort, const gcstring& portName,
                                          const gcstring& prefix, std::int64_t& address) const
{
    if (!parameter()) return;
    const auto maxLength = static_cast<std::int64_t>(maxLength_);
    ParameterWriter writer(stream, *this, *parameter(), prefix + getName(), portName, address);
    writer.begin("String");
    writer.streamable();
    writer.reference("pValue", "Value");
    writer.end("String");
    writer.registerNode({.kind = String,
                         .suffix = "Value",
                         .length = maxLength,
                         .accessMode = writer.valueAccessMode(),
                         .invalidators = true});
    writer.companions(maxLength);
    writer.ownPort(perParameterPort);
    address += maxLength + 16;
}

void CEnumNodeMapPort::writeDescription(std::ostream& stream, bool perParameterPort, const gcstring& portName,
                                        const gcstring& prefix, std::int64_t& address) const
{
    if (!parameter()) return;
    ParameterWriter writer(stream, *this, *parameter(), prefix + getName(), portName, address);
    writer.begin("Enumeration");
    writer.streamable();
    for (const auto& entry : entries_) {
        entry->writeEnumEntry(stream, prefix);
    }
    writer.reference("pValue", "IntValue");
    writer.links("pSelected", LinkKey::selected);
    writer.end("Enumeration");
    writer.registerNode({.suffix = "IntValue", .accessMode = writer.valueAccessMode(), .invalidators = true});
    writer.companions(8);
    writer.ownPort(perParameterPort);
    address += 24;
}

void CEnumEntryNodeMapPort::writeEnumEntry(std::ostream& stream, const gcstring& prefix) const
{
    if (!parameter()) return;
    constexpr std::string_view indent = "            ";
    DescriptionWriter writer(stream);
    writer.line("        <EnumEntry Name=\"", getName(), "\"", DescriptionWriter::mergeAttribute(mergePriority()),
                " > ");
    writer.texts(indent, *parameter());
    if (parameter()->hasAvailableRegister()) {
        writer.element(indent, "pIsAvailable", (getEntryNodeName(prefix) + LinkKey::isAvailable).view());
    } else {
        writer.elements(indent, "pIsAvailable", links(LinkKey::isAvailable));
    }
    writer.element(indent, "Value", DescriptionWriter::decimal(parameter()->getValue()));
    writer.line("        </EnumEntry>");
}

void CEnumEntryNodeMapPort::writeDescription(std::ostream& stream, bool perParameterPort, const gcstring& portName,
                                             const gcstring& prefix, std::int64_t& address) const
{
    if (!parameter() || !parameter()->hasAvailableRegister()) return;
    ParameterWriter writer(stream, *this, *parameter(), getEntryNodeName(prefix), portName, address);
    writer.registerNode({.suffix = LinkKey::isAvailable});
    writer.ownPort(perParameterPort);
    address += 8;
}

void CCommandNodeMapPort::writeDescription(std::ostream& stream, bool perParameterPort, const gcstring& portName,
                                           const gcstring& prefix, std::int64_t& address) const
{
    if (!parameter()) return;
    ParameterWriter writer(stream, *this, *parameter(), prefix + getName(), portName, address);
    writer.begin("Command");
    writer.reference("pValue", "Value");
    writer.element(ParameterWriter::elementIndent, "CommandValue", "1");
    writer.end("Command");
    writer.registerNode(
        {.suffix = "Value", .accessMode = parameter()->isWriteOnly() ? "WO" : "RW", .invalidators = true});
    writer.companions(8);
    writer.ownPort(perParameterPort);
    address += 24;
}

void CCategoryNodeMapPort::writeDescription(std::ostream& stream, bool /*perParameterPort*/,
                                            const gcstring& /*portName*/, const gcstring& /*prefix*/,
                                            std::int64_t& /*address*/) const
{
    DescriptionWriter writer(stream);
    writer.line("    <Category Name=\"", getName(), "\">");
    if (parameter()) writer.texts(DescriptionWriter::elementIndent, *parameter());
    writer.elements(DescriptionWriter::elementIndent, "pFeature", links(LinkKey::feature));
    writer.line("    </Category>");
}

}  // namespace AnythingToNodeMapAdapter::Detail

#include "parameteradapter/descriptionwriter.h"

#include <array>
#include <charconv>

#include "parameteradapter/anythingtonodemapadapterbase.h"

namespace AnythingToNodeMapAdapter::Detail {

namespace {

std::string toText(std::uint64_t number, int base)
{
    std::array<char, 24> digits;
    const auto result = std::to_chars(digits.data(), digits.data() + digits.size(), number, base);
    return {digits.data(), result.ptr};
}

constexpr std::array<std::string_view, 3> registerElements = {"IntReg", "FloatReg", "StringReg"};

}  // namespace

void DescriptionWriter::element(std::string_view indent, std::string_view name, std::string_view text)
{
    line(indent, "<", name, ">", text, "</", name, ">");
}

void DescriptionWriter::elements(std::string_view indent, std::string_view name,
                                 const CBasicNodeMapPort::Targets& targets)
{
    for (const GenICam::gcstring& target : targets) {
        element(indent, name, target.view());
    }
}

void DescriptionWriter::texts(std::string_view indent, const IBasicParameterPort& parameter)
{
    const auto text = [&](std::string_view name, std::string_view value) {
        if (!value.empty()) element(indent, name, value);
    };
    text("ToolTip", parameter.getToolTip());
    text("Description", parameter.getDescription());
    text("DisplayName", parameter.getDisplayName());
}

void DescriptionWriter::portNode(std::string_view name, std::string_view toolTip)
{
    line(nodeIndent, "<Port Name = \"", name, "\">");
    element(elementIndent, "ToolTip", toolTip);
    line(nodeIndent, "</Port>");
}

std::string DescriptionWriter::decimal(std::int64_t number)
{
    const bool negative = number < 0;
    const auto bits = static_cast<std::uint64_t>(number);
    return (negative ? "-" : "") + toText(negative ? 0 - bits : bits, 10);
}

std::string DescriptionWriter::hexadecimal(std::int64_t number)
{
    return "0x" + toText(static_cast<std::uint64_t>(number), 16);
}

const char* DescriptionWriter::mergeAttribute(std::int32_t priority)
{
    if (priority == 0) return "";
    return priority > 0 ? " MergePriority=\"+1\"" : " MergePriority=\"-1\"";
}

ParameterWriter::ParameterWriter(std::ostream& stream, const CBasicNodeMapPort& port,
                                 const IBasicDataParameterPort& parameter, GenICam::gcstring fullName,
                                 const GenICam::gcstring& portName, std::int64_t address)
    : DescriptionWriter(stream),
      port_(port),
      parameter_(parameter),
      fullName_(std::move(fullName)),
      portName_(portName),
      address_(address)
{}

void ParameterWriter::begin(std::string_view kind)
{
    line(nodeIndent, "<", kind, " Name=\"", parameter_.getName(), "\"", mergeAttribute(port_.mergePriority()),
         ">");
    texts(elementIndent, parameter_);
    element(elementIndent, "Visibility", parameter_.getVisibility());
    const auto predicate = [this](std::string_view name, bool hasRegister, const char* linkKey) {
        if (hasRegister) {
            reference(name, linkKey);
        } else {
            links(name, linkKey);
        }
    };
    predicate("pIsAvailable", parameter_.hasAvailableRegister(), LinkKey::isAvailable);
    predicate("pIsLocked", parameter_.hasLockedRegister(), LinkKey::isLocked);
}

void ParameterWriter::reference(std::string_view name, std::string_view suffix)
{
    line(elementIndent, "<", name, ">", fullName_.view(), suffix, "</", name, ">");
}

void ParameterWriter::optional(std::string_view name, std::string_view text)
{
    if (!text.empty()) element(elementIndent, name, text);
}

void ParameterWriter::links(std::string_view name, const char* linkKey)
{
    elements(elementIndent, name, port_.links(linkKey));
}

void ParameterWriter::registerNode(const Register& row)
{
    const std::string_view kind = registerElements[static_cast<std::size_t>(row.kind)];
    line(nodeIndent, "<", kind, " Name=\"", fullName_.view(), row.suffix, "\">");
    element(elementIndent, "Visibility", parameter_.getVisibility());
    element(elementIndent, "Address", hexadecimal(address_ + row.offset));
    element(elementIndent, "Length", decimal(row.length));
    element(elementIndent, "AccessMode", row.accessMode);
    element(elementIndent, "pPort", portName_.view());
    element(elementIndent, "Cachable", "NoCache");
    if (row.invalidators) links("pInvalidator", LinkKey::invalidator);
    if (row.kind == RegisterKind::Integer) element(elementIndent, "Sign", row.sign);
    if (row.kind != RegisterKind::String) element(elementIndent, "Endianess", "LittleEndian");
    line(nodeIndent, "</", kind, ">");
}

void ParameterWriter::companions(std::int64_t offset, std::string_view sign)
{
    if (parameter_.hasAvailableRegister()) {
        registerNode({.suffix = LinkKey::isAvailable, .offset = offset, .sign = sign});
    }
    if (parameter_.hasLockedRegister()) {
        registerNode({.suffix = LinkKey::isLocked, .offset = offset + 8, .sign = sign});
    }
}

void ParameterWriter::ownPort(bool perParameterPort)
{
    if (!perParameterPort) return;
    portNode(portName_.view(), std::string("Port node giving access to ") + parameter_.getName() + " parameter.");
}

std::string_view ParameterWriter::valueAccessMode() const
{
    return !parameter_.hasLockedRegister() && !parameter_.isWritable() ? "RO" : "RW";
}

}  // namespace AnythingToNodeMapAdapter::Detail

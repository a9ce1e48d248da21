#pragma once

#include <cstdint>
#include <ostream>
#include <string>
#include <string_view>

#include "parameteradapter/basicnodemapport.h"
#include "parameteradapter/iparameterports.h"

namespace AnythingToNodeMapAdapter::Detail {

/// Writes lines of a register description. The spelling of every line is a fixed format; texts are not escaped.
class DescriptionWriter
{
public:
    explicit DescriptionWriter(std::ostream& stream) : stream_(stream) {}

    /// Writes the parts one after another and ends the line.
    template <typename... Parts>
    void line(const Parts&... parts);
    /// An element with a text on a line of its own.
    void element(std::string_view indent, std::string_view name, std::string_view text);
    /// One element per target.
    void elements(std::string_view indent, std::string_view name, const CBasicNodeMapPort::Targets& targets);
    /// Tool tip, description and display name, as far as they are not empty.
    void texts(std::string_view indent, const IBasicParameterPort& parameter);
    void portNode(std::string_view name, std::string_view toolTip);

    static std::string decimal(std::int64_t number);
    /// With 0x in front, in lower case.
    static std::string hexadecimal(std::int64_t number);
    /// The attribute that marks a node for a merge; empty for priority 0.
    static const char* mergeAttribute(std::int32_t priority);

    static constexpr std::string_view nodeIndent = "    ";
    static constexpr std::string_view elementIndent = "        ";

private:
    void put(std::string_view text) { stream_.write(text.data(), static_cast<std::streamsize>(text.size())); }

    std::ostream& stream_;
};

template <typename... Parts>
void DescriptionWriter::line(const Parts&... parts)
{
    (put(std::string_view(parts)), ...);
    stream_.put('\n');
}

/// Writes the nodes of one parameter with a value: the feature itself, its registers, its own port.
class ParameterWriter : public DescriptionWriter
{
public:
    /// `fullName` is what the names of the registers begin with, `address` that of the block.
    ParameterWriter(std::ostream& stream, const CBasicNodeMapPort& port, const IBasicDataParameterPort& parameter,
                    GenICam::gcstring fullName, const GenICam::gcstring& portName, std::int64_t address);

    /// The start tag and what all features have: texts, visibility, availability, lock.
    void begin(std::string_view kind);
    void end(std::string_view kind) { line(nodeIndent, "</", kind, ">"); }
    void streamable() { element(elementIndent, "Streamable", "Yes"); }
    /// A reference to the register of that suffix.
    void reference(std::string_view name, std::string_view suffix);
    void optional(std::string_view name, std::string_view text);
    void links(std::string_view name, const char* linkKey);

    enum class RegisterKind
    {
        Integer,
        Float,
        String
    };
    struct Register
    {
        RegisterKind kind = RegisterKind::Integer;
        std::string_view suffix;
        std::int64_t offset = 0;
        std::int64_t length = 8;
        std::string_view accessMode = "RO";
        std::string_view sign = "Unsigned";
        bool invalidators = false;
    };
    void registerNode(const Register& row);
    /// The registers for availability, at `offset`, and lock, behind it, as far as the parameter has them.
    void companions(std::int64_t offset, std::string_view sign = "Unsigned");
    /// The node of the parameter's own port.
    void ownPort(bool perParameterPort);

    /// The access mode of the value's register: a lock register tells at run time what RO would fix.
    std::string_view valueAccessMode() const;

private:
    const CBasicNodeMapPort& port_;
    const IBasicDataParameterPort& parameter_;
    GenICam::gcstring fullName_;
    const GenICam::gcstring& portName_;
    std::int64_t address_;
};

}  // namespace AnythingToNodeMapAdapter::Detail

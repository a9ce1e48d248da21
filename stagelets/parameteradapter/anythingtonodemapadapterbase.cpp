#include "parameteradapter/anythingtonodemapadapterbase.h"

#include <sstream>

#include "gcbase/exception.h"

#include "parameteradapter/anythingtonodemapadapterbaseimpl.h"
#include "parameteradapter/descriptionwriter.h"
#include "parameteradapter/nodemapports.h"

namespace AnythingToNodeMapAdapter {

using GenICam::gcstring;

namespace {

constexpr std::string_view xmlDeclaration = R"(<?xml version="1.0" encoding="UTF-8"?>)";
constexpr std::string_view rootElement =
    R"(<RegisterDescription xmlns="http://www.genicam.org/GenApi/Version_1_1")"
    R"( xmlns:xsi="http://www.w3.org/2001/XMLSchema-instance")"
    R"( xsi:schemaLocation="http://www.genicam.org/GenApi/Version_1_1" SchemaSubMinorVersion="0")"
    R"( VendorName="Tessmark" SchemaMinorVersion="1" SubMinorVersion="1")"
    R"( VersionGuid="E6D851E3-9DF1-4875-B796-DA2477F1CA61" SchemaMajorVersion="1" MajorVersion="0")"
    R"( MinorVersion="0" StandardNameSpace="None" ModelName="Params")"
    R"( ProductGuid="85FC0460-25EB-4EBB-92B1-1BB54FF98422" ToolTip="Parameters">)";

/// Writes the frame of a description around what `writePorts` gives.
template <typename WritePorts>
gcstring writeDocument(const gcstring& sharedPortName, const WritePorts& writePorts)
{
    std::ostringstream stream;
    Detail::DescriptionWriter writer(stream);
    writer.line(xmlDeclaration);
    writer.line(rootElement);
    writer.line();
    writePorts(stream);
    if (!sharedPortName.empty()) writer.portNode(sharedPortName.view(), "Port node giving access to parameters.");
    writer.line("</RegisterDescription>");
    if (!stream) GENICAM_THROW(BadAllocException, "Could not write the description of the parameters.");
    return std::move(stream).str();
}

}  // namespace

void CAnythingToNodeMapAdapterBase::CAnythingToNodeMapAdapterBaseImpl::releaseKey(const gcstring& key)
{
    const auto found = ports.find(key);
    if (found == ports.end()) return;
    found->second->disconnect();
    found->second->detach();
}

gcstring CAnythingToNodeMapAdapterBase::CAnythingToNodeMapAdapterBaseImpl::placeAndDescribe(
    const gcstring& portName, const gcstring& prefix)
{
    return writeDocument(portName, [&](std::ostream& stream) {
        std::int64_t address = 0;
        for (const auto& [key, port] : ports) {
            port->placeAndDescribe(stream, portName.empty(), portName, prefix, address);
        }
    });
}

gcstring CAnythingToNodeMapAdapterBase::CAnythingToNodeMapAdapterBaseImpl::describe(const gcstring& portName,
                                                                                    const gcstring& prefix) const
{
    const bool perParameterPort = portName.empty();
    return writeDocument(portName, [&](std::ostream& stream) {
        std::int64_t address = 0;
        for (const auto& [key, port] : ports) {
            const gcstring ownPort = perParameterPort ? port->getPortName(prefix) : portName;
            port->writeDescription(stream, perParameterPort, ownPort, prefix, address);
            if (perParameterPort) address = 0;
        }
    });
}

CAnythingToNodeMapAdapterBase::CAnythingToNodeMapAdapterBase(
    std::unique_ptr<CAnythingToNodeMapAdapterBaseImpl> impl)
    : impl_(std::move(impl))
{}

CAnythingToNodeMapAdapterBase::~CAnythingToNodeMapAdapterBase() = default;

void CAnythingToNodeMapAdapterBase::getDescriptionText(gcstring& text, const gcstring& portName,
                                                       const gcstring& prefix) const
{
    text = impl_->describe(portName, prefix);
}

void CAnythingToNodeMapAdapterBase::addParameter(const std::shared_ptr<IIntegerParameterPort>& port,
                                                 std::int32_t mergePriority)
{
    impl_->addParameter<Detail::CIntegerNodeMapPort>(port, mergePriority);
}

void CAnythingToNodeMapAdapterBase::addParameter(const std::shared_ptr<IFloatParameterPort>& port,
                                                 std::int32_t mergePriority)
{
    impl_->addParameter<Detail::CFloatNodeMapPort>(port, mergePriority);
}

void CAnythingToNodeMapAdapterBase::addParameter(const std::shared_ptr<IBooleanParameterPort>& port,
                                                 std::int32_t mergePriority)
{
    impl_->addParameter<Detail::CBooleanNodeMapPort>(port, mergePriority);
}

void CAnythingToNodeMapAdapterBase::addParameter(const std::shared_ptr<IStringParameterPort>& port,
                                                 std::int32_t mergePriority)
{
    impl_->addParameter<Detail::CStringNodeMapPort>(port, mergePriority);
}

void CAnythingToNodeMapAdapterBase::addParameter(const std::shared_ptr<IEnumParameterPort>& port,
                                                 std::int32_t mergePriority)
{
    impl_->addParameter<Detail::CEnumNodeMapPort>(port, mergePriority);
}

void CAnythingToNodeMapAdapterBase::addParameter(const std::shared_ptr<ICategoryParameterPort>& port,
                                                 std::int32_t mergePriority)
{
    impl_->addParameter<Detail::CCategoryNodeMapPort>(port, mergePriority);
}

void CAnythingToNodeMapAdapterBase::addParameter(const std::shared_ptr<ICommandParameterPort>& port,
                                                 std::int32_t mergePriority)
{
    impl_->addParameter<Detail::CCommandNodeMapPort>(port, mergePriority);
}

void CAnythingToNodeMapAdapterBase::addEnumEntry(const gcstring& enumName,
                                                 const std::shared_ptr<IEnumEntryParameterPort>& entry,
                                                 std::int32_t mergePriority)
{
    const auto found = impl_->ports.find(enumName);
    if (!entry || found == impl_->ports.end()) return;
    const auto enumPort = std::dynamic_pointer_cast<Detail::CEnumNodeMapPort>(found->second);
    if (!enumPort) return;

    const gcstring key = "EnumEntry_" + enumName + "_" + entry->getName();
    impl_->releaseKey(key);
    const auto entryPort = std::make_shared<Detail::CEnumEntryNodeMapPort>(entry, mergePriority);
    entryPort->setEnumName(enumName);
    enumPort->addEntry(entryPort);
    impl_->ports[key] = entryPort;
}

void CAnythingToNodeMapAdapterBase::addLink(const gcstring& linkKey, const gcstring& fromName,
                                            const gcstring& toName)
{
    const auto found = impl_->ports.find(fromName);
    if (found != impl_->ports.end()) found->second->addLink(linkKey, toName);
}

}  // namespace AnythingToNodeMapAdapter

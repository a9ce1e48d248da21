#include "parameteradapter/realnodemapports.h"

#include <cstring>

namespace AnythingToNodeMapAdapter::Detail {

CRealNodeMapPortSingleParameter::~CRealNodeMapPortSingleParameter() = default;

void CRealNodeMapPortSingleParameter::invalidate(CBasicNodeMapPort& /*port*/)
{
    InvalidateNode();
}

void CRealNodeMapPortSingleParameter::connect(CBasicNodeMapPort* port)
{
    if (!port) return;
    port_ = port;
    portName_ = port->placedPortName();
    nodeMap_.Connect(this, portName_);
}

void CRealNodeMapPortSingleParameter::disconnect(CBasicNodeMapPort* port)
{
    if (!port || port != port_) return;
    nodeMap_.Connect(nullptr, portName_);
    port_ = nullptr;
}

void CRealNodeMapPortSingleParameter::Read(void* buffer, std::int64_t address, std::int64_t length)
{
    if (port_) {
        port_->read(buffer, address, length);
    } else {
        std::memset(buffer, 0, static_cast<std::size_t>(length));
    }
}

void CRealNodeMapPortSingleParameter::Write(const void* buffer, std::int64_t address, std::int64_t length)
{
    if (port_) port_->write(buffer, address, length);
}

CRealNodeMapPortMultiParameter::CRealNodeMapPortMultiParameter(GenApi::CNodeMapRef nodeMap,
                                                               GenICam::gcstring portName)
    : nodeMap_(std::move(nodeMap)), portName_(std::move(portName))
{
    nodeMap_.Connect(this, portName_);
}

CRealNodeMapPortMultiParameter::~CRealNodeMapPortMultiParameter() = default;

void CRealNodeMapPortMultiParameter::invalidate(CBasicNodeMapPort& port)
{
    if (GenApi::INode* node = nodeMap_.GetNode(port.getName())) node->InvalidateNode();
}

void CRealNodeMapPortMultiParameter::release()
{
    nodeMap_.Connect(nullptr, portName_);
    demultiplexer_.clear();
}

void CRealNodeMapPortMultiParameter::Read(void* buffer, std::int64_t address, std::int64_t length)
{
    demultiplexer_.read(buffer, address, length);
}

void CRealNodeMapPortMultiParameter::Write(const void* buffer, std::int64_t address, std::int64_t length)
{
    demultiplexer_.write(buffer, address, length);
}

}  // namespace AnythingToNodeMapAdapter::Detail

#include "parameteradapter/basicnodemapport.h"

namespace AnythingToNodeMapAdapter::Detail {

CBasicNodeMapPort::~CBasicNodeMapPort() = default;

void CBasicNodeMapPort::placeAndDescribe(std::ostream& stream, bool perParameterPort,
                                         const GenICam::gcstring& portName, const GenICam::gcstring& prefix,
                                         std::int64_t& address)
{
    const std::int64_t start = address;
    portName_ = perParameterPort ? getPortName(prefix) : GenICam::gcstring();
    writeDescription(stream, perParameterPort, perParameterPort ? portName_ : portName, prefix, address);
    baseAddress_ = start;
    blockLength_ = address - start;
    if (perParameterPort) address = 0;
}

GenICam::gcstring CBasicNodeMapPort::getPortName(const GenICam::gcstring& prefix) const
{
    return prefix + getName() + "Port";
}

const CBasicNodeMapPort::Targets& CBasicNodeMapPort::links(const char* key) const
{
    static const Targets none;
    const auto found = links_.find(key);
    return found == links_.end() ? none : found->second;
}

void CBasicNodeMapPort::disconnect()
{
    if (!connector_) return;
    connector_->disconnect(this);
    connector_.reset();
}

}  // namespace AnythingToNodeMapAdapter::Detail

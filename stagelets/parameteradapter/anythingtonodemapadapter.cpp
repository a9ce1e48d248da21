#include "parameteradapter/anythingtonodemapadapter.h"

#include "genapi/nodemapfactory.h"

#include "parameteradapter/anythingtonodemapadapterbaseimpl.h"
#include "parameteradapter/realnodemapports.h"

namespace AnythingToNodeMapAdapter {

using Detail::CRealNodeMapPortMultiParameter;
using Detail::CRealNodeMapPortSingleParameter;
using GenICam::gcstring;

class CAnythingToNodeMapAdapter::CAnythingToNodeMapAdapterImpl : public CAnythingToNodeMapAdapterBaseImpl
{
public:
    CAnythingToNodeMapAdapterImpl() { emptyNodeMap.Attach(GenApi::CNodeMapFactory::CreateEmptyNodeMap()); }
    ~CAnythingToNodeMapAdapterImpl() override { disconnectAll(); }

    void disconnectAll();
    void connectOwnPorts();
    void connectSharedPort(const gcstring& portName);

    GenApi::CNodeMapRef nodeMap{"Device"};
    GenApi::CNodeMapRef emptyNodeMap{"Device"};  ///< Stands in until the first build.
    std::shared_ptr<CRealNodeMapPortMultiParameter> sharedPort;
};

void CAnythingToNodeMapAdapter::CAnythingToNodeMapAdapterImpl::disconnectAll()
{
    if (sharedPort) sharedPort->release();
    sharedPort.reset();
    for (const auto& [key, port] : ports) {
        port->disconnect();
    }
}

void CAnythingToNodeMapAdapter::CAnythingToNodeMapAdapterImpl::connectOwnPorts()
{
    for (const auto& [key, port] : ports) {
        if (port->blockLength() < 1) continue;
        const auto own = std::make_shared<CRealNodeMapPortSingleParameter>(nodeMap);
        own->connect(port.get());
        port->setConnector(own);
    }
}

void CAnythingToNodeMapAdapter::CAnythingToNodeMapAdapterImpl::connectSharedPort(const gcstring& portName)
{
    sharedPort = std::make_shared<CRealNodeMapPortMultiParameter>(nodeMap, portName);
    for (const auto& [key, port] : ports) {
        if (port->blockLength() < 1) continue;
        sharedPort->connect(port.get());
        port->setConnector(sharedPort);
    }
    sharedPort->finish();
}

CAnythingToNodeMapAdapter::CAnythingToNodeMapAdapter()
    : CAnythingToNodeMapAdapterBase(std::make_unique<CAnythingToNodeMapAdapterImpl>())
{}

CAnythingToNodeMapAdapter::~CAnythingToNodeMapAdapter() = default;

CAnythingToNodeMapAdapter::CAnythingToNodeMapAdapterImpl& CAnythingToNodeMapAdapter::impl() const
{
    return static_cast<CAnythingToNodeMapAdapterImpl&>(CAnythingToNodeMapAdapterBase::impl());
}

GenApi::CNodeMapRef CAnythingToNodeMapAdapter::buildNodeMap(GenApi::CLock* lock, const gcstring& portName,
                                                            const gcstring& prefix)
{
    CAnythingToNodeMapAdapterImpl& own = impl();
    const gcstring text = own.placeAndDescribe(portName, prefix);
    GenApi::CNodeMapFactory factory(GenApi::ContentType_Xml, text.c_str(), text.size(), GenApi::CacheUsage_Ignore,
                                    false);
    own.nodeMap.Attach(lock ? factory.CreateNodeMap("Device", *lock, true)
                            : factory.CreateNodeMap("Device", true));
    own.disconnectAll();
    if (portName.empty()) {
        own.connectOwnPorts();
    } else {
        own.connectSharedPort(portName);
    }
    return own.nodeMap;
}

GenApi::CNodeMapRef CAnythingToNodeMapAdapter::getNodeMap() const
{
    return impl().nodeMap.IsValid() ? impl().nodeMap : impl().emptyNodeMap;
}

}  // namespace AnythingToNodeMapAdapter

#include "parameteradapter/anythingtonodemapadapterremote.h"

#include "gcbase/exception.h"

#include "parameteradapter/anythingtonodemapadapterbaseimpl.h"
#include "parameteradapter/multiparameterportdemultiplexer.h"

namespace AnythingToNodeMapAdapter {

using Detail::CBasicNodeMapPort;
using Detail::CMultiParameterPortDemultiplexer;

namespace {

/// Keeps a replaced parameter from being served.
class RemoteConnector : public Detail::CNodeMapPortConnector
{
public:
    explicit RemoteConnector(std::shared_ptr<CMultiParameterPortDemultiplexer> demultiplexer)
        : demultiplexer_(std::move(demultiplexer))
    {}

    void invalidate(CBasicNodeMapPort& /*port*/) override {}
    void connect(CBasicNodeMapPort* port) override { demultiplexer_->connect(port); }
    void disconnect(CBasicNodeMapPort* port) override { demultiplexer_->disconnect(port); }

private:
    std::shared_ptr<CMultiParameterPortDemultiplexer> demultiplexer_;
};

}  // namespace

class CAnythingToNodeMapAdapterRemote::CAnythingToNodeMapAdapterRemoteImpl
    : public CAnythingToNodeMapAdapterBaseImpl
{
public:
    ~CAnythingToNodeMapAdapterRemoteImpl() override { demultiplexer->clear(); }

    std::shared_ptr<CMultiParameterPortDemultiplexer> demultiplexer =
        std::make_shared<CMultiParameterPortDemultiplexer>();
};

CAnythingToNodeMapAdapterRemote::CAnythingToNodeMapAdapterRemote()
    : CAnythingToNodeMapAdapterBase(std::make_unique<CAnythingToNodeMapAdapterRemoteImpl>())
{}

CAnythingToNodeMapAdapterRemote::~CAnythingToNodeMapAdapterRemote() = default;

CAnythingToNodeMapAdapterRemote::CAnythingToNodeMapAdapterRemoteImpl& CAnythingToNodeMapAdapterRemote::impl() const
{
    return static_cast<CAnythingToNodeMapAdapterRemoteImpl&>(CAnythingToNodeMapAdapterBase::impl());
}

void CAnythingToNodeMapAdapterRemote::connect(GenICam::gcstring& text, const GenICam::gcstring& portName,
                                              const GenICam::gcstring& prefix)
{
    if (portName.empty()) GENICAM_THROW(InvalidArgumentException, "A remote adapter needs a port name.");
    text = impl().placeAndDescribe(portName, prefix);
    impl().demultiplexer->clear();
    const auto connector = std::make_shared<RemoteConnector>(impl().demultiplexer);
    for (const auto& [key, port] : impl().ports) {
        if (port->blockLength() < 1) continue;
        connector->connect(port.get());
        port->setConnector(connector);
    }
    impl().demultiplexer->sort();
}

void CAnythingToNodeMapAdapterRemote::Read(void* buffer, std::int64_t address, std::int64_t length) const
{
    impl().demultiplexer->read(buffer, address, length);
}

void CAnythingToNodeMapAdapterRemote::Write(const void* buffer, std::int64_t address, std::int64_t length) const
{
    impl().demultiplexer->write(buffer, address, length);
}

}  // namespace AnythingToNodeMapAdapter

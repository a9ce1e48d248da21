#pragma once

#include "genapi/nodemapref.h"
#include "genapi/portimpl.h"

#include "parameteradapter/multiparameterportdemultiplexer.h"

namespace AnythingToNodeMapAdapter::Detail {

/// Serves one block of registers at a port of its own.
class CRealNodeMapPortSingleParameter : public CNodeMapPortConnector, public GenApi::CPortImpl
{
public:
    explicit CRealNodeMapPortSingleParameter(GenApi::CNodeMapRef nodeMap) : nodeMap_(std::move(nodeMap)) {}
    ~CRealNodeMapPortSingleParameter() override;

    void invalidate(CBasicNodeMapPort& port) override;
    void connect(CBasicNodeMapPort* port) override;
    void disconnect(CBasicNodeMapPort* port) override;

    GenApi::EAccessMode GetAccessMode() const override { return GenApi::RW; }
    void Read(void* buffer, std::int64_t address, std::int64_t length) override;
    void Write(const void* buffer, std::int64_t address, std::int64_t length) override;

private:
    CBasicNodeMapPort* port_ = nullptr;
    GenApi::CNodeMapRef nodeMap_;
    GenICam::gcstring portName_;  // as connected; the block may have been placed anew since
};

/// Serves the blocks of all parameters at one shared port. Blocks are added with `connect`, up to `finish`.
class CRealNodeMapPortMultiParameter : public CNodeMapPortConnector, public GenApi::CPortImpl
{
public:
    /// Connects itself to the map's port of that name.
    CRealNodeMapPortMultiParameter(GenApi::CNodeMapRef nodeMap, GenICam::gcstring portName);
    ~CRealNodeMapPortMultiParameter() override;

    void invalidate(CBasicNodeMapPort& port) override;
    void connect(CBasicNodeMapPort* port) override { demultiplexer_.connect(port); }
    void disconnect(CBasicNodeMapPort* port) override { demultiplexer_.disconnect(port); }

    /// Serves from now on.
    void finish() { demultiplexer_.sort(); }
    /// Disconnects itself from the map and lets go of all blocks.
    void release();

    GenApi::EAccessMode GetAccessMode() const override { return GenApi::RW; }
    void Read(void* buffer, std::int64_t address, std::int64_t length) override;
    void Write(const void* buffer, std::int64_t address, std::int64_t length) override;

private:
    GenApi::CNodeMapRef nodeMap_;
    GenICam::gcstring portName_;
    CMultiParameterPortDemultiplexer demultiplexer_;
};

}  // namespace AnythingToNodeMapAdapter::Detail

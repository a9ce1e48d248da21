#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <ostream>
#include <vector>

#include "gcbase/gcstring.h"

namespace AnythingToNodeMapAdapter::Detail {

class CNodeMapPortConnector;

/// One parameter as a node map sees it: its text in the register description, and a block of registers, reached
/// by byte offset, that maps to the parameter. Text and block belong together: the text of a register names the
/// offset at which `read` and `write` find it. Values are 64-bit little-endian words.
///
/// `read` and `write` report no error of their own: a bad offset or length ends in zeros or in nothing. What the
/// parameter throws passes through. Neither takes a lock.
class CBasicNodeMapPort
{
public:
    using Targets = std::vector<GenICam::gcstring>;

    explicit CBasicNodeMapPort(std::int32_t mergePriority) : mergePriority_(mergePriority) {}
    virtual ~CBasicNodeMapPort();
    CBasicNodeMapPort(const CBasicNodeMapPort&) = delete;
    CBasicNodeMapPort& operator=(const CBasicNodeMapPort&) = delete;

    /// Fills `buffer` with `length` bytes from `offset` into the block. An offset without a register leaves the
    /// buffer alone; a wrong length or a missing parameter gives zeros.
    virtual void read(void* buffer, std::int64_t offset, std::int64_t length) = 0;
    /// Takes `length` bytes at `offset` into the block; ignored unless both fit a register that can be written.
    virtual void write(const void* buffer, std::int64_t offset, std::int64_t length) = 0;
    /// The parameter's name; empty without parameter.
    virtual const char* getName() const = 0;
    /// Writes the text and moves the running address on by the size of the block. `portName` is the port that the
    /// registers name; with `perParameterPort` that port's own node is written too.
    virtual void writeDescription(std::ostream& stream, bool perParameterPort, const GenICam::gcstring& portName,
                                  const GenICam::gcstring& prefix, std::int64_t& address) const = 0;
    /// Writes the text and fixes port name, base address and length of the block. With `perParameterPort` the
    /// block gets a port and an address space of its own, and the running address starts anew at 0.
    virtual void placeAndDescribe(std::ostream& stream, bool perParameterPort, const GenICam::gcstring& portName,
                                  const GenICam::gcstring& prefix, std::int64_t& address);
    /// The name of the parameter's own port.
    virtual GenICam::gcstring getPortName(const GenICam::gcstring& prefix) const;

    /// Empty while all parameters share a port.
    const GenICam::gcstring& placedPortName() const { return portName_; }
    std::int64_t baseAddress() const { return baseAddress_; }
    /// In bytes; 0 for what has no registers.
    std::int64_t blockLength() const { return blockLength_; }
    std::int32_t mergePriority() const { return mergePriority_; }

    void addLink(const GenICam::gcstring& key, const GenICam::gcstring& target) { links_[key].push_back(target); }
    /// The targets under a key, in the order in which they were added.
    const Targets& links(const char* key) const;

    /// What connects the block to a map at present; null if nothing does.
    const std::shared_ptr<CNodeMapPortConnector>& connector() const { return connector_; }
    void setConnector(std::shared_ptr<CNodeMapPortConnector> connector) { connector_ = std::move(connector); }
    /// Takes the block off its connector, if it has one.
    void disconnect();
    /// No longer observes the parameter.
    virtual void detach() = 0;

private:
    GenICam::gcstring portName_;
    std::int64_t baseAddress_ = 0;
    std::int64_t blockLength_ = 0;
    std::int32_t mergePriority_ = 0;
    std::map<GenICam::gcstring, Targets> links_;
    std::shared_ptr<CNodeMapPortConnector> connector_;
};

/// Connects blocks of registers to a node map.
class CNodeMapPortConnector
{
public:
    virtual ~CNodeMapPortConnector() = default;

    /// Has the map's clients know that the parameter behind `port` changed.
    virtual void invalidate(CBasicNodeMapPort& port) = 0;
    /// Serves the registers of `port` from now on; null is ignored.
    virtual void connect(CBasicNodeMapPort* port) = 0;
    /// Serves them no longer.
    virtual void disconnect(CBasicNodeMapPort* port) = 0;
};

}  // namespace AnythingToNodeMapAdapter::Detail

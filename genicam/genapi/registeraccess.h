#pragma once

#include <span>
#include <string>
#include <vector>

#include "genapi/number.h"

namespace GenApi {

class CPortNode;
class ElementReader;

/// The register of a register node: where it lies, how it is read and written, and what of it is cached.
/// The cache holds one content together with the address and length it was read from, since both may depend on
/// other nodes. Everything runs under the map's lock.
class RegisterAccess
{
public:
    /// No register is longer, in bytes.
    static constexpr int64_t maxLength = 16 << 20;
    /// Contents longer than this are not cached.
    static constexpr int64_t maxCachedLength = 4096;

    RegisterAccess(CNodeBase& owner, ECachingMode caching) : owner_(owner), caching_(caching) {}

    bool TakeElement(ElementReader& element);
    /// Refuses a register without address, length or port, or a fixed length outside `shortest` to `longest`.
    void Finish(ElementReader& own, int64_t shortest, int64_t longest);

    EAccessMode Mode() const;
    /// What the description says, whatever the port allows.
    EAccessMode DeclaredMode() const { return declared_; }
    ECachingMode Caching() const { return caching_; }
    CPortNode& Port() const { return *port_; }
    CNodeBase& Owner() const { return owner_; }
    int64_t Address() const;
    /// RuntimeException if the node that tells it gives a length that no such register has.
    int64_t Length() const;
    bool HasFixedLength() const { return !length_.Reference(); }
    bool HasFixedPlace() const { return parts_.empty() && !length_.Reference(); }

    void Read(std::span<uint8_t> bytes, bool ignoreCache);
    void Write(std::span<const uint8_t> bytes);
    void DropCache() { cached_ = false; }
    bool CacheValid() const { return cached_; }
    /// True if something is cached of the bytes at `address`.
    bool HasCached(int64_t address, int64_t length) const;

private:
    struct AddressPart
    {
        NumberRef node;
        // An index counts in steps of `step`, else of the register's length; an address is taken as it is.
        IntegerSource step;
        bool isIndex;
    };

    bool LiesInMemory() const;
    void TakeIndex(ElementReader& element);
    void TakeConstantAddress(const ElementReader& element);
    void Keep(int64_t address, std::span<const uint8_t> bytes);
    [[noreturn]] void RefuseAddress() const;

    CNodeBase& owner_;
    ECachingMode caching_;
    EAccessMode declared_ = RO;
    bool hasAddress_ = false;
    int64_t address_ = 0;
    std::vector<AddressPart> parts_;
    IntegerSource length_;
    int64_t shortest_ = 0;
    int64_t longest_ = maxLength;
    CPortNode* port_ = nullptr;

    bool cached_ = false;
    int64_t cachedAddress_ = 0;
    std::vector<uint8_t> content_;
};

}  // namespace GenApi

#pragma once

#include <array>

#include "genapi/iregister.h"
#include "genapi/nodebase.h"
#include "genapi/registeraccess.h"

namespace GenApi {

/// A register node: `Base`, the kind's value interface, on top of the bytes of a register.
template <typename Base>
class CRegisterOf : public Base, public IRegister
{
public:
    CRegisterOf(NodeOrigin origin, ECachingMode caching) : Base(std::move(origin)), register_(*this, caching) {}

    void Set(const uint8_t* buffer, int64_t length, bool verify) override;
    void Get(uint8_t* buffer, int64_t length, bool verify, bool ignoreCache) override;
    int64_t GetLength() override;
    int64_t GetAddress() override;

    bool TakeElement(ElementReader& element) override;
    void DropCache() override { register_.DropCache(); }
    bool CacheValid() const override { return register_.CacheValid(); }

protected:
    EAccessMode BaseMode() const override { return register_.Mode(); }
    RegisterAccess& Register() { return register_; }
    /// To be called by the kind's Finish with the lengths that it can have.
    void FinishRegister(ElementReader& own, int64_t shortest, int64_t longest);

private:
    void CheckLength(int64_t length) const;

    RegisterAccess register_;
};

}  // namespace GenApi

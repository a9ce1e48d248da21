#pragma once

#include "genapi/inode.h"

namespace GenApi {

/// A node with a value that can be written as text.
///
/// What all the value interfaces mean by their flags: reading always needs a readable node, and with `verify` the
/// value read must also lie in its limits; `ignoreCache` asks the device although the value is cached. Writing
/// with `verify` needs a writable node and a value inside the limits; without it only what the device cannot
/// represent is refused. Refusals: AccessException (not readable or writable), OutOfRangeException (limits),
/// InvalidArgumentException (a text that is no such value), RuntimeException (the device's answer makes no
/// sense). What a port raises passes unchanged, and what it concerned is no longer cached.
class GENICAM_API IValue : public virtual IBase
{
public:
    virtual gcstring ToString(bool verify = false, bool ignoreCache = false) = 0;
    virtual void FromString(const gcstring& text, bool verify = true) = 0;
    /// True if the next read is answered without asking the device.
    virtual bool IsValueCacheValid() const = 0;

    ~IValue() override;
};

}  // namespace GenApi

#pragma once

#include "genapi/ivalue.h"

namespace GenApi {

/// Bytes of a device. Its text is `0x` and two digits for each byte.
class GENICAM_API IRegister : public virtual IValue
{
public:
    /// `length` must be GetLength(), else InvalidArgumentException.
    virtual void Set(const uint8_t* buffer, int64_t length, bool verify = true) = 0;
    virtual void Get(uint8_t* buffer, int64_t length, bool verify = false, bool ignoreCache = false) = 0;
    virtual int64_t GetLength() = 0;
    virtual int64_t GetAddress() = 0;

    ~IRegister() override;
};

}  // namespace GenApi

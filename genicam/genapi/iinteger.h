#pragma once

#include "genapi/ivalue.h"

namespace GenApi {

/// A 64-bit signed number. Its text is decimal, or as its representation says: `0x1f`, `192.168.0.1`,
/// `00:11:22:33:44:55`; decimal and `0x` texts are read in any case.
class GENICAM_API IInteger : public virtual IValue
{
public:
    /// A write needs min <= value <= max and (value - min) to be a multiple of the increment.
    virtual void SetValue(int64_t value, bool verify = true) = 0;
    virtual int64_t GetValue(bool verify = false, bool ignoreCache = false) = 0;
    virtual int64_t GetMin() = 0;
    virtual int64_t GetMax() = 0;
    /// 1 or less: any value between the limits will do.
    virtual int64_t GetInc() = 0;
    virtual ERepresentation GetRepresentation() = 0;
    virtual gcstring GetUnit() = 0;

    ~IInteger() override;
};

}  // namespace GenApi

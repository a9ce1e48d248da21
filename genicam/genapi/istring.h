#pragma once

#include "genapi/ivalue.h"

namespace GenApi {

class GENICAM_API IString : public virtual IValue
{
public:
    /// OutOfRangeException for more than GetMaxLength() bytes, InvalidArgumentException for a zero byte inside,
    /// both also without `verify`.
    virtual void SetValue(const gcstring& value, bool verify = true) = 0;
    virtual gcstring GetValue(bool verify = false, bool ignoreCache = false) = 0;
    /// Bytes, not counting an ending zero.
    virtual int64_t GetMaxLength() = 0;

    ~IString() override;
};

}  // namespace GenApi

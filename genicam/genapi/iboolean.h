#pragma once

#include "genapi/ivalue.h"

namespace GenApi {

/// True if the number behind it is the node's on-value. Its text is "1" or "0"; "true" and "false" are read too.
class GENICAM_API IBoolean : public virtual IValue
{
public:
    virtual void SetValue(bool value, bool verify = true) = 0;
    virtual bool GetValue(bool verify = false, bool ignoreCache = false) = 0;

    ~IBoolean() override;
};

}  // namespace GenApi

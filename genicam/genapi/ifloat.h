#pragma once

#include "genapi/ivalue.h"

namespace GenApi {

/// A double. Its text is the shortest one that reads back as the same number.
class GENICAM_API IFloat : public virtual IValue
{
public:
    /// With `verify` the value must be a number between the limits; the increment is not checked.
    virtual void SetValue(double value, bool verify = true) = 0;
    virtual double GetValue(bool verify = false, bool ignoreCache = false) = 0;
    virtual double GetMin() = 0;
    virtual double GetMax() = 0;
    virtual bool HasInc() = 0;
    /// LogicalErrorException if there is none.
    virtual double GetInc() = 0;
    virtual ERepresentation GetRepresentation() = 0;
    virtual gcstring GetUnit() = 0;
    virtual EDisplayNotation GetDisplayNotation() = 0;
    /// Digits left and right of the point together that a display should show.
    virtual int64_t GetDisplayPrecision() = 0;

    ~IFloat() override;
};

}  // namespace GenApi

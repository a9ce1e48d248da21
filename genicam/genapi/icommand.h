#pragma once

#include "genapi/ivalue.h"

namespace GenApi {

/// Something the device does on request. Its text is the number that its register holds; as text, the command's
/// own number executes it.
class GENICAM_API ICommand : public virtual IValue
{
public:
    /// Writes the command's number and returns; the device may still be at work.
    virtual void Execute(bool verify = true) = 0;
    /// Asks the device, never the cache. Always true if its answer cannot be read.
    virtual bool IsDone(bool verify = true) = 0;

    ~ICommand() override;
};

}  // namespace GenApi

#pragma once

#include <memory>
#include <vector>

#include "gcbase/gcstring.h"

#include "utils/datetime.h"

namespace Nivex::DataProcessing::Core {

class IError;
using ErrorList = std::vector<std::shared_ptr<IError>>;

/// What is wrong with a value or a node. Never changes after construction, so may be shared between threads.
class GENICAM_API IError
{
public:
    virtual ~IError() = default;

    virtual GenICam::gcstring getName() const = 0;         ///< The kind of error.
    virtual GenICam::gcstring getDescription() const = 0;  ///< The message for a person.
    virtual Utils::DateTime getTimestamp() const = 0;      ///< When it was found.
    /// The errors that led to this one. Entries may be null.
    virtual const ErrorList& getParentErrors() const = 0;
};

}  // namespace Nivex::DataProcessing::Core

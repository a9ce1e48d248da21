#pragma once

#include <memory>

#include "core/igraphupdate.h"
#include "utils/variant.h"

namespace Nivex::DataProcessing::Core {

/// Receives the values of one output pin.
class GENICAM_API IOutputSink
{
public:
    virtual ~IOutputSink() = default;
    /// Called on the thread that executes the node, once per update that has a value for the pin.
    virtual void onOutput(const std::shared_ptr<IGraphUpdate>& update, const Utils::Variant& value) = 0;
};

}  // namespace Nivex::DataProcessing::Core

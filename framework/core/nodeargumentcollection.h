#pragma once

#include <map>

#include "gcbase/exception.h"
#include "gcbase/gcstring.h"

#include "utils/variant.h"

namespace Nivex::DataProcessing::Core {

/// The arguments of one start of a node, by name.
class NodeArgumentCollection
{
public:
    void setArgument(const GenICam::gcstring& name, Utils::Variant value) { arguments_[name] = std::move(value); }
    bool hasArgument(const GenICam::gcstring& name) const { return arguments_.count(name) != 0; }
    /// Raises InvalidArgumentException that names an argument which is not there.
    const Utils::Variant& getArgumentValue(const GenICam::gcstring& name) const
    {
        const auto found = arguments_.find(name);
        if (found == arguments_.end()) {
            GENICAM_THROW(InvalidArgumentException, "There is no start argument \"%s\".", name.c_str());
        }
        return found->second;
    }
    bool empty() const { return arguments_.empty(); }

private:
    std::map<GenICam::gcstring, Utils::Variant> arguments_;
};

}  // namespace Nivex::DataProcessing::Core

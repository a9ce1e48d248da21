#pragma once

#include <string>

#include "gcbase/exception.h"

#include "utils/log.h"

namespace Nivex::DataProcessing::Runtime {

/// Calls into a node where an exception must end: logs it, with the node's name and what it was doing, such as
/// "stopping". False if there was one.
template <typename Operation>
bool callNode(const std::string& node, const char* doing, const Operation& operation) noexcept
{
    try {
        operation();
        return true;
    } catch (...) {
        static const Utils::CatId category = Utils::getCatId("nivex.dataprocessing.runtime.Graph");
        Utils::createLogEntry(Utils::SeverityFailure, category,
                              "Graph: Exception caught while node \"%s\" was %s. Message: %s", node.c_str(), doing,
                              GenICam::describeCurrentException().c_str());
        return false;
    }
}

}  // namespace Nivex::DataProcessing::Runtime

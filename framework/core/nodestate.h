#pragma once

#include <cstdint>

namespace Nivex::DataProcessing::Core {

/// The states of a node:
///
///     Stopped --start()--> Starting --> Started --stop()--> Stopping --> Stopped
///                             |
///                             +-- onStarting() throws --> Stopped
///
/// Settings are loaded and saved in Stopped only. Allocation of resources is a second, independent state.
enum class NodeState : std::uint8_t
{
    Stopped,
    Starting,
    Started,
    Stopping
};

}  // namespace Nivex::DataProcessing::Core

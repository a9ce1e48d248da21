#pragma once

#include <memory>

#include "core/nodebase.h"
#include "runtime/jsonsettings.h"

namespace Host {

/// Raises RuntimeException if the node's class has no settings, and what the node raises.
void loadSettings(Nivex::DataProcessing::Core::NodeBase& node,
                  const std::shared_ptr<Nivex::DataProcessing::Core::ISettings>& settings);

/// What the node saves. Raises like loadSettings.
std::shared_ptr<Nivex::DataProcessing::Runtime::JsonSettings> saveSettings(
    Nivex::DataProcessing::Core::NodeBase& node);

}  // namespace Host

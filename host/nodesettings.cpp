#include "nodesettings.h"

#include "gcbase/exception.h"

#include "core/advancednode.h"
#include "core/simplenode.h"

namespace Host {

using namespace Nivex::DataProcessing;

namespace {

/// The two kinds of nodes that have settings share no class that declares them.
template <typename Act>
void withSettings(Core::NodeBase& node, const Act& act)
{
    if (auto* simple = dynamic_cast<Core::SimpleNode*>(&node)) {
        act(*simple);
    } else if (auto* advanced = dynamic_cast<Core::AdvancedNode*>(&node)) {
        act(*advanced);
    } else {
        GENICAM_THROW(RuntimeException, "The module has no settings.");
    }
}

}  // namespace

void loadSettings(Core::NodeBase& node, const std::shared_ptr<Core::ISettings>& settings)
{
    withSettings(node, [&](auto& kind) { kind.loadSettings(settings); });
}

std::shared_ptr<Runtime::JsonSettings> saveSettings(Core::NodeBase& node)
{
    auto settings = std::make_shared<Runtime::JsonSettings>();
    withSettings(node, [&](auto& kind) { kind.saveSettings(settings); });
    return settings;
}

}  // namespace Host

#include "core/advancednode.h"
#include "core/inodemapcontainer.h"
#include "core/simplenode.h"
#include "utils/typeregistrar.h"

namespace Nivex::DataProcessing::Core {

namespace {

const Utils::TypeRegistrar<NodeBase> nodeBaseRegistrar;
const Utils::TypeRegistrar<INodeMapContainer> nodeMapContainerRegistrar;
const Utils::TypeRegistrar<SimpleNode, NodeBase> simpleNodeRegistrar;
const Utils::TypeRegistrar<AdvancedNode, NodeBase> advancedNodeRegistrar;

}  // namespace

}  // namespace Nivex::DataProcessing::Core

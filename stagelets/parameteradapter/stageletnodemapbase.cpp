#include "parameteradapter/stageletnodemapbase.h"

#include "threading/uniquelock.h"

namespace Plugin::NivexStageletPackageBase {

namespace Threading = Nivex::DataProcessing::Threading;
using AnythingToNodeMapAdapter::CategoryParameterPort;
namespace LinkKey = AnythingToNodeMapAdapter::LinkKey;

StageletNodeMapBase::StageletNodeMapBase() : lock_(std::make_shared<Threading::RecursiveCLock>())
{
    adapter_.addParameter(std::make_shared<CategoryParameterPort>("Root", "", "", "", "Beginner"));
}

StageletNodeMapBase::~StageletNodeMapBase() = default;

void StageletNodeMapBase::addSelected(const char* selector, const char* selected)
{
    adapter_.addLink(LinkKey::selected, selector, selected);
}

void StageletNodeMapBase::build()
{
    Threading::UniqueLock<Threading::RecursiveCLock> guard(*lock_);
    adapter_.buildNodeMap(&lock_->getLock(), "ParameterPort", "");
}

GenApi::CNodeMapRef StageletNodeMapBase::getNodeMap() const
{
    struct MapAndLock
    {
        std::shared_ptr<Threading::RecursiveCLock> lock;
        GenApi::NodeMapPtr map;
    };
    Threading::UniqueLock<Threading::RecursiveCLock> guard(*lock_);
    const auto owner = std::make_shared<MapAndLock>(MapAndLock{lock_, adapter_.getNodeMap().GetNodeMap()});
    return GenApi::CNodeMapRef(GenApi::NodeMapPtr(owner, owner->map.get()));
}

GenApi::CNodeMapRef StageletNodeMapBase::getNodeMap(const GenICam::gcstring& mapIdentifier) const
{
    return mapIdentifier == identifier ? getNodeMap() : GenApi::CNodeMapRef();
}

}  // namespace Plugin::NivexStageletPackageBase

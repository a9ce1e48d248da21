#pragma once

#include <map>
#include <memory>

#include "base/infobase.h"

#include "core/ibufferprovider.h"
#include "threading/threadpool.h"
#include "utils/signal.h"
#include "utils/typeinfo.h"

namespace Nivex::DataProcessing::Core {

/// Describes a resource, such as a camera, or what is wanted of one: a set of properties.
class GENICAM_API ResourceInfo
{
public:
    ResourceInfo() = default;
    explicit ResourceInfo(const CInfoBase& info) : info_(info) {}

    const CInfoBase& getInfo() const { return info_; }
    friend bool operator<(const ResourceInfo& a, const ResourceInfo& b) { return a.info_ < b.info_; }

private:
    CInfoBase info_;
};

/// Something that nodes share or reserve.
class GENICAM_API IResource
{
public:
    virtual ~IResource() = default;
};

/// The resources of one recipe. Any thread may call any operation; none of them calls a node while it holds a lock
/// of its own.
class GENICAM_API IResourcePool
{
public:
    virtual ~IResourcePool() = default;

    virtual std::shared_ptr<Threading::ThreadPool> getThreadPool() = 0;
    virtual std::shared_ptr<IBufferProvider> getBufferProvider() = 0;

    /// The known resources of a type (or a type derived from it) whose description holds all properties of
    /// `wanted` with the same values; all of them if it is empty. The first query looks for them, which may take a
    /// second.
    virtual std::map<ResourceInfo, std::shared_ptr<IResource>> query(const Utils::TypeInfo& type,
                                                                     const ResourceInfo& wanted) = 0;
    /// Looks anew for resources of a type. Those that stayed keep their objects. Does nothing for a type that the
    /// pool does not know.
    virtual void refresh(const Utils::TypeInfo& type) = 0;
    /// Fired, on the thread that called `refresh`, after the list of resources changed.
    virtual Utils::ISignal<void()>& getResourcesChangedSignal() = 0;
};

}  // namespace Nivex::DataProcessing::Core

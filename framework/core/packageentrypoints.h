#pragma once

#include <cstdlib>
#include <cstring>
#include <memory>

#include "core/iresourcepool.h"
#include "core/nodebase.h"

/// What a package, a shared library loaded at run time, shows to a host: functions with C linkage, looked up by
/// these names. A host asks for the version, then for the manifest (a JSON text that names the modules), and makes
/// and destroys nodes by the functions named after their modules. All functions may be called from any thread.
/// The library must stay loaded while one of its nodes, or a value that one of them made, is alive.
namespace Nivex::DataProcessing::Core::Package {

/// The version of this interface.
inline constexpr int interfaceVersion = 2;

/// int get_InterfaceVersion()
inline constexpr const char* getInterfaceVersionName = "get_InterfaceVersion";
using GetInterfaceVersion = int (*)();

/// The manifest, as a new copy that the caller owns and gives back to destroy_Info.
inline constexpr const char* createStaticInfoName = "create_StaticInfo";
/// Information that depends on the system, owned by the caller; null if no module has any.
inline constexpr const char* createDynamicInfoName = "create_DynamicInfo";
using CreateInfo = char* (*)();

/// Frees the text that the holder points to (null is fine) and puts null there. The holder itself must not be
/// null.
inline constexpr const char* destroyInfoName = "destroy_Info";
using DestroyInfo = void (*)(char** holder);

/// What a package's functions of information do: copyInfo gives a text to its new owner, freeInfo ends it.
inline char* copyInfo(const char* text)
{
    return strdup(text);
}
inline void freeInfo(char** holder)
{
    std::free(*holder);
    *holder = nullptr;
}

/// Followed by the module's name. Gives a new node, which the caller owns and gives back to the module's destroy
/// function. What the node's constructor throws comes through; there is no null result.
inline constexpr const char* createNodePrefix = "create_";
using CreateNode = NodeBase* (*)(const std::shared_ptr<IResourcePool>& pool);

/// Followed by the module's name. Null is ignored.
inline constexpr const char* destroyNodePrefix = "destroy_";
using DestroyNode = void (*)(NodeBase* node);

}  // namespace Nivex::DataProcessing::Core::Package

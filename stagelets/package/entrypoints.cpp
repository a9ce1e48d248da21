// The package's face towards a host; see core/packageentrypoints.h. Nothing here but forwarding.
#include "camera/camera.h"
#include "core/packageentrypoints.h"
#include "datawriter/DataWriter.h"
#include "imageformatconverter/imageformatconverter.h"
#include "imageloading/imageloading.h"
#include "package/manifest.h"

namespace Core = Nivex::DataProcessing::Core;
namespace Package = Core::Package;
namespace Stagelets = Plugin::NivexStageletPackageBase;

using Pool = std::shared_ptr<Core::IResourcePool>;

extern "C" {

GENICAM_API int get_InterfaceVersion()
{
    return Package::interfaceVersion;
}

GENICAM_API char* create_StaticInfo()
{
    return Package::copyInfo(Stagelets::manifest);
}

GENICAM_API char* create_DynamicInfo()
{
    return nullptr;
}

GENICAM_API void destroy_Info(char** holder)
{
    Package::freeInfo(holder);
}

GENICAM_API Core::NodeBase* create_Camera(const Pool& pool)
{
    return new Stagelets::Camera(pool);
}

GENICAM_API void destroy_Camera(Core::NodeBase* node)
{
    delete node;
}

GENICAM_API Core::NodeBase* create_ImageFormatConverter(const Pool& pool)
{
    return new Stagelets::ImageFormatConverter(pool);
}

GENICAM_API void destroy_ImageFormatConverter(Core::NodeBase* node)
{
    delete node;
}

GENICAM_API Core::NodeBase* create_DataWriter(const Pool& pool)
{
    return new Stagelets::DataWriter(pool);
}

GENICAM_API void destroy_DataWriter(Core::NodeBase* node)
{
    delete node;
}

GENICAM_API Core::NodeBase* create_ImageLoading(const Pool& pool)
{
    return new Stagelets::ImageLoading(pool);
}

GENICAM_API void destroy_ImageLoading(Core::NodeBase* node)
{
    delete node;
}

}  // extern "C"

static_assert(std::is_same_v<decltype(&get_InterfaceVersion), Package::GetInterfaceVersion>);
static_assert(std::is_same_v<decltype(&create_StaticInfo), Package::CreateInfo>);
static_assert(std::is_same_v<decltype(&create_DynamicInfo), Package::CreateInfo>);
static_assert(std::is_same_v<decltype(&destroy_Info), Package::DestroyInfo>);
static_assert(std::is_same_v<decltype(&create_Camera), Package::CreateNode>);
static_assert(std::is_same_v<decltype(&destroy_Camera), Package::DestroyNode>);
static_assert(std::is_same_v<decltype(&create_ImageFormatConverter), Package::CreateNode>);
static_assert(std::is_same_v<decltype(&destroy_ImageFormatConverter), Package::DestroyNode>);
static_assert(std::is_same_v<decltype(&create_DataWriter), Package::CreateNode>);
static_assert(std::is_same_v<decltype(&destroy_DataWriter), Package::DestroyNode>);
static_assert(std::is_same_v<decltype(&create_ImageLoading), Package::CreateNode>);
static_assert(std::is_same_v<decltype(&destroy_ImageLoading), Package::DestroyNode>);

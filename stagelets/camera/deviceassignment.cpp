#include "camera/deviceassignment.h"

#include <algorithm>

#include "base/deviceinfo.h"

#include "camera/cameralog.h"
#include "core/ideviceresource.h"

namespace Plugin::NivexStageletPackageBase {

namespace Core = Nivex::DataProcessing::Core;
namespace Utils = Nivex::DataProcessing::Utils;
namespace Key = Nivex::Key;
using GenICam::gcstring;

namespace {

constexpr const char* assignmentKeys[] = {Key::DeviceClass,     Key::SerialNumber, Key::ModelName,
                                          Key::UserDefinedName, Key::IpAddress,    "_PortableIpConfigCurrent"};

Utils::TypeInfo deviceType()
{
    return Utils::TypeInfo::get<Core::IDeviceResource>();
}

/// One search among the cameras that the pool knows. Sets `device`, or gives the reason why there is none.
const char* tryReserve(Core::IResourcePool& pool, const Core::ResourceInfo& wanted,
                       std::unique_ptr<Nivex::INivexDevice>& device)
{
    const auto found = pool.query(deviceType(), wanted);
    if (found.empty()) return "No suitable camera found to allocate.";
    for (const auto& [info, resource] : found) {
        const auto camera = std::dynamic_pointer_cast<Core::IDeviceResource>(resource);
        if (!camera || !camera->isFree()) continue;
        device = camera->getDevice();
        return device ? nullptr : "Could not get camera device to allocate.";
    }
    return "No unused camera found to allocate.";
}

/// For the log: the refusals themselves don't say what was looked for. Empty if any camera will do.
gcstring describe(const Nivex::CInfoBase& wanted)
{
    GenICam::gcstring_vector names;
    wanted.GetPropertyNames(names);
    gcstring text;
    for (const gcstring& name : names) {
        gcstring value;
        wanted.GetPropertyValue(name, value);
        text += (text.empty() ? "" : ", ") + name + " = \"" + value + "\"";
    }
    return text;
}

}  // namespace

void getAssignmentProperties(const Core::ResourceInfo& device, DeviceProperties& properties)
{
    properties.clear();
    for (const char* key : assignmentKeys) {
        gcstring value;
        device.getInfo().GetPropertyValue(key, value);
        if (!value.empty()) properties.emplace_back(key, value);
    }
}

void DeviceAssignment::refresh(Core::IResourcePool& pool)
{
    pool.refresh(deviceType());
}

gcstring DeviceAssignment::getShown(const char* key) const
{
    const Core::ResourceInfo* device = devices_.selected();
    if (!device) return noDeviceListed;
    gcstring value;
    device->getInfo().GetPropertyValue(key, value);
    return value;
}

void DeviceAssignment::updateDevices(const Pool& pool)
{
    if (!pool) {
        Utils::createLogEntry(Utils::SeverityRefused, cameraChannel(),
                              "Camera %p: Failed to update resources because there is no resource pool available.",
                              node_);
        return;
    }
    std::vector<Core::ResourceInfo> devices;
    for (const auto& [info, resource] : pool->query(deviceType(), Core::ResourceInfo()))
        devices.push_back(info);
    std::size_t selected = devices_.index();
    if (const Core::ResourceInfo* before = devices_.selected()) {
        const auto same = std::find_if(devices.begin(), devices.end(), [before](const Core::ResourceInfo& info) {
            return info.getInfo() == before->getInfo();
        });
        if (same != devices.end()) selected = static_cast<std::size_t>(same - devices.begin());
    }
    devices_.assign(std::move(devices));
    devices_.select(selected);
}

Core::ResourceInfo DeviceAssignment::wanted() const
{
    Nivex::CDeviceInfo info;
    for (const auto& [key, value] : properties_.items()) {
        if (!key.empty() && !value.empty() && value != notYetConfigured) info.SetPropertyValue(key, value);
    }
    return Core::ResourceInfo(info);
}

std::unique_ptr<Nivex::INivexDevice> DeviceAssignment::reserve(Core::IResourcePool& pool, bool mayRefresh) const
{
    const Core::ResourceInfo info = wanted();
    std::unique_ptr<Nivex::INivexDevice> device;
    const char* failure = tryReserve(pool, info, device);
    if (failure && mayRefresh) {
        refresh(pool);
        failure = tryReserve(pool, info, device);
    }
    if (failure) {
        const gcstring properties = describe(info.getInfo());
        if (!properties.empty()) {
            Utils::createLogEntry(Utils::SeverityFailure, cameraChannel(),
                                  "Camera %p: A camera was wanted that has %s.", node_, properties.c_str());
        }
        NODE_REFUSE(RuntimeException, cameraLog, node_, "allocateAdditionalResources", failure);
    }
    return device;
}

}  // namespace Plugin::NivexStageletPackageBase

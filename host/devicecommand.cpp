#include "devicecommand.h"

#include <unistd.h>

#include <ostream>
#include <vector>

#include "cameras.h"
#include "console.h"
#include "core/ideviceresource.h"
#include "jsonbuild.h"
#include "texttable.h"

namespace Host {

using namespace Nivex;
using namespace Nivex::DataProcessing;

namespace {

struct FoundDevice
{
    CInfoBase info;
    bool isAccessible = false;

    std::string read(const char* key) const
    {
        GenICam::gcstring value;
        info.GetPropertyValue(key, value);
        return value.str();
    }
};

std::vector<FoundDevice> findDevices(std::size_t emulatedCameras)
{
    const auto found = makeResourcePool(emulatedCameras)->query(Utils::TypeInfo::get<Core::IDeviceResource>(), {});
    std::vector<FoundDevice> devices;
    devices.reserve(found.size());
    for (const auto& [info, resource] : found) {
        devices.push_back({info.getInfo(), dynamic_cast<Core::IDeviceResource&>(*resource).isFree()});
    }
    return devices;
}

JsonObject toJson(const FoundDevice& device)
{
    constexpr std::pair<const char*, const char*> keys[] = {
        {"full_name", Key::FullName}, {"serial_number", Key::SerialNumber},        {"model", Key::ModelName},
        {"vendor", Key::VendorName},  {"user_defined_name", Key::UserDefinedName}, {"class", Key::DeviceClass}};
    JsonObject object;
    for (const auto& [name, key] : keys)
        add(object, name, device.read(key));
    add(object, "accessible", device.isAccessible);
    JsonObject properties;
    GenICam::gcstring_vector names;
    device.info.GetPropertyNames(names);
    for (const GenICam::gcstring& name : names)
        add(properties, name.str(), device.read(name.c_str()));
    add(object, "properties", std::move(properties));
    return object;
}

}  // namespace

void showDevices(const DeviceOptions& options, std::ostream& out)
{
    const std::vector<FoundDevice> devices = findDevices(options.emulatedCameras);
    if (options.isJson) {
        JsonArray list;
        for (const FoundDevice& device : devices)
            add(list, toJson(device));
        JsonObject root;
        add(root, "schema", std::string("stagelet-devices/1"));
        add(root, "devices", std::move(list));
        out << formatJson(JsonValue(std::move(root)));
        return;
    }
    TextTable table({{"SERIAL NUMBER"}, {"MODEL"}, {"VENDOR"}, {"USER-DEFINED NAME"}, {"CLASS"}, {"STATE"}});
    for (const FoundDevice& device : devices) {
        std::vector<std::string> cells;
        for (const char* key :
             {Key::SerialNumber, Key::ModelName, Key::VendorName, Key::UserDefinedName, Key::DeviceClass})
            cells.push_back(device.read(key));
        cells.emplace_back(device.isAccessible ? "free" : "in use");
        table.addRow(std::move(cells));
    }
    out << table.toText(getTerminalWidth(STDOUT_FILENO));
    if (devices.empty()) {
        getConsole().writeLine("No camera was found.\ntry: --emulated-cameras 2, for some without hardware");
    }
}

}  // namespace Host

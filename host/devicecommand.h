#pragma once

#include <cstddef>
#include <iosfwd>

namespace Host {

struct DeviceOptions
{
    std::size_t emulatedCameras = 0;
    bool isJson = false;
};

/// Writes the cameras of all back ends to `out`, as a table or as {"schema": "stagelet-devices/1", "devices":
/// [...]} with all properties that a recipe may ask for. That there are none is said on stderr.
void showDevices(const DeviceOptions& options, std::ostream& out);

}  // namespace Host

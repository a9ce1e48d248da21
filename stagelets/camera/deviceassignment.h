#pragma once

#include <memory>
#include <utility>
#include <vector>

#include "gcbase/gcstring.h"

#include "base/camerabackend.h"

#include "camera/selectablelist.h"
#include "core/iresourcepool.h"

namespace Plugin::NivexStageletPackageBase {

/// A key and the value that a camera must have there.
using DeviceProperty = std::pair<GenICam::gcstring, GenICam::gcstring>;
using DeviceProperties = std::vector<DeviceProperty>;

/// A value that stands for none yet. Such a row asks nothing of a camera and is not saved.
inline constexpr const char* notYetConfigured = "<not yet configured>";
/// What is shown of a camera while no list of cameras is there.
inline constexpr const char* noDeviceListed = "No device listed";

/// Replaces `properties` by those that tell a camera from others and are the same next time it is found: class,
/// serial number, model, user-defined name and address, as far as the camera has them.
void getAssignmentProperties(const Nivex::DataProcessing::Core::ResourceInfo& device,
                             DeviceProperties& properties);

/// Which camera a node wants: the list of those that were found, and the properties that the one to be allocated
/// must have. Not synchronised: the node calls everything under its lock.
class DeviceAssignment
{
public:
    using Pool = std::shared_ptr<Nivex::DataProcessing::Core::IResourcePool>;

    /// @param node is the address that log entries name.
    explicit DeviceAssignment(const void* node) : node_(node) {}

    /// Has the pool look for cameras anew, which may take a second. To be called without the node's lock.
    static void refresh(Nivex::DataProcessing::Core::IResourcePool& pool);

    /// @name The cameras found
    std::int64_t getMaxDevice() const { return devices_.maxIndex(); }
    std::size_t getSelectedDevice() const { return devices_.index(); }
    void selectDevice(std::size_t index) { devices_.select(index); }
    /// Null while no camera is listed.
    const Nivex::DataProcessing::Core::ResourceInfo* getSelectedInfo() const { return devices_.selected(); }
    /// A property of the selected camera; empty if it has none of that name.
    GenICam::gcstring getShown(const char* key) const;
    /// Takes over the pool's cameras. The selected one stays selected if it is still there. Null is logged only.
    void updateDevices(const Pool& pool);

    /// @name The properties wanted
    SelectableList<DeviceProperty>& properties() { return properties_; }
    const SelectableList<DeviceProperty>& properties() const { return properties_; }

    /// Reserves the first free camera of the pool, in the order of the pool's answer, that has all properties
    /// wanted; rows that lack key or value ask nothing. If there is none, and with `mayRefresh`, the pool looks
    /// anew once. Raises RuntimeException, logged: no camera fits, all that fit are in use, or the free one went
    /// to somebody else; passes on what the pool raises.
    std::unique_ptr<Nivex::INivexDevice> reserve(Nivex::DataProcessing::Core::IResourcePool& pool,
                                                 bool mayRefresh) const;

private:
    Nivex::DataProcessing::Core::ResourceInfo wanted() const;

    const void* node_;
    SelectableList<Nivex::DataProcessing::Core::ResourceInfo> devices_;
    SelectableList<DeviceProperty> properties_;
};

}  // namespace Plugin::NivexStageletPackageBase

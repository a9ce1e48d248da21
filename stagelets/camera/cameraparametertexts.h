#pragma once

#include <array>

#include "camera/cameraenums.h"
#include "parameteradapter/stageletnodemapbase.h"

// The texts of the camera's parameters, in the order in which users see them.

namespace Plugin::NivexStageletPackageBase::CameraTexts {

/// A category, and the texts of the parameters in it further down.
struct CategoryRow
{
    const char* name;
    const char* displayName;
    const char* toolTip;
    const char* description;
};

inline constexpr CategoryRow acquisitionControl{
    "AcquisitionControl", "Acquisition Control",
    "Contains Camera Stagelet parameters for controlling image acquisition.",
    "Contains Camera Stagelet parameters for controlling image acquisition."};
inline constexpr CategoryRow deviceEnumerationControl{
    "DeviceEnumerationControl", "Device Enumeration Control",
    "Contains Camera Stagelet parameters for controlling device enumeration.",
    "Camera Stagelet parameters for controlling device enumeration. The devices found by the enumeration can be "
    "assigned to a Camera Stagelet. Also, you can specify properties that a device must fulfil in order to be "
    "assigned."};
inline constexpr CategoryRow selectedDeviceInformation{
    "SelectedDeviceInformation", "Selected Device Information",
    "Contains parameters with information about the camera selected by the camera Stagelet.",
    "Contains parameters with information about the camera selected by the camera Stagelet."};
inline constexpr CategoryRow eventOutputControl{"EventOutputControl", "Event Output Control",
                                                "Contains parameters for configuring event output pins.",
                                                "Contains parameters for configuring event output pins."};
inline constexpr CategoryRow chunkOutputControl{"ChunkOutputControl", "Chunk Data Output Control",
                                                "Contains parameters for configuring chunk data output pins.",
                                                "Contains parameters for configuring chunk data output pins."};
inline constexpr CategoryRow configurationSetPersistence{
    "ConfigurationSetPersistence", "Configuration Set Persistence",
    "Contains parameters for saving the settings of a camera device and related settings persistently in a recipe "
    "after you have configured the parameters.",
    "Contains parameters for saving the settings of a camera device and related settings persistently in a recipe "
    "after you have configured the parameters."};

/// A text for both, tool tip and description.
constexpr PortTexts same(const char* name, const char* displayName, const char* text)
{
    return {name, displayName, text, text};
}

// SelectedDeviceInformation

#define CAMERA_SET_AT_ALLOCATION \
    "This value only is set when the Camera Stagelet resources are allocated, e.g., when the recipe is started."
inline constexpr PortTexts selectedDeviceModelName{
    "SelectedDeviceModelName", "Selected Device Model Name", "Name of the selected device model.",
    "Name of the selected device model. " CAMERA_SET_AT_ALLOCATION, "Beginner"};
inline constexpr PortTexts selectedDeviceSerialNumber{
    "SelectedDeviceSerialNumber", "Selected Device Serial Number", "Serial number of the selected device.",
    "Serial number of the selected device. " CAMERA_SET_AT_ALLOCATION, "Beginner"};
inline constexpr PortTexts selectedDeviceVendorName{
    "SelectedDeviceVendorName", "Selected Device Vendor Name", "Name of the vendor of the selected device.",
    "Name of the vendor of the selected device. " CAMERA_SET_AT_ALLOCATION, "Beginner"};
inline constexpr PortTexts selectedDeviceUserDefinedName{
    "SelectedDeviceUserDefinedName", "Selected Device User Defined Name",
    "User-defined name of the selected device.",
    "User-defined name of the selected device. " CAMERA_SET_AT_ALLOCATION, "Beginner"};
#undef CAMERA_SET_AT_ALLOCATION

// AcquisitionControl

inline constexpr PortTexts acquisitionMode =
    same("AcquisitionMode", "Acquisition Mode", "Sets the image acquisition mode.");
inline constexpr std::array<EnumEntryRow<AcquisitionMode>, 2> acquisitionModes = {{
    {AcquisitionMode::SingleFrame, "SingleFrame", "Single Frame",
     "The Camera Stagelet acquires only one image and stops the acquisition after that image.",
     "The Camera Stagelet acquires only one image and stops the acquisition after that image. The recipe will not "
     "be stopped automatically."},
    {AcquisitionMode::Continuous, "Continuous", "Continuous", "The Camera Stagelet acquires images continuously.",
     "The Camera Stagelet acquires images continuously. The actual number of images acquired depends on the "
     "settings of the camera device."},
}};

// sic: ouptput
inline constexpr PortTexts fixCorruptImages{
    "FixCorruptImages", "Fix Corrupt Images", "Enables the Fix Corrupt Images feature.",
    "Enables the Fix Corrupt Images feature. Images marked as failed by the Nivex acquisition "
    "engine, e.g., because of image content lost in transfer, are corrected and provided at the "
    "ouptput by using a best effort approach."};
inline constexpr std::array<EnumEntryRow<FixCorruptImages>, 2> fixCorruptImagesEntries = {{
    {FixCorruptImages::On, "On", "On", "The Fix Corrupt Images feature is enabled.",
     "The Fix Corrupt Images feature is enabled."},
    {FixCorruptImages::Off, "Off", "Off", "The Fix Corrupt Images feature is disabled.",
     "The Fix Corrupt Images feature is disabled."},
}};

// DeviceEnumerationControl

inline constexpr PortTexts deviceListUpdate{
    "DeviceListUpdate", "Device List Update", "Updates the internal device list.",
    "Updates the internal device list by performing a device enumeration. This allows you to review certain "
    "information about the individual cameras to help you pick the desired camera."};
inline constexpr PortTexts deviceSelector{
    "DeviceSelector", "Device Selector",
    "Device that will be selected when the Device Choose command is executed.",
    "Device that will be selected when the Device Choose command is executed. Using the Device Update List "
    "command refreshes the devices you can select."};

#define CAMERA_CHANGES_WITH_LIST                                                                             \
    "This value only changes when the Device Update List command is executed or when you change the device " \
    "selected by the Device Selector parameter."
inline constexpr PortTexts deviceModelName{"DeviceModelName", "Device Model Name", "Name of the device model.",
                                           "Name of the device model. " CAMERA_CHANGES_WITH_LIST};
inline constexpr PortTexts deviceVendorName{"DeviceVendorName", "Device Vendor Name", "Name of the device vendor.",
                                            "Name of the device vendor. " CAMERA_CHANGES_WITH_LIST};
inline constexpr PortTexts deviceSerialNumber{"DeviceSerialNumber", "Device Serial Number",
                                              "Serial number of the device.",
                                              "Serial number of the device. " CAMERA_CHANGES_WITH_LIST};
inline constexpr PortTexts deviceUserDefinedName{"DeviceUserDefinedName", "Device User Defined Name",
                                                 "User-defined ID of the device.",
                                                 "User-defined ID of the device. " CAMERA_CHANGES_WITH_LIST};
#undef CAMERA_CHANGES_WITH_LIST

inline constexpr PortTexts deviceChoose{
    "DeviceChoose", "Device Choose",
    "Assigns the camera selected by the Device Selector parameter to the Camera Stagelet and updates the "
    "properties of the device.",
    "Assigns the camera selected by the Device Selector parameter to the Camera Stagelet and updates the "
    "properties of the device. After selecting a camera, an exclusive connection to the camera is established "
    "when the resources for the Camera Stagelet are allocated, e.g., when the recipe is started."};
inline constexpr PortTexts devicePropertySelector =
    same("DevicePropertySelector", "Device Property Selector",
         "Device property whose values are displayed and can be edited.");
inline constexpr PortTexts devicePropertyKey =
    same("DevicePropertyKey", "Device Property Key",
         "Key of the Nivex device's info property selected by the Device Property Selector parameter.");
inline constexpr PortTexts devicePropertyValue =
    same("DevicePropertyValue", "Device Property Value",
         "Value of the Nivex device's info property selected by the Device Property Selector parameter.");
inline constexpr PortTexts devicePropertyAdd{"DevicePropertyAdd", "Device Property Add",
                                             "Adds an empty device property.",
                                             "Adds an empty device property. This can be used to specify another "
                                             "property that a device must fulfil in order to be selected."};
inline constexpr PortTexts devicePropertyRemove =
    same("DevicePropertyRemove", "Device Property Remove", "Removes the selected device property.");

// EventOutputControl

inline constexpr PortTexts eventPinSelector =
    same("EventPinSelector", "Event Pin Selector", "Event output pin that can be configured.");
inline constexpr PortTexts eventPinConfiguration{
    "EventPinConfiguration", "Event Pin Configuration",
    "String that maps a camera's event to the Stagelet's output pin.",
    "String that maps a camera's event to the Stagelet's output pin. It names the pin, the type of its values "
    "(Boolean, Float, Integer or String), the event as the camera's Event Selector lists it, and the camera "
    "parameter whose value is output each time the event arrives. Example: "
    "ExposureEnd.Type=Integer.EventName=ExposureEnd.ValueName=EventExposureEnd. The pin name must be unique among "
    "all output pins of the Stagelet."};
inline constexpr PortTexts eventPinAdd{"EventPinAdd", "Event Pin Add", "Adds an event output pin.",
                                       "Adds a event output pin that you can configure. The corresponding event "
                                       "notification has to be enabled on the camera."};  // sic
inline constexpr PortTexts eventPinRemove =
    same("EventPinRemove", "Event Pin Remove", "Removes the selected event output pin.");

// ChunkOutputControl

inline constexpr PortTexts chunkPinSelector =
    same("ChunkPinSelector", "Chunk Pin Selector", "Chunk data output pin that can be configured.");
inline constexpr PortTexts chunkPinConfiguration{
    "ChunkPinConfiguration", "Chunk Pin Configuration",
    "String that maps a camera's data chunk to the Stagelet's output pin.",
    "String that maps a camera's data chunk to the Stagelet's output pin. It names the pin, the type of its "
    "values (Boolean, Float, Integer or String), and the chunk parameter whose value is output with each image. "
    "Example: ExposureTime.Type=Float.ValueName=ChunkExposureTime. The pin name must be unique among all output "
    "pins of the Stagelet. Where the value depends on a selector, SelectorName and SelectorValue say how to set "
    "it."};
inline constexpr PortTexts chunkPinAdd{"ChunkPinAdd", "Chunk Pin Add", "Adds a chunk data output pin.",
                                       "Adds a chunk data output pin that you can configure. The corresponding "
                                       "data chunk has to be enabled on the camera."};
inline constexpr PortTexts chunkPinRemove =
    same("ChunkPinRemove", "Chunk Pin Remove", "Removes the selected chunk data output pin.");

// ConfigurationSetPersistence

inline constexpr PortTexts configurationSetSelector{
    "ConfigurationSetSelector", "Configuration Set Selector",
    "Sets which configuration set you want to work with.",
    "Sets which configuration set you want to work with. There is one set for each group of parameters that "
    "belongs to a camera: those of the camera itself, and those of the software between camera and recipe. All "
    "other parameters of this category act on the set selected here."};
inline constexpr std::array<EnumEntryRow<StreamType>, 4> configurationSets = {{
    {StreamType::CameraDevice, "CameraDevice", "Camera",
     "The parameters of the camera device are used for any subsequent tasks.",
     "The parameters of the camera device are used for any subsequent tasks."},
    {StreamType::CameraInstance, "CameraInstance", "Camera Instance",
     "The parameters of the Instant Camera class are used for any subsequent tasks.",
     "The parameters of the Instant Camera class are used for any subsequent tasks."},
    {StreamType::DeviceTransportLayer, "DeviceTransportLayer", "Device Transport Layer",
     "The parameters of the device/host transport layer are used for any subsequent tasks.",
     "The parameters of the device/host transport layer are used for any subsequent tasks."},
    {StreamType::StreamGrabber, "StreamGrabber", "Stream Grabber",
     "The parameters of the stream grabber are used for any subsequent tasks.",
     "The parameters of the stream grabber are used for any subsequent tasks."},
}};

inline constexpr PortTexts configurationSetFetch{
    "ConfigurationSetFetch", "Configuration Set Fetch",
    "Fetches the selected configuration set from the camera device and stores it in Configuration Set Staged.",
    "Fetches the selected configuration set from the camera device and stores it in Configuration Set Staged. The "
    "present values of all parameters that can be saved are read. This requires that the camera is in use, i.e., "
    "that the resources of the Camera Stagelet are allocated; only the set of the Camera Instance can be fetched "
    "at any time. Nothing is stored in the recipe until Configuration Set Commit is executed."};
inline constexpr PortTexts configurationSetStaged{
    "ConfigurationSetStaged", "Configuration Set Staged",
    "Configuration set that will be stored in the recipe when the Configuration Set Commit command is executed.",
    "Configuration set that will be stored in the recipe when the Configuration Set Commit command is executed. "
    "You can edit the text: each line holds the name of a parameter, a tab and its value. Writing Name = Value "
    "works as well. Lines that begin with # are comments. Delete the lines of parameters that the recipe is not "
    "to change."};
inline constexpr PortTexts configurationSetCommit{
    "ConfigurationSetCommit", "Configuration Set Commit",
    "Applies the configuration set and stores the settings in Configuration Set Active.",
    "Applies the configuration set and stores the settings in Configuration Set Active. If the camera is in use, "
    "the settings are written to it at once, and only if that succeeds are they stored. If not, they are written "
    "when the resources of the Camera Stagelet are allocated, e.g., when the recipe is started. Save the recipe "
    "to keep them."};
inline constexpr PortTexts configurationSetActive{
    "ConfigurationSetActive", "Configuration Set Active", "Configuration set stored in the recipe.",
    "Configuration set stored in the recipe. Its settings are written to the camera each time the resources of "
    "the Camera Stagelet are allocated, e.g., when the recipe is started. It is empty if the recipe leaves these "
    "parameters of the camera as they are."};
inline constexpr PortTexts configurationSetClear{
    "ConfigurationSetClear", "Configuration Set Clear",
    "Clears the content of the Configuration Set Active and Configuration Set Staged parameters.",
    "Clears the content of the Configuration Set Active and Configuration Set Staged parameters for the selected "
    "configuration set. The camera keeps the settings it has, and the recipe does not change them any more."};

}  // namespace Plugin::NivexStageletPackageBase::CameraTexts

#pragma once

#include "base/infobase.h"

namespace Nivex {

/// The names of the properties that describe a device.
namespace Key {
inline constexpr const char* DeviceClass = "DeviceClass";  ///< Which back end the device belongs to.
inline constexpr const char* FullName = "FullName";        ///< Unique among all devices of this computer.
inline constexpr const char* FriendlyName = "FriendlyName";
inline constexpr const char* ModelName = "ModelName";
inline constexpr const char* SerialNumber = "SerialNumber";
inline constexpr const char* VendorName = "VendorName";
inline constexpr const char* UserDefinedName = "UserDefinedName";
inline constexpr const char* IpAddress = "IpAddress";
}  // namespace Key

/// Describes a camera, or what is wanted of one, as a property bag.
class GENICAM_API CDeviceInfo : public CInfoBase
{
public:
    CDeviceInfo() = default;
    explicit CDeviceInfo(const CInfoBase& properties) : CInfoBase(properties) {}
    ~CDeviceInfo() override;
    CDeviceInfo(const CDeviceInfo&) = default;
    CDeviceInfo(CDeviceInfo&&) noexcept = default;
    CDeviceInfo& operator=(const CDeviceInfo&) = default;
    CDeviceInfo& operator=(CDeviceInfo&&) noexcept = default;

    // Each is empty if the property is not there.

    GenICam::gcstring GetDeviceClass() const { return Read(Key::DeviceClass); }
    GenICam::gcstring GetFullName() const { return Read(Key::FullName); }
    GenICam::gcstring GetFriendlyName() const { return Read(Key::FriendlyName); }
    GenICam::gcstring GetModelName() const { return Read(Key::ModelName); }
    GenICam::gcstring GetSerialNumber() const { return Read(Key::SerialNumber); }
    GenICam::gcstring GetVendorName() const { return Read(Key::VendorName); }
    GenICam::gcstring GetUserDefinedName() const { return Read(Key::UserDefinedName); }

private:
    GenICam::gcstring Read(const char* name) const;
};

}  // namespace Nivex

#pragma once

#include <cstdint>

// The enumerations of the camera node's parameters.

namespace Plugin::NivexStageletPackageBase {

/// How many images a start of the recipe acquires.
enum class AcquisitionMode : std::uint32_t
{
    SingleFrame = 0,
    Continuous = 1
};

/// Whether images that were damaged in the transfer are put out all the same. Mind that On is 0.
enum class FixCorruptImages : std::uint32_t
{
    On = 0,
    Off = 1
};

/// The node map that a configuration set belongs to.
enum class StreamType : std::uint32_t
{
    CameraDevice = 0,
    CameraInstance = 1,
    DeviceTransportLayer = 2,
    StreamGrabber = 3
};

}  // namespace Plugin::NivexStageletPackageBase

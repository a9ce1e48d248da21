#pragma once

#include <array>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <optional>

#include "base/emulation/frametables.h"
#include "base/emulation/picturesource.h"

namespace Nivex::Emulation {

/// What the stream needs to know of the registers for a frame.
struct FrameSettings
{
    std::array<std::optional<PictureSettings>, std::size(components)> pictures;  ///< Of enabled components.
    std::array<bool, std::size(chunks)> chunkEnabled{};
    bool hasChunks = false;
    bool waitsForTrigger = false;
    std::optional<double> frameRate;  ///< None: as fast as it can.
    std::chrono::nanoseconds exposure{};
    std::uint64_t failedEvery = 0;
    const FrameFault* fault = nullptr;
    std::uint64_t lostEvery = 0;
    std::uint64_t lostNumber = 0;
    std::uint64_t damagedEvery = 0;

    /// Bytes of a frame.
    std::size_t PayloadSize() const;
};

}  // namespace Nivex::Emulation

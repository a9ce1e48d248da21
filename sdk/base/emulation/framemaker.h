#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>

#include "base/camerabackend.h"
#include "base/emulation/framesettings.h"
#include "base/emulation/frametables.h"
#include "base/emulation/picturesource.h"

namespace Nivex::Emulation {

/// What is particular to one frame.
struct FrameFacts
{
    std::uint64_t number = 0;     ///< From 1.
    std::uint64_t timestamp = 0;  ///< When its exposure began, in ns.
};

/// Writes frames into buffers: the pictures of the enabled components one behind the other; with chunks, these
/// together are the first chunk, and the chunks of data follow. Used by one thread.
class FrameMaker
{
public:
    /// Looks at folders anew with the next Prepare.
    void ForgetFiles();
    /// Gets pictures ready; that takes a while if they are others than before. If it fails, frames fail.
    void Prepare(const FrameSettings& settings);
    SFrame Make(const SStreamBuffer& buffer, const FrameFacts& facts);

private:
    /// Gives an empty text, or why a picture is missing.
    std::string MakePictures(SFrame& frame, const FrameFacts& facts);
    void AppendChunks(SFrame& frame, const FrameFacts& facts) const;

    FrameSettings settings_;
    std::size_t payloadSize_ = 0;  ///< Of settings_.
    std::array<PictureSource, std::size(components)> sources_;
    std::string fault_ = "No frame was prepared.";  ///< Why there are no pictures; else empty.
};

}  // namespace Nivex::Emulation

#pragma once

#include <cstdint>
#include <string>

#include "utility/video/fragmentedfile.h"

namespace Nivex::Video {

/// Brings a video of fragments into the form of an ordinary file with one index, which takes its place in one
/// step.
/// @param rate of its pictures, which the new file repeats exactly
/// @param packetCount that it holds
/// Raises RuntimeException that names path and cause, also if there are not that many; the file is as before then,
/// and nothing else is left.
void replaceByIndexedCopy(const std::string& path, PictureRate rate, std::uint64_t packetCount);

}  // namespace Nivex::Video

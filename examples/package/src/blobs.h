#pragma once

#include <cstdint>
#include <vector>

namespace Inspection {

/// Which pixels belong to blobs. The two divide every picture without a rest.
enum class Polarity : std::uint32_t
{
    Bright = 0,  ///< Those of the threshold and above.
    Dark = 1     ///< Those below the threshold.
};

struct BlobSettings
{
    Polarity polarity = Polarity::Bright;
    std::int64_t threshold = 128;
    std::int64_t minArea = 20;  ///< Smaller blobs are noise.
};

/// A grey picture in memory, 8 bits a pixel, its rows without padding.
struct GreyPicture
{
    const std::uint8_t* pixels;
    int width;
    int height;
};

/// A group of pixels that touch each other at edges or corners. Lengths are in pixels; X goes right and Y down
/// from the picture's top left corner, so that the first pixel's centre lies at (0.5, 0.5).
struct Blob
{
    int area = 0;
    int left = 0, top = 0, width = 0, height = 0;
    double centerX = 0.0, centerY = 0.0;
    double majorRadius = 0.0, minorRadius = 0.0;  ///< Of the ellipse that has the same second moments.
    double rotation = 0.0;    ///< Of the major axis from X, counterclockwise as seen, in radians, -pi/2 to pi/2.
    double brightness = 0.0;  ///< The mean of its pixels.
};

/// All blobs of at least the minimum area, in the order in which their first pixels are read.
std::vector<Blob> findBlobs(const GreyPicture& picture, const BlobSettings& settings);

}  // namespace Inspection

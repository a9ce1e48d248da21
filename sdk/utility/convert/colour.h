#pragma once

#include "utility/convert/lines.h"
#include "utility/pixeltype.h"

namespace Nivex::Pixels {

/// The three raw lines around a row. Each has a valid sample before its first and behind its last pixel.
template <typename T>
struct RawWindow
{
    const T* above;
    const T* row;
    const T* below;
};

/// Fills the missing colours of one row by bilinear interpolation: the mean of the two or four nearest samples of
/// that colour, rounded half up. `row` counts from the first row in memory.
template <typename T>
void demosaic(const RawWindow<T>& window, EBayerOrder order, std::size_t row, std::size_t width,
              const Channels<T>& rgb);

/// Writes the samples that mirror a line at its first and last pixel, these not repeated, so that the pattern goes
/// on. A line of one pixel repeats it.
template <typename T>
void mirrorEnds(T* line, std::size_t width);

/// The stage from one kind of line to another; null for 16-bit lines and Yuv. `from` is not Raw, `to` neither.
/// Full-range equations (luma 0.299, 0.587, 0.114), rounded half up and clamped, exactly.
template <typename T>
ColourStage<T> findColourStage(LineKind from, LineKind to);

}  // namespace Nivex::Pixels

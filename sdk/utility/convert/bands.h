#pragma once

#include <cstddef>
#include <functional>

namespace Nivex::Pixels {

/// Splits 0 to `count` into `bandCount` ranges of near equal length and calls `work(band, begin, end)` for each at
/// the same time, the first on the calling thread. Returns when all have ended. A band that gets no thread of its
/// own runs on the calling one. `work` must not throw.
void forEachBand(std::size_t bandCount, std::size_t count,
                 const std::function<void(std::size_t band, std::size_t begin, std::size_t end)>& work);

}  // namespace Nivex::Pixels

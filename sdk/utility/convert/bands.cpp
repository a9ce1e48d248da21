#include "utility/convert/bands.h"

#include <system_error>
#include <thread>
#include <vector>

namespace Nivex::Pixels {

void forEachBand(std::size_t bandCount, std::size_t count,
                 const std::function<void(std::size_t, std::size_t, std::size_t)>& work)
{
    const auto runBand = [&](std::size_t band) {
        work(band, count * band / bandCount, count * (band + 1) / bandCount);
    };
    std::vector<std::jthread> threads;
    threads.reserve(bandCount);
    std::size_t started = 1;
    try {
        for (; started < bandCount; ++started)
            threads.emplace_back(runBand, started);
    } catch (const std::system_error&) {
        // No more threads to be had: the calling one takes the rest.
    }
    runBand(0);
    for (std::size_t band = started; band < bandCount; ++band)
        runBand(band);
}

}  // namespace Nivex::Pixels

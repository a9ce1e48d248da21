// Image conversion: every input to a mono, an 8-bit and a 16-bit colour output, in megapixels per second, on one
// thread. "ratio" is the share of memory speed: the time of reading the source and writing the result with memcpy,
// measured in the same run, over the time of the conversion.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "utility/imageformatconverter.h"
#include "utility/niveximage.h"
#include "utility/pixelformats.h"

namespace {

using namespace Nivex;

using Clock = std::chrono::steady_clock;

constexpr double secondsPerRow = 0.03;

struct Size
{
    std::uint32_t width;
    std::uint32_t height;
};

std::vector<std::uint8_t> randomBytes(std::size_t size)
{
    std::mt19937_64 random(1);
    std::vector<std::uint64_t> words(size / 8 + 1);
    for (std::uint64_t& word : words)
        word = random();
    std::vector<std::uint8_t> bytes(size);
    std::memcpy(bytes.data(), words.data(), size);
    return bytes;
}

// Seconds per byte of a copy of that many bytes; a copy reads and writes each byte once.
double copySecondsPerByte(std::size_t size)
{
    const std::vector<std::uint8_t> from(size, 1);
    std::vector<std::uint8_t> to(size, 2);
    double best = 1;
    for (int i = 0; i < 5; ++i) {
        const Clock::time_point start = Clock::now();
        std::memcpy(to.data(), from.data(), size);
        benchmark::DoNotOptimize(to.data());
        benchmark::ClobberMemory();
        best = std::min(best, std::chrono::duration<double>(Clock::now() - start).count());
    }
    return best / static_cast<double>(size);
}

void convert(benchmark::State& state, EPixelType input, EPixelType output, Size size)
{
    const std::vector<std::uint8_t> source =
        randomBytes(ComputeImageSize(input, size.width, size.height, 0).value());
    CImageFormatConverter converter;
    converter.OutputPixelFormat.SetValue(output);
    converter.MaxNumThreads.SetValue(1);
    CNivexImage destination;
    const auto run = [&] {
        converter.Convert(destination, source.data(), source.size(), input, size.width, size.height, 0,
                          EImageOrientation::TopDown);
        benchmark::ClobberMemory();
    };
    run();
    const std::size_t bytes = source.size() + destination.GetImageSize();
    const double copySeconds = copySecondsPerByte(bytes / 2) * static_cast<double>(bytes) / 2;
    Clock::duration spent{};
    while (state.KeepRunning()) {
        const Clock::time_point start = Clock::now();
        run();
        spent += Clock::now() - start;
    }
    const double seconds = std::chrono::duration<double>(spent).count() / static_cast<double>(state.iterations());
    state.counters["MPix/s"] = static_cast<double>(size.width) * size.height / seconds / 1e6;
    state.counters["ratio"] = copySeconds / seconds;
    state.SetLabel("to memcpy");
}

// Bayer orders take the same path: one of them stands for all.
bool isMeasured(EPixelType input)
{
    return CImageFormatConverter::IsSupportedInputFormat(input) &&
           BayerOrder(input).value_or(EBayerOrder::RG) == EBayerOrder::RG;
}

void registerRows()
{
    for (const Size size : {Size{1920, 1080}, Size{4096, 3000}}) {
        for (const PixelFormat& format : GetPixelFormats()) {
            const auto input = static_cast<EPixelType>(format.value);
            if (!isMeasured(input)) continue;
            for (const EPixelType output : {EPixelType::Mono8, EPixelType::BGR8Packed, EPixelType::RGB16Packed}) {
                const std::string name = "convert/" + std::string(format.name) + "/" + GetPixelTypeName(output) +
                                         "/" + std::to_string(size.width) + "x" + std::to_string(size.height);
                benchmark::RegisterBenchmark(name.c_str(), convert, input, output, size)
                    ->Unit(benchmark::kMicrosecond)
                    ->MinTime(secondsPerRow);
            }
        }
    }
}

}  // namespace

int main(int argc, char** argv)
{
    registerRows();
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}

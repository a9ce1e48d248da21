// Draws the sample images: a conveyor belt with parts that moves on from picture to picture and begins anew after
// the last, taken by a camera with noise, in all formats and pixel types that image files hold.

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <memory>
#include <random>
#include <string>

#include "utility/imagepersistence.h"
#include "utility/niveximage.h"

#include "make_samples/beltscene.h"

namespace {

using namespace Samples;
using Nivex::CNivexImage;
using Nivex::EImageFileFormat;
using Nivex::EPixelType;
using Frame = std::array<std::array<Vec3, frameWidth>, frameHeight>;

struct FileKind
{
    int count;
    EImageFileFormat format;
    EPixelType pixelType;
    const char* ending;
};

// As many frames as there are, from the first on.
constexpr FileKind fileKinds[] = {
    {5, EImageFileFormat::Jpeg, EPixelType::RGB8Packed, ".jpg"},
    {4, EImageFileFormat::Png, EPixelType::RGB8Packed, ".png"},
    {1, EImageFileFormat::Bmp, EPixelType::BGR8Packed, ".bmp"},
    {2, EImageFileFormat::Tiff, EPixelType::RGB8Packed, ".tiff"},
    {1, EImageFileFormat::Png, EPixelType::RGB16Packed, ".png"},
    {3, EImageFileFormat::Bmp, EPixelType::Mono8, ".bmp"},
    {3, EImageFileFormat::Png, EPixelType::Mono8, ".png"},
    {2, EImageFileFormat::Tiff, EPixelType::Mono16, ".tif"},
    {1, EImageFileFormat::Png, EPixelType::Mono16, ".png"},
    {2, EImageFileFormat::Jpeg, EPixelType::Mono8, ".jpg"},
};

/// The light on each pixel, averaged over its surface.
void expose(const BeltScene& scene, double shift, Frame& frame)
{
    constexpr int samples = 3;
    for (int y = 0; y < frameHeight; ++y) {
        for (int x = 0; x < frameWidth; ++x) {
            Vec3 sum;
            for (int row = 0; row < samples; ++row) {
                for (int column = 0; column < samples; ++column) {
                    const double dx = (column + 0.5) / samples;
                    const double dy = (row + 0.5) / samples;
                    sum = sum + scene.light({x + dx, y + dy}, shift);
                }
            }
            frame[static_cast<std::size_t>(y)][static_cast<std::size_t>(x)] = sum * (1.0 / (samples * samples));
        }
    }
}

/// What a 12-bit sensor makes of light, with the noise of photons and of reading, on the curve of displays.
class Sensor
{
public:
    explicit Sensor(std::uint32_t seed) : random_(seed) {}

    /// 0 to 1, in steps of 12 bits.
    double value(double light)
    {
        constexpr double wellElectrons = 11000;
        constexpr double readNoise = 9;
        const double electrons = std::max(0.0, light) * wellElectrons;
        const double seen = electrons + gauss() * std::sqrt(electrons + readNoise * readNoise);
        const double linear = std::clamp(seen / wellElectrons, 0.0, 1.0);
        return std::round(std::pow(linear, 1 / 2.2) * 4095) / 4095;
    }

private:
    /// Near enough to a normal distribution, and the same everywhere.
    double gauss()
    {
        double sum = -3;
        for (int i = 0; i < 6; ++i) {
            sum += random_() / 4294967296.0;
        }
        return sum * std::numbers::sqrt2;
    }

    std::mt19937 random_;
};

void storeValue(std::uint8_t* to, bool isDeep, double value)
{
    const auto deep = static_cast<std::uint32_t>(std::lround(value * 4095) << 4);
    to[0] = static_cast<std::uint8_t>(isDeep ? deep : deep >> 8);
    if (isDeep) to[1] = static_cast<std::uint8_t>(deep >> 8);
}

CNivexImage develop(const Frame& frame, EPixelType pixelType, std::uint32_t seed)
{
    CNivexImage image;
    image.Reset(pixelType, frameWidth, frameHeight);
    const bool isGrey = Nivex::IsMonochrome(pixelType);
    const bool isDeep = Nivex::BitDepth(pixelType) == 16;
    Sensor sensor(seed);
    auto* to = static_cast<std::uint8_t*>(image.GetBuffer());
    for (const auto& row : frame) {
        for (const Vec3& light : row) {
            std::array<double, 3> channels = {light.x, light.y, light.z};
            if (isGrey) channels = {0.30 * light.x + 0.59 * light.y + 0.11 * light.z};
            if (pixelType == EPixelType::BGR8Packed) std::swap(channels[0], channels[2]);
            for (std::size_t c = 0; c < (isGrey ? 1 : 3); ++c, to += isDeep ? 2 : 1) {
                storeValue(to, isDeep, sensor.value(channels[c]));
            }
        }
    }
    return image;
}

void makeSamples(const std::filesystem::path& folder)
{
    constexpr std::uint32_t seed = 20;
    const BeltScene scene(seed);
    std::filesystem::create_directories(folder);
    auto frame = std::make_unique<Frame>();
    int number = 0;
    for (const FileKind& kind : fileKinds) {
        for (int i = 0; i < kind.count; ++i, ++number) {
            expose(scene, number * double{beltStep}, *frame);
            char name[32];
            std::snprintf(name, sizeof name, "belt_%02d%s", number + 1, kind.ending);
            const CNivexImage image = develop(*frame, kind.pixelType, seed + static_cast<std::uint32_t>(number));
            Nivex::CImagePersistence::Save(kind.format, (folder / name).c_str(), image);
            std::puts(name);
        }
    }
}

}  // namespace

int main(int argc, char** argv)
{
    if (argc != 2) {
        std::fprintf(stderr, "usage: make_samples FOLDER\n");
        return 2;
    }
    try {
        makeSamples(argv[1]);
        return 0;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "make_samples: %s\n", error.what());
        return 1;
    }
}

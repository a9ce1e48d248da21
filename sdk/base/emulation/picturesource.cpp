#include "base/emulation/picturesource.h"

#include <algorithm>
#include <cctype>
#include <cmath>
#include <cstring>
#include <filesystem>

#include "gcbase/exception.h"

#include "base/emulation/pixelencoder.h"
#include "utility/imageformatconverter.h"
#include "utility/imagepersistence.h"
#include "utility/niveximage.h"

namespace Nivex::Emulation {
namespace {

// Rendered pictures of a folder are kept up to this size; those beyond are read again each time.
constexpr std::size_t keptBytesLimit = std::size_t{512} << 20;
constexpr double plainExposure = 10000;

/// What exposure, gain and black level make of a colour.
class Light
{
public:
    explicit Light(const PictureSettings& settings) : black_(settings.blackLevel * 257)
    {
        for (std::size_t i = 0; i < factors_.size(); ++i)
            factors_[i] =
                settings.exposure / plainExposure * std::pow(10, (settings.gains[0] + settings.gains[i + 1]) / 20);
    }

    Colour operator()(Colour c) const
    {
        return {Seen(c.red, factors_[0]), Seen(c.green, factors_[1]), Seen(c.blue, factors_[2])};
    }

private:
    std::uint16_t Seen(std::uint16_t value, double factor) const
    {
        return static_cast<std::uint16_t>(std::min(value * factor + black_, 65535.0));
    }

    double black_;
    std::array<double, 3> factors_{};
};

bool isPictureFile(const std::filesystem::path& path)
{
    std::string extension = path.extension().string();
    if (extension.empty()) return false;
    extension.erase(0, 1);
    std::ranges::transform(extension, extension.begin(), [](unsigned char c) { return std::toupper(c); });
    const auto loadable = CImagePersistence::GetLoadableExtensions();
    return std::ranges::any_of(loadable, [&](const char* known) { return extension == known; });
}

Colour pixelOf(const CNivexImage& image, std::uint32_t x, std::uint32_t y)
{
    std::uint16_t sample[3];
    const auto* const pixels = static_cast<const std::byte*>(image.GetBuffer());
    std::memcpy(sample, pixels + (std::size_t{y} * image.GetWidth() + x) * sizeof(sample), sizeof(sample));
    return {sample[0], sample[1], sample[2]};
}

/// A value of n bits, aligned to the top of 16, with its low bits filled so that white is white.
void spreadToFullScale(CNivexImage& image, unsigned depth)
{
    auto* const bytes = static_cast<std::byte*>(image.GetBuffer());
    for (std::size_t i = 0; i < image.GetImageSize(); i += sizeof(std::uint16_t)) {
        std::uint16_t sample = 0;
        std::memcpy(&sample, bytes + i, sizeof(sample));
        sample = static_cast<std::uint16_t>(sample | sample >> depth);
        std::memcpy(bytes + i, &sample, sizeof(sample));
    }
}

CNivexImage loadAsColour(const std::string& file)
{
    CNivexImage loaded;
    loaded.Load(file);
    CImageFormatConverter converter;
    converter.OutputPixelFormat.SetValue(EPixelType::RGB16Packed);
    converter.OutputOrientation.SetValue(OutputOrientationEnums::TopDown);
    converter.MaxNumThreads.SetValue(1);
    CNivexImage colour;
    converter.Convert(colour, loaded);
    if (BitDepth(loaded.GetPixelType()) == 8) spreadToFullScale(colour, 8);
    return colour;
}

}  // namespace

std::vector<std::string> PictureSource::PicturesOf(const std::string& folder)
{
    std::vector<std::string> files;
    std::error_code error;
    for (std::filesystem::directory_iterator entry(folder, error), end; !error && entry != end;
         entry.increment(error))
        if (isPictureFile(entry->path())) files.push_back(entry->path().string());
    if (error)
        GENICAM_THROW(RuntimeException, "The image folder \"%s\" can't be read: %s.", folder.c_str(),
                      error.message().c_str());
    if (files.empty())
        GENICAM_THROW(RuntimeException, "The image folder \"%s\" holds no picture.", folder.c_str());
    std::ranges::sort(files);
    return files;
}

void PictureSource::ForgetFiles()
{
    if (settings_.fromFolder) scene_ = nullptr;
}

void PictureSource::Prepare(const PictureSettings& settings)
{
    if (scene_ && settings == settings_) return;
    scene_ = nullptr;
    files_.clear();
    pictures_.clear();
    keptBytes_ = 0;
    settings_ = settings;
    rowBytes_ = PixelEncoder(settings.pixelType).RowBytes(settings.width);
    if (settings.fromFolder) {
        files_ = PicturesOf(settings.folder);
        pictures_.resize(files_.size());
        table_.clear();
    } else {
        RenderScene();
    }
    scene_ = &sceneOf(settings.pattern);
}

std::uint32_t PictureSource::Column(std::uint32_t x) const
{
    const std::uint32_t seen = settings_.reverseX ? settings_.width - 1 - x : x;
    return (settings_.offsetX + seen) * settings_.binningX;
}

std::uint32_t PictureSource::Row(std::uint32_t y, std::uint32_t rows) const
{
    const std::uint32_t seen = settings_.reverseY ? rows - 1 - y : y;
    return (settings_.offsetY + seen) * settings_.binningY;
}

void PictureSource::RenderScene()
{
    const Scene& scene = sceneOf(settings_.pattern);
    const Light light(settings_);
    PixelEncoder encoder(settings_.pixelType);
    table_.resize(rowBytes_ * scene.rows);
    std::vector<Colour> pixels(settings_.width);
    for (std::uint32_t y = 0; y < scene.rows; ++y) {
        const std::uint32_t row = scene.scrolls ? Row(y, scene.rows) : y;
        for (std::uint32_t x = 0; x < settings_.width; ++x) {
            const Colour colour = scene.colour(Column(x), row);
            pixels[x] = scene.seesLight ? light(colour) : colour;
        }
        encoder.Encode(pixels, y, std::span(table_).subspan(y * rowBytes_, rowBytes_));
    }
}

// The sensor sees a picture unscaled, its first pixel at the sensor's first, and black beyond its edges.
void PictureSource::RenderFile(std::size_t index, std::span<std::byte> picture) const
{
    const CNivexImage image = loadAsColour(files_[index]);
    const Light light(settings_);
    PixelEncoder encoder(settings_.pixelType);
    std::vector<Colour> pixels(settings_.width);
    for (std::uint32_t y = 0; y < settings_.height; ++y) {
        const std::uint32_t row = Row(y, settings_.height);
        for (std::uint32_t x = 0; x < settings_.width; ++x) {
            const std::uint32_t column = Column(x);
            const bool inside = column < image.GetWidth() && row < image.GetHeight();
            pixels[x] = light(inside ? pixelOf(image, column, row) : Colour{});
        }
        encoder.Encode(pixels, y, picture.subspan(y * rowBytes_, rowBytes_));
    }
}

std::string PictureSource::Fill(std::uint64_t number, std::span<std::byte> picture)
{
    if (settings_.fromFolder) return FillFromFolder(number, picture);
    FillFromTable(number, picture);
    return {};
}

void PictureSource::FillFromTable(std::uint64_t number, std::span<std::byte> picture) const
{
    const std::uint64_t first = number * scene_->step % scene_->rows;
    for (std::uint32_t y = 0; y < settings_.height;) {
        const std::uint64_t row = scene_->scrolls ? (first + y) % scene_->rows : first + y % 2;
        const std::uint64_t stretch = scene_->scrolls ? scene_->rows - row : 2;
        const auto count = std::min<std::uint64_t>(stretch, settings_.height - y);
        std::memcpy(picture.data() + y * rowBytes_, table_.data() + row * rowBytes_, count * rowBytes_);
        y += static_cast<std::uint32_t>(count);
    }
}

std::string PictureSource::FillFromFolder(std::uint64_t number, std::span<std::byte> picture)
{
    const std::size_t index = number % files_.size();
    std::vector<std::byte>& kept = pictures_[index];
    if (kept.size() == picture.size()) {
        std::memcpy(picture.data(), kept.data(), picture.size());
        return {};
    }
    try {
        RenderFile(index, picture);
    } catch (...) {
        std::memset(picture.data(), 0, picture.size());
        return GenICam::describeCurrentException();
    }
    if (keptBytes_ + picture.size() <= keptBytesLimit) {
        kept.assign(picture.begin(), picture.end());
        keptBytes_ += picture.size();
    }
    return {};
}

}  // namespace Nivex::Emulation

// Loading and saving of image files, 8-bit colour where the name says nothing else, in megabytes of pixels per
// second. "ratio" is our time over that of the bare library called in a loop with the same settings on the same
// picture, measured in turn with it: 1.05 is five per cent slower. Every saved file is new.
#include <cstdio>
//
#include <benchmark/benchmark.h>
#include <jpeglib.h>
#include <libdeflate.h>
#include <spng.h>
#include <tiffio.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <ctime>
#include <filesystem>
#include <functional>
#include <iterator>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "utility/imagepersistence.h"
#include "utility/niveximage.h"

namespace {

using namespace Nivex;
using Clock = std::chrono::steady_clock;
using FilePtr = std::unique_ptr<std::FILE, int (*)(std::FILE*)>;
using Bytes = std::vector<std::uint8_t>;

struct Size
{
    std::uint32_t width;
    std::uint32_t height;
};

struct Paths
{
    std::filesystem::path folder =
        std::filesystem::temp_directory_path() / ("imagefiles_bench-" + std::to_string(::getpid()));
    std::string ours = (folder / "ours").string();
    std::string bare = (folder / "bare").string();

    Paths() { std::filesystem::create_directories(folder); }
    ~Paths()
    {
        std::error_code ignored;
        std::filesystem::remove_all(folder, ignored);
    }
};

void require(bool succeeded)
{
    if (!succeeded) throw std::runtime_error("a bare library call failed");
}

FilePtr openFile(const std::string& path, const char* mode)
{
    FilePtr file(std::fopen(path.c_str(), mode), &std::fclose);
    require(file != nullptr);
    return file;
}

/// A large camera picture: a sample set side by side, with noise that leaves no two of them alike.
CNivexImage makePicture(Size size, EPixelType pixelType)
{
    CNivexImage tile;
    tile.Load(STAGELET_SOURCE_DIR "/examples/images/belt_06.png");
    CNivexImage picture;
    picture.Reset(pixelType, size.width, size.height);
    const std::size_t rowBytes = picture.GetImageSize() / size.height;
    const auto* from = static_cast<const std::uint8_t*>(tile.GetBuffer());
    auto* to = static_cast<std::uint8_t*>(picture.GetBuffer());
    std::uint32_t state = 1;
    for (std::uint32_t y = 0; y < size.height; ++y) {
        for (std::size_t x = 0; x < rowBytes; ++x) {
            state = state * 1664525 + 1013904223;
            const int value = from[y % tile.GetHeight() * tile.GetWidth() * 3 + x % (tile.GetWidth() * 3)];
            *to++ = static_cast<std::uint8_t>(std::clamp(value + static_cast<int>(state >> 30) - 2, 0, 255));
        }
    }
    return picture;
}

const std::uint8_t* rowsOf(const CNivexImage& picture)
{
    return static_cast<const std::uint8_t*>(picture.GetBuffer());
}

// The bare loops. `pixels` has room for the picture.

// BMP has no library; the least that it can cost is turning the rows round and one call of the system.

void saveBmpBare(const std::string& path, const CNivexImage& picture)
{
    const std::size_t stride = picture.GetWidth() * std::size_t{3};
    const auto rows = std::make_unique_for_overwrite<std::uint8_t[]>(picture.GetImageSize());
    for (std::size_t y = 0; y < picture.GetHeight(); ++y) {
        std::copy_n(rowsOf(picture) + y * stride, stride, rows.get() + picture.GetImageSize() - (y + 1) * stride);
    }
    const FilePtr file = openFile(path, "wb");
    require(std::fwrite(rows.get(), 1, picture.GetImageSize(), file.get()) == picture.GetImageSize());
}

void loadBmpBare(const std::string& path, const CNivexImage& picture, std::uint8_t* pixels)
{
    const std::size_t stride = picture.GetWidth() * std::size_t{3};
    const auto rows = std::make_unique_for_overwrite<std::uint8_t[]>(picture.GetImageSize());
    const FilePtr file = openFile(path, "rb");
    std::fseek(file.get(), 54, SEEK_SET);
    require(std::fread(rows.get(), 1, picture.GetImageSize(), file.get()) == picture.GetImageSize());
    for (std::size_t y = 0; y < picture.GetHeight(); ++y) {
        std::copy_n(rows.get() + picture.GetImageSize() - (y + 1) * stride, stride, pixels + y * stride);
    }
}

/// Strips of about 1 MiB, as they lie in memory.
void saveTiffBare(const std::string& path, const CNivexImage& picture)
{
    const std::unique_ptr<TIFF, void (*)(TIFF*)> tiff(TIFFOpen(path.c_str(), "w"), &TIFFClose);
    require(tiff != nullptr);
    const bool isColor = picture.GetPixelType() == EPixelType::RGB8Packed;
    const std::size_t stride = picture.GetImageSize() / picture.GetHeight();
    const auto rowsPerStrip = static_cast<std::uint32_t>((std::size_t{1} << 20) / stride);
    TIFFSetField(tiff.get(), TIFFTAG_IMAGEWIDTH, picture.GetWidth());
    TIFFSetField(tiff.get(), TIFFTAG_IMAGELENGTH, picture.GetHeight());
    TIFFSetField(tiff.get(), TIFFTAG_BITSPERSAMPLE, isColor ? 8 : 16);
    TIFFSetField(tiff.get(), TIFFTAG_SAMPLESPERPIXEL, isColor ? 3 : 1);
    TIFFSetField(tiff.get(), TIFFTAG_PHOTOMETRIC, isColor ? PHOTOMETRIC_RGB : PHOTOMETRIC_CFA);
    TIFFSetField(tiff.get(), TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG);
    TIFFSetField(tiff.get(), TIFFTAG_ROWSPERSTRIP, rowsPerStrip);
    for (std::uint32_t y = 0; y < picture.GetHeight(); y += rowsPerStrip) {
        const std::uint32_t rows = std::min(rowsPerStrip, picture.GetHeight() - y);
        auto* strip = const_cast<std::uint8_t*>(rowsOf(picture) + y * stride);
        require(TIFFWriteEncodedStrip(tiff.get(), y / rowsPerStrip, strip, static_cast<tmsize_t>(rows * stride)) >
                0);
    }
}

/// The same strips as those of a file of unpacked samples, whose unpacking is ours alone.
void saveUnpackedTiffBare(const std::string& path, const CNivexImage& picture)
{
    static CNivexImage unpacked;
    if (unpacked.GetWidth() != picture.GetWidth()) {
        unpacked.Reset(EPixelType::BayerRG16, picture.GetWidth(), picture.GetHeight());
        std::fill_n(static_cast<std::uint8_t*>(unpacked.GetBuffer()), unpacked.GetImageSize(), std::uint8_t{5});
    }
    saveTiffBare(path, unpacked);
}

void loadTiffBare(const std::string& path, const CNivexImage& picture, std::uint8_t* pixels)
{
    const std::unique_ptr<TIFF, void (*)(TIFF*)> tiff(TIFFOpen(path.c_str(), "r"), &TIFFClose);
    require(tiff != nullptr);
    const tmsize_t stripBytes = TIFFStripSize(tiff.get());
    const auto strips = TIFFNumberOfStrips(tiff.get());
    const auto total = static_cast<tmsize_t>(picture.GetImageSize());
    for (std::uint32_t i = 0; i < strips; ++i) {
        const tmsize_t bytes = std::min(stripBytes, total - i * stripBytes);
        require(TIFFReadEncodedStrip(tiff.get(), i, pixels + i * stripBytes, bytes) == bytes);
    }
}

void saveJpegBare(const std::string& path, const CNivexImage& picture)
{
    const FilePtr file = openFile(path, "wb");
    jpeg_error_mgr errors;
    jpeg_compress_struct info = {};
    info.err = jpeg_std_error(&errors);
    jpeg_create_compress(&info);
    jpeg_stdio_dest(&info, file.get());
    info.image_width = picture.GetWidth();
    info.image_height = picture.GetHeight();
    info.input_components = 3;
    info.in_color_space = JCS_RGB;
    jpeg_set_defaults(&info);
    jpeg_set_quality(&info, 90, TRUE);
    jpeg_start_compress(&info, TRUE);
    while (info.next_scanline < info.image_height) {
        auto* row =
            const_cast<std::uint8_t*>(rowsOf(picture) + std::size_t{3} * info.image_width * info.next_scanline);
        jpeg_write_scanlines(&info, &row, 1);
    }
    jpeg_finish_compress(&info);
    jpeg_destroy_compress(&info);
}

void loadJpegBare(const std::string& path, const CNivexImage&, std::uint8_t* pixels)
{
    const FilePtr file = openFile(path, "rb");
    jpeg_error_mgr errors;
    jpeg_decompress_struct info = {};
    info.err = jpeg_std_error(&errors);
    jpeg_create_decompress(&info);
    jpeg_stdio_src(&info, file.get());
    jpeg_read_header(&info, TRUE);
    jpeg_start_decompress(&info);
    while (info.output_scanline < info.output_height) {
        auto* row = pixels + std::size_t{3} * info.output_width * info.output_scanline;
        jpeg_read_scanlines(&info, &row, 1);
    }
    jpeg_finish_decompress(&info);
    jpeg_destroy_decompress(&info);
}

void savePngBare(const std::string& path, const CNivexImage& picture)
{
    const FilePtr file = openFile(path, "wb");
    const std::unique_ptr<spng_ctx, void (*)(spng_ctx*)> context(spng_ctx_new(SPNG_CTX_ENCODER), &spng_ctx_free);
    spng_set_png_file(context.get(), file.get());
    spng_ihdr header = {};
    header.width = picture.GetWidth();
    header.height = picture.GetHeight();
    header.bit_depth = 8;
    header.color_type = SPNG_COLOR_TYPE_TRUECOLOR;
    spng_set_ihdr(context.get(), &header);
    spng_set_option(context.get(), SPNG_IMG_COMPRESSION_LEVEL, 1);
    spng_set_option(context.get(), SPNG_FILTER_CHOICE, SPNG_FILTER_CHOICE_SUB);
    require(spng_encode_image(context.get(), picture.GetBuffer(), picture.GetImageSize(), SPNG_FMT_PNG,
                              SPNG_ENCODE_FINALIZE) == 0);
}

void loadPngBare(const std::string& path, const CNivexImage& picture, std::uint8_t* pixels)
{
    const FilePtr file = openFile(path, "rb");
    const std::unique_ptr<spng_ctx, void (*)(spng_ctx*)> context(spng_ctx_new(0), &spng_ctx_free);
    spng_set_png_file(context.get(), file.get());
    require(spng_decode_image(context.get(), pixels, picture.GetImageSize(), SPNG_FMT_RGB8, 0) == 0);
}

/// Filters, compresses and writes; the least that a PNG file on this compressor can cost.
void savePngDeflateBare(const std::string& path, const CNivexImage& picture)
{
    const std::size_t stride = picture.GetWidth() * std::size_t{3};
    const std::size_t size = (stride + 1) * picture.GetHeight();
    const auto filtered = std::make_unique_for_overwrite<std::uint8_t[]>(size);
    for (std::size_t y = 0; y < picture.GetHeight(); ++y) {
        const std::uint8_t* const row = rowsOf(picture) + y * stride;
        std::uint8_t* const to = filtered.get() + y * (stride + 1);
        to[0] = 1;
        std::copy_n(row, 3, to + 1);
        for (std::size_t i = 3; i < stride; ++i) {
            to[i + 1] = static_cast<std::uint8_t>(row[i] - row[i - 3]);
        }
    }
    const std::unique_ptr<libdeflate_compressor, void (*)(libdeflate_compressor*)> compressor(
        libdeflate_alloc_compressor(1), &libdeflate_free_compressor);
    const std::size_t bound = libdeflate_zlib_compress_bound(compressor.get(), size);
    const auto compressed = std::make_unique_for_overwrite<std::uint8_t[]>(bound);
    const std::size_t bytes =
        libdeflate_zlib_compress(compressor.get(), filtered.get(), size, compressed.get(), bound);
    benchmark::DoNotOptimize(libdeflate_crc32(0, compressed.get(), bytes));
    const FilePtr file = openFile(path, "wb");
    require(std::fwrite(compressed.get(), 1, bytes, file.get()) == bytes);
}

double median(std::vector<double> values)
{
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

/// Of this thread's work, which other programs on the machine disturb less.
double cpuSeconds()
{
    std::timespec now = {};
    ::clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) * 1e-9;
}

struct Times
{
    std::vector<double> wall;
    std::vector<double> cpu;

    template <typename Work>
    void add(Work work)
    {
        const Clock::time_point start = Clock::now();
        const double cpuStart = cpuSeconds();
        work();
        cpu.push_back(cpuSeconds() - cpuStart);
        wall.push_back(std::chrono::duration<double>(Clock::now() - start).count());
    }
};

/// Of times taken by turns, each with its neighbour.
double medianRatio(const std::vector<double>& ours, const std::vector<double>& bare)
{
    std::vector<double> ratios;
    std::ranges::transform(ours, bare, std::back_inserter(ratios), std::divides<>());
    return median(ratios);
}

/// Times ours and the bare loop by turns, so that both see the same machine. `prepare` runs untimed before each.
template <typename Prepare, typename Ours, typename Bare>
void compare(benchmark::State& state, std::size_t bytes, Prepare prepare, Ours ours, Bare bare)
{
    Times oursTimes;
    Times bareTimes;
    ours();
    bare();
    while (state.KeepRunning()) {
        prepare();
        oursTimes.add(ours);
        prepare();
        bareTimes.add(bare);
        state.SetIterationTime(oursTimes.wall.back());
    }
    state.counters["MB/s"] = static_cast<double>(bytes) / median(oursTimes.wall) / 1e6;
    state.counters["bare MB/s"] = static_cast<double>(bytes) / median(bareTimes.wall) / 1e6;
    state.counters["ratio"] = medianRatio(oursTimes.wall, bareTimes.wall);
    state.counters["cpu ratio"] = medianRatio(oursTimes.cpu, bareTimes.cpu);
}

struct Row
{
    const char* name;
    const char* peer;
    EImageFileFormat format;
    EPixelType pixelType;
    void (*saveBare)(const std::string&, const CNivexImage&);
    void (*loadBare)(const std::string&, const CNivexImage&, std::uint8_t*);  ///< Null: no row for loading.
};

constexpr Row rows[] = {
    {"BMP", "plain_write", EImageFileFormat::Bmp, EPixelType::BGR8Packed, saveBmpBare, loadBmpBare},
    {"TIFF", "libtiff", EImageFileFormat::Tiff, EPixelType::RGB8Packed, saveTiffBare, loadTiffBare},
    {"DNG_RGB8", "libtiff", EImageFileFormat::Dng, EPixelType::RGB8Packed, saveTiffBare, nullptr},
    {"DNG_Bayer16", "libtiff", EImageFileFormat::Dng, EPixelType::BayerRG16, saveTiffBare, nullptr},
    {"DNG_Bayer12p", "libtiff_unpacked", EImageFileFormat::Dng, EPixelType::BayerRG12p, saveUnpackedTiffBare,
     nullptr},
    {"JPEG", "libjpeg-turbo", EImageFileFormat::Jpeg, EPixelType::RGB8Packed, saveJpegBare, loadJpegBare},
    {"PNG", "libspng", EImageFileFormat::Png, EPixelType::RGB8Packed, savePngBare, loadPngBare},
    {"PNG", "libdeflate", EImageFileFormat::Png, EPixelType::RGB8Packed, savePngDeflateBare, nullptr},
};

void save(benchmark::State& state, const Row& row, Size size)
{
    const Paths paths;
    const CNivexImage picture = makePicture(size, row.pixelType);
    // As in a recording, every file is new; file systems treat replaced ones in ways of their own.
    std::uintmax_t oursBytes = 0;
    std::uintmax_t bareBytes = 0;
    const auto removeFiles = [&] {
        std::error_code ignored;
        if (const auto bytes = std::filesystem::file_size(paths.ours, ignored); !ignored) oursBytes = bytes;
        if (const auto bytes = std::filesystem::file_size(paths.bare, ignored); !ignored) bareBytes = bytes;
        std::filesystem::remove(paths.ours, ignored);
        std::filesystem::remove(paths.bare, ignored);
    };
    compare(
        state, picture.GetImageSize(), removeFiles,
        [&] { CImagePersistence::Save(row.format, paths.ours.c_str(), picture); },
        [&] { row.saveBare(paths.bare, picture); });
    state.counters["file MB"] = static_cast<double>(oursBytes) / 1e6;
    state.counters["bare file MB"] = static_cast<double>(bareBytes) / 1e6;
}

void load(benchmark::State& state, const Row& row, Size size)
{
    const Paths paths;
    const CNivexImage picture = makePicture(size, row.pixelType);
    CImagePersistence::Save(row.format, paths.ours.c_str(), picture);
    CNivexImage image;
    Bytes pixels(picture.GetImageSize());
    compare(
        state, picture.GetImageSize(), [] {}, [&] { CImagePersistence::Load(paths.ours.c_str(), image); },
        [&] { row.loadBare(paths.ours, picture, pixels.data()); });
}

}  // namespace

int main(int argc, char** argv)
{
    constexpr Size sizes[] = {{1920, 1080}, {4096, 3000}};
    const auto add = [](const Row& row, Size size, const char* verb, auto run) {
        const std::string name = std::string("imagefiles/") + verb + "/" + row.name + "/" +
                                 std::to_string(size.width) + "x" + std::to_string(size.height) + "/ratio_to_" +
                                 row.peer;
        benchmark::RegisterBenchmark(name.c_str(),
                                     [run, &row, size](benchmark::State& state) { run(state, row, size); })
            ->UseManualTime()
            ->Unit(benchmark::kMillisecond)
            ->MinTime(0.8);
    };
    for (const Row& row : rows) {
        for (const Size size : sizes) {
            add(row, size, "save", save);
            if (row.loadBare) add(row, size, "load", load);
        }
    }
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}

#include "sdk/imagefiles/imagetesting.h"

#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <span>

namespace ImageTesting {

using Nivex::CNivexImage;
using Nivex::EImageOrientation;
using Nivex::EPixelType;

namespace {

template <typename Value>
CNivexImage fill(EPixelType pixelType, std::uint32_t width, std::uint32_t height, std::size_t paddingX,
                 EImageOrientation orientation, Value value)
{
    CNivexImage image;
    image.Reset(pixelType, width, height, paddingX, orientation);
    auto* bytes = static_cast<std::uint8_t*>(image.GetBuffer());
    const std::size_t stride = image.GetImageSize() / height;
    for (std::size_t y = 0; y < height; ++y) {
        for (std::size_t i = 0; i < stride; ++i) {
            const bool isPadding = i >= stride - paddingX;
            bytes[y * stride + i] = isPadding ? std::uint8_t{0xEE} : value(i, y);
        }
    }
    return image;
}

}  // namespace

CNivexImage makePicture(EPixelType pixelType, std::uint32_t width, std::uint32_t height, std::size_t paddingX,
                        EImageOrientation orientation)
{
    std::uint32_t state = 12345;
    return fill(pixelType, width, height, paddingX, orientation, [&state](std::size_t, std::size_t) {
        state = state * 1664525 + 1013904223;
        return static_cast<std::uint8_t>(state >> 24);
    });
}

CNivexImage makeSmoothPicture(EPixelType pixelType, std::uint32_t width, std::uint32_t height)
{
    const std::size_t channels = Nivex::BitsPerPixel(pixelType) / 8;
    return fill(pixelType, width, height, 0, EImageOrientation::TopDown, [channels](std::size_t i, std::size_t y) {
        return static_cast<std::uint8_t>(40 + (i / channels) * 2 + y + (i % channels) * 60);
    });
}

std::vector<std::uint8_t> rowsOf(const Nivex::IImage& image)
{
    const auto* bytes = static_cast<const std::uint8_t*>(image.GetBuffer());
    const std::size_t height = image.GetHeight();
    const std::size_t stride = image.GetImageSize() / height;
    std::vector<std::uint8_t> rows;
    for (std::size_t y = 0; y < height; ++y) {
        const bool isBottomUp = image.GetOrientation() == EImageOrientation::BottomUp;
        const std::uint8_t* row = bytes + (isBottomUp ? height - 1 - y : y) * stride;
        rows.insert(rows.end(), row, row + stride - image.GetPaddingX());
    }
    return rows;
}

std::vector<std::uint8_t> readFile(const std::filesystem::path& path)
{
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

void writeFile(const std::filesystem::path& path, const std::vector<std::uint8_t>& bytes)
{
    std::ofstream file(path, std::ios::binary);
    std::copy(bytes.begin(), bytes.end(), std::ostreambuf_iterator<char>(file));
}

CNivexImage loadBytes(const std::vector<std::uint8_t>& bytes)
{
    CNivexImage image;
    Nivex::CImagePersistence::LoadFromMemory(std::as_bytes(std::span(bytes)), image);
    return image;
}

std::vector<std::uint8_t> runCommand(const std::string& command)
{
    std::vector<std::uint8_t> output;
    std::FILE* const pipe = ::popen(command.c_str(), "r");
    if (pipe) {
        std::uint8_t chunk[4096];
        while (const std::size_t got = std::fread(chunk, 1, sizeof chunk, pipe)) {
            output.insert(output.end(), chunk, chunk + got);
        }
        EXPECT_EQ(::pclose(pipe), 0) << command;
    } else {
        ADD_FAILURE() << "could not run: " << command;
    }
    return output;
}

FolderTest::FolderTest()
{
    std::string name = (std::filesystem::temp_directory_path() / "imagefiles-XXXXXX").string();
    if (!::mkdtemp(name.data())) throw std::runtime_error("no temporary folder " + name);
    folder = name;
}

FolderTest::~FolderTest()
{
    std::error_code ignored;
    std::filesystem::remove_all(folder, ignored);
}

std::size_t FolderTest::countFiles() const
{
    return static_cast<std::size_t>(std::distance(std::filesystem::directory_iterator(folder), {}));
}

}  // namespace ImageTesting

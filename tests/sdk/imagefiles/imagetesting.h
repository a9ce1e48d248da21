#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

#include "utility/imagepersistence.h"
#include "utility/niveximage.h"

namespace ImageTesting {

struct Lossless
{
    Nivex::EImageFileFormat format;
    Nivex::EPixelType pixelType;
};

/// What loadable formats hold as it is and give back as it was.
inline constexpr Lossless losslessForms[] = {
    {Nivex::EImageFileFormat::Bmp, Nivex::EPixelType::Mono8},
    {Nivex::EImageFileFormat::Bmp, Nivex::EPixelType::BGR8Packed},
    {Nivex::EImageFileFormat::Bmp, Nivex::EPixelType::BGRA8Packed},
    {Nivex::EImageFileFormat::Tiff, Nivex::EPixelType::Mono8},
    {Nivex::EImageFileFormat::Tiff, Nivex::EPixelType::Mono16},
    {Nivex::EImageFileFormat::Tiff, Nivex::EPixelType::RGB8Packed},
    {Nivex::EImageFileFormat::Tiff, Nivex::EPixelType::RGB16Packed},
    {Nivex::EImageFileFormat::Png, Nivex::EPixelType::Mono8},
    {Nivex::EImageFileFormat::Png, Nivex::EPixelType::Mono16},
    {Nivex::EImageFileFormat::Png, Nivex::EPixelType::RGB8Packed},
    {Nivex::EImageFileFormat::Png, Nivex::EPixelType::RGB16Packed},
};

/// A picture in which no two neighbours are alike, no row or column repeats and no channel equals another.
Nivex::CNivexImage makePicture(Nivex::EPixelType pixelType, std::uint32_t width, std::uint32_t height,
                               std::size_t paddingX = 0,
                               Nivex::EImageOrientation orientation = Nivex::EImageOrientation::TopDown);
/// A picture whose values change slowly, as lossy compression likes it.
Nivex::CNivexImage makeSmoothPicture(Nivex::EPixelType pixelType, std::uint32_t width, std::uint32_t height);

/// The bytes of all rows from the top, without padding.
std::vector<std::uint8_t> rowsOf(const Nivex::IImage& image);

std::vector<std::uint8_t> readFile(const std::filesystem::path& path);
void writeFile(const std::filesystem::path& path, const std::vector<std::uint8_t>& bytes);

/// Loads from memory, as `CImagePersistence::LoadFromMemory` wants its bytes.
Nivex::CNivexImage loadBytes(const std::vector<std::uint8_t>& bytes);

/// What a shell command prints; the test fails if the command does.
std::vector<std::uint8_t> runCommand(const std::string& command);

/// A folder of its own for every test, removed behind it.
class FolderTest : public ::testing::Test
{
protected:
    FolderTest();
    ~FolderTest() override;

    std::string inFolder(const std::string& name) const { return (folder / name).string(); }
    std::size_t countFiles() const;

    std::filesystem::path folder;
};

}  // namespace ImageTesting

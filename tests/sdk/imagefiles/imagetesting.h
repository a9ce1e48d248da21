#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

#include "utility/imagepersistence.h"
#include "utility/niveximage.h"

namespace ImageTesting {

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

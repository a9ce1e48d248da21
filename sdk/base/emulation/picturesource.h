#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "base/emulation/frametables.h"
#include "base/emulation/scene.h"
#include "utility/pixeltype.h"

namespace Nivex::Emulation {

/// All that decides how the pictures of a component look.
struct PictureSettings
{
    EPixelType pixelType = EPixelType::Mono8;
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    std::uint32_t offsetX = 0;
    std::uint32_t offsetY = 0;
    std::uint32_t binningX = 1;
    std::uint32_t binningY = 1;
    bool reverseX = false;
    bool reverseY = false;
    bool fromFolder = false;
    std::string folder;
    ETestPattern pattern = ETestPattern::Off;
    double exposure = 0;                    ///< In us; the scene's own brightness at 10000.
    std::array<double, gainCount> gains{};  ///< In dB.
    double blackLevel = 0;                  ///< In steps of 8 bits.

    bool operator==(const PictureSettings&) const = default;
};

/// The pictures of one component, one for each frame. They are rendered once for their settings, so that a frame
/// costs little more than copying its bytes. Used by one thread.
class PictureSource
{
public:
    /// Has the next Prepare look at the folder anew.
    void ForgetFiles();
    /// Renders if the settings are others than before. Raises RuntimeException if a folder has no picture.
    void Prepare(const PictureSettings& settings);
    std::size_t PictureSize() const { return rowBytes_ * settings_.height; }
    /// Fills `picture`, of PictureSize, with that of frame `number`. Gives an empty text, or why its file can't be
    /// read; the picture is black then.
    std::string Fill(std::uint64_t number, std::span<std::byte> picture);

    /// The files that Fill would show, in order. Raises RuntimeException that names the folder if there are none.
    static std::vector<std::string> PicturesOf(const std::string& folder);

private:
    void RenderScene();
    void RenderFile(std::size_t index, std::span<std::byte> picture) const;
    void FillFromTable(std::uint64_t number, std::span<std::byte> picture) const;
    std::string FillFromFolder(std::uint64_t number, std::span<std::byte> picture);
    std::uint32_t Column(std::uint32_t x) const;
    std::uint32_t Row(std::uint32_t y, std::uint32_t rows) const;

    PictureSettings settings_;
    const Scene* scene_ = nullptr;
    std::size_t rowBytes_ = 0;
    std::vector<std::byte> table_;  // the scene's rows
    std::vector<std::string> files_;
    std::vector<std::vector<std::byte>> pictures_;  // of the files; empty where not rendered or not kept
    std::size_t keptBytes_ = 0;
};

}  // namespace Nivex::Emulation

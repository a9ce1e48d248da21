#pragma once

#include <cstdint>
#include <ostream>
#include <string>
#include <vector>

#include "utility/imageformatconverter.h"

/// What conversion should give, worked out pixel by pixel from the definitions of formats and equations, with no
/// thought of speed. Shares no code with the converter.
namespace Reference {

enum class Packing
{
    Cells,   ///< Bytes, or 16 bits little-endian.
    Lsb,     ///< Bit stream.
    Gige,    ///< Two components in three bytes.
    Planes,  ///< One plane per component, in the order of the letters.
    SemiPlanes
};

/// A format: the components of a pixel by letters in memory order. "M" mono; two letters of a Bayer row; "RGB",
/// "BGRA"; "UY" or "YU" for 4:2:2 with chroma U, V by turns; "YUV" for planes.
struct Model
{
    Nivex::EPixelType type;
    std::string letters;
    unsigned depth;
    Packing packing;
    std::uint32_t chromaX = 1;  ///< Columns and rows that a chroma sample covers.
    std::uint32_t chromaY = 1;

    bool isYuv() const { return letters.find('Y') != std::string::npos; }
    bool isBayer() const { return letters.size() == 2 && !isYuv(); }

    friend void PrintTo(const Model& model, std::ostream* stream)
    {
        *stream << Nivex::GetPixelTypeName(model.type);
    }
};

const std::vector<Model>& inputs();
const std::vector<Model>& outputs();

/// Samples by component: mono, raw; R, G, B, alpha; Y, U, V.
struct Picture
{
    struct Plane
    {
        std::uint32_t width = 0;
        std::uint32_t height = 0;
        std::vector<std::uint32_t> samples{};
        std::uint32_t& at(std::uint32_t x, std::uint32_t y) { return samples[std::size_t{y} * width + x]; }
        std::uint32_t at(std::uint32_t x, std::uint32_t y) const { return samples[std::size_t{y} * width + x]; }
    };
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    std::vector<Plane> planes{};
};

Picture randomPicture(const Model& model, std::uint32_t width, std::uint32_t height);

struct Rows
{
    std::size_t padding = 0;
    bool continuous = false;  ///< Rows of a bit stream follow one another without fill bits.
    bool noise = false;       ///< Random bits where no sample lies, else zero.
};
std::vector<std::uint8_t> pack(const Model& model, const Picture& picture, const Rows& rows);

Picture convert(const Model& from, const Picture& picture, const Model& to, bool flip, bool msbAligned);

}  // namespace Reference

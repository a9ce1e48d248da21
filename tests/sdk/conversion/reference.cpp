#include "sdk/conversion/reference.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <random>

namespace Reference {
namespace {

using enum Nivex::EPixelType;
using enum Packing;

std::uint32_t rounded(double value)
{
    return static_cast<std::uint32_t>(std::floor(value + 0.5 + 1e-7));
}

std::uint32_t clamped(double value)
{
    return value <= 0 ? 0 : std::min(rounded(value), 255U);
}

std::uint32_t mirrored(std::int64_t index, std::int64_t count)
{
    if (count == 1) return 0;
    if (index < 0) return static_cast<std::uint32_t>(-index);
    return static_cast<std::uint32_t>(index < count ? index : 2 * count - 2 - index);
}

// The colour of the filter at any place of the plane, beyond the picture too.
char filterColour(const std::string& firstRow, std::int64_t x, std::int64_t y)
{
    const bool green = (firstRow[0] == 'G') == ((x + y) % 2 == 0);
    if (green) return 'G';
    const char rowColour = firstRow[0] == 'G' ? firstRow[1] : firstRow[0];
    return y % 2 == 0 ? rowColour : (rowColour == 'R' ? 'B' : 'R');
}

std::uint32_t interpolated(const Model& model, const Picture::Plane& raw, std::int64_t x, std::int64_t y,
                           char colour)
{
    const auto at = [&](std::int64_t column, std::int64_t row) {
        return raw.at(mirrored(column, raw.width), mirrored(row, raw.height));
    };
    if (filterColour(model.letters, x, y) == colour) return at(x, y);
    double sum = 0;
    int count = 0;
    for (int dy = -1; dy <= 1; ++dy) {
        for (int dx = -1; dx <= 1; ++dx) {
            if (filterColour(model.letters, x + dx + 2, y + dy + 2) != colour) continue;
            sum += at(x + dx, y + dy);
            ++count;
        }
    }
    return rounded(sum / count);
}

std::uint32_t narrowed(std::uint32_t sample, const Model& from, const Model& to)
{
    if (from.depth < 8) return sample * 255 / ((1U << from.depth) - 1);
    return to.depth == 8 ? sample >> (from.depth - 8) : sample;
}

double luma(double r, double g, double b)
{
    return 0.299 * r + 0.587 * g + 0.114 * b;
}

Picture sized(std::uint32_t width, std::uint32_t height, std::size_t planes)
{
    Picture picture{width, height, {}};
    picture.planes.resize(planes, {width, height, std::vector<std::uint32_t>(std::size_t{width} * height)});
    return picture;
}

// Full-size planes of one kind into those of another, all at the same depth.
Picture changeColour(const Model& from, const Picture& picture, const Model& to)
{
    const bool fromMono = picture.planes.size() == 1;
    const bool toMono = to.letters == "M";
    const std::size_t components = toMono ? 1 : 3;
    Picture result = sized(picture.width, picture.height, components);
    for (std::size_t i = 0; i < picture.planes[0].samples.size(); ++i) {
        double in[3] = {};
        for (std::size_t c = 0; c < 3; ++c)
            in[c] = picture.planes[fromMono ? 0 : c].samples[i];
        double out[3] = {in[0], in[1], in[2]};
        if (fromMono && to.isYuv()) {
            out[1] = out[2] = 128;
        } else if (from.isYuv() && !toMono && !to.isYuv()) {
            const double u = in[1] - 128, v = in[2] - 128;
            out[0] = clamped(in[0] + 1.402 * v);
            out[1] = clamped(in[0] - 0.34414 * u - 0.71414 * v);
            out[2] = clamped(in[0] + 1.772 * u);
        } else if (!fromMono && !from.isYuv() && (toMono || to.isYuv())) {
            out[0] = luma(in[0], in[1], in[2]);
            out[1] = clamped(-0.16874 * in[0] - 0.33126 * in[1] + 0.5 * in[2] + 128);
            out[2] = clamped(0.5 * in[0] - 0.41869 * in[1] - 0.08131 * in[2] + 128);
        }
        for (std::size_t c = 0; c < components; ++c)
            result.planes[c].samples[i] = rounded(out[c]);
    }
    return result;
}

// All components at full size: chroma from the nearest sample, Bayer interpolated.
Picture fullSize(const Model& from, const Picture& picture, const Model& to)
{
    const std::size_t components = from.letters == "M" ? 1 : 3;
    Picture narrow = picture;
    for (Picture::Plane& plane : narrow.planes) {
        for (std::uint32_t& sample : plane.samples)
            sample = narrowed(sample, from, to);
    }
    Picture full = sized(picture.width, picture.height, components);
    for (std::size_t c = 0; c < components; ++c) {
        for (std::uint32_t y = 0; y < picture.height; ++y) {
            for (std::uint32_t x = 0; x < picture.width; ++x) {
                const bool chroma = from.isYuv() && c > 0;
                full.planes[c].at(x, y) = from.isBayer() ? interpolated(from, narrow.planes[0], x, y, "RGB"[c])
                                                         : narrow.planes[c].at(chroma ? x / from.chromaX : x,
                                                                               chroma ? y / from.chromaY : y);
            }
        }
    }
    return full;
}

void flipRows(Picture& picture)
{
    for (Picture::Plane& plane : picture.planes) {
        const Picture::Plane before = plane;
        for (std::uint32_t y = 0; y < plane.height; ++y) {
            for (std::uint32_t x = 0; x < plane.width; ++x)
                plane.at(x, y) = before.at(x, plane.height - 1 - y);
        }
    }
}

Picture::Plane reduced(const Picture::Plane& plane, std::uint32_t columns, std::uint32_t rows)
{
    Picture::Plane result{(plane.width + columns - 1) / columns, (plane.height + rows - 1) / rows};
    for (std::uint32_t y = 0; y < result.height; ++y) {
        for (std::uint32_t x = 0; x < result.width; ++x) {
            double sum = 0;
            int count = 0;
            for (std::uint32_t row = y * rows; row < std::min((y + 1) * rows, plane.height); ++row) {
                for (std::uint32_t column = x * columns; column < std::min((x + 1) * columns, plane.width);
                     ++column) {
                    sum += plane.at(column, row);
                    ++count;
                }
            }
            result.samples.push_back(rounded(sum / count));
        }
    }
    return result;
}

// Samples in the order in which they lie in one row of one memory plane.
std::vector<std::uint32_t> rowSamples(const Model& model, const Picture& picture, std::size_t memoryPlane,
                                      std::uint32_t y)
{
    std::vector<std::uint32_t> samples;
    const auto component = [](char letter) { return std::string(letter == 'A' ? "RGBA" : "RGB").find(letter); };
    if (model.packing == Planes || (model.packing == SemiPlanes && memoryPlane == 0)) {
        const Picture::Plane& plane = picture.planes[memoryPlane];
        for (std::uint32_t x = 0; x < plane.width; ++x)
            samples.push_back(plane.at(x, y));
    } else if (model.packing == SemiPlanes) {
        for (std::uint32_t x = 0; x < picture.planes[1].width; ++x) {
            samples.insert(samples.end(), {picture.planes[1].at(x, y), picture.planes[2].at(x, y)});
        }
    } else {
        for (std::uint32_t x = 0; x < picture.width; ++x) {
            if (model.letters == "M" || model.isBayer()) {
                samples.push_back(picture.planes[0].at(x, y));
            } else {
                for (const char letter : model.letters) {
                    samples.push_back(letter == 'Y'   ? picture.planes[0].at(x, y)
                                      : letter == 'U' ? picture.planes[1 + x % 2].at(x / 2, y)
                                                      : picture.planes[component(letter)].at(x, y));
                }
            }
        }
    }
    return samples;
}

// Sets `count` bits of a stream, lowest first.
void putBits(std::vector<std::uint8_t>& bytes, std::size_t bit, unsigned count, std::uint32_t value)
{
    for (unsigned i = 0; i < count; ++i, ++bit) {
        if (bytes.size() <= bit / 8) bytes.resize(bit / 8 + 1);
        const unsigned mask = 1U << (bit % 8);
        bytes[bit / 8] =
            static_cast<std::uint8_t>((value >> i & 1) ? bytes[bit / 8] | mask : bytes[bit / 8] & ~mask);
    }
}

void putSample(const Model& model, std::vector<std::uint8_t>& bytes, std::size_t index, std::uint32_t value,
               std::uint32_t noise)
{
    if (model.packing == Lsb) return putBits(bytes, index * model.depth, model.depth, value);
    if (model.packing != Gige) {
        const unsigned cell = model.depth > 8 ? 16 : 8;
        return putBits(bytes, index * cell, cell, value | (model.depth % 8 != 0 ? noise << model.depth : 0));
    }
    const std::size_t group = index / 2 * 24;
    const unsigned low = model.depth - 8;
    putBits(bytes, group + (index % 2 ? 16 : 0), 8, value >> low);
    putBits(bytes, group + (index % 2 ? 12 : 8), 4, (value & ((1U << low) - 1)) | noise << low);
}

}  // namespace

const std::vector<Model>& inputs()
{
    static const std::vector<Model> models = [] {
        std::vector<Model> all = {
            {Mono1Packed, "M", 1, Lsb},
            {Mono2Packed, "M", 2, Lsb},
            {Mono4Packed, "M", 4, Lsb},
            {Mono14, "M", 14, Cells},
            {RGB8Packed, "RGB", 8, Cells},
            {BGR8Packed, "BGR", 8, Cells},
            {RGBA8Packed, "RGBA", 8, Cells},
            {BGRA8Packed, "BGRA", 8, Cells},
            {RGB10Packed, "RGB", 10, Cells},
            {BGR10Packed, "BGR", 10, Cells},
            {RGB12Packed, "RGB", 12, Cells},
            {BGR12Packed, "BGR", 12, Cells},
            {RGB12V1Packed, "RGB", 12, Gige},
            {RGB16Packed, "RGB", 16, Cells},
            {RGB8Planar, "RGB", 8, Planes},
            {RGB16Planar, "RGB", 16, Planes},
            {YUV422Packed, "UY", 8, Cells, 2},
            {YUV422_YUYV_Packed, "YU", 8, Cells, 2},
            {YUV444Planar, "YUV", 8, Planes},
            {YUV422Planar, "YUV", 8, Planes, 2},
            {YUV420Planar, "YUV", 8, Planes, 2, 2},
            {YCbCr422_8_YY_CbCr_Semiplanar, "YUV", 8, SemiPlanes, 2},
            {YCbCr420_8_YY_CbCr_Semiplanar, "YUV", 8, SemiPlanes, 2, 2},
        };
        for (const std::string letters : {"M", "GR", "RG", "GB", "BG"}) {
            for (const char* ending : {"8", "10", "12", "16", "10Packed", "12Packed", "10p", "12p"}) {
                const std::string name = (letters == "M" ? "Mono" : "Bayer" + letters) + ending;
                const Packing packing = name.ends_with("Packed") ? Gige : name.ends_with("p") ? Lsb : Cells;
                all.push_back({Nivex::GetPixelTypeByName(name.c_str()), letters,
                               static_cast<unsigned>(std::atoi(ending)), packing});
            }
        }
        return all;
    }();
    return models;
}

const std::vector<Model>& outputs()
{
    static const std::vector<Model> models = [] {
        std::vector<Model> all;
        for (const Nivex::EPixelType type : {BGRA8Packed, BGR8Packed, Mono8, Mono16, RGB8Packed, RGB16Packed,
                                             RGB8Planar, RGB16Planar, YUV444Planar, YUV422Planar, YUV420Planar})
        {
            for (const Model& model : inputs()) {
                if (model.type == type) all.push_back(model);
            }
        }
        return all;
    }();
    return models;
}

Picture randomPicture(const Model& model, std::uint32_t width, std::uint32_t height)
{
    std::mt19937 random(static_cast<std::uint32_t>(model.type) + width);
    Picture picture = sized(width, height,
                            model.letters == "M" || model.isBayer() ? 1
                            : model.isYuv()                         ? 3
                                                                    : model.letters.size());
    for (std::size_t c = 0; c < picture.planes.size(); ++c) {
        Picture::Plane& plane = picture.planes[c];
        if (model.isYuv() && c > 0) plane = reduced(plane, model.chromaX, model.chromaY);
        for (std::uint32_t& sample : plane.samples) {
            // Extremes show what a random value rarely does.
            const std::uint32_t kind = random() % 4;
            const std::uint32_t most = (1U << model.depth) - 1;
            sample = kind == 0 ? 0 : kind == 1 ? most : random() & most;
        }
    }
    if (model.letters == "UY" || model.letters == "YU") {
        Picture::Plane& v = picture.planes[2];
        for (std::uint32_t y = 0; width % 2 == 1 && y < height; ++y) {
            v.at(v.width - 1, y) = width == 1 ? 128 : v.at(v.width - 2, y);
        }
    }
    return picture;
}

std::vector<std::uint8_t> pack(const Model& model, const Picture& picture, const Rows& rows)
{
    std::mt19937 random(7);
    std::vector<std::uint8_t> bytes;
    std::size_t index = 0;
    const std::size_t memoryPlanes = model.packing == Planes       ? picture.planes.size()
                                     : model.packing == SemiPlanes ? 2
                                                                   : 1;
    for (std::size_t plane = 0; plane < memoryPlanes; ++plane) {
        for (std::uint32_t y = 0; y < picture.planes[plane].height; ++y) {
            std::vector<std::uint8_t> row;
            if (!rows.continuous) index = 0;
            for (const std::uint32_t sample : rowSamples(model, picture, plane, y)) {
                putSample(model, rows.continuous ? bytes : row, index++, sample,
                          rows.noise ? static_cast<std::uint32_t>(random()) : 0);
            }
            for (std::size_t i = 0; i < rows.padding; ++i)
                row.push_back(rows.noise ? 0xEE : 0);
            bytes.insert(bytes.end(), row.begin(), row.end());
        }
    }
    return bytes;
}

Picture convert(const Model& from, const Picture& picture, const Model& to, bool flip, bool msbAligned)
{
    if (from.type == to.type) {
        Picture same = picture;
        if (flip) flipRows(same);
        return same;
    }
    Picture result = changeColour(from, fullSize(from, picture, to), to);
    if (flip) flipRows(result);
    const unsigned depth = std::max(from.depth, 8U);
    for (std::size_t c = 0; c < result.planes.size(); ++c) {
        if (to.isYuv() && c > 0) result.planes[c] = reduced(result.planes[c], to.chromaX, to.chromaY);
        for (std::uint32_t& sample : result.planes[c].samples) {
            if (msbAligned && to.depth > depth) sample <<= to.depth - depth;
        }
    }
    if (to.letters.size() == 4) {
        result.planes.push_back(result.planes[0]);
        result.planes[3].samples.assign(result.planes[3].samples.size(), 0xFF);
    }
    return result;
}

}  // namespace Reference

#include "utility/convert/linemaker.h"

namespace Nivex::Pixels {
namespace {

template <typename T>
DecodeStage<T> decodeStage(const InputFormat& input)
{
    if constexpr (sizeof(T) == 1) {
        return input.decode.to8;
    } else {
        return input.decode.to16;
    }
}

// The nearest row beyond an end mirrors at it, so that its colours are those of the pattern.
std::size_t rowAbove(std::size_t row, std::size_t height)
{
    return row > 0 ? row - 1 : std::size_t{height > 1};
}

std::size_t rowBelow(std::size_t row, std::size_t height)
{
    if (row + 1 < height) return row + 1;
    return height > 1 ? height - 2 : 0;
}

// Rows of a subsampled plane serve two rows of the picture each.
const std::uint8_t* planeRow(const Conversion& conversion, std::size_t index, std::size_t row)
{
    const ImagePlane& plane = conversion.sourceLayout.planes[index];
    return conversion.source + plane.offset + plane.stride * (plane.rows == conversion.height ? row : row / 2);
}

}  // namespace

template <typename T>
LineMaker<T>::LineMaker(const Conversion& conversion)
    : conversion_(conversion), decode_(decodeStage<T>(*conversion.input))
{
    constexpr std::size_t lineAlignment = 64 / sizeof(T);
    const LineKind kind = conversion.input->kind == LineKind::Raw ? LineKind::Rgb : conversion.input->kind;
    colour_ = findColourStage<T>(kind, conversion.output->kind);
    bayerOrder_ = BayerOrder(conversion.sourceType).value_or(bayerOrder_);
    pitch_ = (conversion.width + 2 * lineSlack + lineAlignment - 1) / lineAlignment * lineAlignment;
    memory_.reset(new T[pitch_ * (rawLineCount + slots_.size() * 6)]);
    for (T*& line : rawMemory_)
        line = newLine();
    for (Slot& slot : slots_) {
        for (T*& line : slot.decoded)
            line = newLine();
        for (T*& line : slot.converted)
            line = newLine();
    }
}

template <typename T>
T* LineMaker<T>::newLine()
{
    return memory_.get() + pitch_ * lineCount_++ + lineSlack;
}

template <typename T>
Channels<const T> LineMaker<T>::make(std::size_t row, std::size_t slot)
{
    const std::size_t width = conversion_.width;
    Channels<T> line = slots_[slot].decoded;
    if (conversion_.input->kind == LineKind::Raw) {
        demosaic(rawWindow(row), bayerOrder_, row, width, line);
    } else {
        line = decode(row, line);
    }
    return colour_({line[0], line[1], line[2]}, width, slots_[slot].converted);
}

// Gives back where the row's first pixel is: in a bit stream decoding begins up to a group earlier.
template <typename T>
Channels<T> LineMaker<T>::decode(std::size_t row, const Channels<T>& line) const
{
    const std::size_t width = conversion_.width;
    if (!conversion_.continuous) {
        SourceRow source{};
        for (std::size_t i = 0; i < conversion_.sourceLayout.planeCount; ++i) {
            source.plane[i] = planeRow(conversion_, i, row);
        }
        decode_(source, width, line);
        return line;
    }
    const std::size_t skip = row * width % conversion_.input->groupPixels;
    const std::size_t startBit = (row * width - skip) * BitsPerPixel(conversion_.sourceType);
    decode_({{conversion_.source + startBit / 8, nullptr, nullptr}}, skip + width, line);
    return {line[0] + skip, line[1] + skip, line[2] + skip};
}

template <typename T>
const T* LineMaker<T>::rawLine(std::size_t row)
{
    const std::size_t index = row % rawLineCount;
    RawLine& line = raw_[index];
    if (line.row != row) {
        T* const memory = rawMemory_[index];
        line = {row, decode(row, {memory, memory, memory})[0]};
        mirrorEnds(line.samples, conversion_.width);
    }
    return line.samples;
}

template <typename T>
RawWindow<T> LineMaker<T>::rawWindow(std::size_t row)
{
    const std::size_t height = conversion_.height;
    return {rawLine(rowAbove(row, height)), rawLine(row), rawLine(rowBelow(row, height))};
}

template class LineMaker<std::uint8_t>;
template class LineMaker<std::uint16_t>;

}  // namespace Nivex::Pixels

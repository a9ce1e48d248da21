#include "utility/convert/conversion.h"

#include <algorithm>
#include <vector>

#include "utility/convert/bands.h"
#include "utility/convert/linemaker.h"

namespace Nivex::Pixels {
namespace {

// Below this a further thread costs more than it saves.
constexpr std::size_t pixelsPerBand = 65536;

std::size_t bandCountFor(const Conversion& conversion, std::size_t units, std::size_t maxThreads)
{
    const std::size_t pixels = std::size_t{conversion.width} * conversion.height;
    return std::max(std::size_t{1}, std::min({maxThreads, units, pixels / pixelsPerBand}));
}

std::size_t sourceRowOf(const Conversion& conversion, std::size_t destinationRow, std::size_t rows)
{
    return conversion.flip ? rows - 1 - destinationRow : destinationRow;
}

std::uint8_t* destinationPlaneRow(const Conversion& conversion, std::size_t index, std::size_t row)
{
    const ImagePlane& plane = conversion.destinationLayout.planes[index];
    return conversion.destination + plane.offset + plane.stride * row;
}

// A subsampled plane has one row for two of the picture.
std::size_t rowInPlane(const Conversion& conversion, std::size_t index, std::size_t row)
{
    return conversion.destinationLayout.planes[index].rows == conversion.height ? row : row / 2;
}

void clearPadding(const Conversion& conversion, std::size_t index, std::size_t row)
{
    const ImagePlane& plane = conversion.destinationLayout.planes[index];
    std::memset(destinationPlaneRow(conversion, index, row) + plane.rowBytes, 0, plane.stride - plane.rowBytes);
}

DestinationRow destinationRows(const Conversion& conversion, std::size_t row)
{
    DestinationRow rows{};
    for (std::size_t i = 0; i < conversion.destinationLayout.planeCount; ++i) {
        rows.plane[i] = destinationPlaneRow(conversion, i, rowInPlane(conversion, i, row));
        clearPadding(conversion, i, rowInPlane(conversion, i, row));
    }
    if (conversion.output->rowsAtOnce == 2 && row + 1 < conversion.height) {
        rows.secondLuma = destinationPlaneRow(conversion, 0, row + 1);
        clearPadding(conversion, 0, row + 1);
    }
    return rows;
}

template <typename T>
void convertBand(const Conversion& conversion, EncodeStage<T> encode, LineMaker<T>& maker, std::size_t beginUnit,
                 std::size_t endUnit)
{
    const std::size_t rowsAtOnce = conversion.output->rowsAtOnce;
    for (std::size_t unit = beginUnit; unit < endUnit; ++unit) {
        const std::size_t row = unit * rowsAtOnce;
        std::array<Channels<const T>, 2> lines{};
        lines[0] = maker.make(sourceRowOf(conversion, row, conversion.height), 0);
        // The lone last row of an odd height is its own neighbour, which leaves its means as they are.
        lines[1] = rowsAtOnce == 2 && row + 1 < conversion.height
                       ? maker.make(sourceRowOf(conversion, row + 1, conversion.height), 1)
                       : lines[0];
        encode(lines.data(), conversion.width, conversion.shift, destinationRows(conversion, row));
    }
}

template <typename T>
void convertRows(const Conversion& conversion, EncodeStage<T> encode, std::size_t maxThreads)
{
    const std::size_t rowsAtOnce = conversion.output->rowsAtOnce;
    const std::size_t units = (conversion.height + rowsAtOnce - 1) / rowsAtOnce;
    const std::size_t bandCount = bandCountFor(conversion, units, maxThreads);
    std::vector<LineMaker<T>> makers;
    makers.reserve(bandCount);
    for (std::size_t band = 0; band < bandCount; ++band)
        makers.emplace_back(conversion);
    forEachBand(bandCount, units, [&](std::size_t band, std::size_t begin, std::size_t end) {
        convertBand(conversion, encode, makers[band], begin, end);
    });
}

void copyPlaneRow(const Conversion& conversion, std::size_t index, std::size_t row)
{
    const ImagePlane& from = conversion.sourceLayout.planes[index];
    const std::size_t sourceRow = sourceRowOf(conversion, row, from.rows);
    std::memcpy(destinationPlaneRow(conversion, index, row),
                conversion.source + from.offset + from.stride * sourceRow, from.rowBytes);
    clearPadding(conversion, index, row);
}

void copyRows(const Conversion& conversion, std::size_t maxThreads)
{
    for (std::size_t i = 0; i < conversion.sourceLayout.planeCount; ++i) {
        const std::size_t rows = conversion.sourceLayout.planes[i].rows;
        forEachBand(bandCountFor(conversion, rows, maxThreads), rows,
                    [&](std::size_t, std::size_t begin, std::size_t end) {
                        for (std::size_t row = begin; row < end; ++row)
                            copyPlaneRow(conversion, i, row);
                    });
    }
}

}  // namespace

void run(const Conversion& conversion, std::size_t maxThreads)
{
    if (conversion.sourceType == conversion.output->pixelType) {
        copyRows(conversion, maxThreads);
    } else if (conversion.output->depth == 8 || conversion.input->depth == 8) {
        convertRows<std::uint8_t>(conversion, conversion.output->from8, maxThreads);
    } else {
        convertRows<std::uint16_t>(conversion, conversion.output->from16, maxThreads);
    }
}

}  // namespace Nivex::Pixels

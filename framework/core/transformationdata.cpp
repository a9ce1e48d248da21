#include "core/transformationdata.h"

#include "gcbase/exception.h"

namespace Nivex::DataProcessing::Core {

TransformationData::TransformationData(std::size_t sizeX, std::size_t sizeY, std::vector<double> values)
    : DataValue(TransformationDataData{sizeX, sizeY, std::move(values)})
{
    const std::size_t count = data().values.size();
    const bool fits = sizeX == 0 || sizeY == 0 ? count == 0 : count % sizeX == 0 && count / sizeX == sizeY;
    if (!fits) {
        GENICAM_THROW(InvalidArgumentException,
                      "A matrix of %zu columns and %zu rows cannot be made of %zu values.", sizeX, sizeY, count);
    }
}

double TransformationData::get(std::size_t x, std::size_t y) const
{
    const auto& matrix = data();
    if (x >= matrix.sizeX || y >= matrix.sizeY) {
        GENICAM_THROW(InvalidArgumentException,
                      "There is no element (%zu, %zu) in a matrix of %zu columns and %zu rows.", x, y,
                      matrix.sizeX, matrix.sizeY);
    }
    return matrix.values[y * matrix.sizeX + x];
}

}  // namespace Nivex::DataProcessing::Core

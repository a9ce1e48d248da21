#pragma once

#include <cstddef>
#include <vector>

#include "core/value.h"

namespace Nivex::DataProcessing::Core {

struct TransformationDataData
{
    static constexpr const char* className = "TransformationData";
    std::size_t sizeX = 0;
    std::size_t sizeY = 0;
    std::vector<double> values;  ///< Row by row.
};

/// A matrix of a transformation, sizeX columns by sizeY rows; either may be 0. All getters raise RuntimeException
/// if it holds an error.
class GENICAM_API TransformationData : public DataValue<TransformationDataData>
{
public:
    TransformationData() = default;
    /// Takes the values row by row. Raises InvalidArgumentException if they are not sizeX times sizeY.
    TransformationData(std::size_t sizeX, std::size_t sizeY, std::vector<double> values);
    explicit TransformationData(std::shared_ptr<IError> error) : DataValue(std::move(error)) {}

    std::size_t getSizeX() const { return data().sizeX; }  ///< Columns.
    std::size_t getSizeY() const { return data().sizeY; }  ///< Rows.
    /// The value in column x of row y. Raises InvalidArgumentException outside the matrix.
    double get(std::size_t x, std::size_t y) const;
};

}  // namespace Nivex::DataProcessing::Core

#pragma once

#include <cstdint>
#include <optional>

#include "core/value.h"

namespace Nivex::DataProcessing::Core {

/// An upright rectangle of whole pixels. Left and top may lie outside the picture.
struct BoundingBox
{
    std::int32_t left = 0;
    std::int32_t top = 0;
    std::uint32_t width = 0;
    std::uint32_t height = 0;
};

/// The size in pixels of the picture that a region was found in.
struct ReferenceSize
{
    std::uint32_t width = 0;
    std::uint32_t height = 0;
};

struct RegionData
{
    static constexpr const char* className = "Region";
    std::optional<BoundingBox> boundingBox;
    std::optional<ReferenceSize> referenceSize;
};

/// A part of a picture. All getters raise RuntimeException if it holds an error or the group that they read is
/// absent.
class GENICAM_API Region : public DataValue<RegionData>
{
public:
    Region() = default;
    explicit Region(std::optional<BoundingBox> boundingBox, std::optional<ReferenceSize> referenceSize = {})
        : DataValue(RegionData{boundingBox, referenceSize})
    {}
    explicit Region(std::shared_ptr<IError> error) : DataValue(std::move(error)) {}

    bool hasBoundingBox() const { return data().boundingBox.has_value(); }
    std::int32_t getBoundingBoxLeft() const { return boundingBox().left; }
    std::int32_t getBoundingBoxTop() const { return boundingBox().top; }
    std::uint32_t getBoundingBoxWidth() const { return boundingBox().width; }
    std::uint32_t getBoundingBoxHeight() const { return boundingBox().height; }

    bool hasReferenceSize() const { return data().referenceSize.has_value(); }
    std::uint32_t getReferenceWidth() const { return referenceSize().width; }
    std::uint32_t getReferenceHeight() const { return referenceSize().height; }

private:
    const BoundingBox& boundingBox() const;
    const ReferenceSize& referenceSize() const;
};

}  // namespace Nivex::DataProcessing::Core

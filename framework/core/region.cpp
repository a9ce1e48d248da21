#include "core/region.h"

#include "gcbase/exception.h"

namespace Nivex::DataProcessing::Core {

const BoundingBox& Region::boundingBox() const
{
    if (!hasBoundingBox()) GENICAM_THROW(RuntimeException, "Region has no bounding box.");
    return *data().boundingBox;
}

const ReferenceSize& Region::referenceSize() const
{
    if (!hasReferenceSize()) GENICAM_THROW(RuntimeException, "Region has no reference size.");
    return *data().referenceSize;
}

}  // namespace Nivex::DataProcessing::Core

#include "base/grabresult.h"

#include "gcbase/exception.h"

namespace Nivex {

CNivexDataComponent CGrabResultData::GetDataComponent(std::size_t index) const
{
    if (index < frame_.componentCount) return {Share(), frame_.components[index]};
    const bool isPicture =
        frame_.payloadType == EPayloadType::Image || frame_.payloadType == EPayloadType::ChunkData;
    if (index > 0 || frame_.componentCount > 0 || !isPicture) return {};
    return {Share(), SFrameComponent{.type = EComponentType::Intensity,
                                     .pixelType = frame_.pixelType,
                                     .width = frame_.width,
                                     .height = frame_.height,
                                     .offsetX = frame_.offsetX,
                                     .offsetY = frame_.offsetY,
                                     .paddingX = frame_.paddingX,
                                     .offset = 0,
                                     .size = frame_.imageSize}};
}

const CGrabResultData& CGrabResultPtr::operator*() const
{
    if (!result_) GENICAM_THROW(LogicalErrorException, "There is no grab result to be asked.");
    return *result_;
}

bool CNivexDataComponent::IsValid() const
{
    if (!result_ || !HasPixelLayout(component_.pixelType)) return false;
    const std::size_t bufferSize = result_->GetBufferSize();
    if (component_.offset > bufferSize || component_.size > bufferSize - component_.offset) return false;
    const auto layout =
        ComputeImageLayout(component_.pixelType, component_.width, component_.height, component_.paddingX);
    return layout && layout->size <= component_.size;
}

void* CNivexDataComponent::GetBuffer()
{
    if (!IsValid()) return nullptr;
    return static_cast<std::byte*>(result_->GetBuffer()) + component_.offset;
}

const void* CNivexDataComponent::GetBuffer() const
{
    return CNivexDataComponent(*this).GetBuffer();
}

}  // namespace Nivex

#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

#include "gcbase/gcstring.h"
#include "genapi/inodemap.h"

#include "base/camerabackend.h"
#include "utility/image.h"

namespace Nivex {

class CGrabResultPtr;
class CNivexDataComponent;

/// One frame of a camera in the buffer that the camera wrote it into. Made by CInstantCamera, shared through
/// CGrabResultPtr. Nothing of it changes while it is shared, but for the chunk node map's selectors; all
/// operations may be called from any thread.
class GENICAM_API CGrabResultData
{
public:
    virtual ~CGrabResultData() = default;

    bool GrabSucceeded() const { return frame_.isComplete; }
    /// Empty for a good frame; may be empty for a failed one.
    GenICam::gcstring GetErrorDescription() const { return frame_.errorDescription; }
    std::uint32_t GetErrorCode() const { return frame_.errorCode; }

    EPayloadType GetPayloadType() const { return frame_.payloadType; }
    EPixelType GetPixelType() const { return frame_.pixelType; }
    std::uint32_t GetWidth() const { return frame_.width; }    ///< In pixels.
    std::uint32_t GetHeight() const { return frame_.height; }  ///< In rows.
    std::uint32_t GetOffsetX() const { return frame_.offsetX; }
    std::uint32_t GetOffsetY() const { return frame_.offsetY; }
    std::size_t GetPaddingX() const { return frame_.paddingX; }  ///< Bytes behind each row.

    /// The start of the grab buffer, which may be written to by its only user.
    void* GetBuffer() const { return frame_.buffer.data; }
    std::size_t GetBufferSize() const { return frame_.buffer.size; }   ///< Bytes that the buffer can hold.
    std::size_t GetPayloadSize() const { return frame_.payloadSize; }  ///< Bytes received.
    std::size_t GetImageSize() const { return frame_.imageSize; }      ///< Bytes of the picture.

    std::uint64_t GetBlockID() const { return frame_.blockId; }      ///< The camera's frame number; 0 if none.
    std::uint64_t GetTimeStamp() const { return frame_.timestamp; }  ///< The camera's clock, in ns.
    /// From 1, since the grabbing was started; those skipped have one too.
    std::uint64_t GetImageNumber() const { return imageNumber_; }
    /// Results dropped by the grab strategy directly before this one.
    std::uint64_t GetNumberOfSkippedImages() const { return skipped_; }

    /// 0 for a payload of one picture.
    std::size_t GetDataComponentCount() const { return frame_.componentCount; }
    /// The component of that index; one that is not valid if there is none. Index 0 of a payload of one picture is
    /// that picture.
    CNivexDataComponent GetDataComponent(std::size_t index) const;

    /// True if the frame carries chunks, as far as its end tells.
    bool IsChunkDataAvailable() const { return frame_.hasChunks; }
    /// The map whose chunk features show this frame. Never null; raises RuntimeException if the camera or the
    /// frame has no chunks, those of this frame are damaged, or ChunkNodeMapsEnable is off. Who keeps it longer
    /// than the result finds its features not available.
    virtual GenApi::NodeMapPtr GetChunkDataNodeMap() const = 0;

protected:
    CGrabResultData() = default;

    SFrame frame_;
    std::uint64_t imageNumber_ = 0;
    std::uint64_t skipped_ = 0;

private:
    friend class CNivexDataComponent;
    friend class CGrabResultPtr;
    /// Another pointer to the same result.
    virtual CGrabResultPtr Share() const = 0;
};

/// Shares a grab result. When the last copy lets go, on whatever thread, the buffer goes back to the camera's
/// queue, or is freed if the camera does not grab any more or is gone. A copy itself is not synchronised.
class GENICAM_API CGrabResultPtr
{
public:
    CGrabResultPtr() = default;
    explicit CGrabResultPtr(std::shared_ptr<const CGrabResultData> result) : result_(std::move(result)) {}

    bool IsValid() const { return result_ != nullptr; }
    explicit operator bool() const { return IsValid(); }
    void Release() { result_.reset(); }
    bool IsUnique() const { return result_.use_count() == 1; }

    /// Both raise LogicalErrorException if there is no result.
    const CGrabResultData* operator->() const { return &**this; }
    const CGrabResultData& operator*() const;

private:
    std::shared_ptr<const CGrabResultData> result_;
};

/// One picture of a grab result. It shares the result, and with it the buffer; a copy costs no pixels.
class GENICAM_API CNivexDataComponent : public IImage
{
public:
    CNivexDataComponent() = default;  ///< Not valid.
    CNivexDataComponent(CGrabResultPtr result, const SFrameComponent& component)
        : result_(std::move(result)), component_(component)
    {}

    EComponentType GetComponentType() const { return component_.type; }
    std::uint32_t GetOffsetX() const { return component_.offsetX; }
    std::uint32_t GetOffsetY() const { return component_.offsetY; }
    void Release() { *this = {}; }

    /// True when it shows a picture of a known pixel type that lies within the grab buffer.
    bool IsValid() const override;
    EPixelType GetPixelType() const override { return component_.pixelType; }
    std::uint32_t GetWidth() const override { return component_.width; }
    std::uint32_t GetHeight() const override { return component_.height; }
    std::size_t GetPaddingX() const override { return component_.paddingX; }
    EImageOrientation GetOrientation() const override { return EImageOrientation::TopDown; }
    void* GetBuffer() override;
    const void* GetBuffer() const override;
    std::size_t GetImageSize() const override { return component_.size; }

private:
    CGrabResultPtr result_;
    SFrameComponent component_;
};

}  // namespace Nivex

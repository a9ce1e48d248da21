#pragma once

#include <algorithm>
#include <vector>

#include "utility/image.h"

/// A destination with bytes behind its end that nobody may write.
class GuardedImage : public Nivex::IReusableImage
{
public:
    bool IsValid() const override { return !memory_.empty(); }
    Nivex::EPixelType GetPixelType() const override { return pixelType_; }
    std::uint32_t GetWidth() const override { return width_; }
    std::uint32_t GetHeight() const override { return height_; }
    std::size_t GetPaddingX() const override { return paddingX_; }
    Nivex::EImageOrientation GetOrientation() const override { return orientation_; }
    void* GetBuffer() override { return memory_.data(); }
    const void* GetBuffer() const override { return memory_.data(); }
    std::size_t GetImageSize() const override { return memory_.empty() ? 0 : memory_.size() - guardSize; }

    void Reset(Nivex::EPixelType pixelType, std::uint32_t width, std::uint32_t height, std::size_t paddingX,
               Nivex::EImageOrientation orientation) override
    {
        memory_.assign(Nivex::ComputeImageSize(pixelType, width, height, paddingX).value() + guardSize, guard);
        pixelType_ = pixelType;
        width_ = width;
        height_ = height;
        paddingX_ = paddingX;
        orientation_ = orientation;
    }
    void Release() override { memory_.clear(); }

    std::vector<std::uint8_t> pixels() const { return {memory_.begin(), memory_.end() - guardSize}; }
    bool isGuardIntact() const
    {
        return std::all_of(memory_.end() - guardSize, memory_.end(),
                           [](std::uint8_t byte) { return byte == guard; });
    }

private:
    static constexpr std::uint8_t guard = 0xA5;
    static constexpr std::ptrdiff_t guardSize = 64;

    std::vector<std::uint8_t> memory_;
    Nivex::EPixelType pixelType_ = Nivex::EPixelType::Undefined;
    std::uint32_t width_ = 0;
    std::uint32_t height_ = 0;
    std::size_t paddingX_ = 0;
    Nivex::EImageOrientation orientation_ = Nivex::EImageOrientation::TopDown;
};

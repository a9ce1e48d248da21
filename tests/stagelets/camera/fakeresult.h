#pragma once

#include <functional>
#include <memory>
#include <vector>

#include "base/grabresult.h"

namespace Plugin::NivexStageletPackageBase::Test {

/// A grab result of the test's making over a buffer of its own.
class FakeResult : public Nivex::CGrabResultData, public std::enable_shared_from_this<FakeResult>
{
public:
    explicit FakeResult(std::size_t bufferSize) : bytes_(bufferSize)
    {
        for (std::size_t i = 0; i < bufferSize; ++i) {
            bytes_[i] = static_cast<std::byte>(i);
        }
        frame_.buffer = {.data = bytes_.data(), .size = bufferSize};
        frame_.isComplete = true;
        frame_.payloadType = Nivex::EPayloadType::Image;
        frame_.payloadSize = bufferSize;
    }

    void setForm(Nivex::EPixelType pixelType, std::uint32_t width, std::uint32_t height, std::size_t paddingX = 0)
    {
        frame_.pixelType = pixelType;
        frame_.width = width;
        frame_.height = height;
        frame_.paddingX = paddingX;
    }
    Nivex::SFrame& frame() { return frame_; }
    Nivex::CGrabResultPtr pointer() const { return Nivex::CGrabResultPtr(shared_from_this()); }
    GenApi::NodeMapPtr GetChunkDataNodeMap() const override { return chunkMap(); }

    std::function<GenApi::NodeMapPtr()> chunkMap;

private:
    Nivex::CGrabResultPtr Share() const override { return pointer(); }

    std::vector<std::byte> bytes_;
};

}  // namespace Plugin::NivexStageletPackageBase::Test

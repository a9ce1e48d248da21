// A camera object from attachment to results, on one thread.
#include "base/instantcamera.h"

#include "sdk/camera/fakebackend.h"

using namespace CameraTest;
using namespace Nivex;
using namespace std::chrono_literals;

namespace {

TEST(Camera, DeliversFramesInTheBuffersTheyWereWrittenInto)
{
    const auto state = std::make_shared<FakeState>();
    auto* device = new FakeDevice(state);
    CInstantCamera camera;
    camera.Attach(device);
    camera.StartGrabbing(2);
    EXPECT_EQ(state->QueuedCount(), 10U);
    const std::byte* memory = nullptr;
    ASSERT_TRUE(device->PushFrame([&](SFrame& frame) { memory = frame.buffer.data; }));
    CGrabResultPtr result;
    ASSERT_TRUE(camera.RetrieveResult(1s, result));
    EXPECT_EQ(result->GetBuffer(), memory);
    EXPECT_EQ(state->QueuedCount(), 9U);
    result.Release();
    EXPECT_EQ(state->QueuedCount(), 10U);
    ASSERT_TRUE(device->PushFrame());
    ASSERT_TRUE(camera.RetrieveResult(1s, result));
    EXPECT_FALSE(camera.IsGrabbing());
    camera.DetachDevice();
    EXPECT_FALSE(state->isAlive);
    EXPECT_EQ(result->GetImageNumber(), 2U);
}

}  // namespace

// Sharing, attaching and reusing of image memory.

#include "utility/niveximage.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <limits>
#include <thread>
#include <vector>

#include "gcbase/exception.h"

#include "sdk/imagefiles/imagetesting.h"

using namespace Nivex;
using namespace ImageTesting;

namespace {

constexpr EImageOrientation topDown = EImageOrientation::TopDown;

void expectEmpty(const CNivexImage& image)
{
    EXPECT_FALSE(image.IsValid());
    EXPECT_FALSE(image.IsUnique());
    EXPECT_FALSE(image.IsUserBufferAttached());
    EXPECT_EQ(image.GetPixelType(), EPixelType::Undefined);
    EXPECT_EQ(image.GetWidth() + image.GetHeight() + image.GetPaddingX(), 0U);
    EXPECT_EQ(image.GetImageSize() + image.GetAllocatedBufferSize(), 0U);
    EXPECT_EQ(image.GetBuffer(), nullptr);
}

}  // namespace

// Every way to lose a picture leaves an object that shows nothing of it.
TEST(NivexImage, IsEmptyWhenItHoldsNothing)
{
    expectEmpty(CNivexImage());
    CNivexImage released = makePicture(EPixelType::Mono8, 4, 3);
    released.Release();
    expectEmpty(released);
    CNivexImage from = makePicture(EPixelType::Mono8, 4, 3);
    const CNivexImage to = std::move(from);
    expectEmpty(from);  // NOLINT(bugprone-use-after-move): that is the claim.
    EXPECT_EQ(to.GetWidth(), 4U);
}

// Copies show the same memory until one of them is reset; the others keep the picture.
TEST(NivexImage, CopiesShareUntilOneIsReset)
{
    CNivexImage first = makePicture(EPixelType::RGB8Packed, 5, 3, 2, EImageOrientation::BottomUp);
    const auto rows = rowsOf(first);
    const CNivexImage second = first;
    EXPECT_EQ(second.GetBuffer(), std::as_const(first).GetBuffer());
    EXPECT_FALSE(first.IsUnique());

    first.Reset(EPixelType::RGB8Packed, 5, 3);
    EXPECT_NE(second.GetBuffer(), std::as_const(first).GetBuffer());
    EXPECT_EQ(rowsOf(second), rows);
    EXPECT_EQ(second.GetPaddingX(), 2U);
    EXPECT_TRUE(first.IsUnique());
    EXPECT_TRUE(second.IsUnique());
}

// Memory is kept by a reset only where it is large enough and nobody else sees it.
TEST(NivexImage, ResetReusesItsMemory)
{
    CNivexImage image;
    image.Reset(EPixelType::Mono16, 16, 16);
    const void* const memory = image.GetBuffer();
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(memory) % 64, 0U);
    image.Reset(EPixelType::Mono8, 7, 5, 3, EImageOrientation::BottomUp);
    EXPECT_EQ(image.GetBuffer(), memory);
    EXPECT_EQ(image.GetImageSize(), 50U);
    EXPECT_EQ(image.GetAllocatedBufferSize(), 512U);
    EXPECT_EQ(image.GetOrientation(), EImageOrientation::BottomUp);
    image.Reset(EPixelType::RGB16Packed, 16, 16);
    EXPECT_EQ(image.GetAllocatedBufferSize(), 1536U);
}

TEST(NivexImage, ForeignMemoryIsNeverWrittenByReset)
{
    std::array<std::uint8_t, 64> memory{};
    CNivexImage image;
    image.AttachUserBuffer(memory.data(), memory.size(), EPixelType::Mono8, 4, 4, 0, topDown);
    EXPECT_EQ(image.GetBuffer(), memory.data());
    EXPECT_EQ(image.GetAllocatedBufferSize(), 64U);
    EXPECT_TRUE(image.IsUserBufferAttached());
    image.CopyImage(makePicture(EPixelType::Mono8, 4, 4));
    EXPECT_NE(image.GetBuffer(), memory.data());
    EXPECT_FALSE(image.IsUserBufferAttached());
    EXPECT_THAT(memory, testing::Each(0));
}

// The handler comes once, with the last user, however that one lets go.
TEST(NivexImage, ReleaseHandlerComesWithTheLastUser)
{
    using LetGo = void (*)(CNivexImage&);
    const LetGo ways[] = {
        [](CNivexImage& image) { image.Release(); },
        [](CNivexImage& image) { image.Reset(EPixelType::Mono8, 2, 2); },
        [](CNivexImage& image) { image = CNivexImage(); },
        [](CNivexImage& image) { image.CopyImage(CNivexImage(image)); },
        [](CNivexImage& image) {
            std::uint8_t other = 0;
            image.AttachUserBuffer(&other, 1, EPixelType::Mono8, 1, 1, 0, topDown);
            image.Release();
        },
    };
    for (const LetGo letGo : ways) {
        std::array<std::uint8_t, 4> memory{};
        int calls = 0;
        CNivexImage image;
        image.AttachUserBuffer(memory.data(), 4, EPixelType::Mono8, 2, 2, 0, topDown, [&calls] { ++calls; });
        {
            const CNivexImage share = image;
            letGo(image);
            EXPECT_EQ(calls, 0);
        }
        EXPECT_EQ(calls, 1);
        image.Release();
        EXPECT_EQ(calls, 1);
    }
}

// Shares handed to threads are read there while the first owner waits to write again.
TEST(NivexImage, SharesMayBeLetGoOfOnAnyThread)
{
    constexpr int threadCount = 8;
    std::vector<std::uint8_t> memory(64, 7);
    std::atomic<int> calls = 0;
    std::atomic<int> sum = 0;
    CNivexImage attached;
    attached.AttachUserBuffer(memory.data(), 64, EPixelType::Mono8, 8, 8, 0, topDown, [&] {
        ++calls;
        memory.assign(64, 0);
    });
    CNivexImage own = makePicture(EPixelType::Mono8, 8, 8);
    {
        std::vector<std::jthread> threads;
        for (int i = 0; i < threadCount; ++i) {
            threads.emplace_back([share = attached, second = own, &sum]() mutable {
                sum += static_cast<const std::uint8_t*>(std::as_const(share).GetBuffer())[63];
                sum += static_cast<const std::uint8_t*>(std::as_const(second).GetBuffer())[0] * 0;
                share.Release();
                second.Release();
            });
        }
        attached.Release();
        while (!own.IsUnique()) {
            std::this_thread::yield();
        }
        static_cast<std::uint8_t*>(own.GetBuffer())[0] = 1;
    }
    EXPECT_EQ(calls, 1);
    EXPECT_EQ(sum, 7 * threadCount);
}

// A part of an image's own picture may become the image.
TEST(NivexImage, CopiesFromItsOwnMemory)
{
    CNivexImage image = makePicture(EPixelType::Mono8, 6, 4);
    const auto rows = rowsOf(image);
    const auto* lastRows = static_cast<const std::uint8_t*>(image.GetBuffer()) + 12;
    image.CopyImage(lastRows, 12, EPixelType::Mono8, 6, 2, 0, topDown);
    EXPECT_THAT(rowsOf(image), testing::ElementsAreArray(rows.begin() + 12, rows.end()));
    image.CopyImage(image);
    EXPECT_EQ(image.GetHeight(), 2U);
}

// What is refused leaves the picture as it was and does not call the handler.
TEST(NivexImage, RefusalsLeaveItUnchanged)
{
    constexpr std::size_t hugePadding = std::numeric_limits<std::size_t>::max() / 2;
    struct Case
    {
        EPixelType pixelType;
        std::uint32_t width, height;
        std::size_t paddingX, bufferSize;
        bool isNull;
        const char* text;
    };
    const Case cases[] = {
        {EPixelType::Undefined, 2, 2, 0, 64, false, "0xFFFFFFFF"},
        {EPixelType::Mono8, 0, 2, 0, 64, false, "0 x 2"},
        {EPixelType::Mono8, 2, 0, 0, 64, false, "2 x 0"},
        {EPixelType::Mono8, 2, 3, hugePadding, 64, false, "address space"},
        {EPixelType::RGB8Packed, 3, 3, 1, 29, false, "need 30"},
        {EPixelType::Mono8, 2, 2, 0, 64, true, "null"},
    };
    std::array<std::uint8_t, 64> memory{};
    for (const Case& c : cases) {
        SCOPED_TRACE(c.text);
        int calls = 0;
        CNivexImage image = makePicture(EPixelType::Mono8, 3, 3);
        const auto rows = rowsOf(image);
        void* const buffer = c.isNull ? nullptr : memory.data();
        const auto refused = testing::ThrowsMessage<GenICam::InvalidArgumentException>(testing::HasSubstr(c.text));
        EXPECT_THAT(
            [&] { image.CopyImage(buffer, c.bufferSize, c.pixelType, c.width, c.height, c.paddingX, topDown); },
            refused);
        EXPECT_THAT(
            [&] {
                image.AttachUserBuffer(buffer, c.bufferSize, c.pixelType, c.width, c.height, c.paddingX, topDown,
                                       [&calls] { ++calls; });
            },
            refused);
        EXPECT_EQ(rowsOf(image), rows);
        EXPECT_EQ(calls, 0);
    }
    CNivexImage image;
    EXPECT_THROW(image.CopyImage(CNivexImage()), GenICam::InvalidArgumentException);
    EXPECT_THROW(image.Reset(EPixelType::RGB16Packed, 0xFFFFFFFF, 0x40000000), GenICam::GenericException);
    expectEmpty(image);
}

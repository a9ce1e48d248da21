#pragma once

// An emulated camera, opened, with a listener and a sink that remember everything.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <condition_variable>
#include <cstring>
#include <map>
#include <mutex>
#include <string>
#include <vector>

#include "gcbase/exception.h"
#include "genapi/genapi.h"

#include "base/emulation/emulatedbackend.h"
#include "utility/pixelformats.h"

#include "genicam/genapi/world.h"

namespace EmulationTest {

using namespace Nivex;
using GenApiTest::ExpectFailure;

constexpr std::chrono::seconds patience{60};

struct Event
{
    std::uint64_t id;
    std::vector<std::uint8_t> data;
};

/// A frame and what its buffer held.
struct Taken
{
    SFrame frame;
    std::vector<std::byte> bytes;
};

class Listener : public IDeviceListener
{
public:
    void OnDeviceEvent(std::uint64_t id, const std::uint8_t* data, std::size_t size) noexcept override
    {
        const std::lock_guard lock(mutex_);
        events_.push_back({id, {data, data + size}});
        changed_.notify_all();
    }
    void OnDeviceEventsLost(std::uint64_t id, std::uint64_t count) noexcept override
    {
        const std::lock_guard lock(mutex_);
        lostEvents_[id] += count;
    }
    void OnDeviceRemoved() noexcept override
    {
        const std::lock_guard lock(mutex_);
        ++removals_;
        changed_.notify_all();
    }

    bool WaitForRemoval()
    {
        std::unique_lock lock(mutex_);
        return changed_.wait_for(lock, patience, [this] { return removals_ > 0; });
    }
    std::vector<Event> WaitForEvents(std::size_t count)
    {
        std::unique_lock lock(mutex_);
        changed_.wait_for(lock, patience, [&] { return events_.size() >= count; });
        return events_;
    }
    /// By event.
    std::map<std::uint64_t, std::uint64_t> LostEvents()
    {
        const std::lock_guard lock(mutex_);
        return lostEvents_;
    }
    int Removals()
    {
        const std::lock_guard lock(mutex_);
        return removals_;
    }

private:
    std::mutex mutex_;
    std::condition_variable changed_;
    std::vector<Event> events_;
    std::map<std::uint64_t, std::uint64_t> lostEvents_;
    int removals_ = 0;
};

/// Keeps copies of the first frames, and gives the buffers back.
class Sink : public IStreamSink
{
public:
    explicit Sink(std::size_t keep = 1000) : keep_(keep) {}
    void GiveBuffersBackTo(INivexDevice& device) { device_ = &device; }

    void OnFrame(const SFrame& frame) noexcept override
    {
        {
            const std::lock_guard lock(mutex_);
            ++count_;
            if (taken_.size() < keep_)
                taken_.push_back({frame, {frame.buffer.data, frame.buffer.data + frame.payloadSize}});
            changed_.notify_all();
        }
        if (device_) device_->QueueBuffer(frame.buffer);
    }
    std::vector<Taken> WaitFor(std::size_t count)
    {
        std::unique_lock lock(mutex_);
        EXPECT_TRUE(changed_.wait_for(lock, patience, [&] { return count_ >= count; })) << count_ << " frames";
        return taken_;
    }

private:
    const std::size_t keep_;
    INivexDevice* device_ = nullptr;
    std::mutex mutex_;
    std::condition_variable changed_;
    std::size_t count_ = 0;
    std::vector<Taken> taken_;
};

inline void Set(const GenApi::NodeMapPtr& map, const std::string& name, const std::string& value)
{
    auto* const node = dynamic_cast<GenApi::IValue*>(map->GetNode(name));
    ASSERT_NE(node, nullptr) << name;
    node->FromString(value);
}

inline std::string Get(const GenApi::NodeMapPtr& map, const std::string& name)
{
    auto* const node = dynamic_cast<GenApi::IValue*>(map->GetNode(name));
    return node ? node->ToString().str() : "no node " + name;
}

inline std::int64_t Number(const GenApi::NodeMapPtr& map, const std::string& name)
{
    auto* const node = dynamic_cast<GenApi::IInteger*>(map->GetNode(name));
    return node ? node->GetValue() : -1;
}

using Settings = std::vector<std::pair<std::string, std::string>>;

struct World
{
    explicit World(const Settings& settings = {})
    {
        device = backend.CreateDevice(backend.EnumerateDevices().at(0));
        device->Open(listener);
        Apply(settings);
    }

    void Apply(const Settings& settings) const
    {
        for (const auto& [name, value] : settings)
            Set(device->GetNodeMap(), name, value);
    }
    void Execute(const std::string& name) const { Apply({{name, "1"}}); }
    std::string Value(const std::string& name) const { return Get(device->GetNodeMap(), name); }
    std::string Statistic(const std::string& name) const { return Get(device->GetStreamGrabberNodeMap(), name); }

    void Start(IStreamSink& sink, std::size_t bufferCount = 4, std::size_t missingBytes = 0)
    {
        buffers.assign(bufferCount, std::vector<std::byte>(device->GetPayloadSize() - missingBytes));
        device->StartStream(sink);
        for (std::vector<std::byte>& buffer : buffers)
            device->QueueBuffer({buffer.data(), buffer.size(), 7});
        Execute("AcquisitionStart");
    }
    /// The first frames of a stream that is stopped then.
    std::vector<Taken> Take(std::size_t count)
    {
        Sink sink(count);
        sink.GiveBuffersBackTo(*device);
        Start(sink);
        auto taken = sink.WaitFor(count);
        Execute("AcquisitionStop");
        device->StopStream();
        return taken;
    }

    CEmulatedCameraBackend backend{1};
    Listener listener;
    std::vector<std::vector<std::byte>> buffers;
    std::unique_ptr<INivexDevice> device;  // ends before what it uses
};

/// Frames without waiting for their time.
inline const Settings fast = {{"AcquisitionFrameRateEnable", "0"}};

inline Settings operator+(Settings first, const Settings& second)
{
    first.insert(first.end(), second.begin(), second.end());
    return first;
}

}  // namespace EmulationTest

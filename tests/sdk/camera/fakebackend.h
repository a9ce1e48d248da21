#pragma once

#include <gmock/gmock.h>

#include <algorithm>
#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <cstring>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "gcbase/exception.h"
#include "genapi/genapi.h"

#include "base/camerabackend.h"

// A camera that does what a test tells it, when it tells it: frames, events and removals happen inside the calls
// of the test and on its thread. Nothing runs by itself.
namespace CameraTest {

using GenICam::gcstring;

/// Nodes that every fake camera has; a test may add more.
inline std::string FakeDescription(const std::string& moreNodes = {})
{
    return R"(<?xml version="1.0" encoding="UTF-8"?>
<RegisterDescription xmlns="http://www.genicam.org/GenApi/Version_1_1" SchemaMajorVersion="1" SchemaMinorVersion="1">
<Category Name="Root"><pFeature>Gain</pFeature></Category>
<Command Name="AcquisitionStart"><pValue>StartReg</pValue><CommandValue>1</CommandValue></Command>
<Command Name="AcquisitionStop"><pValue>StopReg</pValue><CommandValue>1</CommandValue></Command>
<Command Name="TriggerSoftware"><pValue>TriggerReg</pValue><CommandValue>1</CommandValue></Command>
<IntReg Name="StartReg"><Address>0</Address><Length>4</Length><AccessMode>WO</AccessMode><pPort>Device</pPort></IntReg>
<IntReg Name="StopReg"><Address>4</Address><Length>4</Length><AccessMode>WO</AccessMode><pPort>Device</pPort></IntReg>
<IntReg Name="TriggerReg"><Address>8</Address><Length>4</Length><AccessMode>WO</AccessMode><pPort>Device</pPort></IntReg>
<IntReg Name="TLParamsLocked"><Address>12</Address><Length>4</Length><AccessMode>RW</AccessMode><pPort>Device</pPort></IntReg>
<IntReg Name="Gain"><Address>16</Address><Length>4</Length><AccessMode>RW</AccessMode><pPort>Device</pPort></IntReg>
<Integer Name="EventData"><pValue>EventDataReg</pValue></Integer>
<IntReg Name="EventDataReg"><Address>0</Address><Length>4</Length><AccessMode>RO</AccessMode><pPort>EventPort</pPort>
  <pInvalidator>Gain</pInvalidator></IntReg>
<IntReg Name="OtherEventData"><Address>0</Address><Length>4</Length><AccessMode>RO</AccessMode><pPort>OtherEventPort</pPort></IntReg>
<Port Name="EventPort"><EventID>A001</EventID></Port>
<Port Name="OtherEventPort"><EventID>A002</EventID></Port>
)" + moreNodes +
           R"(<Port Name="Device"/>
</RegisterDescription>)";
}

/// One chunk, of id 0x55: a 4-byte number, "ChunkNumber".
inline std::string FakeChunkDescription()
{
    return R"(<?xml version="1.0" encoding="UTF-8"?>
<RegisterDescription xmlns="http://www.genicam.org/GenApi/Version_1_1" SchemaMajorVersion="1" SchemaMinorVersion="1">
<IntReg Name="ChunkNumber"><Address>0</Address><Length>4</Length><AccessMode>RO</AccessMode><pPort>Chunk</pPort></IntReg>
<Port Name="Chunk"><ChunkID>55</ChunkID></Port>
</RegisterDescription>)";
}

inline GenApi::NodeMapPtr MakeMap(const std::string& description)
{
    return GenApi::CNodeMapFactory(GenApi::ContentType_Xml, description.data(), description.size())
        .CreateNodeMap();
}

/// What a fake camera and its test share; it outlives the device object.
struct FakeState
{
    std::string description = FakeDescription();
    std::size_t payloadSize = 64;
    bool hasChunks = true;
    /// Called before the device's operation of that name ("Open", "StartStream", "GetPayloadSize",
    /// "CreateChunkNodeMap") or write to that address ("write 0"); may raise.
    std::function<void(const std::string& operation)> before = [](const std::string&) {};
    std::uint32_t largestValue = 0xFFFFFFFF;  ///< Of what is written beyond it, this is kept.

    std::mutex mutex;
    std::condition_variable changed;
    // Guarded by mutex.
    std::map<std::int64_t, std::uint32_t> registers;
    std::deque<Nivex::SStreamBuffer> queued;
    std::vector<std::string> log;  ///< Operations and writes in order, "write ADDRESS VALUE".
    bool isAlive = false;
    bool isOpen = false;
    bool isRemoved = false;
    bool isStreaming = false;
    int chunkMapsMade = 0;
    std::uint64_t blockId = 0;       ///< Of the last frame.
    std::uint64_t firstBlockId = 0;  ///< What the camera says of its first.

    void Note(const std::string& operation)
    {
        before(operation.substr(0, operation.find(' ', 6)));
        const std::lock_guard lock(mutex);
        if (isRemoved && operation.starts_with("write"))
            GENICAM_THROW(AccessException, "The fake camera was removed.");
        log.push_back(operation);
        changed.notify_all();
    }
    std::vector<std::string> TakeLog()
    {
        const std::lock_guard lock(mutex);
        return std::exchange(log, {});
    }
    std::size_t QueuedCount()
    {
        const std::lock_guard lock(mutex);
        return queued.size();
    }
};

class FakePort : public GenApi::CPortImpl
{
public:
    explicit FakePort(std::shared_ptr<FakeState> state) : state_(std::move(state)) {}
    GenApi::EAccessMode GetAccessMode() const override { return GenApi::RW; }
    void Read(void* buffer, int64_t address, int64_t length) override
    {
        const std::lock_guard lock(state_->mutex);
        if (state_->isRemoved) GENICAM_THROW(AccessException, "The fake camera was removed.");
        std::memset(buffer, 0, static_cast<std::size_t>(length));
        std::memcpy(buffer, &state_->registers[address], static_cast<std::size_t>(std::min<int64_t>(length, 4)));
    }
    void Write(const void* buffer, int64_t address, int64_t length) override
    {
        std::uint32_t value = 0;
        std::memcpy(&value, buffer, static_cast<std::size_t>(std::min<int64_t>(length, 4)));
        state_->Note("write " + std::to_string(address) + " " + std::to_string(value));
        const std::lock_guard lock(state_->mutex);
        state_->registers[address] = std::min(value, state_->largestValue);
    }

private:
    const std::shared_ptr<FakeState> state_;
};

class FakeDevice : public Nivex::INivexDevice
{
public:
    explicit FakeDevice(std::shared_ptr<FakeState> state) : state_(std::move(state)), port_(state_)
    {
        info_.SetPropertyValue(Nivex::Key::FullName, "Fake#1").SetPropertyValue(Nivex::Key::ModelName, "Fake");
        const std::lock_guard lock(state_->mutex);
        state_->isAlive = true;
    }
    ~FakeDevice() override
    {
        Close();
        const std::lock_guard lock(state_->mutex);
        state_->isAlive = false;
    }

    const Nivex::CDeviceInfo& GetDeviceInfo() const override { return info_; }

    void Open(Nivex::IDeviceListener& listener) override
    {
        state_->Note("Open");
        if (IsRemoved()) GENICAM_THROW(RuntimeException, "The fake camera was removed.");
        map_ = MakeMap(state_->description);
        map_->Connect(&port_);
        tl_ = GenApi::CNodeMapFactory::CreateEmptyNodeMap();
        stream_ = GenApi::CNodeMapFactory::CreateEmptyNodeMap();
        const std::lock_guard lock(state_->mutex);
        // Without the lock of the calls, during which listeners take locks that who opens may hold.
        listener_ = &listener;
        state_->isOpen = true;
    }
    void Close() noexcept override
    {
        if (!IsOpen()) return;
        StopStream();
        state_->Note("Close");
        {
            const std::lock_guard calls(calls_);
            listener_ = nullptr;
        }
        map_->Connect(nullptr);
        map_.reset();
        const std::lock_guard lock(state_->mutex);
        state_->isOpen = false;
    }
    bool IsOpen() const override
    {
        const std::lock_guard lock(state_->mutex);
        return state_->isOpen;
    }
    bool IsRemoved() const override
    {
        const std::lock_guard lock(state_->mutex);
        return state_->isRemoved;
    }

    GenApi::NodeMapPtr GetNodeMap() const override { return map_; }
    GenApi::NodeMapPtr GetTLNodeMap() const override { return tl_; }
    GenApi::NodeMapPtr GetStreamGrabberNodeMap() const override { return stream_; }
    GenApi::NodeMapPtr CreateChunkNodeMap() const override
    {
        state_->before("CreateChunkNodeMap");
        if (!state_->hasChunks) return nullptr;
        const std::lock_guard lock(state_->mutex);
        ++state_->chunkMapsMade;
        return MakeMap(FakeChunkDescription());
    }
    Nivex::ETrailerByteOrder GetTrailerByteOrder() const override
    {
        return Nivex::ETrailerByteOrder::LittleEndian;
    }

    std::size_t GetPayloadSize() const override
    {
        state_->before("GetPayloadSize");
        return state_->payloadSize;
    }
    std::uint64_t GetFirstBlockID() const override { return state_->firstBlockId; }
    void StartStream(Nivex::IStreamSink& sink) override
    {
        state_->Note("StartStream");
        if (IsRemoved()) GENICAM_THROW(RuntimeException, "The fake camera was removed.");
        {
            const std::lock_guard frames(frames_);
            const std::lock_guard lock(state_->mutex);
            sink_ = &sink;
            state_->isStreaming = true;
        }
        state_->before("StreamStarted");
    }
    void StopStream() noexcept override
    {
        const std::lock_guard frames(frames_);
        if (!sink_) return;
        sink_ = nullptr;
        {
            const std::lock_guard lock(state_->mutex);
            state_->queued.clear();
            state_->isStreaming = false;
        }
        state_->Note("StopStream");
    }
    void QueueBuffer(const Nivex::SStreamBuffer& buffer) override
    {
        const std::lock_guard lock(state_->mutex);
        if (!state_->isStreaming) return;
        state_->queued.push_back(buffer);
        state_->changed.notify_all();
    }

    /// @name For the test
    /// Fills the next queued buffer with the block ID and delivers it. False, and a frame is lost, if none is
    /// queued or nothing streams. `change` may alter the frame.
    bool PushFrame(const std::function<void(Nivex::SFrame&)>& change = {})
    {
        const std::lock_guard frames(frames_);
        Nivex::SFrame frame;
        {
            const std::lock_guard lock(state_->mutex);
            if (!sink_) return false;
            frame.blockId = ++state_->blockId;
            if (state_->queued.empty()) return false;
            frame.buffer = state_->queued.front();
            state_->queued.pop_front();
        }
        frame.isComplete = true;
        frame.payloadType = Nivex::EPayloadType::Image;
        frame.pixelType = Nivex::EPixelType::Mono8;
        frame.width = 4;
        frame.height = static_cast<std::uint32_t>(std::max<std::size_t>(frame.buffer.size, 32) / 8);
        frame.imageSize = frame.payloadSize = std::size_t{4} * frame.height;
        std::memset(frame.buffer.data, static_cast<int>(frame.blockId), frame.buffer.size);
        if (change) change(frame);
        sink_->OnFrame(frame);
        return true;
    }
    /// False while closed. The data of the event is one 32-bit number.
    bool PushEvent(std::uint64_t eventId, std::uint32_t number)
    {
        std::uint8_t data[4];
        std::memcpy(data, &number, sizeof data);
        const std::lock_guard calls(calls_);
        Nivex::IDeviceListener* const listener = listener_;
        if (!listener) return false;
        listener->OnDeviceEvent(eventId, data, sizeof data);
        return true;
    }
    void LoseEvents(std::uint64_t eventId, std::uint64_t count)
    {
        const std::lock_guard calls(calls_);
        if (Nivex::IDeviceListener* const listener = listener_) listener->OnDeviceEventsLost(eventId, count);
    }
    /// Unplugs the camera; the listener hears of it on this thread.
    void Remove()
    {
        {
            const std::lock_guard lock(state_->mutex);
            state_->isRemoved = true;
        }
        const std::lock_guard calls(calls_);
        if (Nivex::IDeviceListener* const listener = listener_) listener->OnDeviceRemoved();
    }

private:
    const std::shared_ptr<FakeState> state_;
    FakePort port_;
    Nivex::CDeviceInfo info_;
    GenApi::NodeMapPtr map_;
    GenApi::NodeMapPtr tl_;
    GenApi::NodeMapPtr stream_;
    std::mutex frames_;  ///< Held while a frame is delivered: StopStream waits for it.
    std::mutex calls_;   ///< Held while the listener is called: Close waits for it.
    Nivex::IStreamSink* sink_ = nullptr;
    std::atomic<Nivex::IDeviceListener*> listener_{nullptr};
};

/// Turns the frame into a picture of `pictureSize` bytes with the chunk 0x55 holding `number`, trailers included.
inline void AddChunk(Nivex::SFrame& frame, std::size_t pictureSize, std::uint32_t number)
{
    const std::uint32_t words[] = {0x01, static_cast<std::uint32_t>(pictureSize), number, 0x55, 4};
    std::memcpy(frame.buffer.data + pictureSize, words, sizeof words);
    frame.payloadType = Nivex::EPayloadType::ChunkData;
    frame.hasChunks = true;
    frame.width = static_cast<std::uint32_t>(pictureSize);
    frame.height = 1;
    frame.imageSize = pictureSize;
    frame.payloadSize = pictureSize + sizeof words;
}

}  // namespace CameraTest

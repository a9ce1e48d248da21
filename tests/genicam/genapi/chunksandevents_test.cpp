// Ports that read from a buffer's chunks and from events in place of a device, and ports that swap words.
#include <atomic>
#include <thread>

#include "genicam/genapi/world.h"

using namespace GenApiTest;
using namespace GenApi;
using GenICam::AccessException;
using GenICam::InvalidArgumentException;
using ByteOrder = CChunkAdapter::ByteOrder;
using Bytes = std::vector<uint8_t>;

namespace {

void AppendWord(Bytes& bytes, uint32_t word, ByteOrder order)
{
    for (unsigned i = 0; i < 4; ++i)
        bytes.push_back(static_cast<uint8_t>(word >> 8 * (order == ByteOrder::LittleEndian ? i : 3 - i)));
}

Bytes Chunks(const std::vector<std::pair<uint32_t, Bytes>>& chunks, ByteOrder order)
{
    Bytes buffer;
    for (const auto& [id, data] : chunks) {
        buffer.insert(buffer.end(), data.begin(), data.end());
        AppendWord(buffer, id, order);
        AppendWord(buffer, static_cast<uint32_t>(data.size()), order);
    }
    return buffer;
}

std::string RegOn(const std::string& portName, const std::string& name, const std::string& address, int length)
{
    return Node("IntReg", name,
                "<Address>" + address + "</Address><Length>" + std::to_string(length) +
                    "</Length><AccessMode>RW</AccessMode><pPort>" + portName + "</pPort>");
}

struct ChunkWorld : World
{
    ChunkWorld()
        : World(
              Node("Port", "Frame", "<ChunkID>a1b2</ChunkID>") +
              Node("Port", "Kept", "<ChunkID>0x00C0FFEE</ChunkID><CacheChunkData>Yes</CacheChunkData>") +
              Node("Port", "Named", "<pChunkID>Id</pChunkID>") + Node("String", "Id", "<Value>7</Value>") +
              RegOn("Frame", "First", "0", 2) + RegOn("Frame", "Last", "-2", 2) +
              RegOn("Frame", "Beyond", "3", 2) + RegOn("Frame", "Before", "-5", 2) +
              RegOn("Frame", "Size", "0x7FFFFFFFFFFFFFF0", 8) + RegOn("Frame", "Start", "0x7FFFFFFFFFFFFFFF", 8) +
              RegOn("Kept", "KeptByte", "0", 1) + RegOn("Named", "NamedByte", "0", 1) +
              Node("Integer", "Offset", "<Value>1</Value>") +
              Node(
                  "IntReg", "Moving",
                  "<pAddress>Offset</pAddress><Length>1</Length><AccessMode>RO</AccessMode><pPort>Frame</pPort>") +
              Node("Integer", "Follower", "<pValue>First</pValue>"))
    {}

    int64_t Read(const char* name) const { return Integer(name).GetValue(); }
    EAccessMode Mode(const char* name) const { return map->GetNode(name)->GetAccessMode(); }

    CChunkAdapter chunks{*map};
};

TEST(Chunks, AreReadInBothOrdersOfTrailers)
{
    for (const ByteOrder order : {ByteOrder::LittleEndian, ByteOrder::BigEndian}) {
        ChunkWorld world;
        EXPECT_EQ(world.Mode("First"), NA);
        const Bytes buffer =
            Chunks({{0xFFFFFFFF, {9, 9, 9}}, {0xA1B2, {1, 2, 3, 4}}, {0xC0FFEE, {5}}, {7, {6}}, {8, {}}}, order);
        ASSERT_TRUE(CChunkAdapter::CheckBufferLayout(buffer.data(), buffer.size(), order));
        world.chunks.AttachBuffer(buffer.data(), buffer.size(), order);
        const std::pair<const char*, int64_t> values[] = {{"First", 0x0201},   {"Last", 0x0403}, {"Size", 4},
                                                          {"KeptByte", 5},     {"NamedByte", 6}, {"Moving", 2},
                                                          {"Follower", 0x0201}};
        for (const auto& [name, expected] : values) {
            EXPECT_EQ(world.Read(name), expected) << name;
            EXPECT_EQ(world.Mode(name), RO) << name;
        }
        EXPECT_EQ(world.Read("Start"), reinterpret_cast<intptr_t>(buffer.data() + 11));
    }
}

TEST(Chunks, EndWhereTheirBytesEnd)
{
    ChunkWorld world;
    const Bytes buffer = Chunks({{0xA1B2, {1, 2, 3, 4}}}, ByteOrder::LittleEndian);
    world.chunks.AttachBuffer(buffer.data(), buffer.size(), ByteOrder::LittleEndian);
    for (const char* name : {"Beyond", "Before", "NamedByte", "KeptByte"}) {
        EXPECT_EQ(world.Mode(name), NA) << name;
        EXPECT_THROW(world.Read(name), AccessException) << name;
    }
    world.Integer("Offset").SetValue(4);
    EXPECT_EQ(world.Mode("Moving"), NA);
    ExpectFailure<AccessException>([&] { world.Integer("First").SetValue(1); }, "access mode RO");
    ExpectFailure<AccessException>([&] { world.Integer("First").SetValue(1, false); },
                                   "chunk data cannot be written");
    uint8_t byte = 0;
    ExpectFailure<AccessException>([&] { world.Get<IPort>("Frame").Read(&byte, 4, 1); },
                                   "1 bytes at address 4 are not among its 4 bytes of chunk data");
}

TEST(Chunks, ChangeWithTheBufferAndTellTheirFollowers)
{
    ChunkWorld world;
    int calls = 0;
    world.map->GetNode("Follower")->RegisterCallback([&](INode*) { ++calls; });
    const auto attach = [&](const Bytes& buffer) {
        world.chunks.AttachBuffer(buffer.data(), buffer.size(), ByteOrder::BigEndian);
    };
    const Bytes one = Chunks({{0xA1B2, {1, 0}}, {0xC0FFEE, {1}}}, ByteOrder::BigEndian);
    const Bytes two = Chunks({{0xA1B2, {2, 0}}, {0xA1B2, {3, 0}}}, ByteOrder::BigEndian);
    attach(one);
    EXPECT_EQ(calls, 1);
    EXPECT_EQ(world.Read("Follower"), 1);
    attach(two);
    EXPECT_EQ(calls, 2);
    EXPECT_EQ(world.Read("Follower"), 3) << "the last of two chunks with one id counts";
    EXPECT_EQ(world.Mode("KeptByte"), NA) << "a kept chunk belongs to its own buffer";
    world.Get<IString>("Id").SetValue("C0FFEE");
    attach(one);
    EXPECT_EQ(world.Read("NamedByte"), 1);
    world.chunks.DetachBuffer();
    EXPECT_EQ(calls, 4);
    EXPECT_EQ(world.Mode("Follower"), NA);
    EXPECT_EQ(world.Mode("NamedByte"), NA);
    EXPECT_EQ(world.Read("KeptByte"), 1) << "kept";
}

TEST(Chunks, ThatAreNoWholeRowAreRefused)
{
    const Bytes good = Chunks({{1, {1, 2, 3}}, {0xA1B2, {4, 5}}}, ByteOrder::LittleEndian);
    Bytes tooLong = good;
    tooLong[7] = 4;  // the first chunk claims a byte more than there is
    Bytes huge = good;
    huge[huge.size() - 1] = 0xFF;
    const std::pair<Bytes, const char*> cases[] = {
        {tooLong, "the chunk that ends at byte 11 claims 4 bytes, more than there are"},
        {huge, "the chunk that ends at byte 21 claims 4278190082 bytes"},
        {Bytes(good.begin() + 12, good.end()), "claims 2 bytes"},
        {Bytes(7), "its first 7 bytes are no chunk"},
        {{}, "null pointer"}};
    for (const auto& [bytes, part] : cases) {
        ChunkWorld world;
        world.chunks.AttachBuffer(good.data(), good.size(), ByteOrder::LittleEndian);
        EXPECT_EQ(world.Mode("First"), RO);
        EXPECT_FALSE(CChunkAdapter::CheckBufferLayout(bytes.data(), bytes.size(), ByteOrder::LittleEndian));
        const auto* data = bytes.empty() ? nullptr : bytes.data();
        ExpectFailure<InvalidArgumentException>(
            [&, size = bytes.size()] { world.chunks.AttachBuffer(data, size, ByteOrder::LittleEndian); }, part);
        EXPECT_EQ(world.Mode("First"), NA) << part;
    }
    // Any cut and any changed byte is either refused or leaves a map that answers.
    for (std::size_t i = 0; i < good.size(); ++i) {
        Bytes changed = good;
        changed[i] ^= 0x81;
        for (const Bytes& bytes : {changed, Bytes(good.begin() + static_cast<std::ptrdiff_t>(i), good.end())}) {
            ChunkWorld world;
            if (CChunkAdapter::CheckBufferLayout(bytes.data(), bytes.size(), ByteOrder::LittleEndian)) {
                world.chunks.AttachBuffer(bytes.data(), bytes.size(), ByteOrder::LittleEndian);
                EXPECT_EQ(world.Mode("First") == RO, bytes.size() >= 10 && bytes[bytes.size() - 8] == 0xB2 &&
                                                         bytes[bytes.size() - 7] == 0xA1 &&
                                                         bytes[bytes.size() - 6] == 0 &&
                                                         bytes[bytes.size() - 5] == 0);
            }
        }
    }
}

TEST(Chunks, MayBeReadWhileAnotherThreadAttaches)
{
    ChunkWorld world;
    const Bytes one = Chunks({{0xA1B2, {1, 1}}}, ByteOrder::LittleEndian);
    const Bytes two = Chunks({{7, {9}}, {0xA1B2, {2, 2, 2}}}, ByteOrder::LittleEndian);
    std::atomic<bool> done = false;
    std::thread attacher([&] {
        for (int i = 0; i < 500; ++i) {
            const Bytes& buffer = i % 2 ? one : two;
            world.chunks.AttachBuffer(buffer.data(), buffer.size(), ByteOrder::LittleEndian);
            CEventAdapter(*world.map).DeliverEvent(1, buffer.data(), buffer.size());
            if (i % 5 == 0) world.chunks.DetachBuffer();
        }
        done = true;
    });
    int wrong = 0;
    while (!done) {
        try {
            const int64_t value = world.Read("Follower");
            wrong += value != 0x0101 && value != 0x0202;
        } catch (const AccessException&) {
            // Nothing was attached just then.
        }
    }
    attacher.join();
    EXPECT_EQ(wrong, 0);
    EXPECT_EQ(world.Read("Follower"), 0x0101);
}

TEST(Events, ReachTheirNodesAndPorts)
{
    World world(Node("Port", "Exposure", "<EventID>9C40</EventID>") + RegOn("Exposure", "Stamp", "0", 4) +
                RegOn("Exposure", "Missing", "4", 4) +
                Node("Integer", "Shown", "<EventID>9c40</EventID><pValue>Polled</pValue>") +
                Reg("IntReg", "Polled", 0));
    CEventAdapter events(*world.map);
    std::vector<std::string> seen;
    world.map->GetNode("Stamp")->RegisterCallback(
        [&](INode* node) { seen.push_back(IsReadable(node) ? world.Value("Stamp").ToString().str() : "none"); });
    int shown = 0;
    world.map->GetNode("Shown")->RegisterCallback([&](INode*) { ++shown; });
    EXPECT_EQ(world.map->GetNode("Stamp")->GetAccessMode(), NA);
    EXPECT_EQ(world.Integer("Shown").GetValue(), 0);

    world.device.Put(0, {5});
    Bytes data = {1, 0, 0, 0};
    EXPECT_EQ(events.DeliverEvent(0x9C40, data.data(), data.size()), 2U);
    data[0] = 9;  // the map has a copy
    EXPECT_EQ(seen, std::vector<std::string>{"1"});
    EXPECT_EQ(shown, 1);
    EXPECT_EQ(world.Integer("Shown").GetValue(), 5) << "what the value comes from is asked again";
    EXPECT_EQ(world.map->GetNode("Missing")->GetAccessMode(), NA);

    EXPECT_EQ(events.DeliverEvent(0x9C41, data.data(), data.size()), 0U);
    EXPECT_EQ(seen.size(), 1U);
    EXPECT_EQ(world.Integer("Stamp").GetValue(), 1);
    EXPECT_EQ(events.DeliverEvent(0x9C40, nullptr, 0), 2U);
    EXPECT_EQ(seen, (std::vector<std::string>{"1", "none"}));
    ExpectFailure<AccessException>([&] { world.Integer("Stamp").SetValue(1, false); },
                                   "event data cannot be written");
    ExpectFailure<InvalidArgumentException>([&] { events.DeliverEvent(0x9C40, nullptr, 1); }, "null pointer");
}

TEST(Events, LeaveAConnectedPortConnected)
{
    World world(Node("Port", "Other", "<EventID>1</EventID>") + RegOn("Other", "R", "0", 1));
    ByteDevice other;
    other.Put(0, {3});
    ASSERT_TRUE(world.map->Connect(&other, "Other"));
    const uint8_t data = 8;
    EXPECT_EQ(CEventAdapter(*world.map).DeliverEvent(1, &data, 1), 1U);
    EXPECT_EQ(world.Integer("R").GetValue(), 3);
}

TEST(SwappingPorts, ReverseEachWord)
{
    World world(Node("Port", "Quad", "<SwapEndianess>Yes</SwapEndianess>") + RegOn("Quad", "Word", "4", 4) +
                RegOn("Quad", "Half", "9", 2) + RegOn("Quad", "Across", "6", 4));
    ByteDevice quad;
    ASSERT_TRUE(world.map->Connect(&quad, "Quad"));
    quad.Put(4, {1, 2, 3, 4, 5, 6, 7, 8});
    EXPECT_EQ(world.Integer("Word").GetValue(), 0x01020304);
    EXPECT_EQ(world.Integer("Half").GetValue(), 0x0607);
    EXPECT_EQ(world.Integer("Across").GetValue(), 0x07080102);
    world.Integer("Half").SetValue(0xAABB);
    EXPECT_EQ(quad.Bytes(8, 4), (std::vector<int>{5, 0xAA, 0xBB, 8}));
    world.Integer("Word").SetValue(0x11223344);
    EXPECT_EQ(quad.Bytes(4, 4), (std::vector<int>{0x11, 0x22, 0x33, 0x44}));
}

}  // namespace

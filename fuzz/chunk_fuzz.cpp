// Any bytes as a received buffer with chunks, and as the data of an event: nodes that lie in it are read, whether
// the layout was accepted or not.
#include <cstdint>
#include <cstdlib>

#include "gcbase/exception.h"
#include "genapi/genapi.h"

namespace {

using namespace GenApi;

constexpr char description[] = R"(<RegisterDescription>
    <Port Name="P"><ChunkID>7</ChunkID></Port><Port Name="Q"><ChunkID>9</ChunkID><CacheChunkData>Yes</CacheChunkData></Port>
    <Port Name="V"><EventID>1</EventID></Port><Integer Name="I"><Value>1</Value></Integer>
    <IntReg Name="A"><Address>0</Address><Length>4</Length><pPort>P</pPort></IntReg>
    <IntReg Name="B"><Address>-2</Address><Length>2</Length><pPort>P</pPort></IntReg>
    <IntReg Name="L"><Address>0x7FFFFFFFFFFFFFF0</Address><Length>8</Length><pPort>P</pPort></IntReg>
    <StringReg Name="S"><pAddress>I</pAddress><pLength>L</pLength><pPort>Q</pPort></StringReg>
    <IntReg Name="E"><Address>3</Address><pIndex>I</pIndex><Length>8</Length><pPort>V</pPort></IntReg>
    </RegisterDescription>)";

struct World
{
    NodeMapPtr map = CNodeMapFactory(ContentType_Xml, description, sizeof description - 1).CreateNodeMap();
    CChunkAdapter chunks{*map};
    CEventAdapter events{*map};
    NodeList_t nodes;

    World() { map->GetNodes(nodes); }

    void readAll() const
    {
        for (INode* node : nodes) {
            auto* value = dynamic_cast<IValue*>(node);
            if (!value) continue;
            const bool readable = IsReadable(node);
            try {
                value->ToString();
            } catch (const GenICam::GenericException&) {
                if (readable) std::abort();  // it said that it could be read
            }
        }
    }
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size)
{
    static World world;
    for (const auto order : {CChunkAdapter::ByteOrder::LittleEndian, CChunkAdapter::ByteOrder::BigEndian}) {
        const bool accepted = CChunkAdapter::CheckBufferLayout(data, size, order);
        try {
            world.chunks.AttachBuffer(data, size, order);
            if (!accepted) std::abort();
        } catch (const GenICam::InvalidArgumentException&) {
            if (accepted) std::abort();
        }
        world.readAll();
        world.chunks.DetachBuffer();
        world.readAll();
    }
    world.events.DeliverEvent(1, data, size);
    world.readAll();
    return 0;
}

// Any bytes as a register description: whatever map comes of them, all its nodes are asked everything over a port
// of zeros. Failures of the GenICam family are an answer; anything else is a find.
#include <cstdint>
#include <cstring>
#include <deque>

#include "gcbase/exception.h"
#include "genapi/genapi.h"

namespace {

using namespace GenApi;

class ZeroPort : public CPortImpl
{
public:
    EAccessMode GetAccessMode() const override { return RW; }
    void Read(void* buffer, int64_t /*address*/, int64_t length) override
    {
        std::memset(buffer, 0, static_cast<std::size_t>(length));
    }
    void Write(const void* /*buffer*/, int64_t /*address*/, int64_t /*length*/) override {}
};

void attempt(const auto& action)
{
    try {
        action();
    } catch (const GenICam::GenericException&) {
        // A refusal is what the caller asked for.
    }
}

void touchNumber(IInteger& node)
{
    attempt([&] { node.GetMin(); });
    attempt([&] { node.GetMax(); });
    attempt([&] { node.GetInc(); });
    attempt([&] { node.SetValue(node.GetValue(true)); });
    node.GetUnit();
    node.GetRepresentation();
}

void touchNumber(IFloat& node)
{
    attempt([&] { node.GetMin(); });
    attempt([&] { node.GetMax(); });
    attempt([&] { node.GetInc(); });
    attempt([&] { node.SetValue(node.GetValue(true)); });
}

void touchEnumeration(IEnumeration& node)
{
    StringList_t symbolics;
    attempt([&] { node.GetSymbolics(symbolics); });
    for (const gcstring& symbolic : symbolics)
        attempt([&] { node.FromString(symbolic); });
}

void touch(INode& node)
{
    attempt([&] { node.GetAccessMode(); });
    NodeList_t neighbours;
    node.GetChildren(neighbours);
    node.GetParents(neighbours);
    attempt([&] { node.InvalidateNode(); });
    auto* value = dynamic_cast<IValue*>(&node);
    if (!value) return;
    attempt([&] { value->FromString(value->ToString(true), true); });
    attempt([&] { value->FromString("1", false); });
    if (auto* integer = dynamic_cast<IInteger*>(value)) touchNumber(*integer);
    if (auto* number = dynamic_cast<IFloat*>(value)) touchNumber(*number);
    if (auto* enumeration = dynamic_cast<IEnumeration*>(value)) touchEnumeration(*enumeration);
    if (auto* command = dynamic_cast<ICommand*>(value)) attempt([&] { command->IsDone(); });
    if (auto* text = dynamic_cast<IString*>(value)) attempt([&] { text->GetMaxLength(); });
    if (auto* reg = dynamic_cast<IRegister*>(value)) attempt([&] { reg->GetAddress(); });
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size)
{
    attempt([&] {
        std::deque<ZeroPort> ports;  // one for each Port node, longer-lived than the map
        const NodeMapPtr map =
            CNodeMapFactory(ContentType_Xml, data ? data : reinterpret_cast<const uint8_t*>(""), size)
                .CreateNodeMap();
        NodeList_t nodes;
        map->GetNodes(nodes);
        for (std::size_t i = 0; i < nodes.size(); ++i)
            if (i % 2 == 0 && dynamic_cast<IPort*>(nodes[i]))
                map->Connect(&ports.emplace_back(), nodes[i]->GetName());
        // The other ports read what comes to them as chunks and events.
        attempt([&] { CChunkAdapter(*map).AttachBuffer(data, size, CChunkAdapter::ByteOrder::LittleEndian); });
        attempt([&] { CEventAdapter(*map).DeliverEvent(1, data, size); });
        // Each touch may cost as much as the map has nodes; the first hundred find what there is to be found.
        for (std::size_t i = 0; i < nodes.size() && i < 100; ++i)
            touch(*nodes[i]);
        attempt([&] { map->Poll(1000); });
        map->InvalidateNodes();
    });
    return 0;
}

// What the node map runtime costs beside its peers: making a map of 1,000 features ("ratio" to Aravis making its
// own of the same text, "to_parse" to the bare XML parser), a feature read through a chain of formulas ("ratio" to
// Aravis reading the same one), and a value read from a buffer's chunks ("ratio" to the mere walk over the
// buffer).
#include <benchmark/benchmark.h>

// The library's headers use old-style casts in their macros.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wold-style-cast"
#pragma GCC diagnostic ignored "-Wpedantic"
#include <arv.h>
#include <pugixml.hpp>

#include <cstring>
#include <ctime>
#include <string>
#include <vector>

#include "genapi/genapi.h"

namespace {

using namespace GenApi;

/// Processor time of this thread, so that ratios hold on a busy machine too.
double cpuSeconds()
{
    timespec now{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) + 1e-9 * static_cast<double>(now.tv_nsec);
}

/// Mean seconds of a call.
template <typename Call>
double secondsOf(int calls, const Call& call)
{
    const double start = cpuSeconds();
    for (int i = 0; i < calls; ++i)
        call();
    return (cpuSeconds() - start) / calls;
}

/// Measures `call`; gives its mean seconds.
template <typename Call>
double measure(benchmark::State& state, const Call& call)
{
    const double start = cpuSeconds();
    for (auto _ : state)
        call();
    return (cpuSeconds() - start) / static_cast<double>(state.iterations());
}

std::string node(const char* kind, const std::string& name, const std::string& content)
{
    return std::string("<") + kind + " Name=\"" + name + "\">" + content + "</" + kind + ">\n";
}

std::string reg(const char* kind, const std::string& name, int address, int length)
{
    return node(kind, name,
                "<Address>" + std::to_string(address) + "</Address><Length>" + std::to_string(length) +
                    "</Length><AccessMode>RW</AccessMode><pPort>Device</pPort>");
}

// Five features and the nodes behind them, as cameras have them.
std::string features(int i, std::string& names)
{
    const std::string n = std::to_string(i);
    const std::string prose =
        "<ToolTip>A setting of the camera.</ToolTip><Description>A setting of the camera that is "
        "described at some length, as descriptions are.</Description>";
    for (const char* prefix : {"Int", "Enum", "Gain", "Flag", "Rate"})
        names += "<pFeature>" + (prefix + n) + "</pFeature>";
    std::string entries;
    for (int entry = 0; entry < 4; ++entry)
        entries += "<EnumEntry Name=\"E" + std::to_string(entry) + "\"><Value>" + std::to_string(entry) +
                   "</Value></EnumEntry>";
    const int address = 64 * i;
    return node("Integer", "Int" + n,
                prose + "<pIsLocked>Lock</pIsLocked><pValue>IntReg" + n +
                    "</pValue><Min>0</Min><Max>1000</Max><Inc>2</Inc>") +
           reg("IntReg", "IntReg" + n, address, 4) +
           node("Enumeration", "Enum" + n, prose + entries + "<pValue>EnumReg" + n + "</pValue>") +
           reg("IntReg", "EnumReg" + n, address + 4, 4) +
           node("Float", "Gain" + n, prose + "<pValue>Conv" + n + "</pValue><Unit>dB</Unit>") +
           node("Converter", "Conv" + n,
                "<pVariable Name=\"K\">IntReg" + n + "</pVariable><FormulaTo>(FROM - 1) * 100</FormulaTo>" +
                    "<FormulaFrom>TO / 100 + 1</FormulaFrom><pValue>GainReg" + n + "</pValue>") +
           reg("IntReg", "GainReg" + n, address + 8, 2) +
           node("Boolean", "Flag" + n, prose + "<pValue>FlagReg" + n + "</pValue>") +
           reg("IntReg", "FlagReg" + n, address + 12, 4) +
           node("SwissKnife", "Rate" + n,
                prose + "<pVariable Name=\"T\">IntReg" + n + "</pVariable><Formula>1000000 / (T + 1)</Formula>");
}

const std::string head = R"(<?xml version="1.0" encoding="UTF-8"?><RegisterDescription ModelName="M" VendorName="V"
    StandardNameSpace="None" SchemaMajorVersion="1" SchemaMinorVersion="1" SchemaSubMinorVersion="0" MajorVersion="1"
    MinorVersion="0" SubMinorVersion="0" ProductGuid="5ca1ab1e-0000-4000-8000-000000000003"
    VersionGuid="5ca1ab1e-0000-4000-8000-000000000004" xmlns="http://www.genicam.org/GenApi/Version_1_1">
    <Port Name="Device"/><Integer Name="Lock"><Value>0</Value></Integer>)";

std::string thousandFeatures()
{
    std::string names;
    std::string nodes;
    for (int i = 0; i < 200; ++i)
        nodes += features(i, names);
    return head + nodes + node("Category", "Root", names) + "</RegisterDescription>";
}

// The device behind both readers: every byte is 7.
struct MemoryPort : CPortImpl
{
    EAccessMode GetAccessMode() const override { return RW; }
    void Read(void* buffer, int64_t /*address*/, int64_t length) override
    {
        std::memset(buffer, 7, static_cast<std::size_t>(length));
    }
    void Write(const void* /*buffer*/, int64_t /*address*/, int64_t /*length*/) override {}
};

gboolean readMemory(ArvDevice*, guint64, guint32 size, void* buffer, GError**)
{
    std::memset(buffer, 7, size);
    return TRUE;
}

void initClass(gpointer deviceClass, gpointer)
{
    static_cast<ArvDeviceClass*>(deviceClass)->read_memory = readMemory;
}

struct Peer
{
    explicit Peer(const std::string& text)
    {
        static const GType type =
            g_type_register_static_simple(ARV_TYPE_DEVICE, "BenchDevice", sizeof(ArvDeviceClass), initClass,
                                          sizeof(ArvDevice), nullptr, static_cast<GTypeFlags>(0));
        device = static_cast<ArvDevice*>(g_object_new(type, nullptr));
        genicam = arv_gc_new(device, text.c_str(), text.size());
        arv_gc_set_register_cache_policy(genicam, ARV_REGISTER_CACHE_POLICY_ENABLE);
    }
    Peer(const Peer&) = delete;
    Peer& operator=(const Peer&) = delete;
    ~Peer()
    {
        g_object_unref(genicam);
        g_object_unref(device);
    }

    ArvDevice* device;
    ArvGc* genicam;
};

NodeMapPtr mapOf(const std::string& text)
{
    return CNodeMapFactory(ContentType_Xml, text.data(), text.size()).CreateNodeMap();
}

void buildMap(benchmark::State& state)
{
    const std::string text = thousandFeatures();
    const double peer = secondsOf(5, [&] { Peer made(text); });
    const double parse = secondsOf(20, [&] {
        pugi::xml_document document;
        benchmark::DoNotOptimize(document.load_buffer(text.data(), text.size()));
    });
    const double seconds = measure(state, [&] { benchmark::DoNotOptimize(mapOf(text)); });
    state.counters["ratio"] = seconds / peer;
    state.counters["to_parse"] = seconds / parse;
    state.counters["nodes"] = static_cast<double>(mapOf(text)->GetNumNodes());
    state.SetLabel("to Aravis");
}
BENCHMARK(buildMap)->Name("genapi/build_1000_features")->Unit(benchmark::kMillisecond);

void buildFurtherMap(benchmark::State& state)
{
    const std::string text = thousandFeatures();
    CNodeMapFactory factory(ContentType_Xml, text.data(), text.size());
    const double first = secondsOf(10, [&] { benchmark::DoNotOptimize(mapOf(text)); });
    const double seconds =
        measure(state, [&] { benchmark::DoNotOptimize(factory.CreateNodeMap("Device", false)); });
    state.counters["ratio"] = seconds / first;
    state.SetLabel("to the first map");
}
BENCHMARK(buildFurtherMap)->Name("genapi/build_further_map")->Unit(benchmark::kMillisecond);

// A Float over a Converter over an Integer over a register whose address is a formula of another register.
const std::string chain = head +
                          R"(<Float Name="Exposure"><pValue>Converter</pValue></Float>
    <Converter Name="Converter"><pVariable Name="BASE">Base</pVariable><FormulaTo>FROM * 1000 / BASE</FormulaTo>
        <FormulaFrom>(TO &gt; 10) ? TO * BASE / 1000 : 0</FormulaFrom><pValue>Raw</pValue></Converter>
    <Integer Name="Base"><Value>500</Value></Integer><Integer Name="Raw"><pValue>Reg</pValue></Integer>
    <IntReg Name="Reg"><Address>0x100</Address><IntSwissKnife Name="Where"><pVariable Name="S">Sel</pVariable>
        <Formula>S * 4 + 16</Formula></IntSwissKnife><Length>4</Length><AccessMode>RW</AccessMode><pPort>Device</pPort>
    </IntReg>
    <IntReg Name="Sel"><Address>0x10</Address><Length>4</Length><AccessMode>RW</AccessMode><pPort>Device</pPort></IntReg>
    </RegisterDescription>)";

void readChain(benchmark::State& state)
{
    MemoryPort port;
    const NodeMapPtr map = mapOf(chain);
    map->Connect(&port);
    auto& feature = dynamic_cast<IFloat&>(*map->GetNode("Exposure"));
    const Peer peer(chain);
    auto* theirs = reinterpret_cast<ArvGcFloat*>(arv_gc_get_node(peer.genicam, "Exposure"));
    if (arv_gc_float_get_value(theirs, nullptr) != feature.GetValue()) state.SkipWithError("the values differ");
    const double reference =
        secondsOf(20000, [&] { benchmark::DoNotOptimize(arv_gc_float_get_value(theirs, nullptr)); });
    state.counters["ratio"] = measure(state, [&] { benchmark::DoNotOptimize(feature.GetValue()); }) / reference;
    state.SetLabel("to Aravis");
}
BENCHMARK(readChain)->Name("genapi/read_formula_chain");

void appendWord(std::vector<uint8_t>& bytes, std::size_t word)
{
    for (unsigned shift = 0; shift < 32; shift += 8)
        bytes.push_back(static_cast<uint8_t>(word >> shift));
}

// A picture of a megabyte and ten values behind it, each in a chunk of its own.
void attachChunks(benchmark::State& state)
{
    std::vector<uint8_t> buffer;
    std::string nodes;
    for (std::size_t id = 0; id <= 10; ++id) {
        const std::size_t size = id == 0 ? 1U << 20U : 8;
        buffer.resize(buffer.size() + size, 1);
        appendWord(buffer, id);
        appendWord(buffer, size);
        const std::string n = std::to_string(id);
        nodes += "<Port Name=\"P" + n + "\"><ChunkID>0" + (id == 10 ? "a" : n) + "</ChunkID></Port>" +
                 "<Integer Name=\"V" + n + "\"><pValue>R" + n + "</pValue></Integer><IntReg Name=\"R" + n +
                 "\"><Address>0</Address><Length>8</Length><AccessMode>RO</AccessMode><pPort>P" + n +
                 "</pPort></IntReg>";
    }
    const NodeMapPtr map = mapOf(head + nodes + "</RegisterDescription>");
    CChunkAdapter chunks(*map);
    auto& value = dynamic_cast<IInteger&>(*map->GetNode("V5"));
    constexpr auto order = CChunkAdapter::ByteOrder::LittleEndian;
    const double walk = secondsOf(100000, [&] {
        benchmark::DoNotOptimize(CChunkAdapter::CheckBufferLayout(buffer.data(), buffer.size(), order));
    });
    const double seconds = measure(state, [&] {
        chunks.AttachBuffer(buffer.data(), buffer.size(), order);
        benchmark::DoNotOptimize(value.GetValue());
    });
    state.counters["ratio"] = seconds / walk;
    state.SetLabel("to the walk over the buffer");
}
BENCHMARK(attachChunks)->Name("genapi/attach_and_read_chunk");

}  // namespace

BENCHMARK_MAIN();

// A description with every kind of node, read by our runtime and by an independent one over the same bytes.
#include <fstream>
#include <iterator>

#include "genicam/aravisjudge.h"
#include "genicam/genapi/world.h"

using namespace GenApiTest;
using namespace GenApi;

namespace {

std::string EveryKind()
{
    std::ifstream file(STAGELET_SOURCE_DIR "/tests/genicam/genapi/everykind.xml");
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

void FillDevice(ByteDevice& device)
{
    for (std::size_t i = 0; i < device.bytes.size(); ++i)
        device.bytes[i] = static_cast<uint8_t>(i * 37 + 11);
    device.Put(0x100, {0, 0, 1, 0x40, 0, 4});           // width 320, at most 1024
    device.Put(0x130, {1, 0, 0, 0});                    // the selector
    device.Put(0x200, {0x10, 0x27, 0, 0});              // exposure 10000
    device.Put(0x208, {0x3F, 0xC0, 0, 0});              // 1.5
    device.Put(0x210, {0, 0, 0, 0, 0, 0, 0x08, 0x40});  // 3.0
    device.Put(0x220, {0x81});
    device.Put(0x300, {0x01, 0x08, 0x00, 0x01});
    device.Put(0x308, {5, 0, 0, 0});
    device.Put(0x320, {'S', 't', 'a', 'g', 'e', 0});
}

const std::vector<Exemption> exemptions = {
    {"*", "inc", "raised", "no increment of masked registers and formulas; the schema's default is 1"},
    {"*", "min", "raised", "no limits of formulas; we give those of the type"},
    {"*", "max", "raised", "no limits of formulas; we give those of the type"},
    {"Hexadecimal", "value", "9223372036854775807",
     "0x numbers with bit 63 end at 2^63-1; to us they are 64 bits"},
    {"OfDouble", "unit", "", "the unit of the node behind is not taken over"},
    {"OfDouble", "representation", "PureNumber", "the representation of the node behind is not taken over"},
    {"TopBit", "min", "1",
     "a formula that does not mention TO is asked for limits all the same, so none could be set"},
    {"TopBit", "max", "1", "see min"},
    {"Limits", "value", "*", "suffixes of variables are not known; both read as the value"},
    {"OwnFlag", "truth", "0", "the word true is not read in a Boolean's own value"},
    {"Label", "longest", "9223372036854775807", "a text of our own has a limit"},
    {"Plain", "*", "absent", "the kind Node is not known"},
    {"ChunkValue", "access", "RO", "without a buffer we say NA"},
    {"ChunkReg", "access", "RO", "without a buffer we say NA"},
    {"EventStamp", "access", "RO", "before the first event we say NA"},
};

struct Judged : testing::Test
{
    void SetUp() override
    {
        FillDevice(ours);
        FillDevice(theirs);
        ASSERT_TRUE(map->Connect(&ours));
    }

    const std::string text = EveryKind();
    NodeMapPtr map = MakeMap(text);
    ByteDevice ours;
    ByteDevice theirs;
    AravisJudge judge{text, theirs};
};

TEST_F(Judged, AgreesOnEveryNode)
{
    for (const std::string& line : judge.Compare(*map, exemptions))
        ADD_FAILURE() << line;
}

// Without Copied, whose copies Aravis does not write, and TopBit, for which it finds limits that allow no change.
TEST_F(Judged, AgreesOnWhatWritingChanges)
{
    const std::pair<const char*, const char*> writes[] = {{"Width", "640"},
                                                          {"SignedReg", "1"},
                                                          {"LongReg", "-2"},
                                                          {"UnsignedLongReg", "258"},
                                                          {"WriteOnlyReg", "7"},
                                                          {"BigMasked", "90"},
                                                          {"LittleMasked", "-3"},
                                                          {"Mode", "5"},
                                                          {"Level", "-100"},
                                                          {"LineSelector", "Line2"},
                                                          {"LineValue", "77"},
                                                          {"LineRaw", "99"},
                                                          {"Multiplexed", "123"},
                                                          {"ExposureTime", "700"},
                                                          {"OfInteger", "300"},
                                                          {"Falling", "10"},
                                                          {"Doubled", "500"},
                                                          {"SingleReg", "2.25"},
                                                          {"DoubleReg", "-1e10"},
                                                          {"OfDouble", "12.5"},
                                                          {"PixelFormat", "Mono12"},
                                                          {"Enable", "false"},
                                                          {"Vendor", "Somebody"},
                                                          {"Start", "3"},
                                                          {"Load", "4"},
                                                          {"Floating", "-7"},
                                                          {"Gain", "3.5"},
                                                          {"OwnChoice", "Off"},
                                                          {"Label", "another"},
                                                          {"FrameRate", "5"}};
    for (const auto& [name, value] : writes) {
        bool written = true;
        try {
            dynamic_cast<IValue&>(*map->GetNode(name)).FromString(value);
        } catch (const GenICam::GenericException&) {
            written = false;
        }
        EXPECT_EQ(written, judge.Write(name, value)) << name;
        EXPECT_TRUE(ours.bytes == theirs.bytes) << name;
        const auto lines = judge.Compare(*map, exemptions);
        EXPECT_TRUE(lines.empty()) << "after writing " << name << ": " << lines.front();
    }
}

TEST(JudgedFakeCamera, AgreesOnADescriptionThatOthersWrote)
{
    AravisFakeCamera camera;
    const std::string text = camera.Description();
    const NodeMapPtr map = MakeMap(text);
    ASSERT_TRUE(map->Connect(&camera));
    const AravisJudge judge(text, camera);
    const std::vector<Exemption> known = {
        {"*", "inc", "raised", "no increment of masked registers and formulas"},
        {"PayloadSize", "*", "raised", "no limits of formulas"},
        {"TLParamsLocked", "tool tip", "*", "blanks at its ends are kept"},
    };
    const auto expectAgreement = [&](const std::string& when) {
        for (const std::string& line : judge.Compare(*map, known))
            ADD_FAILURE() << when << ": " << line;
    };
    expectAgreement("at first");
    const std::pair<const char*, const char*> writes[] = {
        {"Width", "320"}, {"ExposureTimeAbs", "1234"}, {"PixelFormat", "Mono16"}, {"AcquisitionFrameRate", "50"}};
    for (const auto& [name, value] : writes) {
        dynamic_cast<IValue&>(*map->GetNode(name)).FromString(value);
        expectAgreement(name);
    }
    EXPECT_EQ(dynamic_cast<IInteger&>(*map->GetNode("Width")).GetValue(), 320);
    map->Connect(nullptr);
}

}  // namespace

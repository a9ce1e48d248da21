// Settings of a node map as text and back.
#include "base/featurepersistence.h"

#include "framework/refusal.h"
#include "sdk/camera/fakebackend.h"

using namespace CameraTest;
using GenICam::gcstring;
using Nivex::CFeaturePersistence;

namespace {

std::string Streamable(const std::string& kind, const std::string& name, const std::string& content)
{
    return "<" + kind + " Name=\"" + name + "\">" + content + "<Streamable>Yes</Streamable></" + kind + ">\n";
}

std::string Cell(const std::string& name, const std::string& index, int from)
{
    return "<IntReg Name=\"" + name + "\"><Address>" + std::to_string(from) + "</Address><pIndex Offset=\"4\">" +
           index + "</pIndex><Length>4</Length><AccessMode>RW</AccessMode><pPort>Device</pPort></IntReg>\n";
}

/// A width bounded by an offset, a gain for each of two channels, and a table by channel and index.
std::string Description()
{
    return FakeDescription(
        Streamable("Integer", "Width", "<Value>100</Value><Min>1</Min><pMax>WidthMax</pMax>") +
        "<IntSwissKnife Name=\"WidthMax\"><pVariable Name=\"O\">OffsetX</pVariable><Formula>100-O</Formula>"
        "</IntSwissKnife>" +
        Streamable("Integer", "OffsetX", "<Value>0</Value><Min>0</Min><Max>99</Max>") +
        Streamable("Float", "Exposure", "<Value>12.5</Value><Min>0</Min><Max>1000</Max>") +
        Streamable("Boolean", "Flip", "<Value>1</Value><OnValue>1</OnValue><OffValue>0</OffValue>") +
        Streamable("String", "Label", "<Value>two words</Value>") +
        "<Enumeration Name=\"Channel\"><EnumEntry Name=\"Red\"><Value>0</Value></EnumEntry>"
        "<EnumEntry Name=\"Blue\"><Value>1</Value></EnumEntry><Value>0</Value><pSelected>ChannelGain</pSelected>"
        "<pSelected>Cell</pSelected></Enumeration>"
        "<Integer Name=\"Index\"><Value>1</Value><Min>0</Min><Max>2</Max><pSelected>Cell</pSelected></Integer>"
        "<IntSwissKnife Name=\"CellPlace\"><pVariable Name=\"C\">Channel</pVariable><pVariable Name=\"I\">Index"
        "</pVariable><Formula>C*3+I</Formula></IntSwissKnife>" +
        Cell("GainReg", "Channel", 100) + Cell("CellReg", "CellPlace", 200) +
        Streamable("Integer", "ChannelGain", "<pValue>GainReg</pValue>") +
        Streamable("Integer", "Cell", "<pValue>CellReg</pValue>") +
        Streamable("Integer", "Fixed", "<ImposedAccessMode>RO</ImposedAccessMode><Value>1</Value>"));
}

constexpr const char* applied = "no exception";

struct Settings : testing::Test
{
    Settings() : port(state), map(MakeMap(Description())) { map->Connect(&port); }
    ~Settings() override { map->Connect(nullptr); }

    std::string Save() const
    {
        gcstring text;
        CFeaturePersistence::SaveToString(text, *map);
        return text.str();
    }
    /// The text of the refusal.
    std::string Load(const std::string& text) const
    {
        return refusal<GenICam::RuntimeException>(
            [&] { CFeaturePersistence::LoadFromString(gcstring(text), *map); });
    }
    std::string Value(const char* name) const
    {
        return dynamic_cast<GenApi::IValue&>(*map->GetNode(name)).ToString().str();
    }

    std::shared_ptr<FakeState> state = std::make_shared<FakeState>();
    FakePort port;
    GenApi::NodeMapPtr map;
};

// Every cell of what selectors choose is written, and they stand as before, in the map and at the end of the text.
TEST_F(Settings, AreSavedWithTheirSelectorsWalked)
{
    for (std::uint32_t i = 0; i < 6; ++i)
        state->registers[200 + 4 * i] = 10 + i;
    state->registers[104] = 7;
    EXPECT_EQ(Save(),
              "# {05D8C294-F295-4dfb-9D01-096BD04049F4}\n"
              "Width\t100\nOffsetX\t0\nExposure\t12.5\nFlip\t1\nLabel\ttwo words\n"
              "Channel\tRed\nChannelGain\t0\nChannel\tBlue\nChannelGain\t7\nChannel\tRed\n"
              "Channel\tRed\nIndex\t0\nCell\t10\nIndex\t1\nCell\t11\nIndex\t2\nCell\t12\nIndex\t1\n"
              "Channel\tBlue\nIndex\t0\nCell\t13\nIndex\t1\nCell\t14\nIndex\t2\nCell\t15\nIndex\t1\n"
              "Channel\tRed\n");
    EXPECT_EQ(Value("Channel"), "Red");
    EXPECT_EQ(Value("Index"), "1");
}

// What can't be saved is named, and the selectors are back in their places.
TEST_F(Settings, RefusalsOfSavingNameTheFeature)
{
    const std::pair<const char*, std::function<void()>> rows[] = {
        {"\"Label\" can't be saved: its text has more than one line",
         [&] { dynamic_cast<GenApi::IValue&>(*map->GetNode("Label")).FromString("a\nb"); }},
        {"\"ChannelGain\" can't be saved: The fake camera was removed",
         [&] {
             dynamic_cast<GenApi::IValue&>(*map->GetNode("Label")).FromString("a");
             state->isRemoved = true;
         }},
    };
    for (const auto& [part, prepare] : rows) {
        prepare();
        EXPECT_THAT(refusal<GenICam::RuntimeException>([this] { Save(); }), testing::HasSubstr(part));
        EXPECT_EQ(Value("Channel"), "Red");
    }
    map->Connect(nullptr);
    map = MakeMap(FakeDescription("<Integer Name=\"Step\"><Value>5</Value><pSelected>Gain2</pSelected></Integer>" +
                                  Streamable("Integer", "Gain2", "<Value>1</Value>")));
    EXPECT_THROW(Save(), GenICam::RuntimeException);
    EXPECT_EQ(Value("Step"), "5");
}

// Through a text, another camera gets the same settings; a width that the present offset forbids is no obstacle.
TEST_F(Settings, ComeBackFromTheirText)
{
    state->registers[212] = 99;
    const std::string text = Save();
    ASSERT_EQ(
        Load("OffsetX\t60\nWidth\t40\nFlip\tfalse\nChannel\tRed\nChannelGain\t5\nExposure\t0x\n").find("1 of"),
        0U);
    EXPECT_EQ(Value("Width"), "40");
    state->registers[212] = 0;
    map->InvalidateNodes();
    EXPECT_EQ(Load("  # a comment\r\n\n" + text), applied);
    EXPECT_EQ(Save(), text);
}

TEST_F(Settings, LinesThatFailAreListedAndTheOthersApplied)
{
    const std::string text =
        Load("Width\nNowhere\t1\nGain\t3\nExposure\t1e9\nAcquisitionStart\t1\nFixed\t2\nChannel\tGreen\n");
    EXPECT_EQ(Value("Gain"), "3");
    EXPECT_EQ(text.find("6 of 7 lines could not be applied:\nline 1: Width"), 0U) << text;
    for (const char* part :
         {"line 1: Width: there is no tab", "line 2: Nowhere = \"1\": there is no feature",
          "line 4: Exposure = \"1e9\": ", "line 5: AcquisitionStart = \"1\": the feature is no setting",
          "line 6: Fixed = \"2\": ", "line 7: Channel = \"Green\": "})
        EXPECT_NE(text.find(part), std::string::npos) << part << " in " << text;
    EXPECT_EQ(state->TakeLog().front(), "write 16 3");
}

// In all spellings a value is known again; a camera that keeps another one than it was given is told of.
TEST_F(Settings, AreReadBackFromTheCamera)
{
    EXPECT_EQ(Load("Exposure\t1e-1\nGain\t0x11\nFlip\tFALSE\nLabel\t\nWidth\t050\n"), applied);
    state->largestValue = 10;
    EXPECT_EQ(Load("Gain\t18\n"),
              "1 of 1 lines could not be applied:\nline 1: Gain = \"18\": it is 10 after it was written.");
    EXPECT_NO_THROW(CFeaturePersistence::LoadFromString("Gain\t18\n", *map, false));
}

// Sizes at which anything worse than linear would not end.
TEST_F(Settings, HostileTextsAreRefusedInBoundedMessages)
{
    const std::string mebibyte(1 << 20, 'x');
    std::string tabs(1 << 20, '\t');
    std::string lines;
    for (int i = 0; i < 200000; ++i)
        lines += "a\tb\n";
    for (const std::string& text :
         {mebibyte, mebibyte + "\t1", "Gain\t" + mebibyte, "Label\t" + mebibyte + "\nGain\t" + mebibyte,
          tabs + "1", lines, std::string("\0\t\0\n", 4), std::string("Gain\xC3\t\xFF\n")})
    {
        const std::string refused = Load(text);
        EXPECT_NE(refused.find(" could not be applied:"), std::string::npos) << text.substr(0, 20);
        EXPECT_LT(refused.size(), 8000U);
    }
}

}  // namespace

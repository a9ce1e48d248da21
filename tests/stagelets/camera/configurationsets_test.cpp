// Configuration sets and the normalising of their texts.
#include "camera/configurationsets.h"

#include <gmock/gmock.h>

#include <random>
#include <regex>
#include <stdexcept>

#include "camera/featurestream.h"
#include "framework/logcapture.h"
#include "framework/refusal.h"

namespace Plugin::NivexStageletPackageBase::Test {
namespace {

using GenICam::gcstring;

const std::string header = "# {05D8C294-F295-4dfb-9D01-096BD04049F4}\n";

std::string normalise(const std::string& text)
{
    const FeatureStream normalised = normaliseFeatureStream(text);
    if (normalised.invalidLine == 0) return normalised.text.str();
    return normalised.invalidLine == 1 ? "invalid" : "line " + std::to_string(normalised.invalidLine);
}

std::string normaliseByPatterns(const std::string& line)
{
    static const std::regex comment("^\\s*#\\s*");
    static const std::regex assignment("^([a-zA-Z0-9]+)(\\s*=\\s*)");
    static const std::regex feature("[a-zA-Z]+[\\t]|^[a-zA-Z0-9]+\\t");
    if (std::regex_search(line, comment)) return header + line;
    if (std::regex_search(line, assignment)) return header + std::regex_replace(line, assignment, "$1\t");
    return std::regex_search(line, feature) ? header + line : "invalid";
}

TEST(FeatureStreamTest, LinesAreWhatThePatternsSay)
{
    constexpr std::string_view alphabet = "a1=# \t\r!";
    std::vector<std::string> lines = {""};
    for (std::size_t i = 0; lines[i].size() < 6; ++i) {
        for (const char c : alphabet) {
            lines.push_back(lines[i] + c);
        }
    }
    std::mt19937 random(20261121);
    constexpr std::string_view wide = "azAZ09_.=# \t\v\f\r@[`{/:!\x80\xFF";
    for (int i = 0; i < 100000; ++i) {
        std::string line(1 + random() % 30, ' ');
        for (char& c : line) {
            c = wide[random() % wide.size()];
        }
        lines.push_back(std::move(line));
    }
    lines.erase(lines.begin());
    for (const std::string& line : lines) {
        ASSERT_EQ(normalise(line), normaliseByPatterns(line)) << "line: " << testing::PrintToString(line);
    }
}

TEST(FeatureStreamTest, NormalisesTexts)
{
    const std::pair<std::string, std::string> rows[] = {
        {"", ""},
        {"ExposureTime = 100", header + "ExposureTime\t100"},
        {"A=1\nB\t2\n", header + "A\t1\nB\t2\n"},
        {header + "A = 1 = 2\n", header + "A\t1 = 2\n"},
        {"# my settings\n  " + header + "A\t1\n", "# my settings\n  " + header + "A\t1\n"},
        {"A\t" + header, "A\t" + header},
        {"A\t1\r\n# B\r\nC\t", header + "A\t1\r\n# B\r\nC\t"},
        {"A =\nUserOutput1\t0", header + "A\t\nUserOutput1\t0"},
        {"A = 1\n!!\nB = 2\n", "line 2"},
        {"!!\n" + header, "invalid"},
        {header + "A = 1\n\nB = 2\n", "line 3"},
        {"\n", "invalid"},
    };
    for (const auto& [text, expected] : rows) {
        SCOPED_TRACE(text);
        ASSERT_EQ(normalise(text), expected);
        EXPECT_TRUE(normaliseFeatureStream(text).invalidLine != 0 || normalise(expected) == expected)
            << "normalised twice";
    }
}

// A matcher that recurses or goes back and forth would not come to an end with these.
TEST(FeatureStreamTest, TakesTextsOfAnySize)
{
    constexpr std::size_t size = std::size_t{64} << 20;
    const std::string fill(size, 'x');
    EXPECT_TRUE(normalise("A = " + fill) == header + "A\t" + fill);
    EXPECT_EQ(normalise(fill), "invalid");
    EXPECT_EQ(normalise(std::string(size, ' ')), "invalid");
    std::string lines;
    while (lines.size() < size)
        lines += "A=\n";
    EXPECT_EQ(normalise(lines).size(), header.size() + lines.size());
}

class ConfigurationSetsTest : public testing::Test
{
protected:
    using Sent = std::vector<std::pair<gcstring, gcstring>>;

    ScopedLogCapture log;
    ConfigurationSets sets{this};
    const gcstring camera = nodeMapIdentifier(StreamType::CameraDevice);
    const gcstring stream = nodeMapIdentifier(StreamType::StreamGrabber);
    Sent sent;
    const ConfigurationSets::Load send = [this](const auto& map, const auto& text) {
        sent.emplace_back(map, text);
    };
};

TEST_F(ConfigurationSetsTest, CommitsWhatWasStagedAndAppliesIt)
{
    sets.setStaged(stream, "B = 2");
    EXPECT_EQ(sets.getStaged(stream), header + "B\t2");
    EXPECT_EQ(sets.getActive(stream), "");
    sets.commit(stream, {});
    EXPECT_EQ(sets.getActive(stream), header + "B\t2");

    sets.fetch(camera, [](const gcstring& map) { return "A = " + map; });
    EXPECT_EQ(sets.getStaged(camera), "A = @CameraDevice");
    sets.commit(camera, send);
    EXPECT_EQ(sets.getStaged(camera), header + "A\t@CameraDevice");
    EXPECT_EQ(sent, (Sent{{"@CameraDevice", header + "A\t@CameraDevice"}}));
    sets.apply(send);
    EXPECT_EQ(sent.size(), 3U);
    EXPECT_EQ(sent.back(), std::pair(gcstring("@StreamGrabber0"), gcstring(header + "B\t2")));

    // Texts of a recipe may have been written by hand; what is wrong with them the camera says best.
    const gcstring saved = header + "B\t= 1";
    sets.setActiveTexts({{camera, "A = 3"}, {stream, "!!"}, {"@CameraInstance", saved}});
    EXPECT_EQ(sets.getActiveTexts(),
              (ConfigurationSets::Texts{{camera, header + "A\t3"}, {stream, "!!"}, {"@CameraInstance", saved}}));
    sets.clear("@CameraInstance");

    sent.clear();
    sets.clear(camera);
    sets.setStaged(stream, "");
    sets.commit(stream, send);
    sets.apply(send);
    EXPECT_EQ(sent, Sent());
    EXPECT_TRUE(sets.getActiveTexts().empty());
    EXPECT_TRUE(log.messages().empty());
}

TEST_F(ConfigurationSetsTest, FailuresLeaveTheTextsAlone)
{
    const std::string invalid = "The provided configuration set could not be committed because it is invalid.";
    const std::string notSent = "Failed to load camera feature stream from active configuration set.";
    const std::string notApplied = "Failed to load feature streams from active configuration set.";
    const std::string unknown = "Unknown exception caught while fetching feature stream.";
    const ConfigurationSets::Load refuse = [](const auto&, const auto&) { throw std::range_error("too long"); };
    sets.setStaged(camera, "A = 1");
    sets.commit(camera, {});
    sets.fetch(camera, [](const gcstring&) { return "!!"; });

    const auto fetchRefused = [&](const auto& fail) {
        return refusal<GenICam::RuntimeException>([&] {
            sets.fetch(camera, [&](const gcstring&) -> gcstring {
                fail();
                return {};
            });
        });
    };
    const auto refused = [](const auto& call) { return refusal<GenICam::RuntimeException>(call); };
    EXPECT_EQ(refused([&] { sets.setStaged(camera, "A = 1\n?"); }), invalid);
    EXPECT_EQ(refused([&] { sets.commit(camera, send); }), invalid);
    EXPECT_EQ(fetchRefused([] { GENICAM_THROW(AccessException, "locked"); }), "locked");
    EXPECT_EQ(fetchRefused([] { throw std::logic_error("gone"); }), "gone");
    EXPECT_EQ(fetchRefused([] { throw 1; }), unknown);
    EXPECT_EQ(sets.getStaged(camera), "!!");
    sets.setStaged(camera, "A = 2");
    EXPECT_EQ(refused([&] { sets.commit(camera, refuse); }), notSent);
    EXPECT_EQ(refused([&] { sets.apply(refuse); }), notApplied);
    EXPECT_EQ(sets.getStaged(camera), header + "A\t2");
    EXPECT_EQ(sets.getActive(camera), header + "A\t1");
    EXPECT_EQ(sent, Sent());

    const auto logged = [this](const std::string& text) {
        return testing::StartsWith(GenICam::formatText("Camera %p: ", static_cast<const void*>(this)) + text);
    };
    const auto failed = [&](const std::string& operation, const std::string& text) {
        return logged(operation + " failed. Message: \"" + text + "\" (camera/configurationsets:");
    };
    const auto fetching = logged("Exception caught while fetching feature stream. Message: \"locked\"");
    const auto cause = logged(
        "Exception caught while loading the feature stream of \"@CameraDevice\". "
        "Message: \"too long\"");
    EXPECT_THAT(log.messages("nivex.dataprocessing.stagelet.Camera"),
                testing::ElementsAre(logged("Line 2 of"), failed("setCfgSetStagedContent", invalid),
                                     logged("Line 1 of"), failed("executeCfgSetCommit", invalid), fetching,
                                     testing::HasSubstr("\"gone\""), failed("executeCfgSetFetch", unknown), cause,
                                     failed("transferCfgSetActiveContentToCamera", notSent), cause,
                                     failed("transferCfgSetActiveContentToCamera", notSent),
                                     failed("allocateAdditionalResources", notApplied)));
}

}  // namespace
}  // namespace Plugin::NivexStageletPackageBase::Test

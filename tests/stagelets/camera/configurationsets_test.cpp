// Configuration sets and the normalising of their texts.
#include "camera/configurationsets.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <random>
#include <regex>
#include <stdexcept>

#include "gcbase/exception.h"

#include "camera/featurestream.h"
#include "framework/logcapture.h"

namespace Plugin::NivexStageletPackageBase::Test {
namespace {

using GenICam::gcstring;

const std::string header = "# {05D8C294-F295-4dfb-9D01-096BD04049F4}\n";

/// What the patterns say about a line: its kind and, for an assignment, the line with a tab.
std::string judgeByPatterns(const std::string& line)
{
    static const std::regex comment("^\\s*#\\s*");
    static const std::regex assignment("^([a-zA-Z0-9]+)(\\s*=\\s*)");
    static const std::regex feature("[a-zA-Z]+[\\t]");
    static const std::regex featureWithDigit("^[a-zA-Z0-9]+\\t");
    if (std::regex_search(line, comment)) return line;
    if (std::regex_search(line, assignment)) return std::regex_replace(line, assignment, "$1\t");
    return std::regex_search(line, feature) || std::regex_search(line, featureWithDigit) ? line : "invalid";
}

std::string normalise(const std::string& line)
{
    const auto text = normaliseFeatureStream(line);
    if (!text) return "invalid";
    EXPECT_EQ(text->str().compare(0, header.size(), header), 0);
    return text->str().substr(header.size());
}

TEST(FeatureStreamTest, LinesAreWhatThePatternsSay)
{
    constexpr std::string_view alphabet = "a1=# \t\r!";
    std::vector<std::string> lines = {""};
    for (std::size_t first = 0, length = 0; length < 6; ++length) {
        for (const std::size_t end = lines.size(); first < end; ++first) {
            for (const char c : alphabet) {
                lines.push_back(lines[first] + c);
            }
        }
    }
    std::mt19937 random(20261121);
    constexpr std::string_view wide = "azAZ09_.=# \t\v\f\r@[`{/:!\x80\xFF";
    for (int i = 0; i < 100000; ++i) {
        std::string line(random() % 30, ' ');
        for (char& c : line) {
            c = wide[random() % wide.size()];
        }
        lines.push_back(std::move(line));
    }
    for (const std::string& line : lines) {
        if (line.empty()) continue;
        ASSERT_EQ(normalise(line), judgeByPatterns(line)) << "line: " << testing::PrintToString(line);
    }
}

TEST(FeatureStreamTest, NormalisesTexts)
{
    struct Row
    {
        std::string text;
        std::string expected;
    };
    const Row rows[] = {
        {"", ""},
        {"ExposureTime = 100", header + "ExposureTime\t100"},
        {"A=1\nB\t2\n", header + "A\t1\nB\t2\n"},
        {header + "A = 1 = 2\n", header + "A\t1 = 2\n"},
        {"# my settings\n  " + header + "A\t1\n", "# my settings\n  " + header + "A\t1\n"},
        // An identifier in a value is no header.
        {"A\t" + header, header + "A\t" + header},
        {"A\t1\r\n# B\r\nC\t", header + "A\t1\r\n# B\r\nC\t"},
        {"A =\nUserOutput1\t0", header + "A\t\nUserOutput1\t0"},
        {"!!", "invalid"},
        {"A = 1\n!!\nB = 2\n", "invalid"},
        {"!!\n" + header, "invalid"},
        {"A = 1\n\nB = 2\n", "invalid"},
        {"\n", "invalid"},
        {"A 1", "invalid"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.text);
        const auto text = normaliseFeatureStream(row.text);
        ASSERT_EQ(text ? text->str() : "invalid", row.expected);
        EXPECT_TRUE(!text || normaliseFeatureStream(text->view()) == text) << "normalised twice";
    }
}

// A matcher that recurses or goes back and forth would not come to an end with these.
TEST(FeatureStreamTest, TakesTextsOfAnySize)
{
    constexpr std::size_t size = std::size_t{64} << 20;
    const std::string fill(size, 'x');
    EXPECT_EQ(normaliseFeatureStream("A = " + fill)->str(), header + "A\t" + fill);
    EXPECT_EQ(normaliseFeatureStream(fill), std::nullopt);
    EXPECT_EQ(normaliseFeatureStream(std::string(size, ' ')), std::nullopt);
    std::string lines;
    while (lines.size() < size)
        lines += "A=\n";
    EXPECT_EQ(normaliseFeatureStream(lines)->size(), header.size() + lines.size());
}

class ConfigurationSetsTest : public testing::Test
{
protected:
    std::string logged(const std::string& text) const
    {
        return GenICam::formatText("Camera %p: ", static_cast<const void*>(this)) + text;
    }
    ConfigurationSets::Save saving(const gcstring& text) const
    {
        return [text](const gcstring& identifier) { return identifier + ":" + text; };
    }
    ConfigurationSets::Load loading()
    {
        return [this](const gcstring& identifier, const gcstring& text) { sent.emplace_back(identifier, text); };
    }
    static ConfigurationSets::Load refusing()
    {
        return [](const gcstring&, const gcstring&) { throw std::range_error("too long"); };
    }
    template <typename Call>
    static std::string refusal(const Call& call)
    {
        try {
            call();
        } catch (const GenICam::RuntimeException& e) {
            return e.GetDescription();
        }
        return "no exception";
    }

    ScopedLogCapture log;
    ConfigurationSets sets{this};
    const gcstring camera = nodeMapIdentifier(StreamType::CameraDevice);
    const gcstring stream = nodeMapIdentifier(StreamType::StreamGrabber);
    std::vector<std::pair<gcstring, gcstring>> sent;
};

using Sent = std::vector<std::pair<gcstring, gcstring>>;

TEST_F(ConfigurationSetsTest, CommitsWhatWasStagedAndAppliesIt)
{
    sets.setStaged(stream, "B = 2");
    EXPECT_EQ(sets.getStaged(stream), header + "B\t2");
    EXPECT_EQ(sets.getActive(stream), "");
    sets.commit(stream, {});
    EXPECT_EQ(sets.getActive(stream), header + "B\t2");

    sets.fetch(camera, [](const gcstring&) { return "A = 1\n"; });
    EXPECT_EQ(sets.getStaged(camera), "A = 1\n");
    sets.commit(camera, loading());
    EXPECT_EQ(sets.getStaged(camera), header + "A\t1\n");
    EXPECT_EQ(sent, (Sent{{camera, header + "A\t1\n"}}));

    sent.clear();
    sets.apply(loading());
    EXPECT_EQ(sent, (Sent{{camera, header + "A\t1\n"}, {stream, header + "B\t2"}}));

    sent.clear();
    sets.clear(camera);
    sets.setStaged(stream, "");
    sets.commit(stream, loading());
    sets.apply(loading());
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
    const ConfigurationSets::Save failing = [](const gcstring&) -> gcstring { throw std::logic_error("gone"); };
    const ConfigurationSets::Save refusingSave = [](const gcstring&) -> gcstring {
        GENICAM_THROW(AccessException, "no access");
    };
    const ConfigurationSets::Save unknownSave = [](const gcstring&) -> gcstring { throw 1; };
    sets.setStaged(camera, "A = 1");
    sets.commit(camera, {});
    sets.fetch(camera, [](const gcstring&) { return "!!"; });

    EXPECT_EQ(refusal([&] { sets.setStaged(camera, "A = 1\n?"); }), invalid);
    EXPECT_EQ(refusal([&] { sets.commit(camera, loading()); }), invalid);
    EXPECT_EQ(refusal([&] { sets.fetch(camera, failing); }), "gone");
    EXPECT_EQ(refusal([&] { sets.fetch(camera, refusingSave); }), "no access");
    EXPECT_EQ(refusal([&] { sets.fetch(camera, unknownSave); }), unknown);
    EXPECT_EQ(sets.getStaged(camera), "!!");
    sets.setStaged(camera, "A = 2");
    EXPECT_EQ(refusal([&] { sets.commit(camera, refusing()); }), notSent);
    EXPECT_EQ(refusal([&] { sets.apply(refusing()); }), notApplied);
    EXPECT_EQ(sets.getStaged(camera), header + "A\t2");
    EXPECT_EQ(sets.getActive(camera), header + "A\t1");
    EXPECT_EQ(sent, Sent());

    const auto failed = [this](const char* operation, const std::string& text) {
        return testing::StartsWith(
            logged(operation + std::string(" failed. Message: \"") + text + "\" (camera/configurationsets:"));
    };
    const auto fetching = [this](const std::string& text) {
        return testing::Eq(logged("Exception caught while fetching feature stream. Message: \"" + text + "\""));
    };
    const auto cause = testing::Eq(
        logged("Exception caught while loading the feature stream of \"@CameraDevice\". Message: \"too long\""));
    EXPECT_THAT(
        log.messages("nivex.dataprocessing.stagelet.Camera"),
        testing::ElementsAre(failed("setCfgSetStagedContent", invalid), failed("executeCfgSetCommit", invalid),
                             fetching("gone"), fetching("no access"), failed("executeCfgSetFetch", unknown), cause,
                             failed("transferCfgSetActiveContentToCamera", notSent), cause,
                             failed("transferCfgSetActiveContentToCamera", notSent),
                             failed("allocateAdditionalResources", notApplied)));
    for (const auto& line : log.lines()) {
        EXPECT_EQ(line.severity, 3) << line.message;
    }
}

}  // namespace
}  // namespace Plugin::NivexStageletPackageBase::Test

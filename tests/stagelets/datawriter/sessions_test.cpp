// Sessions and records of a DataWriter: which calls its media writers get, when, where, and what is counted. What
// image files hold is tested in imagemediawriter_test.cpp.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <fstream>
#include <stdexcept>
#include <thread>

#include "gcbase/exception.h"

#include "../../framework/logcapture.h"
#include "../../framework/refusal.h"
#include "core/array.h"
#include "core/boolean.h"
#include "core/integer.h"
#include "core/string.h"
#include "datawritertest.h"
#include "runtime/jsonsettings.h"

namespace DataWriterTest {
namespace {

using Core::LossCause;
using testing::ElementsAre;
using testing::IsEmpty;

/// Notes every call as "writer.operation@folder", with record and pin indices, and does what the test wants.
class RecordingWriter : public IMediaWriter
{
public:
    using Calls = std::vector<std::string>;
    using Action = std::function<void(const std::string& operation, IWriterLedger& ledger)>;

    RecordingWriter(std::shared_ptr<Calls> calls, IWriterLedger& ledger, const Action& action)
        : calls_(std::move(calls)), ledger_(ledger), action_(action)
    {}
    void beginSession(const MediaWriterContext& context) override { note("beginSession", context); }
    void beginRecord(const MediaWriterContext& context) override { note("beginRecord", context); }
    void writeData(const Utils::Variant& value, const Utils::TypeInfo& type,
                   const MediaWriterContext& context) override
    {
        EXPECT_EQ(type, value.getValueType());
        note("data" + std::to_string(context.indices->pinIndex), context);
    }
    void endRecord(const MediaWriterContext& context) override { note("endRecord", context); }
    void endSession(const MediaWriterContext& context) override { note("endSession", context); }

private:
    void note(const std::string& operation, const MediaWriterContext& context)
    {
        const WriterIndices& indices = *context.indices;
        EXPECT_EQ(context.settings->mediaWriterDescription,
                  gcstring("writer " + std::to_string(indices.mediaWriterIndex)));
        calls_->push_back(std::to_string(indices.mediaWriterIndex) + "." + operation + "@" +
                          context.folder->filename().string() + " r" + std::to_string(indices.recordIndex));
        action_(operation, ledger_);
    }

    std::shared_ptr<Calls> calls_;
    IWriterLedger& ledger_;
    const Action& action_;
};

class DataWriterSessions : public testing::Test
{
protected:
    TemporaryFolder folder;
    CountingHost host;
    std::shared_ptr<RecordingWriter::Calls> calls = std::make_shared<RecordingWriter::Calls>();
    RecordingWriter::Action action = [](const std::string& operation, IWriterLedger& ledger) {
        if (operation.starts_with("data")) ledger.reportRecorded(1, 10);
    };
    DataWriter node{nullptr, [this](MediaType type, IWriterLedger& ledger) -> std::shared_ptr<IMediaWriter> {
                        if (type == MediaType::DNG) return nullptr;
                        return std::make_shared<RecordingWriter>(calls, ledger, action);
                    }};
    Parameters parameters{node};
    ScopedLogCapture log;

    DataWriterSessions()
    {
        node.attachHost(&host);
        parameters.set("OutputFolderName", folder.path().string());
        parameters.set("SessionFolderName", "S{SessionIndex}");
        makeWriters(1);
    }
    ~DataWriterSessions() override { node.stop(); }

    void makeWriters(int count)
    {
        parameters.set("NumMediaWriters", std::to_string(count));
        for (int i = 1; i <= count; ++i) {
            parameters.set("MediaWriterSelector", std::to_string(i));
            parameters.set("MediaWriterDescription", "writer " + std::to_string(i));
        }
    }
    RecordingWriter::Calls takeCalls()
    {
        RecordingWriter::Calls taken;
        calls->swap(taken);
        return taken;
    }
    std::vector<std::string> logged() const { return log.messages("nivex.dataprocessing.stagelet.DataWriter"); }
    std::string nodeName() const
    {
        return GenICam::formatText("DataWriter %p: ", static_cast<const void*>(&node));
    }
    std::uint64_t recordsOf(const Core::PinValues& values)
    {
        const std::uint64_t before = host.records;
        runUpdate(node, values);
        return host.records - before;
    }
};

TEST_F(DataWriterSessions, CallEachWriterInOrderWithItsFolder)
{
    makeWriters(3);
    parameters.set("MediaWriterSelector", "2");
    parameters.set("MediaType", "DNG");  // an entry without writer
    parameters.set("MediaWriterSelector", "3");
    parameters.set("FileScope", "Session");
    parameters.set("NumInputDataPins", "4");
    parameters.set("InputDataPinSelector", "2");
    parameters.set("UseMediaWriterSelector", "1");
    parameters.set("UseMediaWriterEnable", "Off");
    parameters.set("InputDataPinSelector", "3");
    parameters.set("WriteEnable", "Off");
    parameters.set("RecordFolderName", "R{RecordIndex}_{UpdateIndex}_{MediaWriterIndex}{PinIndex}");
    for (int pin = 1; pin <= 4; ++pin) {
        parameters.set("InputDataPinSelector", std::to_string(pin));
        parameters.set("UseMediaWriterSelector", "2");
        if (pin > 1) parameters.set("UseMediaWriterEnable", "Off");
    }

    node.start({});
    EXPECT_THAT(takeCalls(), ElementsAre("1.beginSession@S1 r0", "3.beginSession@S1 r0"));
    const Utils::Variant value(Core::Integer(1));
    runUpdate(node, {{"Data1", value}, {"Data2", value}, {"Data3", value}});
    EXPECT_THAT(takeCalls(),
                ElementsAre("1.beginRecord@R1_1_00 r1", "3.beginRecord@R1_1_00 r1", "1.data1@R1_1_00 r1",
                            "3.data1@S1 r1", "3.data2@S1 r1", "1.endRecord@S1 r1", "3.endRecord@S1 r1"));
    EXPECT_EQ(host.files, 3u);
    EXPECT_EQ(host.bytes, 30u);
    EXPECT_EQ(host.lost, (std::map<LossCause, int>{{LossCause::Unsupported, 1}}));
    EXPECT_EQ(parameters.get("UsedSessionFolderPath"), (folder.path() / "S1").string());
    EXPECT_EQ(parameters.get("UsedRecordFolderPath"), (folder.path() / "S1" / "R1_1_00").string());
    node.stop();
    EXPECT_THAT(takeCalls(), ElementsAre("1.endSession@S1 r1", "3.endSession@S1 r1"));
    EXPECT_EQ(calls.use_count(), 1) << "a writer lives on after its session";
    node.start({});
    EXPECT_THAT(takeCalls(), ElementsAre("1.beginSession@S2 r0", "3.beginSession@S2 r0"));
    EXPECT_THAT(logged(), IsEmpty());
}

TEST_F(DataWriterSessions, KeepOnAfterFailuresAndLogThem)
{
    makeWriters(2);
    struct Thrower
    {
        const char* kind;
        std::function<void()> raise;
        const char* message;  ///< Null for an exception without message.
    };
    const Thrower throwers[] = {
        {"GenICam", [] { GENICAM_THROW(RuntimeException, "gone"); }, "gone"},
        {"standard", [] { throw std::runtime_error("lost"); }, "lost"},
        {"unknown", [] { throw 1; }, nullptr},
    };
    struct Place
    {
        const char* operation;
        const char* mediaType;
        const char* text;
        int counted;  ///< Losses per failing call.
    };
    const Place places[] = {
        {"beginSession", "PNG", "starting image media writer session.", 0},
        {"beginSession", "TXT", "starting text media writer session.", 0},
        {"beginSession", "MP4", "starting video media writer session.", 0},
        {"beginRecord", "PNG", "starting media writer record.", 0},
        {"data1", "PNG", "writing media writer data.", 1},
        {"endRecord", "PNG", "ending media writer record.", 1},
        {"endSession", "PNG", "ending media writer session.", 0},
    };
    for (const Place& place : places) {
        for (const Thrower& thrower : throwers) {
            SCOPED_TRACE(std::string(thrower.kind) + " in " + place.operation);
            for (const char* writer : {"1", "2"}) {
                parameters.set("MediaWriterSelector", writer);
                parameters.set("MediaType", place.mediaType);
            }
            takeCalls();
            log.clear();
            host.lost.clear();
            action = [&](const std::string& operation, IWriterLedger& ledger) {
                if (operation == place.operation) thrower.raise();
                if (operation.starts_with("data")) ledger.reportRecorded(1, 10);
            };
            node.start({});
            runUpdate(node, onPin1(Core::Integer(1)));
            node.stop();
            EXPECT_EQ(takeCalls().size(), 10u);
            const std::string expected =
                nodeName() + (thrower.message ? std::string("Exception caught while ") + place.text +
                                                    " Message: " + thrower.message
                                              : std::string("Unknown exception caught while ") + place.text);
            EXPECT_THAT(logged(), ElementsAre(expected, expected));
            for (const ScopedLogCapture::Line& line : log.lines())
                EXPECT_EQ(line.severity, Utils::SeverityFailure);
            EXPECT_EQ(host.lost[LossCause::FileNotWritten], 2 * place.counted);
        }
    }
}

TEST_F(DataWriterSessions, AreIdleWithoutTheirFolder)
{
    struct Case
    {
        const char* name;
        std::string output;
        std::string session;
        std::size_t logLines;
    };
    std::ofstream(folder.path() / "file").put('x');
    const std::string output = folder.path().string();
    const std::string tooLong(300, 'n');
    for (const Case& row : {Case{"missing output folder", output + "/missing", "S", 0},
                            {"output is a file", output + "/file", "S", 0},
                            {"session is a file", output, "file", 1},
                            {"dots", output, "..", 1},
                            {"long name", output, tooLong, 1}})
    {
        SCOPED_TRACE(row.name);
        log.clear();
        host.lost.clear();
        parameters.set("OutputFolderName", row.output);
        parameters.set("SessionFolderName", row.session);
        node.start({});
        runUpdate(node, onPin1(Core::Integer(1)));
        node.stop();
        EXPECT_THAT(takeCalls(), IsEmpty());
        EXPECT_EQ(host.lost, (std::map<LossCause, int>{{LossCause::NoSession, 1}}));
        ASSERT_EQ(logged().size(), row.logLines);
        if (row.logLines > 0) {
            EXPECT_THAT(logged()[0],
                        testing::HasSubstr("Exception caught while creating session folder. Message: "));
        }
    }
    EXPECT_EQ(host.records, 0u);
    EXPECT_EQ(folder.entries(), (std::set<std::string>{"file"}));
}

TEST_F(DataWriterSessions, UseWhatFolderThereIs)
{
    fs::create_directory(folder.path() / "S_1");
    parameters.set("SessionFolderName", "S/{SessionIndex}");
    node.start({});
    node.stop();
    node.start({});
    node.stop();
    for (const char* name : {"", ".", "{ErrorMessage}"}) {
        parameters.set("SessionFolderName", name);
        parameters.set("RecordFolderName", name);
        takeCalls();
        node.start({});
        EXPECT_EQ(recordsOf(onPin1(Core::Integer(1))), 1u);
        EXPECT_TRUE(fs::equivalent(parameters.get("UsedSessionFolderPath"), folder.path())) << name;
        EXPECT_TRUE(fs::equivalent(parameters.get("UsedRecordFolderPath"), folder.path())) << name;
        EXPECT_EQ(folder.entries(), (std::set<std::string>{"S_1", "S_2"}));
        node.stop();
    }

    const fs::path before = fs::current_path();
    fs::current_path(folder.path());
    parameters.set("OutputFolderName", "");
    parameters.set("SessionFolderName", "here");
    node.start({});
    fs::current_path(before);
    EXPECT_TRUE(fs::is_directory(folder.path() / "here"));
}

TEST_F(DataWriterSessions, ShowOneInstantWithinOneUpdate)
{
    parameters.set("RecordFolderName", "{_Minute_}.{_Second_}.{_Millisecond_}");
    std::set<std::string> folders;
    action = [&](const std::string&, IWriterLedger&) {
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
    };
    node.start({});
    runUpdate(node, onPin1(Core::Integer(1)));
    runUpdate(node, onPin1(Core::Integer(1)));
    for (const std::string& call : *calls) {
        if (call.find("beginRecord") != std::string::npos) folders.insert(call);
    }
    EXPECT_EQ(folders.size(), 2u);
    EXPECT_EQ(folder.entries().size(), 3u);
}

TEST_F(DataWriterSessions, GiveUpARecordWithoutItsFolder)
{
    parameters.set("RecordFolderName", "R{RecordIndex}");
    node.start({});
    std::ofstream(folder.path() / "S1" / "R1").put('x');
    takeCalls();
    runUpdate(node, onPin1(Core::Integer(1)));
    EXPECT_THAT(takeCalls(), IsEmpty());
    EXPECT_EQ(host.lost, (std::map<LossCause, int>{{LossCause::FileNotWritten, 1}}));
    ASSERT_EQ(logged().size(), 1u);
    EXPECT_THAT(logged()[0], testing::HasSubstr("Exception caught while creating record folder. Message: "));
    runUpdate(node, onPin1(Core::Integer(1)));
    EXPECT_THAT(takeCalls(), testing::Contains("1.data1@R2 r2"));
    fs::remove_all(folder.path() / "S1");
    runUpdate(node, onPin1(Core::Integer(1)));
    EXPECT_EQ(host.lost, (std::map<LossCause, int>{{LossCause::FileNotWritten, 2}}));
    EXPECT_THAT(folder.entries(), IsEmpty()) << "a session folder made anew";
}

TEST_F(DataWriterSessions, TakeEveryNthUpdate)
{
    parameters.set("RecordPeriod", "3");
    parameters.set("RecordTriggerSelector", "BoolValue");
    parameters.set("RecordTriggerEnable", "On");
    node.start({});
    std::vector<std::uint64_t> records;
    for (int update = 1; update <= 8; ++update)
        records.push_back(recordsOf(onPin1(Core::Boolean(update == 2))));
    EXPECT_THAT(records, ElementsAre(1, 1, 0, 1, 0, 0, 1, 0));  // the second by its trigger, off the grid
    parameters.set("RecordPeriod", "1");
    records.clear();
    for (int update = 9; update <= 11; ++update)
        records.push_back(recordsOf({}));
    EXPECT_THAT(records, ElementsAre(0, 1, 0)) << "a new period is for the next start";
    parameters.set("RecordPeriod", "3");
    EXPECT_EQ(host.lost, (std::map<LossCause, int>{{LossCause::RefusedByRule, 6}}));
    node.stop();
    node.start({});
    EXPECT_EQ(recordsOf(onPin1(Core::Boolean(false))), 1u);
}

TEST_F(DataWriterSessions, TakeNothingWithoutPeriodAndTrigger)
{
    parameters.set("RecordPeriod", "0");
    node.start({});
    for (int update = 0; update < 3; ++update)
        runUpdate(node, onPin1(Core::Integer(1)));
    node.stop();
    EXPECT_THAT(takeCalls(), ElementsAre("1.beginSession@S1 r0", "1.endSession@S1 r0"));
    EXPECT_EQ(folder.entries(), (std::set<std::string>{"S1"}));
    EXPECT_EQ(host.lost, (std::map<LossCause, int>{{LossCause::RefusedByRule, 3}}));
}

TEST_F(DataWriterSessions, TakeAnUpdateAfterEachSpanOfTime)
{
    parameters.set("RecordTriggerSelector", "BoolValue");
    parameters.set("RecordTriggerEnable", "On");
    parameters.set("RecordPeriodUnit", "Hours");
    for (const char* period : {"1", "2147483647"}) {
        parameters.set("RecordPeriod", period);
        node.start({});
        EXPECT_EQ(recordsOf(onPin1(Core::Integer(0))), 0u);
        EXPECT_EQ(recordsOf(onPin1(Core::Integer(1))), 1u) << "the trigger counts as well";
        node.stop();
    }

    parameters.set("RecordPeriod", "20");
    parameters.set("RecordPeriodUnit", "Milliseconds");
    const auto start = std::chrono::steady_clock::now();
    const std::uint64_t before = host.records;
    node.start({});
    while (host.records < before + 3)
        runUpdate(node, {});
    EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(60));
    node.stop();
}

struct TriggerCase
{
    const char* name;
    Core::PinValues values;
    std::set<std::string> on;        ///< Triggers that fire in On.
    std::set<std::string> inverted;  ///< Triggers that fire in OnInverted.
};

TEST_F(DataWriterSessions, TakeWhatTheTriggersAskFor)
{
    using Core::Integer;
    const std::string present = "DataPresent", own = "HasError", any = "HasErrorRecursive",
                      items = "ArrayHasItems", truth = "BoolValue";
    const Core::Array<Integer> withErrorInside(std::vector<Integer>{Integer(error("bad"))});
    const std::vector<TriggerCase> cases = {
        {"no value", {}, {}, {present}},
        {"integer 2", onPin1(Integer(2)), {present, truth}, {own, any}},
        {"integer 0", onPin1(Integer(0)), {present}, {own, any, truth}},
        {"true", onPin1(Core::Boolean(true)), {present, truth}, {own, any}},
        {"false", onPin1(Core::Boolean(false)), {present}, {own, any, truth}},
        {"text", onPin1(Core::String("true")), {present}, {own, any}},
        {"integer with error", onPin1(Integer(error("bad"))), {present, own, any}, {}},
        {"boolean with error", onPin1(Core::Boolean(error("bad"))), {present, own, any}, {}},
        {"empty array", onPin1(Core::Array<Integer>()), {present}, {own, any, items}},
        {"array", onPin1(Core::Array<Integer>(2)), {present, items}, {own, any}},
        {"array with error", onPin1(Core::Array<Integer>(error("bad"))), {present, own, any}, {}},
        {"array with error inside", onPin1(withErrorInside), {present, any}, {own}},
    };
    parameters.set("RecordPeriod", "0");
    parameters.set("NumInputDataPins", "2");
    node.start({});
    for (const TriggerCase& row : cases) {
        for (const std::string& trigger : {present, own, any, items, truth}) {
            SCOPED_TRACE(std::string(row.name) + ", " + trigger);
            parameters.set("RecordTriggerSelector", trigger);
            parameters.set("RecordTriggerEnable", "On");
            EXPECT_EQ(recordsOf(row.values), row.on.count(trigger));
            parameters.set("RecordTriggerEnable", "OnInverted");
            EXPECT_EQ(recordsOf(row.values), row.inverted.count(trigger));
            parameters.set("RecordTriggerEnable", "Off");
            EXPECT_EQ(recordsOf(row.values), 0u);
        }
    }
    parameters.set("InputDataPinSelector", "2");
    parameters.set("RecordTriggerSelector", "DataPresent");
    parameters.set("RecordTriggerEnable", "On");
    EXPECT_EQ(recordsOf(onPin1(Integer(1))), 0u);
    EXPECT_EQ(recordsOf({{"Data2", Utils::Variant(Integer(1))}}), 1u);
}

TEST_F(DataWriterSessions, ForgetAValueOnlyAfterARecord)
{
    node.setAutoResetEnabled("Data1", false);
    parameters.set("RecordPeriod", "2");
    node.start({});
    runUpdate(node, onPin1(Core::Integer(1)));  // a record, which takes the value
    runUpdate(node, {});
    runUpdate(node, {});  // a record of nothing
    runUpdate(node, onPin1(Core::Integer(1)));
    runUpdate(node, {});  // a record of the value that stayed
    EXPECT_THAT(takeCalls(), testing::AllOf(testing::Contains("1.data1@S1 r1"),
                                            testing::Not(testing::Contains("1.data1@S1 r2")),
                                            testing::Contains("1.data1@S1 r3")));
}

TEST_F(DataWriterSessions, CountARecordWithoutDataAsRecorded)
{
    node.start({});
    runUpdate(node, {});
    EXPECT_EQ(host.records, 1u);
    EXPECT_EQ(host.files, 0u);
    parameters.set("WriteEnable", "Off");
    runUpdate(node, onPin1(Core::Integer(1)));
    EXPECT_EQ(host.records, 2u);
    EXPECT_TRUE(host.lost.empty());
}

TEST_F(DataWriterSessions, RefuseSettingsWhileRunningAndLogIt)
{
    const auto expectLogged = [this](const std::string& operation, const char* text) {
        ASSERT_EQ(log.lines().size(), 1u);
        EXPECT_EQ(log.lines()[0].severity, Utils::SeverityRefused);
        EXPECT_THAT(logged(), ElementsAre(testing::StartsWith(nodeName() + operation + " failed. Message: \"" +
                                                              text + "\" (datawriter/DataWriter:")));
        log.clear();
    };
    const char* text = "ptrSettings is a nullptr";
    EXPECT_EQ(refusal<GenICam::InvalidArgumentException>([this] { node.loadSettings(nullptr); }), text);
    expectLogged("loadSettings", text);
    EXPECT_EQ(refusal<GenICam::InvalidArgumentException>([this] { node.saveSettings(nullptr); }), text);
    expectLogged("saveSettings", text);
    node.start({});
    const auto store = std::make_shared<Nivex::DataProcessing::Runtime::JsonSettings>();
    text = "Node must be in stopped state to deserialize.";
    EXPECT_EQ(refusal<GenICam::RuntimeException>([&] { node.loadSettings(store); }), text);
    expectLogged("loadSettings", text);
    text = "Node must be in stopped state to serialize.";
    EXPECT_EQ(refusal<GenICam::RuntimeException>([&] { node.saveSettings(store); }), text);
    expectLogged("saveSettings", text);
}

TEST_F(DataWriterSessions, EndWithTheNode)
{
    {
        DataWriter other(nullptr, [this](MediaType, IWriterLedger& ledger) {
            return std::make_shared<RecordingWriter>(calls, ledger, action);
        });
        Parameters own(other);
        own.set("OutputFolderName", folder.path().string());
        own.set("MediaWriterDescription", "writer 1");
        own.set("SessionFolderName", "S");
        own.set("RecordPeriodUnit", "Seconds");
        other.start({});
    }
    EXPECT_THAT(takeCalls(), ElementsAre("1.beginSession@S r0", "1.endSession@S r0"));
}

}  // namespace
}  // namespace DataWriterTest

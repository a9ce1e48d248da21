// Text files from end to end: values of all kinds through a node into a folder, compared to the byte.
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <algorithm>
#include <fstream>
#include <optional>

#include "../../framework/logcapture.h"
#include "datawriter/MediaWriterFactory.h"
#include "utils/typeregistrar.h"
#include "valuecases.h"

namespace DataWriterTest {

/// Can't be read.
class Unreadable : public Core::Integer
{
public:
    bool hasError(bool) const override { throw std::runtime_error("unreadable"); }
};

/// Is on no list.
class Foreign : public Core::ValueBase
{
public:
    void setError(std::shared_ptr<Core::IError> error) override { keepError(std::move(error)); }
};

namespace {

const Utils::TypeRegistrar<Unexplained, Core::Integer> unexplainedRegistrar;
const Utils::TypeRegistrar<ErrorBelow, Core::Integer> errorBelowRegistrar;
const Utils::TypeRegistrar<Unreadable, Core::Integer> unreadableRegistrar;
const Utils::TypeRegistrar<Foreign, Core::IValue> foreignRegistrar;

using Core::LossCause;
using Files = std::map<std::string, std::string>;
using Losses = std::map<LossCause, int>;
using Updates = std::vector<Core::PinValues>;

std::string contentOf(const fs::path& file)
{
    std::ifstream stream(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}

class TextFiles : public testing::Test
{
protected:
    TemporaryFolder folder;
    CountingHost host;
    std::optional<DataWriter> node;
    std::optional<Parameters> parameters;
    ScopedLogCapture log;

    TextFiles() { makeNode(); }
    ~TextFiles() override { node->stop(); }

    /// A new node, with an empty folder and nothing counted yet.
    void makeNode()
    {
        for (const auto& entry : fs::directory_iterator(folder.path()))
            fs::remove_all(entry);
        host.lost.clear();
        host.records = host.files = host.bytes = 0;
        log.clear();
        node.emplace(nullptr);
        node->attachHost(&host);
        parameters.emplace(*node);
        set({{"OutputFolderName", folder.path().string()},
             {"SessionFolderName", ""},
             {"MediaType", "TXT"},
             {"NumInputDataPins", "2"}});
    }
    void set(const std::vector<std::pair<const char*, std::string>>& values)
    {
        for (const auto& [name, value] : values)
            parameters->set(name, value);
    }
    void setSections(int pin, const std::vector<std::pair<const char*, std::string>>& sections)
    {
        parameters->set("InputDataPinSelector", std::to_string(pin));
        for (const auto& [name, text] : sections)
            set({{"TextFormatSelector", std::string("TextFormat_") + name}, {"TextFormat", text}});
    }
    void write(const Updates& updates)
    {
        node->start({});
        for (const Core::PinValues& values : updates)
            runUpdate(*node, values);
        node->stop();
    }
    /// What a session of one value writes.
    std::string textOf(const Utils::Variant& value)
    {
        parameters->set("FileName", "one.txt");
        write({{{"Data1", value}}});
        return contentOf(folder.path() / "one.txt");
    }
    Files files() const
    {
        Files all;
        for (const std::string& name : folder.entries()) {
            if (fs::is_regular_file(folder.path() / name)) all[name] = contentOf(folder.path() / name);
        }
        return all;
    }
    std::vector<std::string> logged() const { return log.messages("nivex.dataprocessing.stagelet.DataWriter"); }
};

Core::PinValues onPins(int first, int second)
{
    return {{"Data1", Utils::Variant(Core::Integer(first))}, {"Data2", Utils::Variant(Core::Integer(second))}};
}

TEST_F(TextFiles, HoldTheSectionsOfTheirScope)
{
    // What sessions, their two records, and DataItem files hold.
    const std::string first = "(r0+(d1=1d)(d2=2d)r)";
    const std::string second = "(r0+(d1=3d)r)";
    const std::string session = "(s0" + first + second + "s)";
    const std::string item = "(d1=1d)(d2=2d)r)" + second + "s)";
    const std::string old = "old;";
    const struct
    {
        const char* scope;
        const char* mode;
        const char* fileName;
        Files expected;
        std::uint64_t finished;
    } cases[] = {
        {"Session", "Create", "", {{"Data_Session1.txt", session}, {"Data_Session2.txt", session}}, 2},
        {"Session", "Create", "all.txt", {{"all.txt", session}}, 2},
        {"Session", "CreateThenAppend", "all.txt", {{"all.txt", session}}, 2},
        {"Session", "Append", "all.txt", {{"all.txt", old + session + session}}, 2},
        {"Record", "Create", "", {{"Data_Record1.txt", first}, {"Data_Record2.txt", second}}, 4},
        {"Record", "Append", "", {{"Data_Record1.txt", first + first}, {"Data_Record2.txt", second + second}}, 4},
        {"Record", "Create", "all.txt", {{"all.txt", second}}, 4},
        {"Record", "CreateThenAppend", "all.txt", {{"all.txt", second}}, 4},
        {"Record", "Append", "all.txt", {{"all.txt", old + first + second + first + second}}, 4},
        {"DataItem", "Create", "", {{"Data_Record1_Data1.txt", item}}, 2},
        {"DataItem", "CreateThenAppend", "all.txt", {{"all.txt", item}}, 2},
        {"DataItem", "Append", "all.txt", {{"all.txt", old + item + item}}, 2},
        {"Session", "Create", "a/{PinIndex}{Width}.txt", {{"a_0{Width}.txt", session}}, 2},
        {"DataItem", "Create", "{PinIndex}.txt", {{"1.txt", item}}, 2},
    };
    for (const auto& row : cases) {
        SCOPED_TRACE(std::string(row.scope) + " " + row.mode + " " + row.fileName);
        makeNode();
        setSections(1, {{"SessionBegin", "(s{PinIndex}"},
                        {"RecordBegin", "(r{PinIndex}"},
                        {"DataBegin", "(d{PinIndex}"},
                        {"Data", "={Default}"},
                        {"DataEnd", "d)"},
                        {"RecordEnd", "r)"},
                        {"SessionEnd", "s)"}});
        setSections(
            2, {{"RecordBegin", "+"}, {"DataBegin", "(d{PinIndex}"}, {"Data", "={Default}"}, {"DataEnd", "d)"}});
        set({{"FileScope", row.scope}, {"FileMode", row.mode}, {"FileName", row.fileName}});
        if (row.expected.count("all.txt") != 0) std::ofstream(folder.path() / "all.txt") << old;
        const Updates updates = {onPins(1, 2), onPin1(Core::Integer(3))};
        write(updates);
        write(updates);
        EXPECT_EQ(files(), row.expected);
        EXPECT_EQ(host.files, row.finished);
        EXPECT_EQ(host.records, 6 + row.finished);
        EXPECT_EQ(host.bytes, 6 * std::string("(d1=1d)").size());
        EXPECT_EQ(host.lost, Losses());
        EXPECT_TRUE(logged().empty());
    }
}

TEST_F(TextFiles, HoldNothingOfPinsThatAreNotTheirs)
{
    for (const char* off : {"WriteEnable", "UseMediaWriterEnable"}) {
        makeNode();
        setSections(1, {{"RecordBegin", "one "}});
        setSections(2, {{"SessionBegin", "x"}, {"RecordBegin", "x"}, {"RecordEnd", "x"}, {"SessionEnd", "x"}});
        set({{off, "Off"}, {"FileScope", "Session"}});
        write({onPins(1, 2)});
        EXPECT_EQ(files(), (Files{{"Data_Session1.txt", "one 1\n"}})) << off;
    }
}

TEST_F(TextFiles, HoldValuesOfAllTypes)
{
    for (const ValueCase& row : valueCases()) {
        SCOPED_TRACE(row.name);
        setSections(1, {{"Data", ""}});
        EXPECT_EQ(textOf(row.value), row.byDefault + "\n");
        EXPECT_EQ(textOf(row.withError), "broken\n");
        EXPECT_EQ(textOf(row.array), "Data1 Array[2]\n" + row.byDefault + "\nbroken\n\n");
        EXPECT_EQ(textOf(row.arrayWithError), "Data1 Array[0]\nno array\n");
        EXPECT_EQ(textOf(row.emptyArray), "Data1 Array[0]\n\n");

        std::string data, present, absent;
        for (const auto& [token, text] : row.known) {
            data += token;
            present += text;
            absent += "na";
        }
        setSections(1, {{"Data", "{ArrayIndex}/{ArraySize}|" + data + "|{HasError}{ErrorMessage}"}});
        EXPECT_EQ(textOf(row.value), "0/0|" + present + "|0\n");
        EXPECT_EQ(textOf(row.withError), "0/0|" + absent + "|1broken\n");
        EXPECT_EQ(textOf(row.array), "Data1 Array[2]\n0/2|" + present + "|0\n1/2|" + absent + "|1broken\n\n");
    }
    EXPECT_EQ(host.lost, Losses());
}

TEST_F(TextFiles, HoldOddValues)
{
    EXPECT_EQ(textOf(Utils::Variant(Unexplained())), "Internal error.\n");
    EXPECT_EQ(textOf(Utils::Variant(ErrorBelow())), "0\n");
    EXPECT_EQ(host.lost, Losses());
    setSections(1, {{"DataBegin", "begin"}});
    EXPECT_EQ(textOf(Utils::Variant(Foreign())), "");
    EXPECT_EQ(host.lost, (Losses{{LossCause::Unsupported, 1}}));
    EXPECT_TRUE(logged().empty());

    setSections(1, {{"DataBegin", ""}, {"ArrayBegin", "{PinIndex}:{ArraySize}.{ArrayIndex}{X}{HasError}\\n"}});
    EXPECT_EQ(textOf(Utils::Variant(Core::Array<Core::Integer>({Core::Integer(1), Core::Integer(2)}))),
              "1:2.0{X}0\n1\n2\n\n");
}

// A value that raises ends the file of its scope, and the next one begins another.
TEST_F(TextFiles, EndWithAnExceptionInDataItemScope)
{
    const Updates updates = {onPin1(Core::Integer(1)), onPin1(Unreadable()), onPin1(Core::Integer(3))};
    set({{"FileScope", "DataItem"}});
    write(updates);
    EXPECT_EQ(files(), (Files{{"Data_Record1_Data1.txt", "1\n"}, {"Data_Record3_Data1.txt", "3\n"}}));
    EXPECT_EQ(host.files, 2u);
    EXPECT_EQ(host.lost, (Losses{{LossCause::FileNotWritten, 1}}));
    EXPECT_EQ(logged().size(), 1u);

    makeNode();
    set({{"FileScope", "Session"}});
    write(updates);
    EXPECT_EQ(files(), (Files{{"Data_Session1.txt", "1\n3\n"}}));
    EXPECT_EQ(host.lost, (Losses{{LossCause::FileNotWritten, 1}}));
}

struct CountingLedger final : IWriterLedger
{
    std::uint64_t records = 0;
    Losses lost;

    void reportRecorded(std::uint64_t, std::uint64_t) override { ++records; }
    void reportLoss(LossCause cause) override { ++lost[cause]; }
};

// What a node does not ask for, but a recipe with odd settings, or another caller, may.
TEST_F(TextFiles, RefuseWhatIsNoScopeAndNoPin)
{
    CountingLedger ledger;
    MediaWriterSettings settings;
    TimeSnapshot time;
    const TextTokenTable tokens;
    WriterIndices indices{.pinIndex = 1, .mediaWriterIndex = 2};
    std::vector<InputPinSettings> pins(1);
    const MediaWriterContext context{&settings, &time, &folder.path(), &tokens, &indices, &pins};
    const Utils::Variant value{Core::Integer(1)};
    const auto writer = createMediaWriter(MediaType::TXT, ledger);
    EXPECT_EQ(createMediaWriter(static_cast<MediaType>(8), ledger), nullptr);

    settings.fileScope = static_cast<FileScope>(7);
    writer->beginSession(context);
    writer->beginRecord(context);
    writer->writeData(value, value.getValueType(), context);
    writer->writeData(Utils::Variant(), value.getValueType(), context);
    writer->writeData(value, Utils::TypeInfo(), context);
    EXPECT_EQ(ledger.lost, (Losses{{LossCause::FileNotWritten, 1}}));
    ASSERT_EQ(logged().size(), 1u);
    EXPECT_NE(logged()[0].find("No file is open."), std::string::npos) << logged()[0];
    EXPECT_EQ(files(), Files());

    settings.fileScope = FileScope::Record;
    writer->beginRecord(context);
    indices.pinIndex = 2;
    EXPECT_THROW(writer->writeData(value, value.getValueType(), context), std::out_of_range);
    pins[0].textFormat[0] = "x";  // a section for a writer that the pin's list doesn't hold
    settings.fileScope = FileScope::Session;
    EXPECT_THROW(writer->beginSession(context), std::out_of_range);
    EXPECT_EQ(ledger.records, 0u);
}

// Format state lasts for the session: across pins, records and files, but not in names and not in the next
// session.
TEST_F(TextFiles, KeepTheFormatThatATemplateSet)
{
    const std::locale before = std::locale::global(std::locale(std::locale::classic(), new Grouping));
    setSections(1, {{"Data", "{_Fixed_}{_Precision_}{2}{_ShowPos_}{Default}"}, {"DataEnd", ";"}});
    set({{"FileScope", "Record"}, {"FileName", "{SessionIndex}.{RecordIndex}"}});
    const Core::PinValues onPin2 = {{"Data2", Utils::Variant(Core::Float(1234.5))}};
    Core::PinValues onBoth = onPin2;
    onBoth["Data1"] = Utils::Variant(Core::Integer(1234));
    write({onPin2, onBoth, onPin2});
    write({onPin2});
    std::locale::global(before);
    EXPECT_EQ(
        files(),
        (Files{{"1.1", "1234.5\n"}, {"1.2", "+1234;+1234.50\n"}, {"1.3", "+1234.50\n"}, {"2.1", "1234.5\n"}}));
}

TEST_F(TextFiles, AreCountedAndNamedWhenTheyCannotBeOpened)
{
    const struct
    {
        const char* scope;
        std::string fileName;
        const char* cause;
        std::size_t logLines;
    } cases[] = {
        {"Session", ".", "Is a directory", 1},
        {"Record", "..", "Is a directory", 1},
        {"DataItem", "{ErrorMessage}", "Is a directory", 1},
        {"Session", "folder", "Is a directory", 1},
        {"Record", "folder", "Is a directory", 1},
        {"DataItem", "folder", "Is a directory", 1},
        {"Session", "pipe", "It is no regular file.", 1},
        {"Record", "pipe", "It is no regular file.", 1},
        {"DataItem", "device", "It is no regular file.", 1},
        {"Record", std::string(300, 'n') + "{RecordIndex}", "File name too long", 2},
        {"DataItem", std::string(300, 'n') + "{RecordIndex}", "File name too long", 2},
    };
    for (const auto& row : cases) {
        SCOPED_TRACE(row.scope + (" " + row.fileName));
        makeNode();
        fs::create_directory(folder.path() / "folder");
        ASSERT_EQ(mkfifo((folder.path() / "pipe").c_str(), 0600), 0);
        fs::create_symlink("/dev/full", folder.path() / "device");
        setSections(1, {{"SessionBegin", "x"}, {"RecordBegin", "x"}});
        set({{"FileScope", row.scope}, {"FileName", row.fileName}});
        write({onPins(1, 2), onPins(3, 4)});
        EXPECT_EQ(files(), Files());
        EXPECT_EQ(host.lost, (Losses{{LossCause::FileNotWritten, 4}}));
        EXPECT_EQ(host.records, 0u);
        ASSERT_EQ(logged().size(), row.logLines);
        EXPECT_NE(logged()[0].find("Media writer 1: Writing the text file \"" + folder.path().string()),
                  std::string::npos);
        EXPECT_NE(logged()[0].find(row.cause), std::string::npos) << logged()[0];
        EXPECT_EQ(log.lines()[0].severity, Utils::SeverityFailure);
    }
}

TEST_F(TextFiles, HoldTheirBeginOnAFullDisk)
{
    std::string all;
    Updates updates;
    for (int i = 0; i < 1000; ++i) {
        const std::string text = std::to_string(i) + std::string(100, '.');
        all += text + "\n";
        updates.push_back(onPin1(Core::String(text.c_str())));
    }
    set({{"FileScope", "Session"}, {"FileName", "all.txt"}});
    {
        const FileSizeLimit full(20000);
        write(updates);
    }
    EXPECT_EQ(files(), (Files{{"all.txt", all.substr(0, 20000)}}));
    EXPECT_EQ(host.lost.size(), 1u);
    const int lost = host.lost[LossCause::FileNotWritten];
    EXPECT_GE(lost, 700);  // more than two thirds of the values come after what the stream's buffer holds
    EXPECT_EQ(host.records, static_cast<std::uint64_t>(1000 - lost));
    EXPECT_EQ(host.files, 0u);
    ASSERT_EQ(logged().size(), 1u);
    EXPECT_NE(logged()[0].find("all.txt\" failed. Message: File too large"), std::string::npos) << logged()[0];

    write({updates[0]});  // once there is space again
    EXPECT_EQ(files(), (Files{{"all.txt", all.substr(0, 102)}}));
    EXPECT_EQ(host.files, 1u);
}

// All waits in the buffer, so that only the end shows it.
TEST_F(TextFiles, FailAtTheirEnd)
{
    for (const char* scope : {"Session", "Record", "DataItem"}) {
        makeNode();
        set({{"FileScope", scope}, {"FileName", "all.txt"}});
        {
            const FileSizeLimit full(3);
            write({onPins(12, 34)});
        }
        EXPECT_EQ(files(), (Files{{"all.txt", "12\n"}})) << scope;
        EXPECT_EQ(host.lost, (Losses{{LossCause::FileNotWritten, 1}})) << scope;
        EXPECT_EQ(host.files, 0u);
        ASSERT_EQ(logged().size(), 1u);
        EXPECT_NE(logged()[0].find("File too large"), std::string::npos) << logged()[0];
    }
}

TEST_F(TextFiles, AreMissedWhenTheirFolderGoes)
{
    const char* const gone = "The file was removed or renamed before it was finished.";
    for (const auto& [scope, cause] :
         {std::pair{"Session", gone}, {"DataItem", gone}, {"Record", "No such file or directory"}})
    {
        SCOPED_TRACE(scope);
        makeNode();
        const fs::path out = folder.path() / "out";
        fs::create_directory(out);
        set({{"OutputFolderName", out.string()}, {"FileScope", scope}, {"FileName", "all.txt"}});
        node->start({});
        runUpdate(*node, onPins(1, 2));
        fs::remove_all(out);
        runUpdate(*node, onPins(3, 4));
        runUpdate(*node, onPins(5, 6));
        node->stop();
        EXPECT_EQ(host.lost, (Losses{{LossCause::FileNotWritten, 4}})) << "all values after it";
        ASSERT_EQ(logged().size(), 1u);
        EXPECT_NE(logged()[0].find(cause), std::string::npos) << logged()[0];
    }
}

}  // namespace
}  // namespace DataWriterTest

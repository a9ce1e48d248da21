#pragma once

#include <gtest/gtest.h>
#include <stdlib.h>

#include <filesystem>
#include <functional>
#include <iterator>
#include <map>
#include <memory>
#include <set>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

#include "genapi/genapi.h"

#include "../../filesizelimit.h"
#include "../../framework/logcapture.h"
#include "core/errors.h"
#include "core/image.h"
#include "core/inodehost.h"
#include "datawriter/DataWriter.h"

namespace DataWriterTest {

namespace fs = std::filesystem;
namespace Core = Nivex::DataProcessing::Core;
namespace Utils = Nivex::DataProcessing::Utils;
using namespace Plugin::NivexStageletPackageBase;
using GenICam::gcstring;

/// A folder of the test's own, gone with it.
class TemporaryFolder
{
public:
    TemporaryFolder() { path_ = mkdtemp(pattern_.data()); }
    ~TemporaryFolder() { fs::remove_all(path_); }
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    const fs::path& path() const { return path_; }
    /// All files and folders below it, as relative paths.
    std::set<std::string> entries() const
    {
        std::set<std::string> names;
        for (const auto& entry : fs::recursive_directory_iterator(path_))
            names.insert(fs::relative(entry.path(), path_).string());
        return names;
    }

private:
    std::string pattern_ = (fs::temp_directory_path() / "datawriter-XXXXXX").string();
    fs::path path_;
};

/// Counts what a node outside a graph reports.
class CountingHost : public Core::INodeHost
{
public:
    std::map<Core::LossCause, int> lost;
    std::uint64_t records = 0;
    std::uint64_t files = 0;
    std::uint64_t bytes = 0;

    std::shared_ptr<Core::IGraphUpdate> createUpdate(Core::NodeBase&, const std::shared_ptr<Core::IGraphUpdate>&,
                                                     bool) override
    {
        return nullptr;
    }
    bool waitUntilSpaceAvailable(Core::NodeBase&) override { return false; }
    void submit(Core::NodeBase&, const std::shared_ptr<Core::IGraphUpdate>&, Core::PinValues&&,
                std::function<void()>) override
    {}
    void reportLoss(Core::NodeBase&, Core::LossCause cause, const Core::IGraphUpdate*) override { ++lost[cause]; }
    void reportMissed(Core::NodeBase&, Core::LossCause, std::uint64_t) override {}
    void reportSent(Core::NodeBase&) override {}
    void reportRecorded(Core::NodeBase&, std::uint64_t newFiles, std::uint64_t newBytes) override
    {
        ++records;
        files += newFiles;
        bytes += newBytes;
    }
};

/// The words of a text.
inline std::vector<std::string> words(const std::string& text)
{
    std::istringstream stream(text);
    return {std::istream_iterator<std::string>(stream), {}};
}

inline std::shared_ptr<Core::IError> error(const char* text, Core::ErrorList parents = {})
{
    return std::make_shared<Core::InvalidValueError>(text, std::move(parents), Utils::DateTime::now());
}

/// A picture whose bytes rise from 0.
inline Core::Image image(Nivex::EPixelType pixelType, std::uint32_t width = 8, std::uint32_t height = 4,
                         std::size_t padding = 0)
{
    Nivex::CNivexImage picture;
    picture.Reset(pixelType, width, height, padding);
    auto* bytes = static_cast<std::uint8_t*>(picture.GetBuffer());
    for (std::size_t i = 0; i < picture.GetImageSize(); ++i)
        bytes[i] = static_cast<std::uint8_t>(i);
    return Core::Image(picture, nullptr, false);
}

/// Parameters by name, as texts.
class Parameters
{
public:
    explicit Parameters(DataWriter& node) : map_(node.getNodeMap("@Stagelet")) {}

    void set(const char* name, const std::string& text) { value(name).FromString(text.c_str()); }
    std::string get(const char* name) { return value(name).ToString().str(); }
    GenApi::INode& node(const std::string& name)
    {
        GenApi::INode* found = map_.GetNode(name.c_str());
        if (!found) throw std::runtime_error("no node " + name);
        return *found;
    }
    template <typename Interface>
    Interface& as(const char* name)
    {
        return dynamic_cast<Interface&>(node(name));
    }
    GenApi::IValue& value(const char* name) { return as<GenApi::IValue>(name); }

private:
    GenApi::CNodeMapRef map_;
};

inline void runUpdate(DataWriter& node, const Core::PinValues& values = {})
{
    node.startExecution([&](std::shared_ptr<Core::IGraphUpdate>&, Core::PinValues& target) { target = values; });
}

template <typename T>
Core::PinValues onPin1(T value)
{
    return {{"Data1", Utils::Variant(std::move(value))}};
}

/// A node that writes straight into a folder of the test's own.
class FolderTest : public testing::Test
{
protected:
    TemporaryFolder folder;
    CountingHost host;
    DataWriter node{nullptr};
    Parameters parameters{node};
    ScopedLogCapture log;

    explicit FolderTest(const char* mediaType)
    {
        node.attachHost(&host);
        parameters.set("OutputFolderName", folder.path().string());
        parameters.set("SessionFolderName", "");
        parameters.set("MediaType", mediaType);
    }
    ~FolderTest() override { node.stop(); }

    /// A session with an update for each of the values.
    void write(const std::vector<Core::PinValues>& updates)
    {
        node.start({});
        for (const Core::PinValues& values : updates)
            runUpdate(node, values);
        node.stop();
    }
};

}  // namespace DataWriterTest

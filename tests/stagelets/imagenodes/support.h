#pragma once

#include <gtest/gtest.h>

#include <condition_variable>
#include <filesystem>
#include <fstream>
#include <functional>
#include <map>
#include <mutex>
#include <set>
#include <variant>

#include "gcbase/exception.h"

#include "utility/imagepersistence.h"

#include "core/image.h"
#include "core/inodehost.h"
#include "core/integer.h"
#include "core/isettings.h"
#include "core/nodebase.h"
#include "core/string.h"

namespace Plugin::NivexStageletPackageBase::Test {

namespace Core = Nivex::DataProcessing::Core;
namespace Utils = Nivex::DataProcessing::Utils;
using GenICam::gcstring;

/// A flat settings store that remembers the order in which keys were written.
class FakeSettings : public Core::ISettings
{
public:
    using Value = std::variant<std::int64_t, std::uint64_t, double, bool, gcstring>;

    bool hasKey(const Core::SettingsPath& path) const override { return values.count(name(path)) != 0; }
    std::int64_t getSigned(const Core::SettingsPath& path) const override { return get<std::int64_t>(path); }
    std::uint64_t getUnsigned(const Core::SettingsPath& path) const override { return get<std::uint64_t>(path); }
    double getDouble(const Core::SettingsPath& path) const override { return get<double>(path); }
    bool getBool(const Core::SettingsPath& path) const override { return get<bool>(path); }
    gcstring getString(const Core::SettingsPath& path) const override { return get<gcstring>(path); }
    void setSigned(const Core::SettingsPath& path, std::int64_t value) override { set(path, value); }
    void setUnsigned(const Core::SettingsPath& path, std::uint64_t value) override { set(path, value); }
    void setDouble(const Core::SettingsPath& path, double value) override { set(path, value); }
    void setBool(const Core::SettingsPath& path, bool value) override { set(path, value); }
    void setString(const Core::SettingsPath& path, const gcstring& value) override { set(path, value); }
    std::shared_ptr<ISettings> openChild(const Core::SettingsPath&) const override { return nullptr; }
    std::shared_ptr<ISettings> createChild(const Core::SettingsPath&) override { return nullptr; }
    std::size_t getSize(const Core::SettingsPath&) const override { return 0; }
    void createList(const Core::SettingsPath&) override {}
    bool hasLocation() const override { return !location.empty(); }
    gcstring getLocation() const override { return location; }

    std::map<gcstring, Value> values;
    std::vector<gcstring> order;
    gcstring location;

private:
    static gcstring name(const Core::SettingsPath& path) { return std::get<gcstring>(path.getElements().at(0)); }
    template <typename T>
    T get(const Core::SettingsPath& path) const
    {
        return std::get<T>(values.at(name(path)));
    }
    void set(const Core::SettingsPath& path, Value value)
    {
        order.push_back(name(path));
        values[name(path)] = std::move(value);
    }
};

/// A graph of one node: takes its updates and its reports. Tests force the order of things through the hooks.
class FakeHost : public Core::INodeHost
{
public:
    struct Update : Core::IGraphUpdate
    {
        std::uint64_t getSequenceNumber() const override { return 0; }
        std::shared_ptr<IGraphUpdate> getParent() const override { return nullptr; }
    };

    bool waitUntilSpaceAvailable(Core::NodeBase&) override { return spaceAvailable ? spaceAvailable() : true; }
    std::shared_ptr<Core::IGraphUpdate> createUpdate(Core::NodeBase&, const std::shared_ptr<Core::IGraphUpdate>&,
                                                     bool) override
    {
        watchThread();
        return makeUpdate ? makeUpdate() : std::make_shared<Update>();
    }
    void submit(Core::NodeBase&, const std::shared_ptr<Core::IGraphUpdate>& update, Core::PinValues&& values,
                std::function<void()>) override
    {
        const std::lock_guard guard(mutex_);
        updates_.push_back(update);
        values_.push_back(std::move(values));
        changed_.notify_all();
    }
    void reportLoss(Core::NodeBase&, Core::LossCause cause, const Core::IGraphUpdate* update) override
    {
        const std::lock_guard guard(mutex_);
        losses.emplace_back(cause, update);
    }
    void reportMissed(Core::NodeBase&, Core::LossCause, std::uint64_t) override {}
    void reportSent(Core::NodeBase&) override {}
    void reportRecorded(Core::NodeBase&, std::uint64_t, std::uint64_t) override {}

    std::vector<Core::PinValues> waitForUpdates(std::size_t count)
    {
        std::unique_lock guard(mutex_);
        changed_.wait(guard, [&] { return values_.size() >= count; });
        return values_;
    }
    /// Waits until the thread that asked for updates has ended.
    std::vector<Core::PinValues> waitForEndOfThread()
    {
        std::unique_lock guard(mutex_);
        changed_.wait(guard, [&] { return threadEnded_; });
        return values_;
    }
    std::vector<std::shared_ptr<Core::IGraphUpdate>> updates()
    {
        const std::lock_guard guard(mutex_);
        return updates_;
    }

    std::function<bool()> spaceAvailable;
    std::function<std::shared_ptr<Core::IGraphUpdate>()> makeUpdate;
    std::vector<std::pair<Core::LossCause, const Core::IGraphUpdate*>> losses;

private:
    struct EndOfThread
    {
        FakeHost* host = nullptr;
        ~EndOfThread()
        {
            if (!host) return;
            const std::lock_guard guard(host->mutex_);
            host->threadEnded_ = true;
            host->changed_.notify_all();
        }
    };
    void watchThread()
    {
        thread_local EndOfThread end;
        end.host = this;
    }

    std::mutex mutex_;
    std::condition_variable changed_;
    std::vector<Core::PinValues> values_;
    std::vector<std::shared_ptr<Core::IGraphUpdate>> updates_;
    bool threadEnded_ = false;
};

/// Keeps what reaches an output.
struct KeepingSink : Core::IOutputSink
{
    void onOutput(const std::shared_ptr<Core::IGraphUpdate>&, const Utils::Variant& value) override
    {
        values.push_back(value);
    }
    std::vector<Utils::Variant> values;
};

/// A folder of its own, with a working directory to come back to.
class TemporaryFolder
{
public:
    TemporaryFolder() : previous_(std::filesystem::current_path())
    {
        std::string pattern = (std::filesystem::temp_directory_path() / "stagelet-XXXXXX").string();
        if (!mkdtemp(pattern.data())) throw std::runtime_error("no temporary folder");
        path_ = std::filesystem::canonical(pattern);
    }
    ~TemporaryFolder()
    {
        std::filesystem::current_path(previous_);
        std::filesystem::remove_all(path_);
    }
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    std::string operator/(const std::string& name) const { return (path_ / name).string(); }
    std::string string() const { return path_.string(); }

    /// Makes small images, each of one grey value, 0 for the first.
    void addImages(std::initializer_list<const char*> names) const
    {
        std::uint8_t grey = 0;
        for (const char* name : names) {
            const std::uint8_t pixels[4] = {grey, grey, grey, grey};
            Nivex::CImagePersistence::Save(Nivex::EImageFileFormat::Png, *this / name, pixels, sizeof(pixels),
                                           Nivex::EPixelType::Mono8, 2, 2, 0, Nivex::EImageOrientation::TopDown);
            ++grey;
        }
    }
    void addText(const char* name, const char* text = "no image") const { std::ofstream(*this / name) << text; }

private:
    std::filesystem::path previous_;
    std::filesystem::path path_;
};

/// The text of the exception of type E that `call` raises.
template <typename E, typename Call>
std::string refusalOf(const Call& call)
{
    try {
        call();
    } catch (const E& e) {
        return e.GetDescription();
    } catch (const GenICam::GenericException& e) {
        return std::string("another exception: ") + e.what();
    }
    return "no exception";
}

}  // namespace Plugin::NivexStageletPackageBase::Test

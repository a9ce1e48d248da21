#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <condition_variable>
#include <functional>
#include <mutex>

#include "gcbase/exception.h"
#include "genapi/genapi.h"

#include "base/emulation/emulatedbackend.h"
#include "base/parameters.h"

#include "camera/camera.h"
#include "core/image.h"
#include "core/values.h"
#include "framework/logcapture.h"
#include "framework/refusal.h"
#include "runtime/graph.h"
#include "runtime/jsonsettings.h"
#include "runtime/resourcepool.h"

// Camera nodes over emulated cameras.

namespace Plugin::NivexStageletPackageBase::Test {

namespace Core = Nivex::DataProcessing::Core;
namespace Runtime = Nivex::DataProcessing::Runtime;
namespace Utils = Nivex::DataProcessing::Utils;
using GenICam::gcstring;
using testing::ElementsAre;
using testing::HasSubstr;
using Texts = std::vector<std::string>;

constexpr const char* cameraChannelName = "nivex.dataprocessing.stagelet.Camera";

/// Keeps what reaches the outputs of a node outside a graph.
class Receiver
{
public:
    struct Value
    {
        std::string pin;
        Utils::Variant value;
    };

    void attachTo(Core::NodeBase& node, const std::string& pin)
    {
        node.attachOutputSink(gcstring(pin), std::make_shared<Sink>(*this, pin));
    }
    /// Waits for so many values of a pin and gives all of it.
    std::vector<Utils::Variant> waitFor(const std::string& pin, std::size_t count)
    {
        std::unique_lock lock(mutex_);
        changed_.wait(lock, [&] { return of(pin).size() >= count; });
        return of(pin);
    }
    /// Called with each value as it comes, on the thread that brings it.
    std::function<void(const Value&)> onValue;

private:
    struct Sink : Core::IOutputSink
    {
        Sink(Receiver& itsReceiver, std::string itsPin) : receiver(itsReceiver), pin(std::move(itsPin)) {}
        void onOutput(const std::shared_ptr<Core::IGraphUpdate>&, const Utils::Variant& value) override
        {
            if (receiver.onValue) receiver.onValue({pin, value});
            const std::lock_guard lock(receiver.mutex_);
            receiver.values_.push_back({pin, value});
            receiver.changed_.notify_all();
        }
        Receiver& receiver;
        std::string pin;
    };
    std::vector<Utils::Variant> of(const std::string& pin) const
    {
        std::vector<Utils::Variant> found;
        for (const Value& value : values_)
            if (value.pin == pin) found.push_back(value.value);
        return found;
    }

    std::mutex mutex_;
    std::condition_variable changed_;
    std::vector<Value> values_;
};

/// The end of a recipe: takes anything.
class SinkNode : public Core::NodeBase
{
public:
    explicit SinkNode(const std::vector<std::string>& pins) : NodeBase(nullptr)
    {
        for (const std::string& pin : pins)
            createInputPin(gcstring(pin), "", Utils::TypeInfo(), false, 1);
    }
    ~SinkNode() override { cleanup(); }

    std::function<void(Core::PinValues&)> step;

protected:
    void run(const std::shared_ptr<Core::IGraphUpdate>&, Core::PinValues& values) override
    {
        if (step) step(values);
    }
};

class CameraNodeTest : public testing::Test
{
protected:
    static constexpr const char* firstSerial = "0815-0000";

    static GenApi::CNodeMapRef map(Camera& node, const char* identifier = "@Stagelet")
    {
        return node.getNodeMap(identifier);
    }
    /// Sets a feature from its text.
    static void set(Camera& node, const char* identifier, const char* name, const std::string& text)
    {
        auto* value = dynamic_cast<GenApi::IValue*>(map(node, identifier).GetNode(name));
        ASSERT_NE(value, nullptr) << identifier << "/" << name;
        value->FromString(gcstring(text));
    }
    static std::string get(Camera& node, const char* identifier, const char* name)
    {
        auto* value = dynamic_cast<GenApi::IValue*>(map(node, identifier).GetNode(name));
        return value ? value->ToString().str() : "no such feature";
    }
    static Texts outputs(const Camera& node)
    {
        Texts texts;
        for (const Core::OutputDescriptor& output : node.getOutputDescriptors())
            texts.push_back(output.getName().str());
        return texts;
    }
    static Texts maps(Camera& node)
    {
        Texts texts;
        for (const Core::NodeMapInfo& info : node.getNodeMapInfos())
            texts.push_back(info.GetIdentifier().str() + "=" + info.GetName().str());
        return texts;
    }
    static Texts errors(const Camera& node)
    {
        Texts texts;
        for (const auto& error : node.getErrors())
            texts.push_back(error->getDescription().str());
        return texts;
    }
    /// Waits until the node has become what `condition` asks; a node that never does runs into the test's limit.
    template <typename Condition>
    static void await(const Condition& condition)
    {
        while (!condition())
            std::this_thread::yield();
    }
    /// "Camera <address>: function failed. Message: "text"", without the place in the source.
    std::size_t loggedRefusals(const Camera& node, const std::string& function, const std::string& text) const
    {
        const std::string start =
            GenICam::formatText("Camera %p: %s failed. Message: \"%s\" (camera/", static_cast<const void*>(&node),
                                function.c_str(), text.c_str());
        std::size_t count = 0;
        for (const auto& line : log.lines())
            count += line.severity == 3 && line.message.rfind(start, 0) == 0;
        return count;
    }
    std::size_t logged(const std::string& text) const
    {
        const Texts lines = log.messages(cameraChannelName);
        return static_cast<std::size_t>(std::count(lines.begin(), lines.end(), text));
    }

    ScopedLogCapture log;
    const std::shared_ptr<Nivex::CEmulatedCameraBackend> cameras =
        std::make_shared<Nivex::CEmulatedCameraBackend>(1);
    const std::shared_ptr<Runtime::ResourcePool> pool =
        std::make_shared<Runtime::ResourcePool>(4, Runtime::ResourcePool::CameraBackends{cameras});
};

}  // namespace Plugin::NivexStageletPackageBase::Test

#pragma once

#include <utility>
#include <vector>

#include "gcbase/gcstring.h"

#include "base/eventhandlers.h"

#include "camera/pinmappingparser.h"
#include "utils/variant.h"

namespace Plugin::NivexStageletPackageBase {

/// One line of the event pin configuration.
struct EventPinDescription
{
    GenICam::gcstring valueName;  ///< The node that shows the value.
    GenICam::gcstring eventName;  ///< An entry of the camera's EventSelector.
    PinValueType valueType = PinValueType::Invalid;
    GenICam::gcstring pinName;
    bool valid = false;  ///< If not, all else is empty.
};

/// Reads a line, which must describe exactly one pin with one event, value and type. What is wrong is logged, and
/// the description is not valid then; but a value that stands twice raises std::runtime_error.
EventPinDescription readEventPin(const GenICam::gcstring& line);
/// The second half of it: what the parser found in a line.
EventPinDescription describeEventPin(const PinMappings& pins);

/// Where the values of event pins go. All are called on the camera's event thread, without a lock.
class IEventPinOutput
{
public:
    virtual ~IEventPinOutput() = default;
    /// Puts a value out, as an update of its own, and counts it if it can't. The value is empty if the camera has
    /// no such node, or one without a value. What it throws is logged.
    virtual void outputEventValue(const GenICam::gcstring& pinName,
                                  Nivex::DataProcessing::Utils::Variant value) = 0;
    /// An event came whose value could not be read. Logged already; to be counted.
    virtual void onEventValueLost(const GenICam::gcstring& pinName) noexcept = 0;
    /// So many events did not get here: the camera or its driver had no room for them. To be counted.
    virtual void onEventsMissed(const GenICam::gcstring& pinName, std::uint64_t count) noexcept = 0;
};

/// Takes one value of camera events to its pin.
class EventHandler : public Nivex::CCameraEventHandler
{
public:
    /// @param output must outlive the handler.
    EventHandler(GenICam::gcstring pinName, GenICam::gcstring valueName, IEventPinOutput* output);

    /// Never throws.
    void OnCameraEvent(Nivex::CInstantCamera& camera, std::intptr_t userProvidedId, GenApi::INode* node) override;
    void OnCameraEventsLost(Nivex::CInstantCamera& camera, std::intptr_t userProvidedId, GenApi::INode* node,
                            std::uint64_t count) override;

private:
    GenICam::gcstring pinName_;
    GenICam::gcstring valueName_;
    IEventPinOutput* output_;
};

/// The event handlers that a node has registered with its camera. The camera keeps handlers over closing and
/// opening; this takes care that each pin has one only. For one thread at a time.
class EventPinRegistrations
{
public:
    /// For OnOpened: takes out what was registered before, then turns on the notification for each line's event
    /// and registers a handler, which the camera owns. What fails is logged and costs the values of that line's
    /// pin only. Never throws.
    /// @param output must outlive the registrations.
    void registerAll(Nivex::CInstantCamera& camera, const GenICam::gcstring_vector& lines,
                     IEventPinOutput& output);

    /// Takes out and ends the handlers. Waits for those that run, so it must not be called with a lock that the
    /// output needs, unless the camera is closed.
    void deregisterAll(Nivex::CInstantCamera& camera);

private:
    void registerLine(Nivex::CInstantCamera& camera, const GenICam::gcstring& line, IEventPinOutput& output);

    struct Registration
    {
        Nivex::CCameraEventHandler* handler;
        GenICam::gcstring valueName;
    };
    std::vector<Registration> registrations_;
};

}  // namespace Plugin::NivexStageletPackageBase

#include "camera/eventpins.h"

#include "base/instantcamera.h"
#include "base/parameters.h"

#include "camera/cameralog.h"
#include "camera/nodevalues.h"
#include "utils/cowptr.h"

namespace Plugin::NivexStageletPackageBase {

namespace Utils = Nivex::DataProcessing::Utils;
using GenICam::gcstring;

namespace {

bool isComplete(const PinMapping& pin)
{
    for (const PinProperty property : {PinProperty::EventName, PinProperty::Type, PinProperty::ValueName}) {
        const auto values = pin.properties.find(property);
        if (values == pin.properties.end() || values->second.size() != 1) return false;
    }
    return true;
}

/// Empty if there is no such node or none with a value.
Utils::Variant readEventValue(const GenApi::NodeMapPtr& nodeMap, const gcstring& name)
{
    Utils::Variant value;
    const GenApi::INode* node = nodeMap->GetNode(name);
    if (!node) return value;
    readByInterface(*node, [&]<typename Value, typename Parameter>() {
        value = Utils::Variant(Utils::COWPtr<Value>::make(Parameter(nodeMap, name).GetValue()));
    });
    return value;
}

/// False if the camera can't.
bool turnNotificationOn(const GenApi::NodeMapPtr& nodeMap, const gcstring& eventName)
{
    if (nodeMap->GetNode("EventSelector")) {
        Utils::createLogEntry(Utils::SeverityDetail, cameraChannel(), "Camera: Set enumeration selector to '%s'",
                              eventName.c_str());
        if (!Nivex::CEnumParameter(nodeMap, "EventSelector").TrySetValue(eventName)) return false;
    }
    Utils::createLogEntry(Utils::SeverityDetail, cameraChannel(), "Camera: Turn event notification on");
    return Nivex::CEnumParameter(nodeMap, "EventNotification").TrySetValue("On");
}

void logNoValues(const gcstring& pin, const std::string& cause)
{
    Utils::createLogEntry(Utils::SeverityFailure, cameraChannel(),
                          "Camera: Event pin \"%s\" is without values. Message: %s", pin.c_str(), cause.c_str());
}

}  // namespace

EventPinDescription readEventPin(const gcstring& line)
{
    PinMappings pins;
    PinMappingParser parser;
    try {
        parser.parse(PinMappingType::Event, {line}, pins);
    } catch (const GenICam::RuntimeException& e) {
        Utils::createLogEntry(Utils::SeverityRefused, cameraChannel(), "Camera: (%d,%d): Error : %s",
                              static_cast<int>(parser.getLine()), static_cast<int>(parser.getColumn()),
                              e.GetDescription());
        return {};
    }
    return describeEventPin(pins);
}

EventPinDescription describeEventPin(const PinMappings& pins)
{
    if (pins.size() != 1) {
        Utils::createLogEntry(Utils::SeverityRefused, cameraChannel(),
                              "Camera: Wrong number of event configurations found:%d",
                              static_cast<int>(pins.size()));
        return {};
    }
    const PinMapping& pin = pins.begin()->second;
    if (pin.mappingType != PinMappingType::Event) {
        Utils::createLogEntry(Utils::SeverityRefused, cameraChannel(),
                              "Camera: Unexpected mapping type found in configuration");
        return {};
    }
    if (!isComplete(pin)) {
        Utils::createLogEntry(Utils::SeverityRefused, cameraChannel(),
                              "Camera: Incomplete event configuration found");
        return {};
    }
    return {.valueName = pin.properties.at(PinProperty::ValueName).front(),
            .eventName = pin.properties.at(PinProperty::EventName).front(),
            .valueType = pin.valueType,
            .pinName = pin.name,
            .valid = true};
}

EventHandler::EventHandler(gcstring pinName, gcstring valueName, IEventPinOutput* output)
    : pinName_(std::move(pinName)), valueName_(std::move(valueName)), output_(output)
{}

void EventHandler::OnCameraEvent(Nivex::CInstantCamera& camera, std::intptr_t, GenApi::INode*)
{
    const auto log = [this](const char* verb) {
        Utils::createLogEntry(Utils::SeverityFailure, cameraChannel(),
                              "Camera: Failed to %s event value of \"%s\" pin. Message: %s", verb,
                              pinName_.c_str(), GenICam::describeCurrentException().c_str());
    };
    Utils::Variant value;
    try {
        value = readEventValue(camera.GetNodeMap(), valueName_);
    } catch (...) {
        log("get");
        output_->onEventValueLost(pinName_);
        return;
    }
    try {
        output_->outputEventValue(pinName_, std::move(value));
    } catch (...) {
        log("output");
    }
}

void EventHandler::OnCameraEventsLost(Nivex::CInstantCamera&, std::intptr_t, GenApi::INode*, std::uint64_t count)
{
    output_->onEventsMissed(pinName_, count);
}

void EventPinRegistrations::registerAll(Nivex::CInstantCamera& camera, const GenICam::gcstring_vector& lines,
                                        IEventPinOutput& output)
{
    deregisterAll(camera);
    for (const gcstring& line : lines) {
        try {
            registerLine(camera, line, output);
        } catch (...) {
            Utils::createLogEntry(Utils::SeverityRefused, cameraChannel(),
                                  "Camera: Unexpected error in Camera::OnOpened()");
            logNoValues(line, GenICam::describeCurrentException());
        }
    }
}

void EventPinRegistrations::registerLine(Nivex::CInstantCamera& camera, const gcstring& line,
                                         IEventPinOutput& output)
{
    const EventPinDescription pin = readEventPin(line);
    if (!pin.valid) return;
    Utils::createLogEntry(Utils::SeverityDetail, cameraChannel(),
                          "Camera: Try to register event \"%s\" and output \"%s\" as pin \"%s\"",
                          pin.eventName.c_str(), pin.valueName.c_str(), pin.pinName.c_str());
    if (!turnNotificationOn(camera.GetNodeMap(), pin.eventName)) {
        Utils::createLogEntry(Utils::SeverityProgress, cameraChannel(),
                              "Camera: Unable to turn on event notification for \"%s\"", pin.eventName.c_str());
        logNoValues(pin.pinName, "The camera can't send the event \"" + pin.eventName.str() + "\".");
        return;
    }
    if (!camera.GetNodeMap()->GetNode(pin.valueName))
        logNoValues(pin.pinName, "The camera has no parameter \"" + pin.valueName.str() + "\".");
    Utils::createLogEntry(Utils::SeverityDetail, cameraChannel(), "Camera: RegisterCameraEventHandler");
    registrations_.reserve(registrations_.size() + 1);
    auto* const handler = new EventHandler(pin.pinName, pin.valueName, &output);
    camera.RegisterCameraEventHandler(handler, pin.valueName, 0, Nivex::ERegistrationMode::Append,
                                      Nivex::ECleanup::Delete);
    registrations_.push_back({handler, pin.valueName});
}

void EventPinRegistrations::deregisterAll(Nivex::CInstantCamera& camera)
{
    for (const Registration& registration : registrations_) {
        camera.DeregisterCameraEventHandler(registration.handler, registration.valueName);
    }
    registrations_.clear();
}

}  // namespace Plugin::NivexStageletPackageBase

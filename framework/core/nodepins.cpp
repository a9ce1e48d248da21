#include "core/nodepins.h"

#include <algorithm>
#include <utility>

#include "gcbase/exception.h"

namespace Nivex::DataProcessing::Core {

using GenICam::gcstring;

namespace {

template <typename Pins>
auto findPin(Pins& pins, const gcstring& name)
{
    return std::find_if(pins.begin(), pins.end(),
                        [&](const auto& pin) { return pin.descriptor.getName() == name; });
}

template <typename Pins>
auto& requirePin(Pins& pins, const char* kind, const gcstring& name)
{
    const auto pin = findPin(pins, name);
    if (pin == pins.end()) GENICAM_THROW(InvalidArgumentException, "There is no %s \"%s\".", kind, name.c_str());
    return *pin;
}

template <typename Pin>
void addPin(std::vector<Pin>& pins, const char* kind, Pin pin)
{
    const gcstring& name = pin.descriptor.getName();
    if (name.empty()) GENICAM_THROW(InvalidArgumentException, "An %s needs a name.", kind);
    if (findPin(pins, name) != pins.end()) {
        GENICAM_THROW(InvalidArgumentException, "There is an %s \"%s\" already.", kind, name.c_str());
    }
    pins.push_back(std::move(pin));
}

template <typename Pin>
bool erasePin(std::vector<Pin>& pins, const gcstring& name)
{
    return std::erase_if(pins, [&](const Pin& pin) { return pin.descriptor.getName() == name; }) != 0;
}

template <typename Descriptor, typename Pin>
std::vector<Descriptor> descriptorsOf(const std::vector<Pin>& pins)
{
    std::vector<Descriptor> descriptors;
    descriptors.reserve(pins.size());
    for (const Pin& pin : pins)
        descriptors.push_back(pin.descriptor);
    return descriptors;
}

}  // namespace

// Inputs

void InputPins::Pin::setType(const Utils::TypeInfo& type)
{
    descriptor = {descriptor.getName(), descriptor.getDisplayName(), type, descriptor.allowsMultipleConnections(),
                  descriptor.getMaxConnections()};
}

void InputPins::add(InputDescriptor descriptor)
{
    const std::lock_guard guard(mutex_);
    addPin(pins_, "input", Pin{std::move(descriptor)});
}

bool InputPins::remove(const gcstring& name)
{
    const std::lock_guard guard(mutex_);
    return erasePin(pins_, name);
}

std::vector<InputDescriptor> InputPins::getDescriptors() const
{
    const std::lock_guard guard(mutex_);
    return descriptorsOf<InputDescriptor>(pins_);
}

PinHandle InputPins::bind(const gcstring& name, const Utils::TypeInfo& type)
{
    const std::lock_guard guard(mutex_);
    Pin& pin = requirePin(pins_, "input", name);
    if (pin.descriptor.getType().isValid() || pin.binding) {
        GENICAM_THROW(InvalidArgumentException, "The input \"%s\" has a type already.", name.c_str());
    }
    pin.setType(type);
    pin.binding = std::make_shared<char>();
    return pin.binding;
}

gcstring InputPins::unbind(const PinHandle& handle)
{
    const std::lock_guard guard(mutex_);
    const auto pin = std::find_if(pins_.begin(), pins_.end(),
                                  [&](const Pin& candidate) { return handle && candidate.binding == handle; });
    if (pin == pins_.end()) return {};
    pin->binding.reset();
    pin->setType({});
    return pin->descriptor.getName();
}

bool InputPins::isBound(const PinHandle& handle) const
{
    const std::lock_guard guard(mutex_);
    return handle &&
           std::any_of(pins_.begin(), pins_.end(), [&](const Pin& pin) { return pin.binding == handle; });
}

bool InputPins::canBind(const gcstring& name) const
{
    const std::lock_guard guard(mutex_);
    const auto pin = findPin(pins_, name);
    return pin != pins_.end() && !pin->descriptor.getType().isValid() && !pin->binding;
}

bool InputPins::setAutoReset(const gcstring& name, bool enabled)
{
    const std::lock_guard guard(mutex_);
    return std::exchange(requirePin(pins_, "input", name).autoReset, enabled) != enabled;
}

bool InputPins::isAutoReset(const gcstring& name) const
{
    const std::lock_guard guard(mutex_);
    return requirePin(pins_, "input", name).autoReset;
}

// Outputs

template <typename Change>
void OutputPins::change(const Change& apply)
{
    std::shared_ptr<const Table> previous;  // Sinks die without the mutex.
    const std::lock_guard guard(mutex_);
    auto changed = std::make_shared<Table>(*table_);
    apply(*changed);
    previous = std::exchange(table_, std::move(changed));
}

void OutputPins::add(OutputDescriptor descriptor)
{
    change([&](Table& table) { addPin(table, "output", Pin{std::move(descriptor)}); });
}

bool OutputPins::remove(const gcstring& name)
{
    bool wasThere = false;
    change([&](Table& table) { wasThere = erasePin(table, name); });
    return wasThere;
}

std::vector<OutputDescriptor> OutputPins::getDescriptors() const
{
    return descriptorsOf<OutputDescriptor>(*getTable());
}

PinHandle OutputPins::attach(const gcstring& name, const std::shared_ptr<IOutputSink>& sink)
{
    const PinHandle handle = std::make_shared<char>();
    change([&](Table& table) {
        Pin& pin = requirePin(table, "output", name);
        if (pin.attachments.size() >= pin.descriptor.getMaxConnections()) {
            GENICAM_THROW(InvalidArgumentException, "The output \"%s\" takes no more than %zu connections.",
                          name.c_str(), pin.descriptor.getMaxConnections());
        }
        pin.attachments.push_back({sink, handle});
    });
    return handle;
}

void OutputPins::detach(const PinHandle& handle)
{
    change([&](Table& table) {
        for (Pin& pin : table) {
            std::erase_if(pin.attachments,
                          [&](const Attachment& attachment) { return attachment.handle == handle; });
        }
    });
}

bool OutputPins::isAttached(const PinHandle& handle) const
{
    const auto table = getTable();
    return std::any_of(table->begin(), table->end(), [&](const Pin& pin) {
        return std::any_of(pin.attachments.begin(), pin.attachments.end(),
                           [&](const Attachment& attachment) { return attachment.handle == handle; });
    });
}

std::shared_ptr<const OutputPins::Table> OutputPins::getTable() const
{
    const std::lock_guard guard(mutex_);
    return table_;
}

}  // namespace Nivex::DataProcessing::Core

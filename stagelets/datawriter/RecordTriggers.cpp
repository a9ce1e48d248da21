#include "datawriter/RecordTriggers.h"

#include <array>
#include <optional>

#include "core/boolean.h"
#include "core/iarray.h"
#include "core/integer.h"

namespace Plugin::NivexStageletPackageBase {

namespace {

using namespace Nivex::DataProcessing::Core;
using Nivex::DataProcessing::Utils::Variant;

// What each trigger makes of a value; nothing where it doesn't apply, which is no hit even when inverted.
using Answer = std::optional<bool>;

Answer isPresent(const Variant& value)
{
    return value.isValid();
}

Answer hasOwnError(const Variant& value)
{
    const auto* any = value.tryGet<IValue>();
    return any ? Answer(any->hasError(false)) : std::nullopt;
}

Answer hasAnyError(const Variant& value)
{
    const auto* any = value.tryGet<IValue>();
    return any ? Answer(any->hasError(true)) : std::nullopt;
}

Answer hasItems(const Variant& value)
{
    const auto* array = value.tryGet<IArray>();
    return array && !array->hasError(true) ? Answer(!array->isEmpty()) : std::nullopt;
}

Answer isTrue(const Variant& value)
{
    if (const auto* boolean = value.tryGet<Boolean>()) {
        return boolean->hasError(true) ? std::nullopt : Answer(boolean->get());
    }
    if (const auto* integer = value.tryGet<Integer>()) {
        return integer->hasError(true) ? std::nullopt : Answer(integer->getUnsigned() != 0);
    }
    return std::nullopt;
}

struct Trigger
{
    RecordTriggerSelector selector;
    Answer (*ask)(const Variant& value);
};

/// In the order in which they are asked.
constexpr std::array triggers = {
    Trigger{RecordTriggerSelector::DataPresent, isPresent},
    Trigger{RecordTriggerSelector::HasError, hasOwnError},
    Trigger{RecordTriggerSelector::HasErrorRecursive, hasAnyError},
    Trigger{RecordTriggerSelector::ArrayHasItems, hasItems},
    Trigger{RecordTriggerSelector::BoolValue, isTrue},
};

}  // namespace

bool hasTriggerHit(const InputPinSettings& pin, const Variant& value)
{
    for (const Trigger& trigger : triggers) {
        const RecordTriggerEnable mode = getRecordTriggerEnable(pin, trigger.selector);
        if (mode == RecordTriggerEnable::Off) continue;
        const Answer answer = trigger.ask(value);
        if (answer && *answer == (mode == RecordTriggerEnable::On)) return true;
    }
    return false;
}

}  // namespace Plugin::NivexStageletPackageBase

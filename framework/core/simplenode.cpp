#include "core/simplenode.h"

#include <algorithm>

namespace Nivex::DataProcessing::Core {

struct SimpleNode::Input
{
    GenICam::gcstring name;
    Utils::IProperty* property;
    Utils::IResettableProperty* resettable;  ///< Null for a property that always has a value.
    Utils::Variant defaultValue;

    void reset() const
    {
        if (defaultValue.isValid()) {
            property->setVariant(defaultValue);
        } else if (resettable && resettable->hasValue()) {
            resettable->reset();
        }
    }
};

struct SimpleNode::Output
{
    GenICam::gcstring name;
    Utils::IResettableProperty* property;
};

SimpleNode::SimpleNode(const std::shared_ptr<IResourcePool>& pool) : NodeBase(pool) {}
SimpleNode::~SimpleNode() = default;

bool SimpleNode::isForwardingUpdates() const
{
    return true;
}

void SimpleNode::removeInput(const GenICam::gcstring& name)
{
    std::erase_if(inputs_, [&](const Input& input) { return input.name == name; });
    NodeBase::removeInput(name);
}

void SimpleNode::removeOutput(const GenICam::gcstring& name)
{
    std::erase_if(outputs_, [&](const Output& output) { return output.name == name; });
    NodeBase::removeOutput(name);
}

void SimpleNode::run(const std::shared_ptr<IGraphUpdate>& update, PinValues& values)
{
    for (const Input& input : inputs_) {
        const auto value = values.find(input.name);
        if (value != values.end()) {
            input.property->setVariant(value->second);
        } else if (isAutoResetEnabled(input.name)) {
            input.reset();
        }
    }
    for (const Output& output : outputs_) {
        if (output.property->hasValue()) output.property->reset();
    }
    process();
    values.clear();
    for (const Output& output : outputs_) {
        if (output.property->hasValue()) values.emplace(output.name, output.property->getVariant());
    }
    finishExecution(update, values);
}

void SimpleNode::onInputTypeConfigured(const GenICam::gcstring& name, const Utils::TypeInfo& type)
{
    NodeBase::onInputTypeConfigured(name, type);
}

void SimpleNode::onInputTypeUnconfigured(const GenICam::gcstring& name)
{
    // A value of the type that is bound no more must not be taken for one of the next type.
    for (const Input& input : inputs_) {
        if (input.name == name) input.reset();
    }
    NodeBase::onInputTypeUnconfigured(name);
}

void SimpleNode::createInput(const GenICam::gcstring& name, const GenICam::gcstring& displayName,
                             Utils::IProperty& property, const Utils::Variant& defaultValue,
                             bool allowsMultipleConnections, unsigned long maxConnections)
{
    createInputPin(name, displayName, property.getType(), allowsMultipleConnections, maxConnections);
    inputs_.push_back({name, &property, dynamic_cast<Utils::IResettableProperty*>(&property), defaultValue});
}

void SimpleNode::createInput(const GenICam::gcstring& name, const GenICam::gcstring& displayName,
                             Utils::IResettableProperty& property, bool allowsMultipleConnections,
                             unsigned long maxConnections)
{
    createInput(name, displayName, property, Utils::Variant(), allowsMultipleConnections, maxConnections);
}

void SimpleNode::createOutput(const GenICam::gcstring& name, const GenICam::gcstring& displayName,
                              Utils::IResettableProperty& property, bool allowsMultipleConnections,
                              unsigned long maxConnections)
{
    NodeBase::createOutput(name, displayName, property.getType(), allowsMultipleConnections, maxConnections);
    outputs_.push_back({name, &property});
}

}  // namespace Nivex::DataProcessing::Core

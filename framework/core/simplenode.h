#pragma once

#include "core/isettings.h"
#include "core/nodebase.h"
#include "utils/property.h"

namespace Nivex::DataProcessing::Core {

/// A node that does one step per update: the framework puts the values that arrived into the properties of the
/// inputs, calls `process`, and sends on what the properties of the outputs then hold. Before an execution an
/// input without a value is reset (if it has auto-reset), and all outputs are reset.
class GENICAM_API SimpleNode : public NodeBase
{
public:
    ~SimpleNode() override;

    bool isForwardingUpdates() const override;

protected:
    explicit SimpleNode(const std::shared_ptr<IResourcePool>& pool);

    void removeInput(const GenICam::gcstring& name) override;
    void removeOutput(const GenICam::gcstring& name) override;
    void run(const std::shared_ptr<IGraphUpdate>& update, PinValues& values) override;
    void onInputTypeConfigured(const GenICam::gcstring& name, const Utils::TypeInfo& type) override;
    void onInputTypeUnconfigured(const GenICam::gcstring& name) override;

    /// The step. What it throws is logged and counted by the graph; the update goes on without this node's values.
    virtual void process() = 0;

public:
    virtual void loadSettings(const std::shared_ptr<ISettings>& settings) = 0;
    virtual void saveSettings(const std::shared_ptr<ISettings>& settings) = 0;

protected:
    /// Ties an input to a property, which must outlive the pin. A property without a type makes an input of
    /// variable type. `defaultValue` is put into the property where a reset is due.
    void createInput(const GenICam::gcstring& name, const GenICam::gcstring& displayName,
                     Utils::IProperty& property, const Utils::Variant& defaultValue,
                     bool allowsMultipleConnections = false, unsigned long maxConnections = ~0UL);
    void createInput(const GenICam::gcstring& name, const GenICam::gcstring& displayName,
                     Utils::IResettableProperty& property, bool allowsMultipleConnections = false,
                     unsigned long maxConnections = ~0UL);
    using NodeBase::createOutput;
    void createOutput(const GenICam::gcstring& name, const GenICam::gcstring& displayName,
                      Utils::IResettableProperty& property, bool allowsMultipleConnections = true,
                      unsigned long maxConnections = ~0UL);

private:
    struct Input;
    struct Output;
    std::vector<Input> inputs_;
    std::vector<Output> outputs_;
};

}  // namespace Nivex::DataProcessing::Core

#pragma once

#include "core/isettings.h"
#include "core/nodebase.h"

namespace Nivex::DataProcessing::Core {

/// A node that makes its own updates, such as a camera: it asks the update factory for an update and hands it,
/// with values, to `createJob`.
class GENICAM_API AdvancedNode : public NodeBase
{
public:
    ~AdvancedNode() override;

protected:
    explicit AdvancedNode(const std::shared_ptr<IResourcePool>& pool);

    void allocateAdditionalResources(const std::shared_ptr<IResourcePool>& pool, bool mayRefresh) override;
    void freeAdditionalResources(bool final) override;
    void run(const std::shared_ptr<IGraphUpdate>& update, PinValues& values) override;

    /// Never null. Outside a graph it makes updates that reach the node's sinks only.
    std::shared_ptr<IUpdateFactory> getUpdateFactory();

public:
    virtual void loadSettings(const std::shared_ptr<ISettings>& settings) = 0;
    virtual void saveSettings(const std::shared_ptr<ISettings>& settings) = 0;
};

}  // namespace Nivex::DataProcessing::Core

#pragma once

#include <memory>

#include "core/inodemapcontainer.h"
#include "core/simplenode.h"
#include "datawriter/INodeMapObserver.h"
#include "datawriter/MediaWriterFactory.h"

namespace Plugin::NivexStageletPackageBase {

class DataWriterPrivate;

/// A sink node that writes what reaches its pins "Data1", "Data2", ... to files.
///
/// A session is one run of the node, with a folder of its own; a record is one update that the record period or a
/// trigger of a pin asked to keep, maybe with a folder of its own; a data item is the value of one pin in a
/// record. Media writers do the writing; the node decides when, where and in which order.
///
/// The output folder has to exist: without it, and without a session folder, the node runs and writes nothing.
/// Failures to write are logged, with severity 4, and neither stop the node nor become an error of it. Every
/// update accounts to the ledger: something recorded, a loss, or both.
///
/// All work is done on the thread that calls, under the node's lock, file output included. The one thread of
/// its own, the timer of a record period in units of time, never takes that lock.
class DataWriter final : public Nivex::DataProcessing::Core::SimpleNode,
                         public Nivex::DataProcessing::Core::INodeMapContainer,
                         public INodeMapObserver
{
public:
    explicit DataWriter(const std::shared_ptr<Nivex::DataProcessing::Core::IResourcePool>& pool);
    /// With other media writers than the usual ones.
    DataWriter(const std::shared_ptr<Nivex::DataProcessing::Core::IResourcePool>& pool,
               MediaWriterFactory factory);
    ~DataWriter() override;

    /// Both log a refusal and raise it: InvalidArgumentException for null, RuntimeException unless stopped. What
    /// the store throws passes; the settings are then as before.
    void loadSettings(const std::shared_ptr<Nivex::DataProcessing::Core::ISettings>& settings) override;
    void saveSettings(const std::shared_ptr<Nivex::DataProcessing::Core::ISettings>& settings) override;

    std::vector<Nivex::DataProcessing::Core::NodeMapInfo> getNodeMapInfos() override;
    GenApi::CNodeMapRef getNodeMap(const GenICam::gcstring& identifier) override;

    void onNodeMapChanged(NodeMapChange change) override;

protected:
    void onStarting(const Nivex::DataProcessing::Core::NodeArgumentCollection& arguments) override;
    void onStopping() override;
    void process() override;

private:
    friend class DataWriterPrivate;

    /// Makes or removes inputs at the end of the row until there are as many as the settings say. Not under the
    /// node's lock, as listeners are told.
    void updatePins();

    std::unique_ptr<DataWriterPrivate> private_;
};

}  // namespace Plugin::NivexStageletPackageBase

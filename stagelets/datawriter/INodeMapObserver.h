#pragma once

namespace Plugin::NivexStageletPackageBase {

/// What a client of the node map changed.
enum class NodeMapChange : int
{
    Settings = 0,
    MediaWriterCount = 1,
    PinCount = 2
};

/// Hears of each change that came through the node map, after it is done. Called without a lock of the node map's
/// classes, on the client's thread.
class INodeMapObserver
{
public:
    virtual void onNodeMapChanged(NodeMapChange change) = 0;

protected:
    ~INodeMapObserver() = default;
};

}  // namespace Plugin::NivexStageletPackageBase

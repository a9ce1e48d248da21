#pragma once

#include <thread>

#include "imageloading/imageloading.h"
#include "nodelog/nodelog.h"
#include "parameteradapter/stageletnodemapbase.h"
#include "threading/uniquelock.h"
#include "utils/log.h"

// What the two source files of ImageLoading share: the record behind the node.

namespace Plugin::NivexStageletPackageBase {

struct ImageLoading::Settings
{
    GenICam::gcstring sourcePath;
    SortBy sortBy = SortBy::Ascending;
    unsigned long numberOfImages = 1;
    unsigned long framesPerSecond = 1;
    unsigned long numberOfRuns = 1;
    bool runContinuously = false;
    bool storeAbsolutePath = false;

    friend bool operator==(const Settings&, const Settings&) = default;
};

struct ImageLoading::Private
{
    using Node = ImageLoading;
    template <auto getter, auto setter>
    using Text = AnythingToNodeMapAdapter::StringParameterPortRelay<Node, getter, setter>;
    template <auto getter, auto setter>
    using Number = AnythingToNodeMapAdapter::IntegerParameterPortRelay<unsigned long, Node, getter, setter>;
    template <auto getter, auto setter>
    using Flag = AnythingToNodeMapAdapter::BooleanParameterPortRelay<Node, getter, setter>;

    StageletNodeMapBase nodeMap;
    std::shared_ptr<Text<&Node::getSourcePath, &Node::setSourcePath>> sourcePath;
    std::shared_ptr<
        AnythingToNodeMapAdapter::EnumParameterPortRelay<SortBy, Node, &Node::getSortBy, &Node::setSortBy>>
        sortBy;
    std::shared_ptr<Number<&Node::getNumberOfImages, &Node::setNumberOfImages>> numberOfImages;
    std::shared_ptr<Number<&Node::getFramesPerSecond, &Node::setFramesPerSecond>> framesPerSecond;
    std::shared_ptr<Number<&Node::getNumberOfRuns, &Node::setNumberOfRuns>> numberOfRuns;
    std::shared_ptr<Flag<&Node::getRunContinuously, &Node::setRunContinuously>> runContinuously;
    std::shared_ptr<Flag<&Node::getStoreAbsolutePath, &Node::setStoreAbsolutePath>> storeAbsolutePath;
    std::vector<Nivex::DataProcessing::Core::NodeMapInfo> infos;

    Settings settings;     ///< Guarded by the node's lock; fixed while the worker runs.
    bool loading = false;  ///< While set, setters leave the notification to loadSettings.
    bool stopRequested = false;

    // Written by onStarting before the worker runs, then used by the worker alone.
    std::shared_ptr<Nivex::DataProcessing::Core::IUpdateFactory> updateFactory;
    std::shared_ptr<Nivex::DataProcessing::Core::IBufferProvider> bufferProvider;
    bool singleFrame = false;
    std::vector<GenICam::gcstring> files;  ///< Full paths, in the order of output.
    std::uint64_t imageIndex = 0;
    std::uint64_t runCount = 1;

    std::thread worker;
};

/// Calls `apply` with each of the seven parameter ports.
template <typename Ports, typename Apply>
void forEachPort(Ports& ports, const Apply& apply)
{
    apply(*ports.sourcePath);
    apply(*ports.sortBy);
    apply(*ports.numberOfImages);
    apply(*ports.framesPerSecond);
    apply(*ports.numberOfRuns);
    apply(*ports.runContinuously);
    apply(*ports.storeAbsolutePath);
}

namespace ImageLoadingDetail {

using Guard = Nivex::DataProcessing::Threading::UniqueLock<Nivex::DataProcessing::Threading::IRecursiveLockable>;

inline constexpr const char* imagePin = "Image";
inline constexpr const char* imagePathPin = "ImagePath";
inline constexpr const char* runCountPin = "RunCount";
inline constexpr const char* sourceUnit = "imageloading";

inline Nivex::DataProcessing::Utils::CatId channel()
{
    static const Nivex::DataProcessing::Utils::CatId id =
        Nivex::DataProcessing::Utils::getCatId("nivex.dataprocessing.stagelet.ImageLoading");
    return id;
}

inline constexpr NodeLog nodeLog{"ImageLoading", channel, sourceUnit};

}  // namespace ImageLoadingDetail

}  // namespace Plugin::NivexStageletPackageBase

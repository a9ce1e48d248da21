#include "imageloading/imageloading.h"

#include <exception>
#include <filesystem>
#include <system_error>

#include "gcbase/exception.h"

#include "core/image.h"
#include "core/integer.h"
#include "core/string.h"
#include "imageloading/imageloading_parameters.h"
#include "imageloading/imageloading_private.h"
#include "utils/typeregistrar.h"

namespace Plugin::NivexStageletPackageBase {

namespace Core = Nivex::DataProcessing::Core;
namespace Utils = Nivex::DataProcessing::Utils;
namespace fs = std::filesystem;
using namespace ImageLoadingDetail;
using GenICam::gcstring;

namespace {

const Utils::TypeRegistrar<ImageLoading, Core::AdvancedNode, Core::INodeMapContainer> registrar;

const gcstring sourcePathKey = "sourcePath";
const gcstring sortByKey = "sortBy";
const gcstring numberOfImagesKey = "numberOfImages";
const gcstring framesPerSecondKey = "framesPerSecond";
const gcstring numberOfRunsKey = "numberOfRuns";
const gcstring runContinuouslyKey = "runContinuously";

/// All parameters are locked while the node runs.
constexpr PortFlags lockable{.lockedRegister = true};

}  // namespace

ImageLoading::ImageLoading(const std::shared_ptr<Core::IResourcePool>& pool)
    : AdvancedNode(pool), private_(std::make_unique<Private>())
{
    setLock(private_->nodeMap.getLock());
    buildParameters();
    private_->infos.emplace_back("Image Loading", StageletNodeMapBase::identifier);
    createOutput(imagePin, "Loaded image.", Utils::TypeInfo::get<Utils::COWPtr<Core::Image>>(), true, ~0UL);
    createOutput(imagePathPin, "Full path of the currently loaded image.", Utils::TypeInfo::get<Core::String>(),
                 true, ~0UL);
    createOutput(runCountPin, "Number of the current run.", Utils::TypeInfo::get<Core::Integer>(), true, ~0UL);
}

ImageLoading::~ImageLoading()
{
    cleanup();
}

void ImageLoading::buildParameters()
{
    namespace Parameters = LoadingParameters;
    Private& own = *private_;
    const Guard guard(*getLock());
    const auto add = [&]<typename Port, typename... Args>(std::shared_ptr<Port>& port, const Args&... args) {
        port = own.nodeMap.addFeature(std::make_shared<Port>(*this, args...));
    };
    add(own.sourcePath, Parameters::sourcePath, Parameters::sourcePathMaxLength, lockable);
    add(own.sortBy, Parameters::sortBy, lockable);
    own.nodeMap.addEntries<SortBy>(Parameters::sortBy.name, Parameters::sortByEntries);
    add(own.numberOfImages, Parameters::numberOfImages, Parameters::numberOfImagesRange, "PureNumber", "",
        lockable);
    add(own.framesPerSecond, Parameters::framesPerSecond, Parameters::framesPerSecondRange, "PureNumber", "",
        lockable);
    add(own.numberOfRuns, Parameters::numberOfRuns, Parameters::numberOfRunsRange, "PureNumber", "", lockable);
    add(own.runContinuously, Parameters::runContinuously, lockable);
    add(own.storeAbsolutePath, Parameters::storeAbsolutePath, lockable);
    own.nodeMap.build();
}

void ImageLoading::lockParameters(bool locked)
{
    forEachPort(*private_, [locked](auto& port) { port.changeWritable(!locked); });
}

void ImageLoading::notifyParameters()
{
    forEachPort(*private_, [](auto& port) { port.notifyObserver(); });
}

std::vector<Core::NodeMapInfo> ImageLoading::getNodeMapInfos()
{
    const Guard guard(*getLock());
    return private_->infos;
}

GenApi::CNodeMapRef ImageLoading::getNodeMap(const gcstring& identifier)
{
    return private_->nodeMap.getNodeMap(identifier);
}

void ImageLoading::setSettings(const gcstring& sourcePath, SortBy sortBy, unsigned long numberOfImages,
                               unsigned long framesPerSecond, unsigned long numberOfRuns, bool runContinuously,
                               bool storeAbsolutePath)
{
    constexpr const char* function = "setSettings";
    if (sourcePath.empty()) {
        NODE_REFUSE(InvalidArgumentException, nodeLog, this, function, "Source path must not be empty.");
    }
    if (numberOfImages == 0) {
        NODE_REFUSE(InvalidArgumentException, nodeLog, this, function, "NumberOfImages must be greater than 0.");
    }
    if (framesPerSecond == 0) {
        NODE_REFUSE(InvalidArgumentException, nodeLog, this, function, "FramesPerSecond must be greater than 0.");
    }
    if (numberOfRuns == 0) {
        NODE_REFUSE(InvalidArgumentException, nodeLog, this, function, "NumberOfRuns must be greater than 0.");
    }
    {
        const Guard guard(*getLock());
        if (getState() != Core::NodeState::Stopped) {
            NODE_REFUSE(RuntimeException, nodeLog, this, function,
                        "Stagelet must not be running to set the settings.");
        }
        private_->settings = {sourcePath,   sortBy,          numberOfImages,   framesPerSecond,
                              numberOfRuns, runContinuously, storeAbsolutePath};
        notifyParameters();
    }
    notifySettingsChanged();
}

void ImageLoading::getSettings(gcstring& sourcePath, SortBy& sortBy, unsigned long& numberOfImages,
                               unsigned long& framesPerSecond, unsigned long& numberOfRuns, bool& runContinuously,
                               bool& storeAbsolutePath) const
{
    const Guard guard(*getLock());
    const Settings& settings = private_->settings;
    sourcePath = settings.sourcePath;
    sortBy = settings.sortBy;
    numberOfImages = settings.numberOfImages;
    framesPerSecond = settings.framesPerSecond;
    numberOfRuns = settings.numberOfRuns;
    runContinuously = settings.runContinuously;
    storeAbsolutePath = settings.storeAbsolutePath;
}

void ImageLoading::saveSettings(const std::shared_ptr<Core::ISettings>& settings)
{
    if (!settings) GENICAM_THROW(InvalidArgumentException, "ptrSettings is a nullptr");
    const Guard guard(*getLock());
    if (getState() != Core::NodeState::Stopped) {
        GENICAM_THROW(RuntimeException, "Node must be in stopped state to serialize.");
    }
    const Settings& own = private_->settings;
    settings->setString(sourcePathKey, pathToStore(*settings));
    settings->setUnsigned(sortByKey, static_cast<std::uint64_t>(own.sortBy));
    settings->setUnsigned(numberOfImagesKey, own.numberOfImages);
    settings->setUnsigned(framesPerSecondKey, own.framesPerSecond);
    settings->setUnsigned(numberOfRunsKey, own.numberOfRuns);
    settings->setBool(runContinuouslyKey, own.runContinuously);
}

gcstring ImageLoading::pathToStore(const Core::ISettings& settings) const
{
    const Settings& own = private_->settings;
    if (own.storeAbsolutePath || !settings.hasLocation()) return own.sourcePath;
    const gcstring location = settings.getLocation();
    Utils::createLogEntry(Utils::SeverityDetail, channel(), "ImageLoading: Load settings from \"%s\"",  // sic
                          location.c_str());
    std::error_code error;
    if (location.empty() || !fs::exists(own.sourcePath.str(), error)) return own.sourcePath;
    const fs::path relative = fs::relative(own.sourcePath.str(), location.str(), error);
    return relative.empty() ? own.sourcePath : gcstring(relative.string());
}

void ImageLoading::loadSettings(const std::shared_ptr<Core::ISettings>& settings)
{
    if (!settings) GENICAM_THROW(InvalidArgumentException, "ptrSettings is a nullptr");
    bool changed = false;
    std::exception_ptr failure;
    {
        const Guard guard(*getLock());
        if (getState() != Core::NodeState::Stopped) {
            GENICAM_THROW(RuntimeException, "Node must be in stopped state to deserialize.");
        }
        const Settings before = private_->settings;
        private_->loading = true;
        try {
            readSettings(*settings);
        } catch (...) {
            failure = std::current_exception();  // What was read by then has changed all the same.
        }
        private_->loading = false;
        changed = private_->settings != before;
        if (changed) notifyParameters();
    }
    if (changed) notifySettingsChanged();
    if (failure) std::rethrow_exception(failure);
}

void ImageLoading::readSettings(const Core::ISettings& settings)
{
    private_->settings.sourcePath.clear();
    Utils::createLogEntry(Utils::SeverityDetail, channel(), "ImageLoading: Load settings...");
    loadSourcePath(settings);
    if (settings.hasKey(sortByKey)) {
        const std::uint64_t value = settings.getUnsigned(sortByKey);
        if (value > static_cast<std::uint64_t>(SortBy::Random)) {
            GENICAM_THROW(InvalidArgumentException, "sortBy: %llu is none of 0 to 2.",
                          static_cast<unsigned long long>(value));
        }
        setSortBy(static_cast<SortBy>(value));
    }
    if (settings.hasKey(numberOfImagesKey)) setNumberOfImages(settings.getUnsigned(numberOfImagesKey));
    if (settings.hasKey(framesPerSecondKey)) setFramesPerSecond(settings.getUnsigned(framesPerSecondKey));
    if (settings.hasKey(numberOfRunsKey)) setNumberOfRuns(settings.getUnsigned(numberOfRunsKey));
    if (settings.hasKey(runContinuouslyKey)) setRunContinuously(settings.getBool(runContinuouslyKey));
}

void ImageLoading::loadSourcePath(const Core::ISettings& settings)
{
    fs::path base;
    if (settings.hasLocation()) {
        base = fs::absolute(settings.getLocation().str());
        fs::current_path(base);
        Utils::createLogEntry(Utils::SeverityTrace, channel(), "ImageLoading: basePath : '%s'", base.c_str());
    }
    if (!settings.hasKey(sourcePathKey)) return;

    const fs::path stored(settings.getString(sourcePathKey).str());
    if (stored.has_root_directory() || base.empty()) {
        setSourcePath(stored.string());
        setStoreAbsolutePath(true);
        Utils::createLogEntry(Utils::SeverityTrace, channel(),
                              "ImageLoading: Using absolute path for source : '%s'", stored.c_str());
        return;
    }
    std::error_code error;
    const fs::path resolved = fs::canonical(base / stored, error);
    if (error) {
        Utils::createLogEntry(Utils::SeverityFailure, channel(),
                              "ImageLoading: Could not find source path '%s' in '%s': %s", stored.c_str(),
                              base.c_str(), error.message().c_str());
    }
    setSourcePath(resolved.string());
    setStoreAbsolutePath(false);
    Utils::createLogEntry(Utils::SeverityTrace, channel(),
                          "ImageLoading: Using relative path result in source Path : '%s'", resolved.c_str());
}

template <typename Field>
Field ImageLoading::readSetting(Field Settings::*field) const
{
    const Guard guard(*getLock());
    return private_->settings.*field;
}

template <typename Field>
void ImageLoading::writeSetting(Field Settings::*field, const Field& value, const char* function)
{
    {
        const Guard guard(*getLock());
        if (getState() != Core::NodeState::Stopped) {
            NODE_REFUSE(RuntimeException, nodeLog, this, function,
                        "Stagelet must not be running to set the settings.");
        }
        if (private_->settings.*field == value) return;
        private_->settings.*field = value;
        if (private_->loading) return;
    }
    notifySettingsChanged();
}

void ImageLoading::requirePositive(unsigned long value, const char* name, const char* function) const
{
    if (value != 0) return;
    const std::string text = std::string(name) + " must be greater than 0.";
    NODE_REFUSE(RuntimeException, nodeLog, this, function, text.c_str());
}

gcstring ImageLoading::getSourcePath() const
{
    return readSetting(&Settings::sourcePath);
}

void ImageLoading::setSourcePath(const gcstring& value)
{
    writeSetting(&Settings::sourcePath, value, "setSourcePath");
}

SortBy ImageLoading::getSortBy() const
{
    return readSetting(&Settings::sortBy);
}

void ImageLoading::setSortBy(SortBy value)
{
    writeSetting(&Settings::sortBy, value, "setSortBy");
}

unsigned long ImageLoading::getNumberOfImages() const
{
    return readSetting(&Settings::numberOfImages);
}

void ImageLoading::setNumberOfImages(unsigned long value)
{
    requirePositive(value, "NumberOfImages", "setNumberOfImages");
    writeSetting(&Settings::numberOfImages, value, "setNumberOfImages");
}

unsigned long ImageLoading::getFramesPerSecond() const
{
    return readSetting(&Settings::framesPerSecond);
}

void ImageLoading::setFramesPerSecond(unsigned long value)
{
    requirePositive(value, "FramesPerSecond", "setFramesPerSecond");
    writeSetting(&Settings::framesPerSecond, value, "setFramesPerSecond");
}

unsigned long ImageLoading::getNumberOfRuns() const
{
    return readSetting(&Settings::numberOfRuns);
}

void ImageLoading::setNumberOfRuns(unsigned long value)
{
    requirePositive(value, "NumberOfRuns", "setNumberOfRuns");
    writeSetting(&Settings::numberOfRuns, value, "setNumberOfRuns");
}

bool ImageLoading::getRunContinuously() const
{
    return readSetting(&Settings::runContinuously);
}

void ImageLoading::setRunContinuously(bool value)
{
    writeSetting(&Settings::runContinuously, value, "setRunContinuously");
}

bool ImageLoading::getStoreAbsolutePath() const
{
    return readSetting(&Settings::storeAbsolutePath);
}

void ImageLoading::setStoreAbsolutePath(bool value)
{
    writeSetting(&Settings::storeAbsolutePath, value, "setStoreAbsolutePath");
}

}  // namespace Plugin::NivexStageletPackageBase

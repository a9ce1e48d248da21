#pragma once

#include <memory>
#include <vector>

#include "core/advancednode.h"
#include "core/inodemapcontainer.h"
#include "imageloading/sortby.h"

namespace Plugin::NivexStageletPackageBase {

/// Plays image files from a folder, or one file, into a recipe at a fixed rate, run after run, like a camera.
///
/// Start scans the source path and starts one worker thread, which loads a file when its turn comes and puts it
/// out as an update of its own, with the file's path and the number of the run. A file that cannot be loaded gives
/// an image that holds the error. The start argument "AcquisitionMode" with the string "SingleFrame" puts out one
/// image only. After the last run the node stays started and puts out nothing more.
///
/// One lock guards all settings. They cannot be changed while the node runs: setters then raise RuntimeException,
/// and the node map shows the parameters as read-only. Every refusal is logged.
class ImageLoading : public Nivex::DataProcessing::Core::AdvancedNode,
                     public Nivex::DataProcessing::Core::INodeMapContainer
{
public:
    explicit ImageLoading(const std::shared_ptr<Nivex::DataProcessing::Core::IResourcePool>& pool);
    ~ImageLoading() override;

protected:
    /// Raises RuntimeException for an empty source path or one without images.
    void onStarting(const Nivex::DataProcessing::Core::NodeArgumentCollection& arguments) override;
    /// Takes up to one frame period.
    void onStopping() override;

public:
    /// Takes over the values that the store holds; other keys leave theirs alone, but for the source path, which
    /// is emptied. Observers are told once, at the end; a value that is refused ends it, and those before it stay.
    /// With a location, relative paths count from there, and the working directory of the process is
    /// moved there. Raises RuntimeException unless stopped, InvalidArgumentException for null,
    /// std::filesystem::filesystem_error if the location is no directory.
    void loadSettings(const std::shared_ptr<Nivex::DataProcessing::Core::ISettings>& settings) override;
    void saveSettings(const std::shared_ptr<Nivex::DataProcessing::Core::ISettings>& settings) override;
    std::vector<Nivex::DataProcessing::Core::NodeMapInfo> getNodeMapInfos() override;
    GenApi::CNodeMapRef getNodeMap(const GenICam::gcstring& identifier) override;

    /// Sets all or nothing. Raises InvalidArgumentException for an empty path or a number that is 0, and then
    /// RuntimeException while running.
    GENICAM_API void setSettings(const GenICam::gcstring& sourcePath, SortBy sortBy, unsigned long numberOfImages,
                                 unsigned long framesPerSecond, unsigned long numberOfRuns, bool runContinuously,
                                 bool storeAbsolutePath);
    GENICAM_API void getSettings(GenICam::gcstring& sourcePath, SortBy& sortBy, unsigned long& numberOfImages,
                                 unsigned long& framesPerSecond, unsigned long& numberOfRuns,
                                 bool& runContinuously, bool& storeAbsolutePath) const;

    GenICam::gcstring getSourcePath() const;
    void setSourcePath(const GenICam::gcstring& value);
    SortBy getSortBy() const;
    void setSortBy(SortBy value);
    /// At most so many images of the folder are put out in each run.
    unsigned long getNumberOfImages() const;
    void setNumberOfImages(unsigned long value);
    unsigned long getFramesPerSecond() const;
    void setFramesPerSecond(unsigned long value);
    unsigned long getNumberOfRuns() const;
    void setNumberOfRuns(unsigned long value);
    /// Leaves the number of runs without effect.
    bool getRunContinuously() const;
    void setRunContinuously(bool value);
    bool getStoreAbsolutePath() const;
    void setStoreAbsolutePath(bool value);

private:
    struct Settings;
    struct Private;

    void buildParameters();
    void lockParameters(bool locked);
    void notifyParameters();
    template <typename Field>
    Field readSetting(Field Settings::*field) const;
    /// Stores a value that differs from the present one and notifies. Raises RuntimeException while running.
    template <typename Field>
    void writeSetting(Field Settings::*field, const Field& value, const char* function);
    void requirePositive(unsigned long value, const char* name, const char* function) const;
    void readSettings(const Nivex::DataProcessing::Core::ISettings& settings);
    void loadSourcePath(const Nivex::DataProcessing::Core::ISettings& settings);
    GenICam::gcstring pathToStore(const Nivex::DataProcessing::Core::ISettings& settings) const;

    /// The worker thread, and its steps.
    void runWorker();
    void putOutImages();
    bool isStopRequested() const;
    /// False when the last run has ended.
    bool beginNextRunIfDue();
    /// True if the worker has to end with this image.
    bool putOutImage(const GenICam::gcstring& path);
    Nivex::DataProcessing::Core::PinValues loadImage(const GenICam::gcstring& path,
                                                     const Nivex::DataProcessing::Core::IGraphUpdate& update);

    std::unique_ptr<Private> private_;
};

}  // namespace Plugin::NivexStageletPackageBase

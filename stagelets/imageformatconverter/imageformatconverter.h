#pragma once

#include <cstdint>
#include <memory>

#include "utility/imageformatconverter.h"

#include "core/image.h"
#include "core/inodemapcontainer.h"
#include "core/simplenode.h"
#include "utils/property.h"

namespace Plugin::NivexStageletPackageBase {

/// Brings the image on its input pin into the pixel format, padding and orientation that its parameters ask for.
/// An image that is in that form already goes out itself, without a copy. Input images count as top-down.
///
/// Every input gives an output: an erroneous input, or one that cannot be converted, gives an image that holds an
/// InvalidValueError with the input's error as its cause.
///
/// The parameters are those of an SDK converter, which keeps their values. One lock guards node, node map and
/// converter; it is held through a conversion, so that a setter called meanwhile waits for its end. Setters raise
/// what the converter raises for a bad value, and then neither change nor notify.
class ImageFormatConverter : public Nivex::DataProcessing::Core::SimpleNode,
                             public Nivex::DataProcessing::Core::INodeMapContainer
{
public:
    explicit ImageFormatConverter(const std::shared_ptr<Nivex::DataProcessing::Core::IResourcePool>& pool);
    ~ImageFormatConverter() override;

protected:
    void process() override;

public:
    /// Takes over the values that the store holds; keys that are absent leave theirs alone. Raises
    /// RuntimeException unless stopped, InvalidArgumentException for null or an unknown name, and what setters
    /// raise; values before the refused one are taken over then.
    void loadSettings(const std::shared_ptr<Nivex::DataProcessing::Core::ISettings>& settings) override;
    void saveSettings(const std::shared_ptr<Nivex::DataProcessing::Core::ISettings>& settings) override;
    std::vector<Nivex::DataProcessing::Core::NodeMapInfo> getNodeMapInfos() override;
    GenApi::CNodeMapRef getNodeMap(const GenICam::gcstring& identifier) override;

    /// The value of Nivex::EPixelType.
    unsigned int getOutputPixelFormat() const;
    void setOutputPixelFormat(unsigned int value);
    Nivex::OutputBitAlignmentEnums getOutputBitAlignment() const;
    void setOutputBitAlignment(Nivex::OutputBitAlignmentEnums value);
    Nivex::OutputOrientationEnums getOutputOrientationEnums() const;
    void setOutputOrientationEnums(Nivex::OutputOrientationEnums value);
    /// In bytes.
    long getOutputPaddingX() const;
    void setOutputPaddingX(long value);
    long getMaxNumThreads() const;
    void setMaxNumThreads(long value);

private:
    using ImagePtr = Nivex::DataProcessing::Utils::COWPtr<Nivex::DataProcessing::Core::Image>;
    struct Private;

    template <typename Read>
    auto readParameter(const Read& read) const;
    template <typename Write>
    void writeParameter(const Write& write);
    void buildParameters();
    void readSettings(const Nivex::DataProcessing::Core::ISettings& settings);
    void convert(const Nivex::DataProcessing::Core::Image& source);
    /// Puts an image out that holds an error with `text`, caused by the input's error, if there is one.
    void outputError(const GenICam::gcstring& text, const Nivex::DataProcessing::Core::Image& input,
                     Nivex::DataProcessing::Core::LossCause cause);

    Nivex::DataProcessing::Utils::ResettableProperty<ImagePtr> input_;
    Nivex::DataProcessing::Utils::ResettableProperty<ImagePtr> output_;
    std::unique_ptr<Private> private_;
};

}  // namespace Plugin::NivexStageletPackageBase

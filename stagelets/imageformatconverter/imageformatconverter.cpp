#include "imageformatconverter/imageformatconverter.h"

#include <algorithm>
#include <exception>
#include <limits>

#include "gcbase/exception.h"

#include "core/errors.h"
#include "imageformatconverter/imageformatconverter_parameters.h"
#include "imageformatconverter/pooledimage.h"
#include "parameteradapter/stageletnodemapbase.h"
#include "threading/uniquelock.h"
#include "utils/log.h"
#include "utils/typeregistrar.h"

namespace Plugin::NivexStageletPackageBase {

namespace Core = Nivex::DataProcessing::Core;
namespace Utils = Nivex::DataProcessing::Utils;
namespace Threading = Nivex::DataProcessing::Threading;
using AnythingToNodeMapAdapter::EnumParameterPortRelay;
using AnythingToNodeMapAdapter::IntegerParameterPortRelay;
using GenICam::gcstring;
using Guard = Threading::UniqueLock<Threading::IRecursiveLockable>;

namespace {

const Utils::TypeRegistrar<ImageFormatConverter, Core::SimpleNode, Core::INodeMapContainer> registrar;

const gcstring imagePin = "Image";
const gcstring pixelFormatKey = "OutputPixelFormat";
const gcstring orientationKey = "OutputOrientation";
const gcstring bitAlignmentKey = "OutputBitAlignment";
const gcstring paddingXKey = "OutputPaddingX";
const gcstring maxNumThreadsKey = "MaxNumThreads";

Utils::CatId channel()
{
    static const Utils::CatId id = Utils::getCatId("nivex.dataprocessing.stagelet.ImageFormatConverter");
    return id;
}

/// The row of a table for which `matches` holds; raises InvalidArgumentException with `refusal` if there is none.
template <typename Rows, typename Matches>
const auto& requireRow(const Rows& rows, const char* refusal, const Matches& matches)
{
    const auto row = std::find_if(rows.begin(), rows.end(), matches);
    if (row == rows.end()) GENICAM_THROW(InvalidArgumentException, "%s", refusal);
    return *row;
}

template <typename Rows, typename E>
const char* nameOf(const Rows& rows, E value, const char* refusal)
{
    return requireRow(rows, refusal, [value](const auto& row) { return row.value == value; }).name;
}

template <typename Rows>
auto valueOf(const Rows& rows, const gcstring& name, const char* refusal)
{
    return requireRow(rows, refusal, [&name](const auto& row) { return name == row.name; }).value;
}

}  // namespace

struct ImageFormatConverter::Private
{
    using Node = ImageFormatConverter;
    using PixelFormatPort =
        EnumParameterPortRelay<unsigned int, Node, &Node::getOutputPixelFormat, &Node::setOutputPixelFormat>;
    using BitAlignmentPort = EnumParameterPortRelay<Nivex::OutputBitAlignmentEnums, Node,
                                                    &Node::getOutputBitAlignment, &Node::setOutputBitAlignment>;
    using OrientationPort =
        EnumParameterPortRelay<Nivex::OutputOrientationEnums, Node, &Node::getOutputOrientationEnums,
                               &Node::setOutputOrientationEnums>;
    using PaddingXPort = IntegerParameterPortRelay<long, Node, &Node::getOutputPaddingX, &Node::setOutputPaddingX>;
    using MaxNumThreadsPort =
        IntegerParameterPortRelay<long, Node, &Node::getMaxNumThreads, &Node::setMaxNumThreads>;

    StageletNodeMapBase nodeMap;
    std::shared_ptr<PixelFormatPort> pixelFormat;
    std::shared_ptr<BitAlignmentPort> bitAlignment;
    std::shared_ptr<OrientationPort> orientation;
    std::shared_ptr<PaddingXPort> paddingX;
    std::shared_ptr<MaxNumThreadsPort> maxNumThreads;
    std::vector<Core::NodeMapInfo> infos;
    Nivex::CImageFormatConverter converter;
    bool loading = false;  ///< While set, setters leave the notification to loadSettings.
    bool changedByLoading = false;
};

ImageFormatConverter::ImageFormatConverter(const std::shared_ptr<Core::IResourcePool>& pool)
    : SimpleNode(pool), private_(std::make_unique<Private>())
{
    setLock(private_->nodeMap.getLock());
    private_->converter.MaxNumThreads.SetValue(1);
    buildParameters();
    private_->infos.emplace_back("Image Format Converter", StageletNodeMapBase::identifier);
    createInput(imagePin, "Input image", input_, Utils::Variant(Core::Image()), false, ~0UL);
    createOutput(imagePin, "Output image", output_, true, ~0UL);
}

ImageFormatConverter::~ImageFormatConverter()
{
    cleanup();
}

void ImageFormatConverter::buildParameters()
{
    namespace Parameters = ConverterParameters;
    Private& own = *private_;
    StageletNodeMapBase& map = own.nodeMap;
    const Guard guard(*getLock());

    own.pixelFormat =
        map.addFeature(std::make_shared<Private::PixelFormatPort>(*this, Parameters::outputPixelFormat));
    map.addEntries<unsigned int>("OutputPixelFormat", Parameters::pixelFormats);
    own.bitAlignment =
        map.addFeature(std::make_shared<Private::BitAlignmentPort>(*this, Parameters::outputBitAlignment));
    map.addEntries<Nivex::OutputBitAlignmentEnums>("OutputBitAlignment", Parameters::bitAlignments);
    own.orientation =
        map.addFeature(std::make_shared<Private::OrientationPort>(*this, Parameters::outputOrientation));
    map.addEntries<Nivex::OutputOrientationEnums>("OutputOrientation", Parameters::orientations);
    own.paddingX = map.addFeature(std::make_shared<Private::PaddingXPort>(
        *this, Parameters::outputPaddingX, Parameters::outputPaddingXRange, "Linear"));

    const Nivex::CIntegerSetting& threads = own.converter.MaxNumThreads;
    const Nivex::ParameterTexts& texts = threads.GetTexts();
    own.maxNumThreads = map.addFeature(std::make_shared<Private::MaxNumThreadsPort>(
        *this,
        PortTexts{texts.name.c_str(), texts.displayName.c_str(), texts.toolTip.c_str(), texts.description.c_str(),
                  "Beginner"},
        IntegerRange{threads.GetMin(), threads.GetMax(), threads.GetInc()}, "PureNumber"));
    map.build();
}

void ImageFormatConverter::process()
{
    const Guard guard(*getLock());
    const ImagePtr image = input_.getValue();
    if (image->hasError()) {
        const gcstring description = image->getError()->getDescription();
        Utils::createLogEntry(Utils::SeverityFailure, channel(),
                              "ImageFormatConverter %p: Input image has an error. Description: \"%s\"",
                              static_cast<const void*>(this), description.c_str());
        outputError("Input image is invalid.", *image, Core::LossCause::InvalidInput);
        return;
    }
    try {
        if (private_->converter.ImageHasDestinationFormat(image->getPixelType(), image->getLinePadding(),
                                                          Nivex::EImageOrientation::TopDown))
        {
            output_ = input_;
        } else {
            convert(*image);
        }
    } catch (const GenICam::GenericException& e) {
        Utils::createLogEntry(Utils::SeverityFailure, channel(),
                              "ImageFormatConverter %p: Exception caught while converting. Message: \"%s\"",
                              static_cast<const void*>(this), e.GetDescription());
        outputError(e.GetDescription(), *image, Core::LossCause::ConversionFailed);
    }
}

void ImageFormatConverter::convert(const Core::Image& source)
{
    PooledImage converted(getBufferProvider());
    private_->converter.Convert(converted, source.getDataConst(), source.getImageSize(), source.getPixelType(),
                                source.getWidth(), source.getHeight(), source.getLinePadding(),
                                Nivex::EImageOrientation::TopDown);
    output_.setValue(ImagePtr::make(converted.getNivexImage(), getBufferProvider(), false));
}

void ImageFormatConverter::outputError(const gcstring& text, const Core::Image& input, Core::LossCause cause)
{
    output_.setValue(ImagePtr::make(std::make_shared<Core::InvalidValueError>(
        text, Core::ErrorList{input.getError()}, Utils::DateTime::now())));
    reportLoss(cause);
}

void ImageFormatConverter::saveSettings(const std::shared_ptr<Core::ISettings>& settings)
{
    if (!settings) GENICAM_THROW(InvalidArgumentException, "ptrSettings is a nullptr");
    const Guard guard(*getLock());
    if (getState() != Core::NodeState::Stopped) {
        GENICAM_THROW(RuntimeException, "Node must be in stopped state to serialize.");
    }
    namespace Parameters = ConverterParameters;
    settings->setUnsigned(pixelFormatKey, private_->pixelFormat->getEnumValue());
    settings->setString(orientationKey, nameOf(Parameters::orientations, private_->orientation->getEnumValue(),
                                               "Unknown output orientation value found."));
    settings->setString(bitAlignmentKey, nameOf(Parameters::bitAlignments, private_->bitAlignment->getEnumValue(),
                                                "Unknown output bit alignment value found."));
    settings->setSigned(paddingXKey, private_->paddingX->getValue());
    settings->setSigned(maxNumThreadsKey, private_->maxNumThreads->getValue());
}

void ImageFormatConverter::loadSettings(const std::shared_ptr<Core::ISettings>& settings)
{
    if (!settings) GENICAM_THROW(InvalidArgumentException, "ptrSettings is a nullptr");
    bool changed = true;
    std::exception_ptr failure;
    {
        const Guard guard(*getLock());
        if (getState() != Core::NodeState::Stopped) {
            GENICAM_THROW(RuntimeException, "Node must be in stopped state to deserialize.");
        }
        private_->loading = true;
        private_->changedByLoading = false;
        try {
            readSettings(*settings);
        } catch (...) {
            failure = std::current_exception();
            changed = private_->changedByLoading;  // What was read by then stays.
        }
        private_->loading = false;
    }
    if (changed) notifySettingsChanged();
    if (failure) std::rethrow_exception(failure);
}

void ImageFormatConverter::readSettings(const Core::ISettings& settings)
{
    namespace Parameters = ConverterParameters;
    if (settings.hasKey(pixelFormatKey)) {
        const std::uint64_t value = settings.getUnsigned(pixelFormatKey);
        if (value > std::numeric_limits<unsigned int>::max()) {
            GENICAM_THROW(InvalidArgumentException, "OutputPixelFormat: 0x%llX is no pixel type.",
                          static_cast<unsigned long long>(value));
        }
        private_->pixelFormat->setEnumValue(static_cast<unsigned int>(value));
    }
    if (settings.hasKey(orientationKey)) {
        private_->orientation->setEnumValue(valueOf(Parameters::orientations, settings.getString(orientationKey),
                                                    "Unknown symbolic name of output orientation found."));
    }
    if (settings.hasKey(bitAlignmentKey)) {
        private_->bitAlignment->setEnumValue(valueOf(Parameters::bitAlignments,
                                                     settings.getString(bitAlignmentKey),
                                                     "Unknown symbolic name of output bit alignment found."));
    }
    if (settings.hasKey(paddingXKey)) private_->paddingX->setValue(settings.getSigned(paddingXKey), false);
    if (settings.hasKey(maxNumThreadsKey)) {
        private_->maxNumThreads->setValue(settings.getSigned(maxNumThreadsKey), false);
    }
}

std::vector<Core::NodeMapInfo> ImageFormatConverter::getNodeMapInfos()
{
    const Guard guard(*getLock());
    return private_->infos;
}

GenApi::CNodeMapRef ImageFormatConverter::getNodeMap(const gcstring& identifier)
{
    return private_->nodeMap.getNodeMap(identifier);
}

template <typename Read>
auto ImageFormatConverter::readParameter(const Read& read) const
{
    const Guard guard(*getLock());
    return read(private_->converter);
}

template <typename Write>
void ImageFormatConverter::writeParameter(const Write& write)
{
    bool loading = false;
    {
        const Guard guard(*getLock());
        write(private_->converter);
        loading = private_->loading;
        private_->changedByLoading |= loading;
    }
    if (!loading) notifySettingsChanged();
}

unsigned int ImageFormatConverter::getOutputPixelFormat() const
{
    return readParameter([](const auto& c) { return static_cast<unsigned int>(c.OutputPixelFormat.GetValue()); });
}

void ImageFormatConverter::setOutputPixelFormat(unsigned int value)
{
    writeParameter([value](auto& c) { c.OutputPixelFormat.SetValue(static_cast<Nivex::EPixelType>(value)); });
}

Nivex::OutputBitAlignmentEnums ImageFormatConverter::getOutputBitAlignment() const
{
    return readParameter([](const auto& c) { return c.OutputBitAlignment.GetValue(); });
}

void ImageFormatConverter::setOutputBitAlignment(Nivex::OutputBitAlignmentEnums value)
{
    writeParameter([value](auto& c) { c.OutputBitAlignment.SetValue(value); });
}

Nivex::OutputOrientationEnums ImageFormatConverter::getOutputOrientationEnums() const
{
    return readParameter([](const auto& c) { return c.OutputOrientation.GetValue(); });
}

void ImageFormatConverter::setOutputOrientationEnums(Nivex::OutputOrientationEnums value)
{
    writeParameter([value](auto& c) { c.OutputOrientation.SetValue(value); });
}

long ImageFormatConverter::getOutputPaddingX() const
{
    return readParameter([](const auto& c) { return static_cast<long>(c.OutputPaddingX.GetValue()); });
}

void ImageFormatConverter::setOutputPaddingX(long value)
{
    writeParameter([value](auto& c) { c.OutputPaddingX.SetValue(value); });
}

long ImageFormatConverter::getMaxNumThreads() const
{
    return readParameter([](const auto& c) { return static_cast<long>(c.MaxNumThreads.GetValue()); });
}

void ImageFormatConverter::setMaxNumThreads(long value)
{
    writeParameter([value](auto& c) { c.MaxNumThreads.SetValue(value); });
}

}  // namespace Plugin::NivexStageletPackageBase

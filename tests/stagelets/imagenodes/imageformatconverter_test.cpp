#include "imageformatconverter/imageformatconverter.h"

#include <future>

#include "genapi/genapi.h"

#include "core/errors.h"
#include "framework/logcapture.h"
#include "runtime/resourcepool.h"
#include "support.h"

namespace Plugin::NivexStageletPackageBase::Test {
namespace {

using ImagePtr = Utils::COWPtr<Core::Image>;
constexpr auto mono8 = static_cast<unsigned int>(Nivex::EPixelType::Mono8);

ImagePtr makeImage(Nivex::EPixelType type, std::uint32_t width, std::uint32_t height,
                   const std::vector<std::uint8_t>& bytes, std::size_t padding = 0)
{
    Nivex::CNivexImage image;
    image.CopyImage(bytes.data(), bytes.size(), type, width, height, padding, Nivex::EImageOrientation::TopDown);
    return ImagePtr::make(image, nullptr, false);
}

/// Whether another thread could take the node's lock now.
bool isLockFree(const Core::NodeBase& node)
{
    return std::async(std::launch::async,
                      [&] {
                          const bool taken = node.getLock()->tryLock();
                          if (taken) node.getLock()->unlock();
                          return taken;
                      })
        .get();
}

class ImageFormatConverterTest : public testing::Test
{
protected:
    void SetUp() override
    {
        node.attachHost(&host);
        node.attachOutputSink("Image", sink);
    }

    /// Runs one step with that input, or without any, and gives the output.
    ImagePtr process(const Core::PinValues& input)
    {
        sink->values.clear();
        node.startExecution(
            [&](std::shared_ptr<Core::IGraphUpdate>&, Core::PinValues& values) { values = input; });
        if (sink->values.size() != 1) throw std::runtime_error("not one output");
        return sink->values[0].getCOWPtr<Core::Image>();
    }
    ImagePtr process(const ImagePtr& input)
    {
        return process(Core::PinValues{{gcstring("Image"), Utils::Variant(input)}});
    }
    std::vector<std::uint8_t> bytes(const ImagePtr& image)
    {
        const auto* data = static_cast<const std::uint8_t*>(image->getDataConst());
        return {data, data + image->getImageSize()};
    }
    template <typename Interface>
    Interface& feature(const char* name)
    {
        return dynamic_cast<Interface&>(*node.getNodeMap("@Stagelet").GetNode(name));
    }

    ScopedLogCapture log;
    FakeHost host;
    std::shared_ptr<KeepingSink> sink = std::make_shared<KeepingSink>();
    ImageFormatConverter node{nullptr};
};

TEST_F(ImageFormatConverterTest, HasOnePinEachWay)
{
    const auto expectPin = [](const Core::PinDescriptor& pin, const char* displayName, bool manyConnections) {
        EXPECT_EQ(pin.getName(), "Image");
        EXPECT_EQ(pin.getDisplayName(), displayName);
        EXPECT_TRUE(pin.getType() == Utils::TypeInfo::get<ImagePtr>());
        EXPECT_EQ(pin.getMaxConnections(), manyConnections ? ~std::size_t{0} : 1U);
    };
    expectPin(node.getInputDescriptors().at(0), "Input image", false);
    expectPin(node.getOutputDescriptors().at(0), "Output image", true);
}

TEST_F(ImageFormatConverterTest, ForwardsAnImageThatFitsItself)
{
    node.setOutputPixelFormat(mono8);
    node.setOutputPaddingX(2);
    const ImagePtr fitting = makeImage(Nivex::EPixelType::Mono8, 2, 2, {1, 2, 0, 0, 3, 4, 0, 0}, 2);
    EXPECT_TRUE(process(fitting) == fitting);
    EXPECT_TRUE(host.losses.empty());

    const ImagePtr unpadded = makeImage(Nivex::EPixelType::Mono8, 2, 2, {1, 2, 3, 4});
    const ImagePtr converted = process(unpadded);
    EXPECT_FALSE(converted == unpadded);
    EXPECT_EQ(bytes(converted), (std::vector<std::uint8_t>{1, 2, 0, 0, 3, 4, 0, 0}));
}

TEST_F(ImageFormatConverterTest, ConvertsAsItsParametersAsk)
{
    node.setOutputPixelFormat(static_cast<unsigned int>(Nivex::EPixelType::BGR8Packed));
    node.setOutputOrientationEnums(Nivex::OutputOrientationEnums::BottomUp);
    const ImagePtr output = process(makeImage(Nivex::EPixelType::Mono8, 1, 2, {7, 9}));
    EXPECT_EQ(output->getPixelType(), Nivex::EPixelType::BGR8Packed);
    EXPECT_EQ(bytes(output), (std::vector<std::uint8_t>{9, 9, 9, 7, 7, 7}));

    node.setOutputPixelFormat(mono8);
    const ImagePtr sameFormat = makeImage(Nivex::EPixelType::Mono8, 1, 2, {7, 9});
    EXPECT_EQ(bytes(process(sameFormat)), (std::vector<std::uint8_t>{9, 7})) << "inputs count as top-down";
}

TEST_F(ImageFormatConverterTest, TakesItsMemoryFromTheRecipe)
{
    struct Pool : Nivex::DataProcessing::Runtime::ResourcePool,
                  Core::IBufferProvider,
                  std::enable_shared_from_this<Pool>
    {
        std::shared_ptr<IBufferProvider> getBufferProvider() override { return shared_from_this(); }
        std::shared_ptr<std::byte> getBuffer(std::size_t size) override
        {
            memory = std::shared_ptr<std::byte>(new std::byte[size], std::default_delete<std::byte[]>());
            lockWasFree = isLockFree(*node);
            return memory;
        }
        Core::NodeBase* node = nullptr;
        bool lockWasFree = true;
        std::shared_ptr<std::byte> memory;
    };
    const auto pool = std::make_shared<Pool>();
    ImageFormatConverter pooled(pool);
    pool->node = &pooled;
    pooled.attachOutputSink("Image", sink);
    pooled.startExecution([&](std::shared_ptr<Core::IGraphUpdate>&, Core::PinValues& values) {
        values["Image"] = Utils::Variant(makeImage(Nivex::EPixelType::Mono8, 2, 1, {1, 2}));
    });
    const ImagePtr output = sink->values.at(0).getCOWPtr<Core::Image>();
    EXPECT_FALSE(pool->lockWasFree) << "parameters must not change in the midst of a conversion";
    EXPECT_EQ(output->getDataConst(), pool->memory.get());
    EXPECT_EQ(bytes(output), (std::vector<std::uint8_t>{1, 1, 1, 255, 2, 2, 2, 255}));
    const std::weak_ptr<std::byte> memory = std::exchange(pool->memory, nullptr);
    EXPECT_FALSE(memory.expired());
}

TEST_F(ImageFormatConverterTest, AnErroneousInputGivesAnErroneousOutput)
{
    const auto cause = std::make_shared<Core::DeviceError>("lost", Utils::DateTime::now());
    const ImagePtr output = process(ImagePtr::make(cause));
    ASSERT_TRUE(output->hasError());
    EXPECT_NE(dynamic_cast<Core::InvalidValueError*>(output->getError().get()), nullptr);
    EXPECT_EQ(output->getError()->getDescription(), "Input image is invalid.");
    EXPECT_EQ(output->getError()->getParentErrors(), Core::ErrorList{cause});
    ASSERT_EQ(log.lines().size(), 1U);
    EXPECT_EQ(log.lines()[0].severity, 4);
    EXPECT_EQ(log.lines()[0].category, "nivex.dataprocessing.stagelet.ImageFormatConverter");
    EXPECT_EQ(log.lines()[0].message,
              GenICam::formatText("ImageFormatConverter %p: Input image has an error. Description: \"lost\"",
                                  static_cast<void*>(&node)));
    ASSERT_EQ(host.losses.size(), 1U);
    EXPECT_EQ(host.losses[0].first, Core::LossCause::InvalidInput);
}

TEST_F(ImageFormatConverterTest, WhatCannotBeConvertedGivesAnErroneousOutput)
{
    const auto unknown = static_cast<Nivex::EPixelType>(0x81080001);
    const ImagePtr output = process(makeImage(unknown, 1, 1, {0}));
    ASSERT_TRUE(output->hasError());
    const gcstring message = output->getError()->getDescription();
    EXPECT_NE(message.find("Cannot convert from pixel format UnknownPixelFormat (0x81080001)"), gcstring::npos);
    EXPECT_EQ(output->getError()->getParentErrors(), Core::ErrorList{nullptr});
    ASSERT_EQ(log.lines().size(), 1U);
    EXPECT_EQ(log.lines()[0].message,
              GenICam::formatText("ImageFormatConverter %p: Exception caught while converting. Message: \"%s\"",
                                  static_cast<void*>(&node), message.c_str()));

    EXPECT_TRUE(process(Core::PinValues())->hasError()) << "no input counts as an empty image";
    ASSERT_EQ(host.losses.size(), 2U);
    EXPECT_EQ(host.losses[0].first, Core::LossCause::ConversionFailed);
    EXPECT_EQ(host.losses[1].first, Core::LossCause::ConversionFailed);
    EXPECT_FALSE(process(makeImage(Nivex::EPixelType::Mono8, 1, 1, {0}))->hasError());
}

TEST_F(ImageFormatConverterTest, APropertyThatNeverHadAValueRaises)
{
    node.setAutoResetEnabled("Image", false);
    EXPECT_EQ(refusalOf<GenICam::PropertyException>([&] { process(Core::PinValues()); }), "Property is resetted.");
}

TEST_F(ImageFormatConverterTest, ShowsItsParameters)
{
    EXPECT_FALSE(node.getNodeMap("Other").IsValid());
    ASSERT_EQ(node.getNodeMapInfos().size(), 1U);
    EXPECT_EQ(node.getNodeMapInfos()[0].GetName(), "Image Format Converter");
    EXPECT_EQ(node.getNodeMapInfos()[0].GetIdentifier(), "@Stagelet");

    GenApi::FeatureList_t features;
    feature<GenApi::ICategory>("Root").GetFeatures(features);
    std::vector<gcstring> names;
    for (GenApi::IValue* value : features) {
        const auto& member = dynamic_cast<GenApi::INode&>(*value);
        names.push_back(member.GetName());
        EXPECT_EQ(value->GetAccessMode(), GenApi::RW) << names.back();
        EXPECT_EQ(member.GetVisibility(), GenApi::Beginner) << names.back();
    }
    EXPECT_EQ(names, (std::vector<gcstring>{"OutputPixelFormat", "OutputBitAlignment", "OutputOrientation",
                                            "OutputPaddingX", "MaxNumThreads"}));

    auto& format = feature<GenApi::IEnumeration>("OutputPixelFormat");
    GenApi::NodeList_t entries;
    format.GetEntries(entries);
    EXPECT_EQ(entries.size(), 11U);
    for (GenApi::INode* entryNode : entries) {
        auto& entry = dynamic_cast<GenApi::IEnumEntry&>(*entryNode);
        format.SetIntValue(entry.GetValue());
        EXPECT_EQ(node.getOutputPixelFormat(), entry.GetValue());
        EXPECT_EQ(static_cast<std::int64_t>(Nivex::GetPixelTypeByName(entry.GetSymbolic())), entry.GetValue());
    }

    auto& padding = feature<GenApi::IInteger>("OutputPaddingX");
    EXPECT_EQ(padding.GetMax(), 4294967295);
    EXPECT_EQ(padding.GetRepresentation(), GenApi::Linear);
    auto& threads = feature<GenApi::IInteger>("MaxNumThreads");
    EXPECT_EQ(threads.GetValue(), 1);
    EXPECT_EQ(threads.GetMax(), Nivex::CImageFormatConverter().MaxNumThreads.GetMax());
    EXPECT_EQ(threads.GetRepresentation(), GenApi::PureNumber);
}

// Some of the texts have oddities that users know.
TEST_F(ImageFormatConverterTest, KeepsItsTexts)
{
    const Nivex::ParameterTexts threads = Nivex::CImageFormatConverter().MaxNumThreads.GetTexts();
    const struct
    {
        const char* node;
        const char* displayName;
        const char* toolTip;
        const char* description;
    } rows[] = {
        {"OutputPaddingX", "Padding X", "Number of additional data bytes at the end of each line.",
         "Number of additional data bytes at the end of each line. These bytes are set to zero during the "
         "conversion."},
        {"MaxNumThreads", threads.displayName, threads.toolTip, threads.description},
        {"EnumEntry_OutputPixelFormat_Mono8", "Mono 8", "The output pixel format is set to Mono 8 Packed.",
         "The output pixel format is set to Mono 8 Packed."},
        {"EnumEntry_OutputPixelFormat_YUV422Planar", "YUV422 Planar",
         "The output pixel format is set to YUV422 Planar", "The output pixel format is set to YUV422 Planar."},
        {"EnumEntry_OutputPixelFormat_YUV420Planar", "YUV420 Planar",
         "The output pixel format is set to YUV420 Planar.", "The output pixel format is set ot YUV420 Planar."},
        {"EnumEntry_OutputBitAlignment_LsbAligned", "LSB Aligned ",
         "Image data is aligned with the least significant bit.",
         "Image data is aligned with the least significant bit."},
        {"EnumEntry_OutputBitAlignment_MsbAligned", "MSB Aligned ",
         "Image data is aligned at the most significant bit.",
         "Image data is aligned with the most significant bit."},
    };
    for (const auto& row : rows) {
        const GenApi::INode& shown = feature<GenApi::INode>(row.node);
        EXPECT_EQ(shown.GetDisplayName(), row.displayName) << row.node;
        EXPECT_EQ(shown.GetToolTip(), row.toolTip) << row.node;
        EXPECT_EQ(shown.GetDescription(), row.description) << row.node;
    }
}

TEST_F(ImageFormatConverterTest, ARefusedValueChangesNothing)
{
    int changes = 0;
    node.getSettingsChangedSignal().connect([&] { ++changes; });
    const unsigned int format = node.getOutputPixelFormat();
    EXPECT_ANY_THROW(node.setOutputPixelFormat(0x01100003));
    EXPECT_ANY_THROW(node.setOutputPaddingX(-1));
    EXPECT_ANY_THROW(node.setMaxNumThreads(0));
    EXPECT_ANY_THROW(node.setOutputOrientationEnums(static_cast<Nivex::OutputOrientationEnums>(3)));
    EXPECT_EQ(node.getOutputPixelFormat(), format);
    EXPECT_EQ(node.getOutputPaddingX(), 0);
    EXPECT_EQ(node.getMaxNumThreads(), 1);
    EXPECT_EQ(changes, 0);
}

TEST_F(ImageFormatConverterTest, NotifiesWithoutItsLock)
{
    bool free = false;
    node.getSettingsChangedSignal().connect([&] { free = isLockFree(node); });
    node.setOutputPaddingX(4);
    EXPECT_TRUE(free);
    free = false;
    node.loadSettings(std::make_shared<FakeSettings>());
    EXPECT_TRUE(free);
}

TEST_F(ImageFormatConverterTest, SettingsComeBack)
{
    node.setOutputPixelFormat(static_cast<unsigned int>(Nivex::EPixelType::YUV420Planar));
    node.setOutputBitAlignment(Nivex::OutputBitAlignmentEnums::LsbAligned);
    node.setOutputOrientationEnums(Nivex::OutputOrientationEnums::TopDown);
    node.setOutputPaddingX(4294967295);
    node.setMaxNumThreads(3);
    const auto store = std::make_shared<FakeSettings>();
    node.saveSettings(store);
    EXPECT_EQ(store->order, (std::vector<gcstring>{"OutputPixelFormat", "OutputOrientation", "OutputBitAlignment",
                                                   "OutputPaddingX", "MaxNumThreads"}));
    EXPECT_EQ(std::get<std::uint64_t>(store->values["OutputPixelFormat"]), 0x820C0040U);
    EXPECT_EQ(std::get<gcstring>(store->values["OutputOrientation"]), "TopDown");
    EXPECT_EQ(std::get<gcstring>(store->values["OutputBitAlignment"]), "LsbAligned");

    ImageFormatConverter other(nullptr);
    int changes = 0;
    other.getSettingsChangedSignal().connect([&] { ++changes; });
    other.loadSettings(store);
    EXPECT_EQ(changes, 1);
    const auto again = std::make_shared<FakeSettings>();
    other.saveSettings(again);
    EXPECT_EQ(again->values, store->values);

    const auto part = std::make_shared<FakeSettings>();
    part->values["OutputOrientation"] = gcstring("BottomUp");
    other.loadSettings(part);
    EXPECT_EQ(other.getOutputOrientationEnums(), Nivex::OutputOrientationEnums::BottomUp);
    EXPECT_EQ(other.getOutputPixelFormat(), 0x820C0040U);
    EXPECT_EQ(other.getMaxNumThreads(), 3);
}

TEST_F(ImageFormatConverterTest, RefusesBadSettings)
{
    struct Row
    {
        const char* key;
        FakeSettings::Value value;
        const char* refusal;
    };
    const Row rows[] = {
        {"OutputOrientation", gcstring("topdown"), "Unknown symbolic name of output orientation found."},
        {"OutputBitAlignment", gcstring("1"), "Unknown symbolic name of output bit alignment found."},
        {"OutputPixelFormat", std::uint64_t{0x101080001}, "OutputPixelFormat: 0x101080001 is no pixel type."},
        {"OutputPixelFormat", std::uint64_t{1},
         "OutputPixelFormat: value 1 is none of 35651607, 35127317, 17301505, 17825799, 35127316, 36700211, "
         "35127329, "
         "36700196, 2182611012, 2182086722, 2181824576."},
    };
    int changes = 0;
    node.getSettingsChangedSignal().connect([&] { ++changes; });
    for (const Row& row : rows) {
        const auto store = std::make_shared<FakeSettings>();
        store->values[row.key] = row.value;
        EXPECT_EQ(refusalOf<GenICam::InvalidArgumentException>([&] { node.loadSettings(store); }), row.refusal);
    }
    EXPECT_EQ(changes, 0);
    const auto halfGood = std::make_shared<FakeSettings>();
    halfGood->values = {{"OutputPixelFormat", std::uint64_t{mono8}}, {"MaxNumThreads", std::int64_t{0}}};
    EXPECT_ANY_THROW(node.loadSettings(halfGood));
    EXPECT_EQ(node.getOutputPixelFormat(), mono8);
    EXPECT_EQ(changes, 1);
    EXPECT_EQ(refusalOf<GenICam::InvalidArgumentException>([&] { node.loadSettings(nullptr); }),
              "ptrSettings is a nullptr");
    EXPECT_EQ(refusalOf<GenICam::InvalidArgumentException>([&] { node.saveSettings(nullptr); }),
              "ptrSettings is a nullptr");
    node.start({});
    const auto store = std::make_shared<FakeSettings>();
    store->values["OutputPaddingX"] = std::int64_t{5};
    EXPECT_EQ(refusalOf<GenICam::RuntimeException>([&] { node.loadSettings(store); }),
              "Node must be in stopped state to deserialize.");
    EXPECT_EQ(refusalOf<GenICam::RuntimeException>([&] { node.saveSettings(store); }),
              "Node must be in stopped state to serialize.");
    node.stop();
    EXPECT_EQ(node.getOutputPaddingX(), 0);
    EXPECT_TRUE(store->order.empty());
    EXPECT_EQ(changes, 1);
}

}  // namespace
}  // namespace Plugin::NivexStageletPackageBase::Test

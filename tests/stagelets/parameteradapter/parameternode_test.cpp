// A node of another house on ParameterNode: its variables as parameters and settings, its outputs in error.
#include "parameteradapter/parameternode.h"

#include <gmock/gmock.h>

#include <map>

#include "genapi/genapi.h"

#include "../../framework/logcapture.h"
#include "core/values.h"
#include "runtime/jsonsettings.h"
#include "utils/typeregistrar.h"

namespace AnythingToNodeMapAdapter::Test {
namespace {

namespace Core = Nivex::DataProcessing::Core;
namespace Utils = Nivex::DataProcessing::Utils;
using Nivex::DataProcessing::Runtime::JsonSettings;
using testing::ElementsAre;
using testing::HasSubstr;
using namespace Plugin::NivexStageletPackageBase;

enum class Shape : std::uint32_t
{
    Round = 1,
    Square = 4
};

constexpr EnumEntryRow<Shape> shapes[] = {{Shape::Round, "Round", "", "", ""},
                                          {Shape::Square, "Square", "", "", ""}};

class Gadget : public ParameterNode
{
public:
    struct Values
    {
        std::int64_t count = 3;
        double factor = 0.5;
        bool flag = false;
        Shape shape = Shape::Round;
    };

    Gadget() : ParameterNode(nullptr, "Gadget", "test.Gadget")
    {
        addParameter({"Count"}, values_.count, {.min = 1, .max = 9, .inc = 2});
        addParameter({"Factor"}, values_.factor, {.min = 0, .max = 1});
        addParameter({"Flag"}, values_.flag);
        addParameter({"Shape"}, values_.shape, shapes);
        buildNodeMap();
        createInput("In", "In", input_);
        addOutput("Number", "Number", number_);
        addOutput("Image", "Image", image_);
    }
    ~Gadget() override { cleanup(); }

    Values values() const { return copyOf(values_); }
    const Utils::ResettableProperty<Core::Integer>& number() const { return number_; }
    const Utils::ResettableProperty<Utils::COWPtr<Core::Image>>& image() const { return image_; }

protected:
    void process() override
    {
        const Core::Integer in = input_.getValue();
        outputErrors("No.", Core::LossCause::InvalidInput, &in);
    }

private:
    Values values_;
    Utils::ResettableProperty<Core::Integer> input_, number_;
    Utils::ResettableProperty<Utils::COWPtr<Core::Image>> image_;
};

const Utils::TypeRegistrar<Gadget, Core::SimpleNode, Core::INodeMapContainer> registrar;

GenApi::IValue& parameter(const GenApi::CNodeMapRef& map, const char* name)
{
    return dynamic_cast<GenApi::IValue&>(*map.GetNode(name));
}

std::map<std::string, std::string> parametersOf(const GenApi::CNodeMapRef& map)
{
    std::map<std::string, std::string> values;
    for (const char* name : {"Count", "Factor", "Flag", "Shape"})
        values[name] = parameter(map, name).ToString().c_str();
    return values;
}

const std::map<std::string, std::string> initial = {
    {"Count", "3"}, {"Factor", "0.5"}, {"Flag", "0"}, {"Shape", "Round"}};
const std::map<std::string, std::string> changed = {
    {"Count", "7"}, {"Factor", "0.25"}, {"Flag", "1"}, {"Shape", "Square"}};

TEST(ParameterNode, MakesVariablesParametersAndSettings)
{
    Gadget first;
    Gadget second;
    int notified = 0;
    const auto connection = first.getSettingsChangedSignal().connect([&] { ++notified; });
    const auto map = first.getNodeMap("@Stagelet");
    const auto secondMap = second.getNodeMap("@Stagelet");
    EXPECT_EQ(parametersOf(map), initial);
    EXPECT_EQ(parametersOf(secondMap), initial);
    for (const auto& [name, value] : changed)
        parameter(map, name.c_str()).FromString(value.c_str());
    EXPECT_EQ(parametersOf(map), changed);
    EXPECT_EQ(notified, 4);
    EXPECT_EQ(first.values().count, 7);
    EXPECT_EQ(first.values().factor, 0.25);
    EXPECT_TRUE(first.values().flag);
    EXPECT_EQ(first.values().shape, Shape::Square);

    const auto store = std::make_shared<JsonSettings>();
    first.saveSettings(store);
    second.loadSettings(store);
    EXPECT_EQ(parametersOf(secondMap), changed) << store->toText();
}

TEST(ParameterNode, TakesOverSettingsWhollyOrNotAtAll)
{
    Gadget node;
    const auto map = node.getNodeMap("@Stagelet");
    using Edit = std::function<void(JsonSettings&)>;
    const std::pair<Edit, const char*> refusals[] = {
        {[](JsonSettings& s) { s.setSigned("Count", 0); }, "Count is 0 but must lie between 1 and 9"},
        {[](JsonSettings& s) { s.setSigned("Count", 4); }, "Count is 4 but must"},
        {[](JsonSettings& s) { s.setSigned("Count", 11); }, "Count is 11 but must"},
        {[](JsonSettings& s) { s.setDouble("Factor", 1.5); }, "Factor is 1.5 but must lie between 0 and 1"},
        {[](JsonSettings& s) { s.setBool("Factor", true); }, "Factor"},
        {[](JsonSettings& s) { s.setSigned("Shape", 2); }, "Shape is 2 but must be one of 1 (Round), 4 (Square)"},
        {[](JsonSettings& s) { s.setSigned("Shape", 0x100000001); }, "Shape is 4294967297 but must"},
    };
    for (const auto& [edit, text] : refusals) {
        SCOPED_TRACE(text);
        const auto store = std::make_shared<JsonSettings>();
        store->setBool("Flag", true);
        edit(*store);
        try {
            node.loadSettings(store);
            ADD_FAILURE() << "nothing was raised";
        } catch (const GenICam::GenericException& e) {
            EXPECT_THAT(e.GetDescription(), HasSubstr(text));
        }
        EXPECT_EQ(parametersOf(map), initial);
    }
    const auto partial = std::make_shared<JsonSettings>();
    partial->setBool("Flag", true);
    node.loadSettings(partial);
    EXPECT_TRUE(node.values().flag);
    EXPECT_EQ(node.values().count, 3);
    EXPECT_THROW(node.loadSettings(nullptr), GenICam::InvalidArgumentException);
    node.start({});
    EXPECT_THROW(node.loadSettings(partial), GenICam::RuntimeException);
    EXPECT_THROW(node.saveSettings(partial), GenICam::RuntimeException);
    node.stop();
}

TEST(ParameterNode, PutsErrorsOnAllOutputs)
{
    const ScopedLogCapture log;
    Gadget node;
    Core::Integer bad;
    bad.setError(std::make_shared<Core::InvalidValueError>("The cause.", Utils::DateTime::now()));
    node.start({});
    node.startExecution([&](auto&, Core::PinValues& values) { values["In"] = Utils::Variant(bad); });
    ASSERT_TRUE(node.number().hasValue());
    ASSERT_TRUE(node.image().hasValue());
    for (const auto& error : {node.number().getValue().getError(), node.image().getValue()->getError()}) {
        ASSERT_TRUE(error);
        EXPECT_STREQ(error->getDescription().c_str(), "No.");
        ASSERT_EQ(error->getParentErrors().size(), 1U);
        EXPECT_STREQ(error->getParentErrors()[0]->getDescription().c_str(), "The cause.");
    }
    EXPECT_THAT(log.messages("test.Gadget"), ElementsAre(HasSubstr("No.")));
}

TEST(ParameterNode, LeavesANodeMapWithoutItsVariables)
{
    GenApi::CNodeMapRef map;
    {
        Gadget node;
        map = node.getNodeMap("@Stagelet");
        EXPECT_FALSE(node.getNodeMap("@Other").IsValid());
        node.cleanup();
        EXPECT_FALSE(node.getNodeMap("@Stagelet").IsValid());
    }
    EXPECT_THROW(parameter(map, "Count").FromString("5"), GenICam::GenericException);
}

}  // namespace
}  // namespace AnythingToNodeMapAdapter::Test

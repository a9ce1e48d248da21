#include "genicam/aravisjudge.h"

// The library's headers use old-style casts in their macros.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wold-style-cast"
#pragma GCC diagnostic ignored "-Wpedantic"
#include <arv.h>

#include <algorithm>
#include <functional>
#include <set>
#include <stdexcept>

#include "gcbase/exception.h"

namespace GenApiTest {

namespace {

using namespace GenApi;

const std::string raised = "raised";

std::string text(int64_t number)
{
    return std::to_string(number);
}

std::string text(double number)
{
    return GenICam::formatText("%.15g", number);
}

std::string text(const char* words)
{
    return words ? words : "";
}

std::string joined(const std::vector<std::string>& words)
{
    std::string all;
    for (const std::string& word : words)
        all += word + ";";
    return all;
}

std::string hexText(const std::vector<uint8_t>& bytes)
{
    std::string all;
    for (const uint8_t byte : bytes)
        all += GenICam::formatText("%02x", byte);
    return all;
}

std::string attempt(const std::function<std::string()>& ask)
{
    try {
        return ask();
    } catch (const GenICam::GenericException&) {
        return raised;
    }
}

void addNumber(auto& node, bool readable, Facts& facts)
{
    if (readable) facts["value"] = attempt([&] { return text(node.GetValue()); });
    facts["min"] = attempt([&] { return text(node.GetMin()); });
    facts["max"] = attempt([&] { return text(node.GetMax()); });
    facts["unit"] = attempt([&] { return text(node.GetUnit().c_str()); });
    facts["representation"] = ToText(node.GetRepresentation());
}

void addInteger(IInteger& node, bool readable, Facts& facts)
{
    addNumber(node, readable, facts);
    facts["inc"] = attempt([&] { return text(node.GetInc()); });
}

void addFloat(IFloat& node, bool readable, Facts& facts)
{
    addNumber(node, readable, facts);
    facts["notation"] = text(int64_t{node.GetDisplayNotation()});
    facts["precision"] = text(node.GetDisplayPrecision());
    if (node.HasInc()) facts["inc"] = attempt([&] { return text(node.GetInc()); });
}

void addEnumeration(IEnumeration& node, bool readable, Facts& facts)
{
    if (readable) facts["number"] = attempt([&] { return text(node.GetIntValue()); });
    if (readable) facts["entry"] = attempt([&] { return node.ToString().str(); });
    facts["entries"] = attempt([&] {
        StringList_t symbolics;
        node.GetSymbolics(symbolics);
        return joined({symbolics.begin(), symbolics.end()});
    });
}

void addRegister(IRegister& node, bool readable, Facts& facts)
{
    facts["address"] = attempt([&] { return text(node.GetAddress()); });
    facts["length"] = attempt([&] { return text(node.GetLength()); });
    if (readable)
        facts["bytes"] = attempt([&] {
            std::vector<uint8_t> bytes(static_cast<std::size_t>(node.GetLength()));
            node.Get(bytes.data(), static_cast<int64_t>(bytes.size()));
            return hexText(bytes);
        });
}

void addFeatures(const FeatureList_t& features, const char* aspect, Facts& facts)
{
    std::vector<std::string> names;
    for (const IValue* feature : features)
        names.push_back(dynamic_cast<const INode&>(*feature).GetName().str());
    facts[aspect] = joined(names);
}

// A node's interface decides what is asked; a register's own kinds have two.
void addValue(INode& node, bool readable, Facts& facts)
{
    if (auto* integer = dynamic_cast<IInteger*>(&node)) addInteger(*integer, readable, facts);
    if (auto* number = dynamic_cast<IFloat*>(&node)) addFloat(*number, readable, facts);
    if (auto* choice = dynamic_cast<IEnumeration*>(&node)) addEnumeration(*choice, readable, facts);
    if (auto* boolean = dynamic_cast<IBoolean*>(&node); boolean && readable)
        facts["truth"] = attempt([&] { return text(int64_t{boolean->GetValue()}); });
    if (auto* string = dynamic_cast<IString*>(&node)) {
        if (readable) facts["text"] = attempt([&] { return string->GetValue().str(); });
        facts["longest"] = attempt([&] { return text(string->GetMaxLength()); });
    }
    if (auto* reg = dynamic_cast<IRegister*>(&node)) addRegister(*reg, readable, facts);
    if (auto* category = dynamic_cast<ICategory*>(&node)) {
        FeatureList_t features;
        category->GetFeatures(features);
        addFeatures(features, "features", facts);
    }
    if (auto* selector = dynamic_cast<ISelector*>(&node); selector && selector->IsSelector()) {
        FeatureList_t selected;
        selector->GetSelectedFeatures(selected);
        addFeatures(selected, "selected", facts);
    }
}

/// A device of the library whose memory is a port of ours.
struct PortDevice
{
    ArvDevice parent;
    IPort* port;
};

gboolean transfer(GError** error, const std::function<void()>& access)
{
    try {
        access();
        return TRUE;
    } catch (const std::exception& failure) {
        g_set_error(error, ARV_DEVICE_ERROR, ARV_DEVICE_ERROR_PROTOCOL_ERROR, "%s", failure.what());
        return FALSE;
    }
}

gboolean readMemory(ArvDevice* device, guint64 address, guint32 size, void* buffer, GError** error)
{
    IPort& port = *reinterpret_cast<PortDevice*>(device)->port;
    return transfer(error, [&] { port.Read(buffer, static_cast<int64_t>(address), size); });
}

gboolean writeMemory(ArvDevice* device, guint64 address, guint32 size, void* buffer, GError** error)
{
    IPort& port = *reinterpret_cast<PortDevice*>(device)->port;
    return transfer(error, [&] { port.Write(buffer, static_cast<int64_t>(address), size); });
}

void initClass(gpointer deviceClass, gpointer)
{
    static_cast<ArvDeviceClass*>(deviceClass)->read_memory = readMemory;
    static_cast<ArvDeviceClass*>(deviceClass)->write_memory = writeMemory;
}

GType portDeviceType()
{
    static const GType type =
        g_type_register_static_simple(ARV_TYPE_DEVICE, "StageletPortDevice", sizeof(ArvDeviceClass), initClass,
                                      sizeof(PortDevice), nullptr, static_cast<GTypeFlags>(0));
    return type;
}

struct Unreference
{
    void operator()(void* object) const { g_object_unref(object); }
};

/// `ask(&error)` as text, or "raised".
template <typename Ask>
std::string asked(Ask&& ask)
{
    GError* error = nullptr;
    const auto answer = ask(&error);
    if (!error) return text(answer);
    g_error_free(error);
    return raised;
}

std::string entriesOf(ArvGcEnumeration* node)
{
    guint count = 0;
    GError* error = nullptr;
    const char** entries = arv_gc_enumeration_dup_available_string_values(node, &count, &error);
    std::vector<std::string> names(entries, entries + count);
    g_free(entries);
    if (!error) return joined(names);
    g_error_free(error);
    return raised;
}

std::string bytesOf(ArvGcRegister* node)
{
    GError* error = nullptr;
    std::vector<uint8_t> bytes(arv_gc_register_get_length(node, nullptr));
    arv_gc_register_get(node, bytes.data(), bytes.size(), &error);
    if (!error) return hexText(bytes);
    g_error_free(error);
    return raised;
}

// The library answers for each predicate alone; together they are what we call the access mode.
std::string modeOf(ArvGcFeatureNode* node)
{
    GError* error = nullptr;
    const bool implemented = arv_gc_feature_node_is_implemented(node, &error);
    const bool available = !error && arv_gc_feature_node_is_available(node, &error);
    const bool locked = !error && arv_gc_feature_node_is_locked(node, &error);
    if (error) {
        g_error_free(error);
        return raised;
    }
    if (!implemented) return "NI";
    if (!available) return "NA";
    const ArvGcAccessMode mode = arv_gc_feature_node_get_actual_access_mode(node);
    if (mode == ARV_GC_ACCESS_MODE_RO) return "RO";
    if (mode == ARV_GC_ACCESS_MODE_WO) return locked ? "NA" : "WO";
    return locked ? "RO" : "RW";
}

std::string visibilityOf(ArvGcFeatureNode* node)
{
    switch (arv_gc_feature_node_get_visibility(node)) {
        case ARV_GC_VISIBILITY_INVISIBLE:
            return "Invisible";
        case ARV_GC_VISIBILITY_GURU:
            return "Guru";
        case ARV_GC_VISIBILITY_EXPERT:
            return "Expert";
        default:
            return "Beginner";
    }
}

// The library leaves the default, the node's name, to its users.
std::string displayNameOf(ArvGcFeatureNode* node)
{
    const std::string name = text(arv_gc_feature_node_get_display_name(node));
    return name.empty() ? text(arv_gc_feature_node_get_name(node)) : name;
}

// The library's representations count as ours do, from Linear on; "undefined" is what we call PureNumber.
std::string representationText(ArvGcRepresentation representation)
{
    return representation < 0 ? "PureNumber" : ToText(static_cast<ERepresentation>(representation));
}

std::string featuresOf(ArvGcCategory* node)
{
    std::vector<std::string> names;
    for (const GSList* item = arv_gc_category_get_features(node); item; item = item->next)
        names.emplace_back(static_cast<const char*>(item->data));
    return joined(names);
}

std::string selectedOf(ArvGcSelector* node)
{
    std::vector<std::string> names;
    for (const GSList* item = arv_gc_selector_get_selected_features(node); item; item = item->next)
        names.emplace_back(arv_gc_feature_node_get_name(static_cast<ArvGcFeatureNode*>(item->data)));
    return joined(names);
}

/// One question: the aspect, the interface it needs, and how it is put.
struct Question
{
    const char* aspect;
    GType (*interface)();
    std::string (*ask)(ArvGcNode*);
};

template <typename Interface>
Interface* as(ArvGcNode* node)
{
    return reinterpret_cast<Interface*>(node);
}

#define NUMBER(PREFIX, TYPE, GTYPE, ASPECT, CALL)                                                           \
    {                                                                                                       \
        ASPECT, GTYPE,                                                                                      \
            [](ArvGcNode* n) { return asked([&](GError** e) { return PREFIX##_##CALL(as<TYPE>(n), e); }); } \
    }

// Asked in this order; the first question whose interface the node has and whose kind is ours is put.
const Question integerQuestions[] = {
    NUMBER(arv_gc_integer, ArvGcInteger, arv_gc_integer_get_type, "value", get_value),
    NUMBER(arv_gc_integer, ArvGcInteger, arv_gc_integer_get_type, "min", get_min),
    NUMBER(arv_gc_integer, ArvGcInteger, arv_gc_integer_get_type, "max", get_max),
    NUMBER(arv_gc_integer, ArvGcInteger, arv_gc_integer_get_type, "inc", get_inc),
    {"unit", arv_gc_integer_get_type,
     [](ArvGcNode* n) { return text(arv_gc_integer_get_unit(as<ArvGcInteger>(n))); }},
    {"representation", arv_gc_integer_get_type,
     [](ArvGcNode* n) { return representationText(arv_gc_integer_get_representation(as<ArvGcInteger>(n))); }}};

const Question floatQuestions[] = {
    NUMBER(arv_gc_float, ArvGcFloat, arv_gc_float_get_type, "value", get_value),
    NUMBER(arv_gc_float, ArvGcFloat, arv_gc_float_get_type, "min", get_min),
    NUMBER(arv_gc_float, ArvGcFloat, arv_gc_float_get_type, "max", get_max),
    NUMBER(arv_gc_float, ArvGcFloat, arv_gc_float_get_type, "inc", get_inc),
    {"unit", arv_gc_float_get_type, [](ArvGcNode* n) { return text(arv_gc_float_get_unit(as<ArvGcFloat>(n))); }},
    {"representation", arv_gc_float_get_type,
     [](ArvGcNode* n) { return representationText(arv_gc_float_get_representation(as<ArvGcFloat>(n))); }},
    {"notation", arv_gc_float_get_type,
     [](ArvGcNode* n) {
         return text(std::max<int64_t>(arv_gc_float_get_display_notation(as<ArvGcFloat>(n)), 0));
     }},
    {"precision", arv_gc_float_get_type,
     [](ArvGcNode* n) { return text(arv_gc_float_get_display_precision(as<ArvGcFloat>(n))); }}};

const Question otherQuestions[] = {
    NUMBER(arv_gc_enumeration, ArvGcEnumeration, arv_gc_enumeration_get_type, "number", get_int_value),
    NUMBER(arv_gc_enumeration, ArvGcEnumeration, arv_gc_enumeration_get_type, "entry", get_string_value),
    {"entries", arv_gc_enumeration_get_type, [](ArvGcNode* n) { return entriesOf(as<ArvGcEnumeration>(n)); }},
    {"truth", arv_gc_boolean_get_type,
     [](ArvGcNode* n) {
         return asked([&](GError** e) { return int64_t{arv_gc_boolean_get_value(as<ArvGcBoolean>(n), e)}; });
     }},
    NUMBER(arv_gc_string, ArvGcString, arv_gc_string_get_type, "text", get_value),
    NUMBER(arv_gc_string, ArvGcString, arv_gc_string_get_type, "longest", get_max_length),
    {"address", arv_gc_register_get_type,
     [](ArvGcNode* n) {
         return asked([&](GError** e) {
             return static_cast<int64_t>(arv_gc_register_get_address(as<ArvGcRegister>(n), e));
         });
     }},
    {"length", arv_gc_register_get_type,
     [](ArvGcNode* n) {
         return asked([&](GError** e) {
             return static_cast<int64_t>(arv_gc_register_get_length(as<ArvGcRegister>(n), e));
         });
     }},
    {"bytes", arv_gc_register_get_type, [](ArvGcNode* n) { return bytesOf(as<ArvGcRegister>(n)); }},
    {"features", arv_gc_category_get_type, [](ArvGcNode* n) { return featuresOf(as<ArvGcCategory>(n)); }},
    {"selected", arv_gc_selector_get_type, [](ArvGcNode* n) { return selectedOf(as<ArvGcSelector>(n)); }},
    {"access", arv_gc_feature_node_get_type, [](ArvGcNode* n) { return modeOf(as<ArvGcFeatureNode>(n)); }},
    {"visibility", arv_gc_feature_node_get_type,
     [](ArvGcNode* n) { return visibilityOf(as<ArvGcFeatureNode>(n)); }},
    {"display name", arv_gc_feature_node_get_type,
     [](ArvGcNode* n) { return displayNameOf(as<ArvGcFeatureNode>(n)); }},
    {"tool tip", arv_gc_feature_node_get_type,
     [](ArvGcNode* n) { return text(arv_gc_feature_node_get_tooltip(as<ArvGcFeatureNode>(n))); }},
    {"description", arv_gc_feature_node_get_type,
     [](ArvGcNode* n) { return text(arv_gc_feature_node_get_description(as<ArvGcFeatureNode>(n))); }}};

#undef NUMBER

void put(const auto& questions, ArvGcNode* node, const Facts& asked, Facts& answers)
{
    for (const Question& question : questions) {
        if (!asked.count(question.aspect) || answers.count(question.aspect)) continue;
        const bool answerable = g_type_is_a(G_OBJECT_TYPE(node), question.interface());
        answers[question.aspect] = answerable ? question.ask(node) : "not such a node";
    }
}

}  // namespace

Facts FactsOf(INode& node)
{
    Facts facts;
    EAccessMode mode = NA;
    facts["access"] = attempt([&] {
        mode = node.GetAccessMode();
        return std::string(ToText(mode));
    });
    facts["visibility"] = ToText(node.GetVisibility());
    facts["display name"] = node.GetDisplayName().str();
    facts["tool tip"] = node.GetToolTip().str();
    facts["description"] = node.GetDescription().str();
    addValue(node, IsReadable(mode), facts);
    return facts;
}

struct AravisJudge::Impl
{
    std::unique_ptr<ArvDevice, Unreference> device;
    std::unique_ptr<ArvGc, Unreference> genicam;
};

AravisJudge::AravisJudge(const std::string& description, IPort& device) : impl_(std::make_unique<Impl>())
{
    auto* memory = static_cast<PortDevice*>(g_object_new(portDeviceType(), nullptr));
    memory->port = &device;
    impl_->device.reset(&memory->parent);
    impl_->genicam.reset(arv_gc_new(impl_->device.get(), description.c_str(), description.size()));
    if (!impl_->genicam) throw std::runtime_error("Aravis cannot read the description");
    arv_gc_set_access_check_policy(impl_->genicam.get(), ARV_ACCESS_CHECK_POLICY_ENABLE);
    arv_gc_set_range_check_policy(impl_->genicam.get(), ARV_RANGE_CHECK_POLICY_ENABLE);
}

AravisJudge::~AravisJudge() = default;

Facts AravisJudge::Answers(INode& node, const Facts& asked) const
{
    Facts answers;
    ArvGcNode* const found = arv_gc_get_node(impl_->genicam.get(), node.GetName().c_str());
    if (!found) {
        for (const auto& [aspect, answer] : asked)
            answers[aspect] = "absent";
        return answers;
    }
    if (dynamic_cast<IInteger*>(&node)) put(integerQuestions, found, asked, answers);
    if (dynamic_cast<IFloat*>(&node)) put(floatQuestions, found, asked, answers);
    put(otherQuestions, found, asked, answers);
    return answers;
}

std::vector<std::string> AravisJudge::Compare(const INodeMap& map, const std::vector<Exemption>& exemptions) const
{
    std::vector<std::string> lines;
    std::set<std::size_t> needed;
    NodeList_t nodes;
    map.GetNodes(nodes);
    const auto exemptionOf = [&](const std::string& node, const std::string& aspect, const std::string& theirs) {
        const auto covers = [](const std::string& pattern, const std::string& word) {
            return pattern == "*" || pattern == word;
        };
        const auto found = std::find_if(exemptions.begin(), exemptions.end(), [&](const Exemption& each) {
            return covers(each.node, node) && covers(each.aspect, aspect) && covers(each.theirs, theirs);
        });
        return static_cast<std::size_t>(found - exemptions.begin());
    };
    for (INode* node : nodes) {
        if (dynamic_cast<IEnumEntry*>(node) || dynamic_cast<IPort*>(node)) continue;  // judged by their users
        const Facts ours = FactsOf(*node);
        const Facts theirs = Answers(*node, ours);
        const std::string name = node->GetName().str();
        for (const auto& [aspect, answer] : ours) {
            const std::string& other = theirs.at(aspect);
            if (answer == other) continue;
            const std::size_t exemption = exemptionOf(name, aspect, other);
            needed.insert(exemption);
            if (exemption == exemptions.size())
                lines.push_back(name + ", " + aspect + ": we say \"" + answer + "\", Aravis \"" + other + "\"");
        }
    }
    for (std::size_t i = 0; i < exemptions.size(); ++i)
        if (!needed.count(i))
            lines.push_back("the exemption of " + exemptions[i].node + ", " + exemptions[i].aspect +
                            " is not needed: " + exemptions[i].reason);
    return lines;
}

bool AravisJudge::Write(const std::string& name, const std::string& value) const
{
    ArvGcNode* const node = arv_gc_get_node(impl_->genicam.get(), name.c_str());
    if (!node) return false;
    GError* error = nullptr;
    if (ARV_IS_GC_COMMAND(node)) {
        arv_gc_command_execute(as<ArvGcCommand>(node), &error);
    } else {
        arv_gc_feature_node_set_value_from_string(as<ArvGcFeatureNode>(node), value.c_str(), &error);
    }
    if (!error) return true;
    g_error_free(error);
    return false;
}

struct AravisFakeCamera::Impl
{
    std::unique_ptr<ArvDevice, Unreference> device{arv_fake_device_new("JUDGE", nullptr)};
};

AravisFakeCamera::AravisFakeCamera() : impl_(std::make_unique<Impl>())
{
    if (!impl_->device) throw std::runtime_error("Aravis has no fake camera");
}

AravisFakeCamera::~AravisFakeCamera() = default;

std::string AravisFakeCamera::Description() const
{
    std::size_t size = 0;
    const char* const text = arv_device_get_genicam_xml(impl_->device.get(), &size);
    return {text, size};
}

void AravisFakeCamera::Read(void* buffer, int64_t address, int64_t length)
{
    if (!arv_device_read_memory(impl_->device.get(), static_cast<guint64>(address), static_cast<guint32>(length),
                                buffer, nullptr))
        throw std::runtime_error("the fake camera refuses to read");
}

void AravisFakeCamera::Write(const void* buffer, int64_t address, int64_t length)
{
    std::vector<uint8_t> bytes(static_cast<const uint8_t*>(buffer), static_cast<const uint8_t*>(buffer) + length);
    if (!arv_device_write_memory(impl_->device.get(), static_cast<guint64>(address), static_cast<guint32>(length),
                                 bytes.data(), nullptr))
        throw std::runtime_error("the fake camera refuses to write");
}

}  // namespace GenApiTest

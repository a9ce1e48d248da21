#include "genapi/nodebuilder.h"

#include <algorithm>
#include <array>
#include <unordered_set>

#include "gcbase/exception.h"
#include "genapi/absentnodes.h"
#include "genapi/booleannode.h"
#include "genapi/categorynode.h"
#include "genapi/commandnode.h"
#include "genapi/converternode.h"
#include "genapi/enumerationnode.h"
#include "genapi/floatnode.h"
#include "genapi/floatregnode.h"
#include "genapi/integernode.h"
#include "genapi/intregnode.h"
#include "genapi/netcheck.h"
#include "genapi/nodemap.h"
#include "genapi/plainnode.h"
#include "genapi/portnode.h"
#include "genapi/registernode.h"
#include "genapi/stringnode.h"
#include "genapi/swissknifenode.h"
#include "genapi/textconversion.h"

namespace GenApi {

namespace {

using Maker = std::unique_ptr<CNodeBase> (*)(NodeOrigin);

template <typename NodeClass>
std::unique_ptr<CNodeBase> make(NodeOrigin origin)
{
    return std::make_unique<NodeClass>(std::move(origin));
}

struct KindRow
{
    NodeKind kind;
    Maker make;
};

constexpr KindRow kinds[] = {
    {{"Integer", intfIInteger}, make<CIntegerNode>},
    {{"IntReg", intfIInteger}, make<CIntRegNode>},
    {{"MaskedIntReg", intfIInteger}, make<CMaskedIntRegNode>},
    {{"Float", intfIFloat}, make<CFloatNode>},
    {{"FloatReg", intfIFloat}, make<CFloatRegNode>},
    {{"SwissKnife", intfIFloat}, make<CSwissKnifeNode>},
    {{"IntSwissKnife", intfIInteger}, make<CIntSwissKnifeNode>},
    {{"Converter", intfIFloat}, make<CConverterNode>},
    {{"IntConverter", intfIInteger}, make<CIntConverterNode>},
    {{"Boolean", intfIBoolean}, make<CBooleanNode>},
    {{"Command", intfICommand}, make<CCommandNode>},
    {{"String", intfIString}, make<CStringNode>},
    {{"StringReg", intfIString}, make<CStringRegNode>},
    {{"Register", intfIRegister}, make<CRegisterNode>},
    {{"Category", intfICategory}, make<CCategoryNode>},
    {{"Port", intfIPort}, make<CPortNode>},
    {{"Node", intfIBase}, make<CPlainNode>},
    {{"ConfRom", intfIBase}, make<CAbsentNode>},
    {{"TextDesc", intfIString}, make<CAbsentStringNode>},
    {{"IntKey", intfIInteger}, make<CAbsentIntegerNode>},
    {{"AdvFeatureLock", intfIInteger}, make<CAbsentIntegerNode>},
    {{"DcamLock", intfIInteger}, make<CAbsentIntegerNode>},
    {{"SmartFeature", intfIInteger}, make<CAbsentIntegerNode>},
};
constexpr NodeKind enumerationKind = {"Enumeration", intfIEnumeration};
constexpr NodeKind entryKind = {"EnumEntry", intfIEnumEntry};
constexpr NodeKind structEntryKind = {"StructEntry", intfIInteger};
constexpr std::string_view structKind = "StructReg";

constexpr Word<EAccessMode> accessModes[] = {{"RO", RO}, {"WO", WO}, {"RW", RW}, {"R", RO}, {"W", WO}};
constexpr Word<EEndianess> endianesses[] = {{"LittleEndian", LittleEndian}, {"BigEndian", BigEndian}};
constexpr Word<bool> yesNo[] = {{"Yes", true}, {"No", false}, {"true", true}, {"false", false}};

struct DependencyRow
{
    Link link;
    Aspect of;
    Aspect from;
};

// What computing one aspect of a node asks of the nodes it refers to. A value that is used as a parameter is
// checked to be readable first, hence the access modes.
constexpr DependencyRow dependencyRows[] = {
    {Link::Value, Aspect::Value, Aspect::Value},
    {Link::Value, Aspect::Limits, Aspect::Limits},
    {Link::Value, Aspect::Mode, Aspect::Mode},
    {Link::Copy, Aspect::Limits, Aspect::Limits},
    {Link::Copy, Aspect::Mode, Aspect::Limits},
    {Link::Copy, Aspect::Mode, Aspect::Mode},
    {Link::Variable, Aspect::Value, Aspect::Value},
    {Link::Variable, Aspect::Limits, Aspect::Value},
    {Link::Variable, Aspect::Mode, Aspect::Mode},
    {Link::VariableLimit, Aspect::Value, Aspect::Limits},
    {Link::VariableLimit, Aspect::Limits, Aspect::Limits},
    {Link::VariableLimit, Aspect::Mode, Aspect::Mode},
    {Link::VariableMode, Aspect::Value, Aspect::Mode},
    {Link::VariableMode, Aspect::Limits, Aspect::Mode},
    {Link::Limit, Aspect::Limits, Aspect::Value},
    {Link::Limit, Aspect::Limits, Aspect::Mode},
    {Link::Predicate, Aspect::Mode, Aspect::Value},
    {Link::Predicate, Aspect::Mode, Aspect::Mode},
    {Link::Parameter, Aspect::Value, Aspect::Value},
    {Link::Parameter, Aspect::Value, Aspect::Mode},
    {Link::Parameter, Aspect::Limits, Aspect::Value},
    {Link::Parameter, Aspect::Limits, Aspect::Mode},
    {Link::Parameter, Aspect::Mode, Aspect::Value},
    {Link::Parameter, Aspect::Mode, Aspect::Mode},
    {Link::Feature, Aspect::Value, Aspect::Value},
};

bool isEmbedded(Element child)
{
    const std::string_view kind = child.Name();
    if (kind == "IntSwissKnife") return true;
    return (kind == "TextDesc" || kind == "IntKey") && !child.Attribute("Name").empty();
}

std::string quoted(std::string_view text)
{
    constexpr std::size_t shown = 80;
    return '"' + std::string(text.substr(0, shown)) + (text.size() > shown ? "...\"" : "\"");
}

}  // namespace

ElementReader::ElementReader(NodeBuilder& builder, CNodeBase& node, Element element)
    : builder_(builder), node_(node), element_(element), name_(element.Name()), text_(element.Text())
{}

bool ElementReader::IsOneOf(std::initializer_list<std::string_view> names) const
{
    return std::find(names.begin(), names.end(), name_) != names.end();
}

bool ElementReader::TakeProse(gcstring& text) const
{
    if (!builder_.SuppressesStrings()) text = gcstring(element_.Prose());
    return true;
}

int64_t ElementReader::Integer() const
{
    return IntegerOf(text_);
}

int64_t ElementReader::IntegerOf(std::string_view text) const
{
    const auto value = ParseInteger(text);
    if (!value) Refuse(quoted(text) + " is no decimal or 0x number of 64 bits");
    return *value;
}

uint64_t ElementReader::HexDigits() const
{
    const auto value = ParseHexDigits(text_);
    if (!value) Refuse(quoted(text_) + " is no row of hexadecimal digits of 64 bits");
    return *value;
}

double ElementReader::Float() const
{
    const auto value = ParseFloat(text_);
    if (!value) Refuse(quoted(text_) + " is no number");
    return *value;
}

bool ElementReader::YesNo() const
{
    return WordOf(yesNo, false);
}

bool ElementReader::Boolean() const
{
    const auto value = ParseBoolean(text_);
    if (!value) RefuseWord();
    return *value;
}

EAccessMode ElementReader::AccessMode(EAccessMode ifEmpty) const
{
    return WordOf(accessModes, ifEmpty);
}

bool ElementReader::TakeEndianess(EEndianess& endianess) const
{
    // The schema's spelling; the other is met in the field.
    if (!IsOneOf({"Endianess", "Endianness"})) return false;
    endianess = WordOf(endianesses, endianess);
    return true;
}

NumberRef ElementReader::NumberOf(std::string_view name, Link link) const
{
    CNodeBase& target = NodeOf(name, link);
    if (INumber* number = target.AsNumber()) return {target, *number};
    RefuseKind(target, "a node with a number");
}

CStringBase& ElementReader::String(Link link) const
{
    CNodeBase& target = Node(link);
    if (CStringBase* string = target.AsString()) return *string;
    RefuseKind(target, "a node with a text");
}

CEnumerationNode& ElementReader::Enumeration(Link link) const
{
    CNodeBase& target = Node(link);
    if (auto* enumeration = dynamic_cast<CEnumerationNode*>(&target)) return *enumeration;
    RefuseKind(target, "an Enumeration");
}

CPortNode& ElementReader::Port() const
{
    CNodeBase& target = Node(Link::Parameter);
    if (CPortNode* port = target.AsPort()) return *port;
    RefuseKind(target, "a Port");
}

CNodeBase& ElementReader::NodeOf(std::string_view name, Link link) const
{
    CNodeBase* target = builder_.Find(name);
    if (!target) Refuse("there is no node " + quoted(name));
    const bool needsValue = link == Link::Selected || link == Link::Feature;
    if (needsValue && !target->AsValue()) RefuseKind(*target, "a feature or category");
    builder_.Connect(node_, *target, link);
    return *target;
}

void ElementReader::Refuse(const std::string& cause) const
{
    builder_.Refuse(node_, element_, cause);
}

void ElementReader::RefuseWord() const
{
    Refuse(quoted(text_) + " is not one of its words");
}

void ElementReader::RefuseKind(const CNodeBase& target, const char* wanted) const
{
    Refuse(quoted(target.Name().view()) + " is of the kind " + target.Kind() + ", not " + wanted);
}

NodeBuilder::NodeBuilder(const Document& document, CNodeMap& map, bool suppressStrings)
    : document_(document), map_(map), suppressStrings_(suppressStrings)
{}

void NodeBuilder::Build()
{
    Declare(document_.Root());
    for (const Declaration& declaration : declarations_)
        Read(declaration);
    NetCheck net;
    for (const Declaration& declaration : declarations_) {
        const auto finding = net.Visit(*declaration.node);
        if (!finding.culprit) continue;
        const auto at = std::find_if(declarations_.begin(), declarations_.end(),
                                     [&](const Declaration& d) { return d.node == finding.culprit; });
        Refuse(*at->node, at->element, finding.cause);
    }
    for (const auto& node : map_.nodes_) {
        node->dependencies_ = {};
        if (CPortNode* port = node->AsPort()) {
            port->SealRegisters();
            if (port->IsChunkPort()) map_.chunkPorts_.push_back(port);
        }
        if (node->eventNumber_) map_.eventNodes_[*node->eventNumber_].push_back(node.get());
        if (node->pollingTime_ >= 0) map_.polled_.push_back(node.get());
    }
    map_.reached_.reserve(2 * map_.nodes_.size());
}

CNodeBase* NodeBuilder::Find(std::string_view name) const
{
    const auto found = map_.nodesByName_.find(name);
    return found == map_.nodesByName_.end() ? nullptr : found->second;
}

void NodeBuilder::Connect(CNodeBase& user, CNodeBase& target, Link link) const
{
    for (const DependencyRow& row : dependencyRows)
        if (row.link == link) user.dependencies_.push_back({&target, row.of, row.from});
    switch (link) {
        case Link::Value:
        case Link::Variable:
            user.valueSources_.push_back(&target);
            [[fallthrough]];
        case Link::Copy:
        case Link::VariableLimit:
        case Link::VariableMode:
        case Link::Limit:
        case Link::Predicate:
        case Link::Parameter:
            user.children_.push_back(&target);
            target.followers_.push_back(&user);
            break;
        case Link::Invalidator:
            target.dependants_.push_back(&user);
            break;
        case Link::Selected:
            user.dependants_.push_back(&target);
            user.selected_.push_back(&target);
            target.selecting_.push_back(&user);
            break;
        case Link::Feature:
            user.children_.push_back(&target);
            target.feature_ = true;
            break;
        case Link::Hint:
            break;
    }
}

void NodeBuilder::Declare(Element parent)
{
    // Groups nest no deeper than elements may.
    for (Element child = parent.FirstChild(); child; child = child.Next()) {
        if (child.Name() == "Group") {
            Declare(child);
        } else if (child.Name() != "Extension") {
            DeclareNode(child);
        }
    }
}

void NodeBuilder::DeclareNode(Element element)
{
    const std::string_view kind = element.Name();
    if (kind == structKind) return DeclareStruct(element);
    gcstring name(element.Attribute("Name"));
    if (kind == enumerationKind.element) {
        auto& node =
            Add(std::make_unique<CEnumerationNode>(NodeOrigin{map_, std::move(name), enumerationKind}), element);
        DeclareEntries(node, element);
        return;
    }
    const auto* row = std::find_if(std::begin(kinds), std::end(kinds),
                                   [&](const KindRow& each) { return kind == each.kind.element; });
    if (row == std::end(kinds)) RefuseNode(element, "there is no such kind of node");
    Add(row->make({map_, std::move(name), row->kind}), element);
    DeclareEmbedded(element);
}

void NodeBuilder::DeclareStruct(Element element)
{
    for (Element child = element.FirstChild(); child; child = child.Next()) {
        if (child.Name() != structEntryKind.element) continue;
        NodeOrigin origin{map_, gcstring(child.Attribute("Name")), structEntryKind};
        Add(std::make_unique<CMaskedIntRegNode>(std::move(origin)), child, element);
    }
    DeclareEmbedded(element);
}

// A register's address may be a formula node that stands in the register; a ConfRom holds its keys.
void NodeBuilder::DeclareEmbedded(Element element)
{
    for (Element child = element.FirstChild(); child; child = child.Next())
        if (isEmbedded(child)) DeclareNode(child);
}

void NodeBuilder::DeclareEntries(CEnumerationNode& enumeration, Element element)
{
    for (Element child = element.FirstChild(); child; child = child.Next()) {
        if (child.Name() != entryKind.element) continue;
        gcstring symbolic(child.Attribute("Name"));
        if (symbolic.empty()) RefuseNode(child, "it has no name");
        const gcstring name = "EnumEntry_" + enumeration.Name() + "_" + symbolic;
        auto& entry = Add(
            std::make_unique<CEnumEntryNode>(NodeOrigin{map_, name, entryKind}, std::move(symbolic), enumeration),
            child);
        enumeration.AddEntry(entry);
        // Not a dependency: an entry may become available by the enumeration's own value.
        entry.followers_.push_back(&enumeration);
    }
}

template <typename NodeClass>
NodeClass& NodeBuilder::Add(std::unique_ptr<NodeClass> node, Element element, Element inherited)
{
    NodeClass& added = *node;
    if (added.Name().empty()) RefuseNode(element, "it has no name");
    if (const CNodeBase* first = Find(added.Name().view())) {
        const auto at = std::find_if(declarations_.begin(), declarations_.end(),
                                     [&](const Declaration& d) { return d.node == first; });
        Refuse(added, element,
               GenICam::formatText("line %d declares a node of that name already", document_.Line(at->element)));
    }
    map_.nodes_.push_back(std::move(node));
    map_.nodesByName_.emplace(added.Name().view(), &added);
    declarations_.push_back({&added, element, inherited});
    return added;
}

void NodeBuilder::Read(const Declaration& declaration)
{
    CNodeBase& node = *declaration.node;
    if (declaration.inherited) ReadInherited(declaration);
    for (Element child = declaration.element.FirstChild(); child; child = child.Next()) {
        ElementReader reader(*this, node, child);
        node.TakeElement(reader);
    }
    ElementReader own(*this, node, declaration.element);
    node.Finish(own);
}

void NodeBuilder::ReadInherited(const Declaration& declaration)
{
    std::unordered_set<std::string_view> own;
    for (Element child = declaration.element.FirstChild(); child; child = child.Next())
        own.insert(child.Name());
    for (Element child = declaration.inherited.FirstChild(); child; child = child.Next()) {
        if (child.Name() == structEntryKind.element || own.count(child.Name()) > 0) continue;
        if (++inheritedCount_ > maxInherited)
            RefuseNode(declaration.inherited, "the entries of all structures take too many elements from them");
        ElementReader reader(*this, *declaration.node, child);
        declaration.node->TakeElement(reader);
    }
}

void NodeBuilder::Refuse(const CNodeBase& node, Element element, const std::string& cause) const
{
    const std::string where(element.Name());
    const std::string part = where == node.Kind() ? "" : ", <" + where + ">";
    GENICAM_THROW(RuntimeException, "Register description, line %d, %s %s%s: %s.", document_.Line(element),
                  node.Kind(), quoted(node.Name().view()).c_str(), part.c_str(), cause.c_str());
}

void NodeBuilder::RefuseNode(Element element, std::string_view cause) const
{
    GENICAM_THROW(RuntimeException, "Register description, line %d, %s %s: %s.", document_.Line(element),
                  std::string(element.Name()).c_str(), quoted(element.Attribute("Name")).c_str(),
                  std::string(cause).c_str());
}

}  // namespace GenApi

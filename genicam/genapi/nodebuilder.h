#pragma once

#include <cstdint>
#include <initializer_list>
#include <memory>
#include <string_view>
#include <vector>

#include "genapi/element.h"
#include "genapi/nodebase.h"

namespace GenApi {

class CPortNode;

/// What a reference from one node to another means.
enum class Link
{
    Value,          ///< the user's value is the target's, and so are its limits and its access mode
    Copy,           ///< as before, but the value only goes there
    Variable,       ///< the user computes its value and its limits from the target's value
    VariableLimit,  ///< it computes them from the target's limits
    VariableMode,   ///< it computes them from the target's access mode
    Limit,          ///< the user's limits are the target's value
    Predicate,      ///< the user's access mode comes from the target's value
    Parameter,      ///< the target's value may count for all of the user, as its address does
    Invalidator,    ///< a change of the target drops the user's value
    Selected,       ///< a change of the user drops the target's value
    Feature,        ///< the target stands in the user, a category
    Hint            ///< of no effect here
};

/// A word of the description and what it stands for.
template <typename Value>
struct Word
{
    std::string_view text;
    Value value;
};

/// One element of one node on its way into the node, or the node's own element. What it must not say raises
/// RuntimeException with line, node, element and cause.
class ElementReader
{
public:
    ElementReader(NodeBuilder& builder, CNodeBase& node, Element element);

    bool Is(std::string_view name) const { return name == name_; }
    bool IsOneOf(std::initializer_list<std::string_view> names) const;
    std::string_view Text() const { return text_; }
    std::string_view Attribute(const char* name) const { return element_.Attribute(name); }
    /// Keeps the text unless strings are left out; always true.
    bool TakeProse(gcstring& text) const;
    int64_t Integer() const;
    int64_t IntegerOf(std::string_view text) const;
    /// Bare hexadecimal digits; a `0x` before them is met in the field.
    uint64_t HexDigits() const;
    double Float() const;
    bool YesNo() const;
    bool Boolean() const;
    EAccessMode AccessMode(EAccessMode ifEmpty) const;
    /// Keeps the byte order if this is the element that tells it, else false.
    bool TakeEndianess(EEndianess& endianess) const;

    /// The value of the word; `otherwise` for an empty or unknown one.
    template <typename Value, std::size_t N>
    Value AnyWordOf(const Word<Value> (&words)[N], Value otherwise) const
    {
        for (const auto& word : words)
            if (word.text == text_) return word.value;
        return otherwise;
    }
    /// The value of the word, which must be known; an element without a text means its default.
    template <typename Value, std::size_t N>
    Value WordOf(const Word<Value> (&words)[N], Value ifEmpty) const
    {
        if (text_.empty()) return ifEmpty;
        for (const auto& word : words)
            if (word.text == text_) return word.value;
        RefuseWord();
    }

    /// The node that the element's text, or `name`, names.
    CNodeBase& Node(Link link) const { return NodeOf(text_, link); }
    NumberRef Number(Link link) const { return NumberOf(text_, link); }
    NumberRef NumberOf(std::string_view name, Link link) const;
    CStringBase& String(Link link) const;
    CEnumerationNode& Enumeration(Link link) const;
    CPortNode& Port() const;

    [[noreturn]] void Refuse(const std::string& cause) const;

private:
    CNodeBase& NodeOf(std::string_view name, Link link) const;
    [[noreturn]] void RefuseWord() const;
    [[noreturn]] void RefuseKind(const CNodeBase& target, const char* wanted) const;

    NodeBuilder& builder_;
    CNodeBase& node_;
    Element element_;
    std::string_view name_;
    std::string_view text_;
};

/// Makes the nodes of a map from a description: first all nodes with their names, then their elements, whose
/// references can thus be resolved at once, then the net as a whole (NetCheck).
class NodeBuilder
{
public:
    /// So often may entries take an element of their StructReg; without a limit a description could grow a
    /// thousandfold.
    static constexpr std::size_t maxInherited = 1000000;

    NodeBuilder(const Document& document, CNodeMap& map, bool suppressStrings);
    void Build();

    CNodeBase* Find(std::string_view name) const;
    /// Records that `user` refers to `target`.
    void Connect(CNodeBase& user, CNodeBase& target, Link link) const;
    bool SuppressesStrings() const { return suppressStrings_; }
    /// Refuses `element`, which stands in the element of `node` or is that.
    [[noreturn]] void Refuse(const CNodeBase& node, Element element, const std::string& cause) const;

private:
    struct Declaration
    {
        CNodeBase* node;
        Element element;
        Element inherited;  // a StructReg; its elements count where an entry does not say otherwise
    };

    void Declare(Element parent);
    void DeclareNode(Element element);
    void DeclareEmbedded(Element element);
    void DeclareEntries(CEnumerationNode& enumeration, Element element);
    template <typename NodeClass>
    NodeClass& Add(std::unique_ptr<NodeClass> node, Element element, Element inherited = {});
    void DeclareStruct(Element element);
    void ReadInherited(const Declaration& declaration);
    void Read(const Declaration& declaration);
    [[noreturn]] void RefuseNode(Element element, std::string_view cause) const;

    const Document& document_;
    CNodeMap& map_;
    const bool suppressStrings_;
    std::vector<Declaration> declarations_;
    std::size_t inheritedCount_ = 0;
};

}  // namespace GenApi

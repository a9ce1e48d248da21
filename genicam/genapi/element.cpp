#include "genapi/element.h"

#include <expat.h>
#include <pugixml.hpp>

#include <algorithm>
#include <string>
#include <vector>

#include "gcbase/exception.h"
#include "genapi/textconversion.h"

namespace GenApi {

namespace {

std::string_view localName(const char* name)
{
    const std::string_view whole = name;
    const std::size_t colon = whole.find(':');
    return colon == std::string_view::npos ? whole : whole.substr(colon + 1);
}

bool isText(pugi::xml_node node)
{
    return node.type() == pugi::node_pcdata || node.type() == pugi::node_cdata;
}

pugi::xml_node firstElement(pugi::xml_node node)
{
    while (node && node.type() != pugi::node_element)
        node = node.next_sibling();
    return node;
}

// Comments and CDATA sections split a text; later readers look at its first piece only.
void joinText(pugi::xml_node element)
{
    pugi::xml_node first;
    std::string whole;
    for (pugi::xml_node child : element.children()) {
        if (!isText(child)) continue;
        whole += child.value();
        if (!first) first = child;
    }
    if (first && whole.size() > std::string_view(first.value()).size()) first.set_value(whole.c_str());
}

/// Raises RuntimeException if the text is no well-formed XML. The tree's own parser lets much pass, such as
/// unknown entities, attributes that stand twice, and bytes that are no UTF-8.
void requireWellFormed(const void* data, std::size_t size)
{
    const std::unique_ptr<XML_ParserStruct, decltype(&XML_ParserFree)> parser(XML_ParserCreate(nullptr),
                                                                              XML_ParserFree);
    if (!parser) GENICAM_THROW(BadAllocException, "Not enough memory to read a register description.");
    if (XML_Parse(parser.get(), static_cast<const char*>(data), static_cast<int>(size), XML_TRUE) == XML_STATUS_OK)
        return;
    GENICAM_THROW(RuntimeException, "Register description, line %lu: it is not well formed: %s.",
                  static_cast<unsigned long>(XML_GetCurrentLineNumber(parser.get())),
                  XML_ErrorString(XML_GetErrorCode(parser.get())));
}

std::vector<std::size_t> lineStarts(std::string_view text)
{
    std::vector<std::size_t> starts = {0};
    for (std::size_t at = text.find('\n'); at != std::string_view::npos; at = text.find('\n', at + 1))
        starts.push_back(at + 1);
    return starts;
}

}  // namespace

std::string_view Element::Name() const
{
    return localName(pugi::xml_node(node_).name());
}

std::string_view Element::Text() const
{
    return Trimmed(pugi::xml_node(node_).child_value());
}

std::string_view Element::Prose() const
{
    const std::string_view text = pugi::xml_node(node_).child_value();
    const std::string_view trimmed = Trimmed(text);
    if (trimmed.empty() || text.find('\n') != std::string_view::npos) return trimmed;
    return text.substr(static_cast<std::size_t>(trimmed.data() - text.data()));
}

std::string_view Element::Attribute(const char* name) const
{
    return Trimmed(pugi::xml_node(node_).attribute(name).value());
}

Element Element::FirstChild() const
{
    return Element(firstElement(pugi::xml_node(node_).first_child()).internal_object());
}

Element Element::Next() const
{
    return Element(firstElement(pugi::xml_node(node_).next_sibling()).internal_object());
}

struct Document::Impl
{
    pugi::xml_document document;
    std::vector<std::size_t> starts;
    pugi::xml_node root;

    int LineAt(std::ptrdiff_t offset) const
    {
        const auto position = static_cast<std::size_t>(std::max<std::ptrdiff_t>(offset, 0));
        return static_cast<int>(std::upper_bound(starts.begin(), starts.end(), position) - starts.begin());
    }

    int LineOf(pugi::xml_node node) const { return LineAt(node.offset_debug()); }

    void FindRoot();
    void CheckVersion() const;
    void VisitAll() const;
};

void Document::Impl::FindRoot()
{
    root = firstElement(document.first_child());
    if (localName(root.name()) != "RegisterDescription")
        GENICAM_THROW(RuntimeException,
                      "Register description, line %d: the outermost element is <%s>, not <RegisterDescription>.",
                      LineOf(root), root.name());
}

void Document::Impl::CheckVersion() const
{
    const int major = root.attribute("SchemaMajorVersion").as_int(1);
    const int minor = root.attribute("SchemaMinorVersion").as_int(1);
    if (major != 1 || minor < 0 || minor > 1)
        GENICAM_THROW(RuntimeException,
                      "Register description, line %d: it follows schema version %d.%d; 1.0 and 1.1 are supported.",
                      LineOf(root), major, minor);
}

void Document::Impl::VisitAll() const
{
    int depth = 1;
    for (pugi::xml_node node = root; node;) {
        if (node.type() == pugi::node_element) joinText(node);
        if (const pugi::xml_node child = node.first_child()) {
            node = child;
            if (++depth > maxDepth + 1)
                GENICAM_THROW(RuntimeException,
                              "Register description, line %d: elements are nested more than %d levels deep.",
                              LineOf(node.parent()), maxDepth);
            continue;
        }
        while (node != root && !node.next_sibling()) {
            node = node.parent();
            --depth;
        }
        node = node == root ? pugi::xml_node() : node.next_sibling();
    }
}

Document::Document(const void* data, std::size_t size) : impl_(std::make_unique<Impl>())
{
    if (size > maxSize)
        GENICAM_THROW(RuntimeException, "Register description: it has %zu bytes; at most %zu are supported.", size,
                      maxSize);
    // Descriptions are met that are filled up with zeros to the size of their file or memory.
    while (size > 0 && static_cast<const char*>(data)[size - 1] == '\0')
        --size;
    requireWellFormed(data, size);
    impl_->starts = lineStarts(std::string_view(static_cast<const char*>(data), size));
    const pugi::xml_parse_result result = impl_->document.load_buffer(data, size, pugi::parse_default);
    if (!result)
        GENICAM_THROW(RuntimeException, "Register description, line %d: it is not well formed: %s.",
                      impl_->LineAt(result.offset), result.description());
    impl_->FindRoot();
    impl_->CheckVersion();
    impl_->VisitAll();
}

Document::~Document() = default;

Element Document::Root() const
{
    return Element(impl_->root.internal_object());
}

int Document::Line(Element element) const
{
    return impl_->LineOf(pugi::xml_node(element.node_));
}

}  // namespace GenApi

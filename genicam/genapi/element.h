#pragma once

#include <cstddef>
#include <memory>
#include <string_view>

namespace pugi {
struct xml_node_struct;
}

namespace GenApi {

/// One element of a description; a plain reference, good as long as its Document. Namespace prefixes are left out
/// of all names. An element that is not there is false and has no children.
class Element
{
public:
    Element() = default;
    explicit Element(pugi::xml_node_struct* node) : node_(node) {}

    explicit operator bool() const { return node_ != nullptr; }
    std::string_view Name() const;
    /// The text between the tags without blanks at its ends.
    std::string_view Text() const;
    /// The text as it is to be shown: on one line, blanks at its end belong to it.
    std::string_view Prose() const;
    /// The attribute's text without blanks at its ends; empty if it is missing.
    std::string_view Attribute(const char* name) const;
    Element FirstChild() const;
    Element Next() const;

private:
    friend class Document;
    pugi::xml_node_struct* node_ = nullptr;
};

/// The XML of a register description. Refuses (RuntimeException with the line) what is not well formed, too long,
/// too deep, or no register description of schema 1.0 or 1.1.
class Document
{
public:
    static constexpr std::size_t maxSize = 16U << 20U;
    static constexpr int maxDepth = 64;

    Document(const void* data, std::size_t size);
    ~Document();

    Element Root() const;
    /// The line in which the element's start tag stands, counted from 1.
    int Line(Element element) const;

private:
    struct Impl;
    std::unique_ptr<Impl> impl_;
};

}  // namespace GenApi

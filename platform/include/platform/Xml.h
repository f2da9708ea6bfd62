// XML trees: small counted nodes that print themselves compactly, and a parser for texts from outside.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "platform/AutoCom.h"

namespace KVXML {

// One element: a name, a text, attributes in the order set, children in the order added. A child may be
// shared by several parents; it must not be changed once it is shared, and a node must never become its own
// descendant.
class INode : public kv::IRefCounted {
public:
    virtual const std::string& GetName() const = 0;
    virtual void SetName(const std::string& name) = 0;

    // The element's character data, printed before its children.
    virtual const std::string& GetText() const = 0;
    virtual void SetText(const std::string& text) = 0;

    // Setting an attribute that is there overwrites it in its place.
    virtual void SetAttribute(const std::string& name, const std::string& value) = 0;
    virtual void SetAttribute(const std::string& name, std::uint32_t value) = 0;
    // "" when absent.
    virtual std::string GetAttribute(const std::string& name) const = 0;
    virtual bool HasAttribute(const std::string& name) const = 0;

    // Adds a reference to `child`.
    virtual void AppendChild(INode& child) = 0;
    virtual std::size_t GetChildCount() const = 0;
    // The child stays owned by this node. `index` must be below GetChildCount().
    virtual INode& GetChild(std::size_t index) const = 0;
    // The first child of that name, owned by this node, or null.
    virtual INode* FindChild(const std::string& name) const = 0;

    // Compact text: no declaration, double quotes, an empty element as an open and a close tag. Texts and
    // attribute values are escaped so that CreateXmlDocument() reads the same values back (zero bytes are
    // left out, and blanks beside children do not come back); names are printed as they are.
    virtual std::string ToText() const = 0;
    virtual void AppendText(std::string& out) const = 0;
    // Makes the text once, now, for an element that will be printed often. From here on neither the element
    // nor anything in it may be changed.
    virtual void Finish() = 0;
};

class IDocument : public kv::IRefCounted {
public:
    // The root element, owned by the document as well.
    virtual kv::auto_com<INode> GetRoot() const = 0;
};

// A new element; never null in this implementation, though callers that must survive a full memory check.
kv::auto_com<INode> CreateXmlNode(const std::string& name = "", const std::string& text = "");

// Limits of a parsed document: what passes them is refused.
inline constexpr std::size_t kMaxDocumentDepth = 64; // elements in one another, the root included
inline constexpr std::size_t kMaxDocumentLength = 16u << 20;
inline constexpr std::size_t kMaxDocumentElements = 1u << 20;
inline constexpr std::size_t kMaxElementAttributes = 256;

// Parses a text. Null when it is not well-formed, has not exactly one root element, or is past the limits
// above. What it gives:
// - An element's text is all its character data and CDATA sections together. Blanks count, except between
//   children; line ends read as one line feed unless written as references.
// - Declarations, comments, processing instructions and document types are skipped. No entity is ever
// expanded
//   but the five of XML and character references; another stands in the text as it was written.
// - An attribute that is there twice has the last value. Bytes that are no UTF-8 are kept as they are.
kv::auto_com<IDocument> CreateXmlDocument(const std::string& text);

} // namespace KVXML

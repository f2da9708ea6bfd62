// XML trees: small counted nodes that print themselves compactly, and a parser for texts from outside.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "platform/AutoCom.h"

namespace KVXML {

// One element: a name, a text, attributes in the order set, children in the order added. A child may be
// shared by several parents; it must not be changed once it is shared, and a node must never become its own
// descendant. A finished element refuses every change with std::logic_error.
//
// Names, texts and values are given as views, which stand until the element is changed or gone.
class INode : public kv::IRefCounted {
public:
    virtual std::string_view GetName() const = 0;
    virtual void SetName(std::string_view name) = 0;

    // The element's character data, printed before its children.
    virtual std::string_view GetText() const = 0;
    virtual void SetText(std::string_view text) = 0;

    // Setting an attribute that is there overwrites it in its place.
    virtual void SetAttribute(std::string_view name, std::string_view value) = 0;
    virtual void SetAttribute(std::string_view name, std::uint32_t value) = 0;
    // "" when absent.
    virtual std::string_view GetAttribute(std::string_view name) const = 0;
    virtual bool HasAttribute(std::string_view name) const = 0;

    // Adds a reference to `child`.
    virtual void AppendChild(INode& child) = 0;
    virtual std::size_t GetChildCount() const = 0;
    // The child stays owned by this node. std::out_of_range past the last one.
    virtual INode& GetChild(std::size_t index) const = 0;
    // The first child of that name, owned by this node, or null.
    virtual INode* FindChild(std::string_view name) const = 0;

    // Compact text: no declaration, double quotes, an empty element as an open and a close tag. Texts and
    // attribute values are escaped so that CreateXmlDocument() reads the same values back (zero bytes are
    // left out, and blanks beside children do not come back); names are printed as they are.
    virtual void AppendText(std::string& out) const = 0;
    std::string ToText() const {
        std::string out;
        AppendText(out);
        return out;
    }
};

class IDocument : public kv::IRefCounted {
public:
    // The root element. It keeps the document, and is finished, as is everything in it.
    virtual kv::auto_com<INode> GetRoot() const = 0;
};

// A new element; never null in this implementation, though callers that must survive a full memory check.
kv::auto_com<INode> CreateXmlNode(std::string_view name = "", std::string_view text = "");

// A finished element. `text` is one whole element as ToText() or a Printer (platform/XmlPrinter.h) makes it. To
// print it is to copy the text; who looks into it pays for parsing it, once. As the first look does that, even
// reading it is for one thread at a time.
kv::auto_com<INode> CreatePrintedNode(std::string text);

// Limits of a parsed document: what passes them is refused.
inline constexpr std::size_t kMaxDocumentDepth = 64; // elements in one another, the root included
inline constexpr std::size_t kMaxDocumentLength = 16u << 20;
inline constexpr std::size_t kMaxDocumentElements = 1u << 20;
inline constexpr std::size_t kMaxElementAttributes = 256;

// Parses a text, which the document then holds. Null when it is not well-formed, has not exactly one root
// element, or is past the limits above. What it gives:
// - An element's text is all its character data and CDATA sections together. Blanks count, except between
//   children; line ends read as one line feed unless written as references.
// - Declarations, comments, processing instructions and document types are skipped. No entity is ever
//   expanded but the five of XML and character references; another stands in the text as it was written.
// - An attribute that is there twice has the last value. Bytes that are no UTF-8 are kept as they are. A
//   text ends at a zero byte.
kv::auto_com<IDocument> CreateXmlDocument(std::string text);

} // namespace KVXML

// A document as it was read: flat arrays, and the nodes that look into them.
#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/AutoCom.h"
#include "platform/Xml.h"
#include "platform/src/XmlText.h"

namespace KVXML {

struct DocumentLimits {
    std::size_t depth; // elements in one another
    std::size_t elements;
    std::size_t attributes; // of an element
};

// Null when `text` is no document, or past the limits.
kv::auto_com<IDocument> ReadDocument(std::string text, const DocumentLimits& limits);

class ParsedDocument;

// An element of a parsed document; who holds it holds the document.
class ParsedNode final : public ReadOnlyNode<INode> {
public:
    ParsedNode(ParsedDocument& document, std::string_view name) : m_document(&document), m_name(name) {}

    void AddRef() override;
    std::int32_t Release() override;

    std::string_view GetName() const override { return m_name; }
    std::string_view GetText() const override { return m_text; }
    std::string_view GetAttribute(std::string_view name) const override {
        const Attribute* found = FindAttribute(Attributes(), name);
        return found ? found->second : std::string_view();
    }
    bool HasAttribute(std::string_view name) const override {
        return FindAttribute(Attributes(), name) != nullptr;
    }
    std::size_t GetChildCount() const override { return m_childCount; }
    INode& GetChild(std::size_t index) const override;
    INode* FindChild(std::string_view name) const override;
    void AppendText(std::string& out) const override;

private:
    friend class Parser;
    friend class ParsedDocument;
    using Attribute = std::pair<std::string_view, std::string_view>;

    std::span<const Attribute> Attributes() const;

    ParsedDocument* m_document;
    std::string_view m_name;
    std::string_view m_text;
    std::uint32_t m_firstAttribute = 0;
    std::uint32_t m_attributeCount = 0;
    std::uint32_t m_firstChild = 0;
    std::uint32_t m_childCount = 0;
};

class ParsedDocument final : public kv::RefCounted<IDocument> {
public:
    explicit ParsedDocument(std::string text) : m_text(std::move(text)) {}
    kv::auto_com<INode> GetRoot() const override {
        return kv::auto_com<INode>::retain(const_cast<ParsedNode*>(&m_nodes.front()));
    }

private:
    friend class ParsedNode;
    friend class Parser;

    std::string m_text;                              // names, texts and values stand in it
    std::deque<std::string> m_joined;                // texts that stood in several pieces
    std::vector<ParsedNode> m_nodes;                 // in the order of their start tags
    std::vector<ParsedNode::Attribute> m_attributes; // those of one element stand together
    std::vector<std::uint32_t> m_children;           // places in m_nodes; those of one parent stand together
};

} // namespace KVXML

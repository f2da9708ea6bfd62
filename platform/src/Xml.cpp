#include "platform/Xml.h"

#include <array>
#include <limits>
#include <utility>
#include <vector>

#include "platform/src/XmlDocument.h"
#include "platform/src/XmlText.h"

namespace KVXML {

namespace {

class Node final : public kv::RefCounted<INode> {
public:
    Node(std::string_view name, std::string_view text) : m_name(name), m_text(text) {}

    std::string_view GetName() const override { return m_name; }
    void SetName(std::string_view name) override { m_name = name; }
    std::string_view GetText() const override { return m_text; }
    void SetText(std::string_view text) override { m_text = text; }

    void SetAttribute(std::string_view name, std::string_view value) override {
        for (auto& [key, old] : m_attributes) {
            if (key == name) {
                old = value;
                return;
            }
        }
        m_attributes.emplace_back(name, value);
    }
    void SetAttribute(std::string_view name, std::uint32_t value) override {
        SetAttribute(name, std::string_view(std::to_string(value)));
    }
    std::string_view GetAttribute(std::string_view name) const override {
        const Attribute* found = FindAttribute(Attributes(), name);
        return found ? found->second : std::string_view();
    }
    bool HasAttribute(std::string_view name) const override {
        return FindAttribute(Attributes(), name) != nullptr;
    }

    void AppendChild(INode& child) override { m_children.push_back(kv::auto_com<INode>::retain(&child)); }
    std::size_t GetChildCount() const override { return m_children.size(); }
    INode& GetChild(std::size_t index) const override { return *m_children.at(index); }
    INode* FindChild(std::string_view name) const override {
        for (const auto& child : m_children) {
            if (child->GetName() == name)
                return child.get();
        }
        return nullptr;
    }

    void AppendText(std::string& out) const override {
        AppendStartTag(out, m_name, Attributes());
        AppendEscaped(out, m_text, false);
        for (const auto& child : m_children)
            child->AppendText(out);
        AppendEndTag(out, m_name);
    }

private:
    using Attribute = std::pair<std::string, std::string>;
    std::span<const Attribute> Attributes() const { return m_attributes; }

    std::string m_name;
    std::string m_text;
    std::vector<Attribute> m_attributes;
    std::vector<kv::auto_com<INode>> m_children;
};

class PrintedNode final : public ReadOnlyNode<kv::RefCounted<INode>> {
public:
    explicit PrintedNode(std::string text) : m_text(std::move(text)) {}

    std::string_view GetName() const override { return Tree().GetName(); }
    std::string_view GetText() const override { return Tree().GetText(); }
    std::string_view GetAttribute(std::string_view name) const override { return Tree().GetAttribute(name); }
    bool HasAttribute(std::string_view name) const override { return Tree().HasAttribute(name); }
    std::size_t GetChildCount() const override { return Tree().GetChildCount(); }
    INode& GetChild(std::size_t index) const override { return Tree().GetChild(index); }
    INode* FindChild(std::string_view name) const override { return Tree().FindChild(name); }
    void AppendText(std::string& out) const override { out += m_text; }

private:
    const INode& Tree() const {
        if (!m_tree) {
            constexpr std::size_t kAny = std::numeric_limits<std::size_t>::max();
            const auto document = ReadDocument(m_text, {kAny, kAny, kAny});
            m_tree = document ? document->GetRoot() : CreateXmlNode();
        }
        return *m_tree;
    }

    const std::string m_text;
    mutable kv::auto_com<INode> m_tree; // read when somebody looks into it
};

constexpr unsigned char kEscapedInAttributes = 1;
constexpr unsigned char kEscapedInTexts = 2;

// Where a character must be written as a reference, or left out.
constexpr std::array<unsigned char, 256> kReferences = [] {
    std::array<unsigned char, 256> where{};
    for (unsigned char c = 0; c < 32; ++c)
        where[c] = c == '\n' || c == '\t' ? kEscapedInAttributes : kEscapedInAttributes | kEscapedInTexts;
    for (const char8_t c : {u8'&', u8'<', u8'>'})
        where[c] = kEscapedInAttributes | kEscapedInTexts;
    where['"'] = kEscapedInAttributes;
    return where;
}();

} // namespace

void AppendEscaped(std::string& out, std::string_view text, bool attribute) {
    const unsigned char here = attribute ? kEscapedInAttributes : kEscapedInTexts;
    std::size_t plain = 0; // from here to the present character all stand for themselves
    for (std::size_t i = 0; i < text.size(); ++i) {
        const auto byte = static_cast<unsigned char>(text[i]);
        if ((kReferences[byte] & here) == 0)
            continue;
        out.append(text, plain, i - plain);
        plain = i + 1;
        if (byte == '&')
            out += "&amp;";
        else if (byte == '<')
            out += "&lt;";
        else if (byte == '>')
            out += "&gt;";
        else if (byte == '"')
            out += "&quot;";
        else if (byte != 0)
            out.append("&#").append(std::to_string(byte)).append(1, ';');
    }
    out.append(text, plain);
}

kv::auto_com<INode> CreateXmlNode(std::string_view name, std::string_view text) {
    return kv::auto_com<INode>::adopt(new Node(name, text));
}

kv::auto_com<INode> CreatePrintedNode(std::string text) {
    return kv::auto_com<INode>::adopt(new PrintedNode(std::move(text)));
}

} // namespace KVXML

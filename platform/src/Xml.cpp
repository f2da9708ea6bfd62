#include "platform/Xml.h"

#include <memory>
#include <pugixml.hpp>
#include <utility>
#include <vector>

namespace KVXML {

namespace {

// Appends `text` with what would not read back as itself as references. In attributes that includes quotes
// and every control character; in text, line feeds and tabs stand as they are. A zero byte is left out: no
// document can carry one, and readers would take it for the end of the text.
void AppendEscaped(std::string& out, const std::string& text, bool attribute) {
    std::size_t plain = 0; // from here to the present character all stand for themselves
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char c = text[i];
        const auto byte = static_cast<unsigned char>(c);
        const bool reference = c == '&' || c == '<' || c == '>' || (c == '"' && attribute) ||
                               (byte < 32 && (attribute || (c != '\n' && c != '\t')));
        if (!reference)
            continue;
        out.append(text, plain, i - plain);
        plain = i + 1;
        if (c == '&')
            out += "&amp;";
        else if (c == '<')
            out += "&lt;";
        else if (c == '>')
            out += "&gt;";
        else if (c == '"')
            out += "&quot;";
        else if (byte != 0)
            out.append("&#").append(std::to_string(byte)).append(";");
    }
    out.append(text, plain);
}

class Node final : public kv::RefCounted<INode> {
public:
    Node(const std::string& name, const std::string& text) : m_name(name), m_text(text) {}

    const std::string& GetName() const override { return m_name; }
    void SetName(const std::string& name) override { m_name = name; }
    const std::string& GetText() const override { return m_text; }
    void SetText(const std::string& text) override { m_text = text; }

    void SetAttribute(const std::string& name, const std::string& value) override {
        for (auto& [key, old] : m_attributes) {
            if (key == name) {
                old = value;
                return;
            }
        }
        if (m_attributes.empty())
            m_attributes.reserve(kUsualAttributes);
        m_attributes.emplace_back(name, value);
    }
    void SetAttribute(const std::string& name, std::uint32_t value) override {
        SetAttribute(name, std::to_string(value));
    }
    std::string GetAttribute(const std::string& name) const override {
        for (const auto& [key, value] : m_attributes) {
            if (key == name)
                return value;
        }
        return "";
    }
    bool HasAttribute(const std::string& name) const override {
        for (const auto& attribute : m_attributes) {
            if (attribute.first == name)
                return true;
        }
        return false;
    }

    void AppendChild(INode& child) override { m_children.push_back(kv::auto_com<INode>::retain(&child)); }
    std::size_t GetChildCount() const override { return m_children.size(); }
    INode& GetChild(std::size_t index) const override { return *m_children.at(index); }
    INode* FindChild(const std::string& name) const override {
        for (const auto& child : m_children) {
            if (child->GetName() == name)
                return child.get();
        }
        return nullptr;
    }

    void Finish() override { m_finished = std::make_unique<const std::string>(Node::ToText()); }

    std::string ToText() const override {
        std::string out;
        Node::AppendText(out);
        return out;
    }
    void AppendText(std::string& out) const override {
        if (m_finished) {
            out += *m_finished;
            return;
        }
        out.append(1, '<').append(m_name);
        for (const auto& [name, value] : m_attributes) {
            out.append(1, ' ').append(name).append("=\"");
            AppendEscaped(out, value, true);
            out += '"';
        }
        out += '>';
        AppendEscaped(out, m_text, false);
        for (const auto& child : m_children)
            child->AppendText(out);
        out.append("</").append(m_name).append(1, '>');
    }

private:
    static constexpr std::size_t kUsualAttributes = 2;

    std::string m_name;
    std::string m_text;
    std::vector<std::pair<std::string, std::string>> m_attributes;
    std::vector<kv::auto_com<INode>> m_children;
    std::unique_ptr<const std::string> m_finished; // the element's text, once it is finished
};

class Document final : public kv::RefCounted<IDocument> {
public:
    explicit Document(kv::auto_com<INode> root) : m_root(std::move(root)) {}
    kv::auto_com<INode> GetRoot() const override { return m_root; }

private:
    kv::auto_com<INode> m_root;
};

bool IsText(const pugi::xml_node& node) {
    return node.type() == pugi::node_pcdata || node.type() == pugi::node_cdata;
}

// Copies a parsed tree within the limits of a document.
class TreeBuilder {
public:
    // Null when a limit is passed.
    kv::auto_com<INode> Build(const pugi::xml_node& element, std::size_t depthLeft) {
        if (depthLeft == 0 || m_elementsLeft == 0)
            return nullptr;
        --m_elementsLeft;
        auto node = CreateXmlNode(element.name());
        std::size_t attributes = 0;
        for (const auto& attribute : element.attributes()) {
            if (++attributes > kMaxElementAttributes)
                return nullptr;
            node->SetAttribute(attribute.name(), attribute.value());
        }
        std::string text;
        for (const auto& child : element.children()) {
            if (IsText(child)) {
                text += child.value();
            } else if (child.type() == pugi::node_element) {
                const auto built = Build(child, depthLeft - 1);
                if (!built)
                    return nullptr;
                node->AppendChild(*built);
            }
        }
        node->SetText(text);
        return node;
    }

private:
    std::size_t m_elementsLeft = kMaxDocumentElements;
};

// The root element; null when there is none, or more than one, or text beside it.
pugi::xml_node FindRoot(const pugi::xml_document& parsed) {
    pugi::xml_node root;
    for (const auto& node : parsed.children()) {
        if (IsText(node) || (root && node.type() == pugi::node_element))
            return {};
        if (node.type() == pugi::node_element)
            root = node;
    }
    return root;
}

} // namespace

kv::auto_com<INode> CreateXmlNode(const std::string& name, const std::string& text) {
    return kv::auto_com<INode>::adopt(new Node(name, text));
}

kv::auto_com<IDocument> CreateXmlDocument(const std::string& text) {
    if (text.size() > kMaxDocumentLength)
        return nullptr;
    // A text of blanks alone is a value like any other, but not when it only indents children. Text beside
    // the root is read so that it can be refused.
    constexpr unsigned int kOptions =
        pugi::parse_default | pugi::parse_ws_pcdata_single | pugi::parse_fragment;
    pugi::xml_document parsed;
    if (!parsed.load_buffer(text.data(), text.size(), kOptions, pugi::encoding_utf8))
        return nullptr;
    const auto element = FindRoot(parsed);
    if (!element)
        return nullptr;
    auto root = TreeBuilder().Build(element, kMaxDocumentDepth);
    if (!root)
        return nullptr;
    return kv::auto_com<IDocument>::adopt(new Document(std::move(root)));
}

} // namespace KVXML

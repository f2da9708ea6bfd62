#include "platform/src/XmlDocument.h"

namespace KVXML {

void ParsedNode::AddRef() {
    m_document->AddRef();
}
std::int32_t ParsedNode::Release() {
    return m_document->Release();
}

std::span<const ParsedNode::Attribute> ParsedNode::Attributes() const {
    return {m_document->m_attributes.data() + m_firstAttribute, m_attributeCount};
}

INode& ParsedNode::GetChild(std::size_t index) const {
    if (index >= m_childCount)
        throw std::out_of_range("no such child");
    return m_document->m_nodes[m_document->m_children[m_firstChild + index]];
}

INode* ParsedNode::FindChild(std::string_view name) const {
    for (std::size_t i = 0; i < m_childCount; ++i) {
        INode& child = ParsedNode::GetChild(i);
        if (child.GetName() == name)
            return &child;
    }
    return nullptr;
}

void ParsedNode::AppendText(std::string& out) const {
    AppendStartTag(out, m_name, Attributes());
    AppendEscaped(out, m_text, false);
    for (std::size_t i = 0; i < m_childCount; ++i)
        ParsedNode::GetChild(i).AppendText(out);
    AppendEndTag(out, m_name);
}

} // namespace KVXML

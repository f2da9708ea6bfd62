#include "platform/XmlHelper.h"

#include <boost/algorithm/string/case_conv.hpp>

#include "platform/Text.h"

using KVXML::INode;

kv::auto_com<INode> XmlHelper::AddChild(INode& parent, std::string_view tag, std::string_view text) {
    auto child = KVXML::CreateXmlNode(tag, text);
    parent.AppendChild(*child);
    return child;
}

void XmlHelper::toXml(std::uint32_t value, INode& parent, std::string_view tag) {
    AddChild(parent, tag, std::to_string(value));
}

void XmlHelper::toXml(bool value, INode& parent, std::string_view tag) {
    AddChild(parent, tag, kv::ToString(value));
}

void XmlHelper::toXml(std::string_view value, INode& parent, std::string_view tag) {
    AddChild(parent, tag, value);
}

void XmlHelper::toXml(const char* value, INode& parent, std::string_view tag) {
    AddChild(parent, tag, value);
}

bool XmlHelper::fromXml(const INode& parent, std::string_view tag, std::uint32_t& value) {
    const INode* child = parent.FindChild(tag);
    if (child)
        value = kv::ToULong(child->GetText());
    return child != nullptr;
}

bool XmlHelper::fromXml(const INode& parent, std::string_view tag, std::string& value) {
    const INode* child = parent.FindChild(tag);
    if (child)
        value = child->GetText();
    return child != nullptr;
}

void XmlHelper::fromXml(const INode& parent, std::vector<std::uint32_t>& values) {
    for (std::size_t i = 0; i < parent.GetChildCount(); ++i)
        values.push_back(kv::ToULong(parent.GetChild(i).GetText()));
}

bool XmlHelper::GetBool(const INode& node, std::string_view name) {
    std::string value(node.GetAttribute(name));
    if (!node.HasAttribute(name))
        fromXml(node, name, value);
    return boost::algorithm::to_lower_copy(value) == kv::TRUE_STRING;
}

// What the platform's kinds of nodes have in common: how they print, and how they are searched.
#pragma once

#include <span>
#include <stdexcept>
#include <string>
#include <string_view>

#include "platform/Xml.h"

namespace KVXML {

// Appends `text` with what would not read back as itself as references. In attributes that includes quotes
// and every control character; in text, line feeds and tabs stand as they are. A zero byte is left out: no
// document can carry one, and readers would take it for the end of the text.
void AppendEscaped(std::string& out, std::string_view text, bool attribute);

// The first of `attributes`, pairs of name and value, with that name; null when there is none.
template <class Attribute>
const Attribute* FindAttribute(std::span<const Attribute> attributes, std::string_view name) {
    for (const Attribute& attribute : attributes) {
        if (attribute.first == name)
            return &attribute;
    }
    return nullptr;
}

template <class Attribute>
void AppendStartTag(std::string& out, std::string_view name, std::span<const Attribute> attributes) {
    out.append(1, '<').append(name);
    for (const auto& [key, value] : attributes) {
        out.append(1, ' ').append(key).append("=\"");
        AppendEscaped(out, value, true);
        out += '"';
    }
    out += '>';
}

inline void AppendEndTag(std::string& out, std::string_view name) {
    out.append("</").append(name).append(1, '>');
}

// A node whose own parts are not changed; one that takes children overrides AppendChild().
template <class Counted>
class ReadOnlyNode : public Counted {
public:
    void SetName(std::string_view) override { Refuse(); }
    void SetText(std::string_view) override { Refuse(); }
    void SetAttribute(std::string_view, std::string_view) override { Refuse(); }
    void SetAttribute(std::string_view, std::uint32_t) override { Refuse(); }
    void AppendChild(INode&) override { Refuse(); }

private:
    [[noreturn]] static void Refuse() { throw std::logic_error("a finished element cannot be changed"); }
};

} // namespace KVXML

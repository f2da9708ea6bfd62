// Reading a document: one pass over its text, in which names, texts and values then stand.
#include <algorithm>
#include <cstring>
#include <iterator>
#include <utility>

#include "platform/src/XmlCharacters.h"
#include "platform/src/XmlDocument.h"

namespace KVXML {

// Takes what pugixml 1.13 takes, as the documents of the field were written for it.
class Parser {
public:
    Parser(ParsedDocument& document, const DocumentLimits& limits)
        : m_document(document), m_limits(limits), m_at(document.m_text.data()) {}

    // False when the text is no document, or past the limits. The text ends at a zero byte.
    bool Run();

private:
    struct OpenElement {
        std::uint32_t node;
        bool hasContent = false;
        std::string* joined = nullptr; // its text, when that stands in several pieces
    };

    bool ReadMarkup();
    bool ReadStartTag();
    bool ReadAttributes(ParsedNode& node);
    bool ReadValue(std::string_view& value);
    bool ReadEndTag();
    void ListChildren();
    bool ReadExclamation();
    bool ReadCdata();
    bool ReadCharacterData();
    void AddText(std::string_view piece);
    bool SkipDoctype();
    bool SkipIgnoredSection();

    std::string_view ReadName();
    template <class Map>
    std::string_view ReadCharacters(unsigned char kind, char stop, Map map);
    char* TakeReference(char* out);
    bool Take(const char* word);
    bool SkipPast(const char* end);
    void SkipBlanks() { m_at = Skip(m_at, kBlank); }

    ParsedDocument& m_document;
    const DocumentLimits m_limits;
    char* m_at;
    std::vector<OpenElement> m_open;
    std::vector<std::uint32_t> m_parents; // of the nodes
};

bool Parser::Run() {
    Take("\xEF\xBB\xBF");
    while (*m_at != 0) {
        if (!(*m_at == '<' ? ReadMarkup() : ReadCharacterData()))
            return false;
    }
    if (!m_open.empty() || m_document.m_nodes.empty())
        return false;
    ListChildren();
    return true;
}

bool Parser::Take(const char* word) {
    const std::size_t length = std::strlen(word);
    if (std::strncmp(m_at, word, length) != 0)
        return false;
    m_at += length;
    return true;
}

bool Parser::SkipPast(const char* end) {
    char* found = std::strstr(m_at, end);
    if (found)
        m_at = found + std::strlen(end);
    return found != nullptr;
}

std::string_view Parser::ReadName() {
    char* const begin = m_at;
    m_at = Skip(begin, kName);
    return {begin, static_cast<std::size_t>(m_at - begin)};
}

// Up to `stop`, or to the end of the document. A reference is longer than what it stands for, so the text is
// written over itself; the characters of `kind` before the first that changes stay where they are.
template <class Map>
std::string_view Parser::ReadCharacters(unsigned char kind, char stop, Map map) {
    const char* const begin = m_at;
    m_at = Skip(m_at, kind);
    char* out = m_at;
    while (*m_at != stop && *m_at != 0) {
        if (*m_at == '&') {
            out = TakeReference(out);
            continue;
        }
        const char c = *m_at++;
        if (c == '\r' && *m_at == '\n')
            ++m_at;
        *out++ = map(c);
    }
    return UpToZero({begin, static_cast<std::size_t>(out - begin)});
}

bool Parser::ReadMarkup() {
    ++m_at;
    if (Is(*m_at, kNameStart))
        return ReadStartTag();
    switch (*m_at++) {
        case '/':
            return ReadEndTag();
        case '?': // the declaration, or an instruction to others
            return Is(*m_at, kNameStart) && SkipPast("?>");
        case '!':
            return ReadExclamation();
        default:
            return false;
    }
}

bool Parser::ReadStartTag() {
    auto& nodes = m_document.m_nodes;
    const auto place = static_cast<std::uint32_t>(nodes.size());
    if (m_open.size() == m_limits.depth || place == m_limits.elements)
        return false;
    if (!m_open.empty()) {
        m_open.back().hasContent = true;
        m_parents.push_back(m_open.back().node);
        ++nodes[m_open.back().node].m_childCount;
    } else if (place != 0) {
        return false; // a second root
    }
    ParsedNode& node = nodes.emplace_back(m_document, ReadName());
    if (Is(*m_at, kBlank) && !ReadAttributes(node))
        return false;
    const bool empty = *m_at == '/';
    if (empty)
        ++m_at;
    else
        m_open.push_back({place});
    return *m_at++ == '>';
}

bool Parser::ReadAttributes(ParsedNode& node) {
    auto& attributes = m_document.m_attributes;
    const std::size_t first = attributes.size();
    SkipBlanks();
    for (std::size_t count = 1; Is(*m_at, kNameStart); ++count) {
        const std::string_view name = ReadName();
        std::string_view value;
        if (count > m_limits.attributes || !ReadValue(value))
            return false;
        std::size_t known = first;
        while (known < attributes.size() && attributes[known].first != name)
            ++known;
        if (known == attributes.size())
            attributes.emplace_back(name, value);
        else
            attributes[known].second = value;
        if (Is(*m_at, kNameStart)) // nothing between two attributes
            return false;
        SkipBlanks();
    }
    node.m_firstAttribute = static_cast<std::uint32_t>(first);
    node.m_attributeCount = static_cast<std::uint32_t>(attributes.size() - first);
    return true;
}

bool Parser::ReadValue(std::string_view& value) {
    SkipBlanks();
    if (*m_at++ != '=')
        return false;
    SkipBlanks();
    const char quote = *m_at;
    if (quote != '"' && quote != '\'')
        return false;
    ++m_at;
    value = ReadCharacters(kInValue, quote, [](char c) { return Is(c, kBlank) ? ' ' : c; });
    return *m_at++ == quote;
}

bool Parser::ReadEndTag() {
    if (m_open.empty() || ReadName() != m_document.m_nodes[m_open.back().node].m_name)
        return false;
    m_open.pop_back();
    SkipBlanks();
    return *m_at++ == '>';
}

// Each node knows how many children it has, and each but the root its parent.
void Parser::ListChildren() {
    auto& nodes = m_document.m_nodes;
    auto& children = m_document.m_children;
    children.resize(m_parents.size());
    std::uint32_t end = 0;
    for (ParsedNode& node : nodes) {
        node.m_firstChild = end;
        end += std::exchange(node.m_childCount, 0);
    }
    for (std::uint32_t i = 0; i < m_parents.size(); ++i) {
        ParsedNode& parent = nodes[m_parents[i]];
        children[parent.m_firstChild + parent.m_childCount++] = i + 1;
    }
}

bool Parser::ReadExclamation() {
    if (Take("--"))
        return SkipPast("-->");
    if (Take("[CDATA["))
        return !m_open.empty() && ReadCdata();
    return m_open.empty() && Take("DOCTYPE") && SkipDoctype();
}

bool Parser::ReadCdata() {
    char* begin = m_at;
    if (!SkipPast("]]>"))
        return false;
    char* out = begin;
    for (const char* at = begin; at != m_at - 3; ++at) {
        if (*at != '\r')
            *out++ = *at;
        else if (at[1] != '\n')
            *out++ = '\n';
    }
    AddText({begin, static_cast<std::size_t>(out - begin)});
    return true;
}

bool Parser::ReadCharacterData() {
    char* begin = m_at;
    SkipBlanks();
    if (*m_at == '<' || *m_at == 0) {
        // Blanks are the value of an element that has no other; elsewhere they only indent.
        if (m_open.empty() || m_open.back().hasContent || m_at[0] != '<' || m_at[1] != '/')
            return true;
    } else if (m_open.empty()) {
        return false;
    }
    m_at = begin;
    AddText(ReadCharacters(kInText, '<', [](char c) { return c == '\r' ? '\n' : c; }));
    return true;
}

void Parser::AddText(std::string_view piece) {
    OpenElement& open = m_open.back();
    open.hasContent = true;
    std::string_view& text = m_document.m_nodes[open.node].m_text;
    if (text.empty()) {
        text = piece;
        return;
    }
    if (!open.joined)
        open.joined = &m_document.m_joined.emplace_back(text);
    text = open.joined->append(piece);
}

// Writes the character that is referred to, in UTF-8, and returns the place behind it. What is no reference
// that can be resolved stays as it is.
char* Parser::TakeReference(char* out) {
    static constexpr std::pair<const char*, char> kNamed[] = {
        {"&amp;", '&'}, {"&lt;", '<'}, {"&gt;", '>'}, {"&quot;", '"'}, {"&apos;", '\''}};
    for (const auto& [word, character] : kNamed) {
        if (Take(word)) {
            *out++ = character;
            return out;
        }
    }
    std::uint32_t code = 0; // wraps
    const char* end = ReadCode(m_at, code);
    if (!end) {
        *out++ = *m_at++;
        return out;
    }
    m_at += end - m_at;
    return AppendUtf8(out, code);
}

// Declarations within are read over as nested groups, strings, comments and instructions.
bool Parser::SkipDoctype() {
    static constexpr std::pair<const char*, const char*> kPassages[] = {
        {"<!--", "-->"}, {"<?", "?>"}, {"\"", "\""}, {"'", "'"}};
    std::size_t depth = 0;
    while (*m_at != 0) {
        const auto* passage = std::find_if(std::begin(kPassages), std::end(kPassages),
                                           [this](const auto& each) { return Take(each.first); });
        if (passage != std::end(kPassages)) {
            if (!SkipPast(passage->second))
                return false;
        } else if (Take("<![")) {
            if (!SkipIgnoredSection())
                return false;
        } else if (*m_at == '<') {
            if (m_at[1] != '!' || m_at[2] == '-')
                return false;
            ++depth;
            m_at += 2;
        } else if (*m_at++ == '>') {
            if (depth == 0)
                return true;
            --depth;
        }
    }
    return false;
}

bool Parser::SkipIgnoredSection() {
    for (std::size_t depth = 1; *m_at != 0;) {
        if (Take("<!["))
            ++depth;
        else if (!Take("]]>"))
            ++m_at;
        else if (--depth == 0)
            return true;
    }
    return false;
}

kv::auto_com<IDocument> ReadDocument(std::string text, const DocumentLimits& limits) {
    auto document = kv::auto_com<ParsedDocument>::adopt(new ParsedDocument(std::move(text)));
    return Parser(*document, limits).Run() ? document : nullptr;
}

kv::auto_com<IDocument> CreateXmlDocument(std::string text) {
    if (text.size() > kMaxDocumentLength)
        return nullptr;
    return ReadDocument(std::move(text), {kMaxDocumentDepth, kMaxDocumentElements, kMaxElementAttributes});
}

} // namespace KVXML

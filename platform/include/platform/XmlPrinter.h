// Printing elements straight into a text, for documents that are made often and that others read.
#pragma once

#include <algorithm>
#include <charconv>
#include <concepts>
#include <cstddef>
#include <limits>
#include <string>
#include <string_view>
#include <utility>

#include "platform/Xml.h"

namespace KVXML {

// Prints one element after the other, as INode::ToText() prints them:
//
//     printer.Element("queue", [&] {
//         printer.Attribute("id", 7u);
//         printer.Value("name", "Attic");
//     });                                 <queue id="7"><name>Attic</name></queue>
//
// An element's attributes come before everything else in it. They are printed as they come: who gives a name
// twice prints it twice. Names are printed as they are, texts and values escaped.
class Printer {
public:
    // Makes room for a long text, which would otherwise be moved as it grows.
    void Reserve(std::size_t size) { m_text.reserve(size); }

    // Calls `content`, which prints what is in the element. When that throws, the element stays open and what
    // was printed is of no use.
    template <std::invocable Content>
    void Element(std::string_view name, Content&& content) {
        EndStartTag();
        Put('<', name);
        m_inStartTag = true;
        content();
        EndStartTag();
        Put('<', '/', name, '>');
    }

    // An element that holds a text alone; numbers in decimal.
    void Value(std::string_view name, std::string_view text) {
        Element(name, [&] { Text(text); });
    }
    template <std::integral Number>
    void Value(std::string_view name, Number number) {
        Element(name, [&] { Finished(Digits(number)); });
    }

    void Attribute(std::string_view name, std::string_view value);
    template <std::integral Number>
    void Attribute(std::string_view name, Number value) {
        Put(' ', name, '=', '"', std::string_view(Digits(value)), '"');
    }

    // Character data.
    void Text(std::string_view text);

    // What is printed already.
    void Finished(std::string_view elements) {
        EndStartTag();
        m_text += elements;
    }
    void Finished(const INode& element) {
        EndStartTag();
        element.AppendText(m_text);
    }

    // What was printed so far. The printer is empty after Take().
    const std::string& GetText() const { return m_text; }
    std::string Take() { return std::exchange(m_text, {}); }

private:
    // A number's digits, which stand as long as the expression that they are used in.
    template <std::integral Number>
    class Digits {
    public:
        explicit Digits(Number number)
            : m_end(std::to_chars(m_digits, m_digits + sizeof m_digits, number).ptr) {}
        operator std::string_view() const { return {m_digits, m_end}; } // NOLINT(google-explicit-constructor)

    private:
        char m_digits[std::numeric_limits<Number>::digits10 + 2];
        const char* m_end;
    };

    // Appends characters and texts, for all of which the text grows once.
    template <class... Parts>
    void Put(const Parts&... parts) {
        const std::size_t size = m_text.size();
        m_text.resize(size + (SizeOf(parts) + ...));
        char* at = m_text.data() + size;
        ((at = Copy(parts, at)), ...);
    }
    static std::size_t SizeOf(char) { return 1; }
    static std::size_t SizeOf(std::string_view text) { return text.size(); }
    static char* Copy(char c, char* at) {
        *at = c;
        return at + 1;
    }
    static char* Copy(std::string_view text, char* at) { return std::copy(text.begin(), text.end(), at); }

    void EndStartTag() {
        if (m_inStartTag)
            m_text += '>';
        m_inStartTag = false;
    }

    std::string m_text;
    bool m_inStartTag = false;
};

} // namespace KVXML

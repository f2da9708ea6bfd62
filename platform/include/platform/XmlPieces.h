// Texts of many elements that are kept from one time to the next, so that a change costs what it changed.
#pragma once

#include <concepts>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "platform/Xml.h"
#include "platform/XmlPrinter.h"

namespace KVXML {

// Printed elements one behind the other: one text, of which each piece can be exchanged and taken out. Holds
// little more than the text and four bytes for each piece, so that the text must stay below 4 GiB. An index is
// below GetCount(), a number of pieces that are there at most GetCount().
class Pieces {
public:
    std::size_t GetCount() const { return m_ends.size(); }
    // The first `count` pieces.
    std::string_view GetText(std::size_t count) const { return {m_text.data(), Begin(count)}; }
    const std::string& GetText() const { return m_text; }

    // Appends `count` pieces. `print` is called for each with a Printer and the piece's index among all.
    template <std::invocable<Printer&, std::size_t> Print>
    void Append(std::size_t count, Print print) {
        Printer printer;
        printer.Reserve(count * kUsualSize);
        std::vector<std::uint32_t> ends;
        ends.reserve(count);
        for (std::size_t i = 0; i < count; ++i) {
            print(printer, GetCount() + i);
            ends.push_back(static_cast<std::uint32_t>(printer.GetText().size()));
        }
        Append(printer.GetText(), ends);
    }
    void Replace(std::size_t index, std::string_view piece);
    void Remove(std::size_t index);
    // Takes out all but the first `count` pieces.
    void Truncate(std::size_t count);

private:
    // Of a piece, in characters: room made for many at once, which would otherwise be moved as they grow.
    static constexpr std::size_t kUsualSize = 40;

    std::size_t Begin(std::size_t index) const { return index == 0 ? 0 : m_ends[index - 1]; }
    void Append(std::string_view text, const std::vector<std::uint32_t>& ends);

    std::string m_text;
    std::vector<std::uint32_t> m_ends;
};

// An element that is filled again and again, mostly with the same children: it keeps its text, and prints
// again only what is in another place than last time. Its children must not change any more. It has neither a
// text nor attributes of its own, its name stays (to set one of them throws std::logic_error), and it holds the
// children of last time until others take their places.
class IAssembly : public INode {
public:
    // Starts over: the element has no children until they are appended.
    virtual void Restart() = 0;
};

kv::auto_com<IAssembly> CreateAssembly(std::string_view name);

} // namespace KVXML

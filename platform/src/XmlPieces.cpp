#include "platform/XmlPieces.h"

#include <algorithm>

#include "platform/src/XmlText.h"

namespace KVXML {

namespace {

// As much as `size` and a sixteenth; the containers would take twice as much.
std::size_t WithRoomToGrow(std::size_t size) {
    return size + size / 16;
}

class Assembly final : public ReadOnlyNode<kv::RefCounted<IAssembly>> {
public:
    explicit Assembly(std::string_view name) : m_name(name) {}

    void Restart() override { m_count = 0; }

    void AppendChild(INode& child) override {
        if (m_count == m_children.size()) {
            m_pieces.Truncate(m_count); // what a child left that was printed but not taken in
            m_pieces.Append(1, [&](Printer& printer, std::size_t) { printer.Finished(child); });
            m_children.push_back(kv::auto_com<INode>::retain(&child));
        } else if (m_children[m_count].get() != &child) {
            m_pieces.Replace(m_count, child.ToText());
            m_children[m_count] = kv::auto_com<INode>::retain(&child);
        }
        ++m_count;
    }

    std::string_view GetName() const override { return m_name; }
    std::string_view GetText() const override { return {}; }
    std::string_view GetAttribute(std::string_view) const override { return {}; }
    bool HasAttribute(std::string_view) const override { return false; }
    std::size_t GetChildCount() const override { return m_count; }
    INode& GetChild(std::size_t index) const override {
        if (index >= m_count)
            throw std::out_of_range("no such child");
        return *m_children[index];
    }
    INode* FindChild(std::string_view name) const override {
        const auto end = m_children.begin() + static_cast<std::ptrdiff_t>(m_count);
        const auto found = std::find_if(m_children.begin(), end,
                                        [&](const auto& child) { return child->GetName() == name; });
        return found == end ? nullptr : found->get();
    }
    void AppendText(std::string& out) const override {
        const std::string_view text = m_pieces.GetText(m_count);
        out.reserve(out.size() + text.size() + 2 * m_name.size() + sizeof "<></>");
        out.append(1, '<').append(m_name).append(1, '>').append(text);
        AppendEndTag(out, m_name);
    }

private:
    const std::string m_name;
    std::size_t m_count = 0; // of the children that were appended since the start
    std::vector<kv::auto_com<INode>> m_children;
    Pieces m_pieces; // the children's texts, each changed with its child
};

} // namespace

void Pieces::Append(std::string_view text, const std::vector<std::uint32_t>& ends) {
    const std::size_t size = m_text.size() + text.size();
    if (size > m_text.capacity()) {
        std::string roomier;
        roomier.reserve(WithRoomToGrow(size));
        m_text.swap(roomier.append(m_text));
    }
    if (m_ends.size() + ends.size() > m_ends.capacity())
        m_ends.reserve(WithRoomToGrow(m_ends.size() + ends.size()));
    for (const std::uint32_t end : ends)
        m_ends.push_back(static_cast<std::uint32_t>(m_text.size()) + end);
    m_text += text;
}

void Pieces::Replace(std::size_t index, std::string_view piece) {
    const std::size_t begin = Begin(index);
    const std::size_t size = m_ends[index] - begin;
    m_text.replace(begin, size, piece);
    for (std::size_t i = index; i < m_ends.size(); ++i)
        m_ends[i] += static_cast<std::uint32_t>(piece.size() - size);
}

void Pieces::Remove(std::size_t index) {
    Replace(index, {});
    m_ends.erase(m_ends.begin() + static_cast<std::ptrdiff_t>(index));
}

void Pieces::Truncate(std::size_t count) {
    m_text.resize(Begin(count));
    m_ends.resize(count);
}

kv::auto_com<IAssembly> CreateAssembly(std::string_view name) {
    return kv::auto_com<IAssembly>::adopt(new Assembly(name));
}

} // namespace KVXML

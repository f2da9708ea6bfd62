#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "platform/XmlPieces.h"
#include "queue/AudioMedia.h"

// The media of a queue in the order in which they were added: read as it is, changed by its operations alone.
//
// The list keeps its items' text for the documents. An item that was added is printed when the text is asked
// for next, and its text leaves with it. Where several equal items leave, the texts behind the first of them go,
// too. Every text goes when the list is replaced, when a stream tells what it plays, and when the text is
// asked for in the other mode.
class MediaList {
public:
    const std::vector<AudioMedia>& operator*() const { return m_items; }
    const std::vector<AudioMedia>* operator->() const { return &m_items; }
    // Equal revisions are equal lists.
    std::uint32_t GetRevision() const { return m_revision; }

    // Makes room for `count` more items, and in a list that has some already for a sixteenth beyond them: the
    // next few then move nothing, and a long list does not take twice its memory.
    void MakeRoom(std::size_t count);
    // `item` may be one of the list, `items` the list itself.
    void Add(const AudioMedia& item);
    // Removes every item equal to `item`.
    void Remove(const AudioMedia& item);
    void Replace(const std::vector<AudioMedia>& items);
    // What the first item, which must be there, is playing.
    void SetMetaData(const std::string& text);

    // A "song" element for each item. With `internetRadio` all show that as their source.
    const std::string& GetText(bool internetRadio) const;
    // How many items are of none of the types that can be listed.
    std::size_t CountUnlisted() const { return m_unlisted; }

private:
    std::vector<AudioMedia> m_items;
    std::uint32_t m_revision = 0;
    std::size_t m_unlisted = 0;
    // Filled when they are asked for.
    mutable KVXML::Pieces m_texts; // of the first items, all in the same mode
    mutable bool m_shownAsRadio = false;
};

// Queues of few words: a letter is a song.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "house/Entry.h"

namespace korvel::controller {

inline std::vector<MediaRef> Songs(std::string_view letters) {
    std::vector<MediaRef> songs;
    for (const char letter : letters)
        songs.push_back({MediaKind::Song, std::string(1, letter)});
    return songs;
}

// With the ids 1, 2, 3 and so on; a capital letter is a song that cannot be played.
inline Entries Queue(std::string_view letters) {
    Entries entries;
    for (const char letter : letters) {
        Entry entry{static_cast<EntryId>(entries.size() + 1), {MediaKind::Song, std::string(1, letter)}, {}};
        if (letter >= 'A' && letter <= 'Z')
            entry.unplayable = Problem{"unplayable", "it is broken"};
        entries.push_back(std::move(entry));
    }
    return entries;
}

// "1:a 2:b" for what Queue("ab") gives.
inline std::string Text(const Entries& entries) {
    std::string text;
    for (const Entry& entry : entries) {
        if (!text.empty())
            text += ' ';
        text += std::to_string(static_cast<std::uint64_t>(entry.id));
        text += ':';
        text += entry.media.id;
    }
    return text;
}

} // namespace korvel::controller

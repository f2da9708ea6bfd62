#include "house/Follow.h"

#include <algorithm>
#include <deque>
#include <map>
#include <optional>
#include <string_view>
#include <utility>

namespace korvel::controller {

namespace {

using Places = std::vector<const Entry*>;

Places Playable(const Entries& entries) {
    Places places;
    for (const Entry& entry : entries)
        if (!entry.unplayable)
            places.push_back(&entry);
    return places;
}

std::size_t EqualFront(const Places& old, std::span<const MediaRef> media) {
    const auto [end, mediaEnd] =
        std::mismatch(old.begin(), old.end(), media.begin(), media.end(),
                      [](const Entry* entry, const MediaRef& one) { return entry->media == one; });
    return static_cast<std::size_t>(end - old.begin());
}

// Not counting the first `front` of both.
std::size_t EqualEnd(const Places& old, std::span<const MediaRef> media, std::size_t front) {
    const std::size_t most = std::min(old.size(), media.size()) - front;
    std::size_t count = 0;
    while (count < most && old[old.size() - 1 - count]->media == media[media.size() - 1 - count])
        ++count;
    return count;
}

// The old entry of each media; null for one that is new.
Places Match(const Places& old, std::span<const MediaRef> media) {
    const std::size_t front = EqualFront(old, media);
    const std::size_t end = EqualEnd(old, media, front);
    std::map<std::pair<MediaKind, std::string_view>, std::deque<const Entry*>> left;
    for (std::size_t i = front; i < old.size() - end; ++i)
        left[{old[i]->media.kind, old[i]->media.id}].push_back(old[i]);

    Places matched(media.size(), nullptr);
    std::copy_n(old.begin(), front, matched.begin());
    std::copy_n(old.end() - static_cast<std::ptrdiff_t>(end), end,
                matched.end() - static_cast<std::ptrdiff_t>(end));
    for (std::size_t i = front; i < media.size() - end; ++i) {
        const auto equal = left.find({media[i].kind, media[i].id});
        if (equal == left.end() || equal->second.empty())
            continue;
        matched[i] = equal->second.front();
        equal->second.pop_front();
    }
    return matched;
}

// Those that cannot be played, by the entry that they stand behind and that is still there.
std::map<EntryId, Places> Unplayable(const Entries& before, const Places& matched) {
    std::vector<EntryId> kept;
    for (const Entry* entry : matched)
        if (entry)
            kept.push_back(entry->id);
    std::sort(kept.begin(), kept.end());

    std::map<EntryId, Places> behind;
    EntryId anchor = EntryId::None;
    for (const Entry& entry : before) {
        if (entry.unplayable)
            behind[anchor].push_back(&entry);
        else if (std::binary_search(kept.begin(), kept.end(), entry.id))
            anchor = entry.id;
    }
    return behind;
}

} // namespace

Entries Follow(const Entries& before, std::span<const MediaRef> media, const NewEntryId& newId) {
    const Places matched = Match(Playable(before), media);
    const std::map<EntryId, Places> unplayable = Unplayable(before, matched);

    Entries after;
    after.reserve(media.size());
    const auto addUnplayable = [&](EntryId anchor) {
        if (const auto behind = unplayable.find(anchor); behind != unplayable.end())
            for (const Entry* entry : behind->second)
                after.push_back(*entry);
    };
    addUnplayable(EntryId::None);
    for (std::size_t i = 0; i < media.size(); ++i) {
        if (matched[i]) {
            after.push_back(*matched[i]);
            addUnplayable(matched[i]->id);
        } else {
            after.push_back({newId(), media[i], {}});
        }
    }
    return after;
}

bool Says(std::span<const MediaRef> media, const Entries& entries) {
    const Places playable = Playable(entries);
    return playable.size() == media.size() && EqualFront(playable, media) == media.size();
}

} // namespace korvel::controller

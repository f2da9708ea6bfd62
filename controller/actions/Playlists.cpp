#include "actions/Playlists.h"

#include <algorithm>

#include "base/Refused.h"
#include "driver/Ids.h"

namespace korvel::controller {
namespace {

using media::MediaDatabase;

constexpr std::int32_t kSong = 1; // the media type of a song of the library

std::vector<MediaItem> ItemsOf(const std::vector<std::uint32_t>& songs, MediaDatabase& database) {
    std::vector<MediaItem> items;
    for (const std::uint32_t id : songs) {
        if (!database.FindSong(id))
            throw Refused(Refused::Why::NotFound, "there is no song " + std::to_string(id));
        items.push_back({kSong, "", id, 0});
    }
    return items;
}

// 0 when there is none.
std::uint32_t PlaylistOf(const std::string& title, MediaDatabase& database) {
    for (std::uint32_t offset = 0;;) {
        const auto page = database.ListPlaylists({offset, media::kMaxPageSize});
        const auto found = std::ranges::find(page.items, title, &media::PlaylistSummary::title);
        if (found != page.items.end())
            return found->id;
        offset += static_cast<std::uint32_t>(page.items.size());
        if (page.items.empty() || offset >= page.total)
            return 0;
    }
}

} // namespace

std::uint32_t SavePlaylist(MediaDatabase& database, const std::string& title,
                           const std::vector<std::uint32_t>& songs) {
    const auto items = ItemsOf(songs, database);
    return database.PutPlaylist(PlaylistOf(title, database), kDriverDeviceId, title, items);
}

} // namespace korvel::controller

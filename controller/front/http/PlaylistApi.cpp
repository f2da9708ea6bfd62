#include <algorithm>
#include <nlohmann/json.hpp>

#include "base/Refused.h"
#include "driver/Ids.h"
#include "front/http/Api.h"
#include "front/http/ApiRequests.h"

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

HttpReply SavePlaylist(Library& library, const nlohmann::json& body) {
    const PlaylistOrder order = ReadPlaylist(body);
    MediaDatabase& database = library.Database();
    const auto items = ItemsOf(order.songs, database);
    const std::uint32_t id =
        database.PutPlaylist(PlaylistOf(order.title, database), kDriverDeviceId, order.title, items);
    return JsonReply({{"id", id}});
}

} // namespace korvel::controller

#include <algorithm>
#include <nlohmann/json.hpp>

#include "common/Text.h"
#include "host/Ids.h"
#include "host/Refused.h"
#include "http/Api.h"

namespace korvel::controller {
namespace {

using media::MediaDatabase;
using nlohmann::json;
using Why = Refused::Why;

constexpr std::int32_t kSong = 1; // the media type of a song of the library

std::string TitleIn(const json& body) {
    const auto title = body.find("title");
    if (title == body.end() || !title->is_string())
        throw Refused(Why::Invalid, "\"title\" must be a text");
    auto text = title->get<std::string>();
    if (text.empty() || text.size() > kMaxNameLength || common::HasControl(text))
        throw Refused(Why::Invalid, "\"title\" must be a line of 1 to 100 bytes");
    return text;
}

std::vector<MediaItem> SongsIn(const json& body, MediaDatabase& database) {
    const auto songs = body.find("songs");
    if (songs == body.end() || !songs->is_array() || songs->empty())
        throw Refused(Why::Invalid, "\"songs\" must be a list of songs");
    std::vector<MediaItem> items;
    for (const json& song : *songs) {
        if (!song.is_number_unsigned() || song.get<std::uint64_t>() > media::kMaxId)
            throw Refused(Why::Invalid, "a song is named by its id");
        const auto id = song.get<std::uint32_t>();
        if (!database.FindSong(id))
            throw Refused(Why::NotFound, "there is no song " + std::to_string(id));
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

HttpReply SavePlaylist(Library& library, const json& body) {
    if (body.size() != 2)
        throw Refused(Why::Invalid, "a playlist has \"title\" and \"songs\"");
    MediaDatabase& database = library.Database();
    const std::string title = TitleIn(body);
    const auto songs = SongsIn(body, database);
    const std::uint32_t id = database.PutPlaylist(PlaylistOf(title, database), kDriverDeviceId, title, songs);
    return JsonReply({{"id", id}});
}

} // namespace korvel::controller

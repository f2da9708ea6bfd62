// Reading one page of a list.
#pragma once

#include <algorithm>
#include <functional>
#include <string>

#include "Rows.h"

namespace korvel::media {

// "SELECT columns FROM from ORDER BY order": texts of this program, never of its users.
struct PageQuery {
    std::string columns;
    std::string from; // with its WHERE
    std::string order;
};

// Columns of an album named a, as ReadAlbum takes them.
inline constexpr const char* kAlbumColumns =
    "a.id, a.title, a.artist,"
    " IFNULL((SELECT s.image FROM album_songs m JOIN songs s ON s.id = m.song_id"
    "  WHERE m.album_id = a.id AND s.image <> '' ORDER BY m.position, s.disc, s.track, s.id LIMIT 1), ''),"
    " (SELECT COUNT(*) FROM album_songs m JOIN songs s ON s.id = m.song_id WHERE m.album_id = a.id)";

// Every artist of a song or an album with the count of songs; both parts are read off an index.
inline constexpr const char* kArtists =
    "(SELECT name, SUM(n) AS n FROM (SELECT artist AS name, COUNT(*) AS n FROM songs GROUP BY artist"
    " UNION ALL SELECT album_artist, COUNT(*) FROM songs WHERE album_artist <> artist GROUP BY album_artist)"
    " WHERE name <> '' GROUP BY name)";

inline AlbumSummary ReadAlbum(const Query& row) {
    return {row.UInt(0), row.Text(1), row.Text(2), row.Text(3), row.UInt(4)};
}

inline NameSummary ReadName(const Query& row) {
    return {row.Text(0), row.UInt(1)};
}

inline SongRecord ReadSongRow(const Query& row) {
    return ReadSong(row);
}

// `bind` gives the parameters of `from`, which are the first of the statement.
template <class Record>
Page<Record> ReadPage(Connection& connection, const PageQuery& query, const std::function<void(Query&)>& bind,
                      Window window, Record (*read)(const Query&)) {
    Page<Record> page;
    {
        Query count = connection.Prepare("SELECT COUNT(*) FROM (SELECT 1 FROM " + query.from + ")");
        if (bind)
            bind(count);
        page.total = count.Next() ? count.UInt(0) : 0;
    }
    Query rows = connection.Prepare("SELECT " + query.columns + " FROM " + query.from + " ORDER BY " +
                                    query.order + " LIMIT :limit OFFSET :offset");
    if (bind)
        bind(rows);
    rows.Bind(std::min(window.limit, kMaxPageSize)).Bind(window.offset);
    while (rows.Next())
        page.items.push_back(read(rows));
    return page;
}

} // namespace korvel::media

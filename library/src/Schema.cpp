#include "Schema.h"

#include <array>

#include "library/DatabaseError.h"

namespace korvel::media {

namespace {

// Marks the file as a media database: "KvMd".
constexpr std::int64_t kApplicationId = 0x4B764D64;

// `folded` texts are what is searched and sorted by (FoldText). The members of albums and the items of
// playlists have no foreign key to songs: both may name what is not, or not yet, in the database.
// `album_group` is NULL for an album that no scan made. AUTOINCREMENT never gives an id twice.
constexpr const char* kFirstTables = R"sql(
CREATE TABLE songs (
    id INTEGER PRIMARY KEY AUTOINCREMENT CHECK (id BETWEEN 1 AND 2147483647),
    location TEXT NOT NULL,
    device_id INTEGER NOT NULL,
    title TEXT NOT NULL,
    artist TEXT NOT NULL,
    album TEXT NOT NULL,
    album_artist TEXT NOT NULL,
    genre TEXT NOT NULL,
    image TEXT NOT NULL,
    track INTEGER NOT NULL,
    disc INTEGER NOT NULL,
    duration_ms INTEGER NOT NULL,
    file_size INTEGER NOT NULL,
    file_time INTEGER NOT NULL,
    title_folded TEXT NOT NULL,
    folded TEXT NOT NULL
);
CREATE INDEX songs_by_title ON songs (title_folded, id);
CREATE INDEX songs_by_exact_title ON songs (title);
CREATE INDEX songs_by_artist ON songs (artist);
CREATE INDEX songs_by_album_artist ON songs (album_artist, artist);
CREATE INDEX songs_by_genre ON songs (genre);

CREATE TABLE albums (
    id INTEGER PRIMARY KEY AUTOINCREMENT CHECK (id BETWEEN 1 AND 2147483647),
    title TEXT NOT NULL,
    artist TEXT NOT NULL,
    input_name TEXT NOT NULL,
    album_group TEXT,
    title_folded TEXT NOT NULL,
    folded TEXT NOT NULL
);
CREATE INDEX albums_by_title ON albums (title_folded, id);
CREATE UNIQUE INDEX albums_by_group ON albums (title, album_group) WHERE album_group IS NOT NULL;

CREATE TABLE album_songs (
    album_id INTEGER NOT NULL REFERENCES albums (id) ON DELETE CASCADE,
    position INTEGER NOT NULL,
    song_id INTEGER NOT NULL,
    PRIMARY KEY (album_id, position, song_id)
) WITHOUT ROWID;
CREATE INDEX album_songs_by_song ON album_songs (song_id);

CREATE TABLE stations (
    id INTEGER PRIMARY KEY AUTOINCREMENT CHECK (id BETWEEN 1 AND 2147483647),
    location TEXT NOT NULL,
    name TEXT NOT NULL,
    genre TEXT NOT NULL,
    image TEXT NOT NULL
);

CREATE TABLE playlists (
    id INTEGER PRIMARY KEY AUTOINCREMENT CHECK (id BETWEEN 1 AND 2147483647),
    device_id INTEGER NOT NULL,
    title TEXT NOT NULL
);
CREATE TABLE playlist_items (
    playlist_id INTEGER NOT NULL REFERENCES playlists (id) ON DELETE CASCADE,
    position INTEGER NOT NULL,
    type INTEGER NOT NULL,
    external_id TEXT NOT NULL,
    media_id INTEGER NOT NULL,
    extra INTEGER NOT NULL,
    PRIMARY KEY (playlist_id, position)
) WITHOUT ROWID;
CREATE INDEX playlist_items_by_media ON playlist_items (media_id, type);

CREATE TABLE broken_files (
    location TEXT PRIMARY KEY,
    file_size INTEGER NOT NULL,
    file_time INTEGER NOT NULL
) WITHOUT ROWID;

CREATE TRIGGER song_removed AFTER DELETE ON songs BEGIN
    DELETE FROM album_songs WHERE song_id = OLD.id;
    DELETE FROM playlist_items WHERE media_id = OLD.id AND type = 1;
END;

INSERT INTO sqlite_sequence (name, seq) VALUES ('songs', 999);
)sql";

// Songs whose files are gone stay; broken files tell why.
constexpr const char* kPresenceAndReasons = R"sql(
ALTER TABLE songs ADD COLUMN presence INTEGER NOT NULL DEFAULT 0;
CREATE INDEX songs_not_here ON songs (presence) WHERE presence <> 0;
ALTER TABLE broken_files ADD COLUMN reason TEXT NOT NULL DEFAULT '';
)sql";

// Step n leads from version n to version n + 1; a new file takes them all. A step that has been released
// never changes again.
constexpr std::array kSteps = {kFirstTables, kPresenceAndReasons};
constexpr std::int64_t kSchemaVersion = kSteps.size();

std::int64_t Pragma(Connection& connection, const char* sql) {
    Query query = connection.Prepare(sql);
    return query.Next() ? query.Int(0) : 0;
}

void Upgrade(Connection& connection) {
    connection.InTransaction([&] {
        // Another process may have been quicker.
        const std::int64_t version = Pragma(connection, "PRAGMA user_version");
        for (std::int64_t step = version; step < kSchemaVersion; ++step)
            connection.Execute(kSteps.at(static_cast<std::size_t>(step)));
        if (version >= kSchemaVersion)
            return;
        connection.Execute(("PRAGMA application_id = " + std::to_string(kApplicationId)).c_str());
        connection.Execute(("PRAGMA user_version = " + std::to_string(kSchemaVersion)).c_str());
    });
}

bool IsEmpty(Connection& connection) {
    return Pragma(connection, "SELECT COUNT(*) FROM sqlite_master") == 0;
}

} // namespace

void PrepareSchema(Connection& connection, const std::string& path) {
    const std::int64_t version = Pragma(connection, "PRAGMA user_version");
    const std::int64_t application = Pragma(connection, "PRAGMA application_id");
    if (version == 0 && application == 0 && IsEmpty(connection)) {
        connection.Execute("PRAGMA journal_mode = WAL");
        Upgrade(connection);
    } else if (application != kApplicationId || version < 1) {
        throw DatabaseError(DatabaseError::Kind::Damaged, path + " is a database, but not a media database");
    } else if (version > kSchemaVersion) {
        throw DatabaseError(DatabaseError::Kind::Other,
                            path + " was written by a newer version of this program (schema " +
                                std::to_string(version) + ", known up to " + std::to_string(kSchemaVersion) +
                                ")");
    } else if (version < kSchemaVersion) {
        Upgrade(connection);
    }
    // A damaged file must give errors, not wrong rows.
    connection.Execute("PRAGMA foreign_keys = ON; PRAGMA synchronous = NORMAL; PRAGMA cell_size_check = ON");
}

} // namespace korvel::media

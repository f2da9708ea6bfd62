// What is in the database because somebody set it up, not because a scan found it.
#include <algorithm>

#include "Sqlite.h"
#include "library/MediaDatabase.h"

namespace korvel::media {

namespace {

constexpr const char* kStationNames = "SELECT id, name FROM stations ORDER BY id";
constexpr const char* kInputNames = "SELECT id, input_name FROM albums WHERE input_name <> '' ORDER BY id";

// The ids that the names have in the rows (id, name) of `sql`; 0 for a name without one. `rest` takes the ids
// of all other rows.
std::vector<std::uint32_t> MatchNames(Connection& connection, const char* sql,
                                      const std::vector<std::string>& names,
                                      std::vector<std::uint32_t>& rest) {
    std::vector<std::uint32_t> ids(names.size());
    Query query = connection.Prepare(sql);
    while (query.Next()) {
        const auto name = std::ranges::find(names, query.Text(1));
        std::uint32_t* id =
            name == names.end() ? nullptr : &ids[static_cast<std::size_t>(name - names.begin())];
        if (id && *id == 0)
            *id = query.UInt(0);
        else
            rest.push_back(query.UInt(0));
    }
    return ids;
}

bool IsSame(const StationRecord& a, const StationRecord& b) {
    return a.location == b.location && a.name == b.name && a.genre == b.genre && a.image == b.image;
}

bool IsInput(const AlbumRecord& album, const std::string& name) {
    return album.title == name && album.inputName == name && album.songs.empty();
}

} // namespace

void MediaDatabase::SetStations(const std::vector<StationRecord>& stations) {
    InTransaction([&] {
        std::vector<std::string> names;
        for (const StationRecord& station : stations)
            names.push_back(station.name);
        std::vector<std::uint32_t> rest;
        const auto ids = MatchNames(*m_connection, kStationNames, names, rest);
        for (const std::uint32_t id : rest)
            RemoveStation(id);
        for (std::size_t i = 0; i < stations.size(); ++i) {
            StationRecord station = stations[i];
            station.id = ids[i];
            const auto before = FindStation(station.id);
            if (!before || !IsSame(*before, station))
                PutStation(station);
        }
    });
}

std::vector<std::uint32_t> MediaDatabase::SetInputs(const std::vector<std::string>& names) {
    std::vector<std::uint32_t> ids;
    InTransaction([&] {
        std::vector<std::uint32_t> rest;
        ids = MatchNames(*m_connection, kInputNames, names, rest);
        for (const std::uint32_t id : rest)
            m_connection->Prepare("DELETE FROM albums WHERE id = ?").Bind(id).Run();
        for (std::size_t i = 0; i < names.size(); ++i) {
            const auto before = FindAlbum(ids[i]);
            if (!before || !IsInput(*before, names[i]))
                ids[i] = PutAlbum({ids[i], names[i], names[i], {}});
        }
    });
    return ids;
}

} // namespace korvel::media

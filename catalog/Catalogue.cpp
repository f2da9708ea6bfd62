#include "Catalogue.h"

#include <toml++/toml.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <initializer_list>
#include <iterator>
#include <set>
#include <string_view>

#include "Protocol.h"
#include "common/Address.h"
#include "common/Text.h"

namespace korvel::catalog {
namespace {

namespace fs = std::filesystem;

// Ids travel inside quotes and between blanks of other protocols.
bool IsId(std::string_view text) {
    constexpr std::string_view kPunctuation = "-_.:";
    return !text.empty() && text.size() <= kMaxIdBytes && std::ranges::all_of(text, [&](char c) {
        return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') ||
               kPunctuation.find(c) != std::string_view::npos;
    });
}

// One [[track]], [[playlist]] or [[channel]].
class Entry {
public:
    Entry(const toml::table& table, const std::string& source, std::string name)
        : m_table(table), m_source(source), m_name(std::move(name)) {}

    [[noreturn]] void Fail(std::string_view key, const std::string& what) const {
        const toml::node* node = m_table.get(key);
        const auto line = (node ? *node : static_cast<const toml::node&>(m_table)).source().begin.line;
        throw CatalogueError(m_source + ":" + std::to_string(std::max(line, toml::source_index{1})) + ": '" +
                             std::string(key) + "' in " + m_name + " " + what);
    }

    // "" when absent.
    std::string Text(std::string_view key, std::size_t most) const {
        const toml::node* node = m_table.get(key);
        if (!node)
            return "";
        const auto* text = node->as_string();
        if (!text || common::HasControl(text->get()) || text->get().size() > most)
            Fail(key, "must be a text of at most " + std::to_string(most) + " bytes on one line");
        return text->get();
    }

    std::string RequiredText(std::string_view key, std::size_t most) const {
        std::string text = Text(key, most);
        if (text.empty())
            Fail(key, "is missing");
        return text;
    }

    std::string Id() const {
        std::string id = RequiredText("id", kMaxIdBytes);
        if (!IsId(id))
            Fail("id", "must be made of letters, digits and . _ - : only");
        return id;
    }

    std::chrono::milliseconds Duration() const {
        const toml::node* node = m_table.get("duration");
        const auto seconds = node && node->is_number() ? node->value<double>() : std::nullopt;
        // Put so that "not a number" fails as well.
        if (!seconds || !(*seconds >= kMinTrackSeconds && *seconds <= kMaxTrackSeconds))
            Fail("duration", "must be the track's length in seconds");
        return std::chrono::milliseconds(static_cast<std::int64_t>(*seconds * 1000 + 0.5));
    }

    std::vector<std::string> TrackIds(const Catalogue& catalogue) const {
        const toml::node* node = m_table.get("tracks");
        const toml::array* list = node ? node->as_array() : nullptr;
        if (!list || list->size() > kMaxTracksPerList)
            Fail("tracks", "must be a list of at most " + std::to_string(kMaxTracksPerList) + " track ids");
        std::vector<std::string> ids;
        for (const toml::node& item : *list) {
            const auto* text = item.as_string();
            if (!text || !catalogue.tracks.contains(text->get()))
                Fail("tracks", text ? "names '" + text->get().substr(0, kMaxIdBytes) + "', which is no track"
                                    : "must hold texts only");
            ids.push_back(text->get());
        }
        return ids;
    }

    void RefuseOtherKeys(std::initializer_list<std::string_view> known) const {
        for (const auto& [key, node] : m_table) {
            if (std::ranges::find(known, key.str()) == known.end())
                Fail(key.str(), "is not a setting");
        }
    }

private:
    const toml::table& m_table;
    const std::string& m_source;
    std::string m_name;
};

std::vector<Entry> Entries(const toml::table& document, const std::string& source, const std::string& key,
                           std::size_t most) {
    const std::string name = "[[" + key + "]]";
    std::vector<Entry> entries;
    const toml::node* node = document.get(key);
    if (!node)
        return entries;
    const toml::array* list = node->as_array();
    const bool tables =
        list && std::ranges::all_of(*list, [](const toml::node& item) { return item.is_table(); });
    if (!tables || list->size() > most)
        throw CatalogueError(source + ": " + name + " must be written so, at most " + std::to_string(most) +
                             " times");
    for (const toml::node& item : *list)
        entries.emplace_back(*item.as_table(), source, name);
    return entries;
}

Track ReadTrack(const Entry& entry, const std::string& folder) {
    entry.RefuseOtherKeys({"id", "title", "artist", "album", "image", "media", "duration"});
    Track track;
    track.id = entry.Id();
    if (track.id.starts_with(kChannelPrefix))
        entry.Fail("id", std::string("must not begin with ") + kChannelPrefix);
    track.title = entry.RequiredText("title", kMaxTextBytes);
    track.artist = entry.Text("artist", kMaxTextBytes);
    track.album = entry.Text("album", kMaxTextBytes);
    track.image = entry.Text("image", kMaxAddressBytes);
    track.media = entry.RequiredText("media", kMaxAddressBytes);
    if (track.media.starts_with("http://") || track.media.starts_with("https://")) {
        if (!common::ParseWebAddress(track.media))
            entry.Fail("media", "must be a path or a web address");
    } else {
        track.media = (fs::path(folder) / track.media).lexically_normal().string();
    }
    track.duration = entry.Duration();
    return track;
}

TrackList ReadList(const Entry& entry, const Catalogue& catalogue) {
    entry.RefuseOtherKeys({"id", "name", "tracks"});
    return {entry.Id(), entry.RequiredText("name", kMaxTextBytes), entry.TrackIds(catalogue)};
}

std::vector<TrackList> ReadLists(const std::vector<Entry>& entries, const Catalogue& catalogue) {
    std::vector<TrackList> lists;
    std::set<std::string> ids;
    for (const Entry& entry : entries) {
        lists.push_back(ReadList(entry, catalogue));
        if (!ids.insert(lists.back().id).second)
            entry.Fail("id", "is used twice");
    }
    return lists;
}

} // namespace

Catalogue ParseCatalogue(const std::string& text, const std::string& source, const std::string& folder) {
    try {
        const toml::table document = toml::parse(text);
        for (const auto& [key, node] : document) {
            if (key != "track" && key != "playlist" && key != "channel")
                throw CatalogueError(source + ":" + std::to_string(node.source().begin.line) + ": '" +
                                     std::string(key.str()) + "' is not a setting");
        }
        Catalogue catalogue;
        for (const Entry& entry : Entries(document, source, "track", kMaxTracks)) {
            Track track = ReadTrack(entry, folder);
            const std::string id = track.id;
            if (!catalogue.tracks.emplace(id, std::move(track)).second)
                entry.Fail("id", "is used twice");
        }
        catalogue.playlists = ReadLists(Entries(document, source, "playlist", kMaxPlaylists), catalogue);
        const auto channels = Entries(document, source, "channel", kMaxChannels);
        catalogue.channels = ReadLists(channels, catalogue);
        for (std::size_t i = 0; i < channels.size(); ++i) {
            if (catalogue.channels[i].tracks.empty())
                channels[i].Fail("tracks", "must name at least one track");
        }
        return catalogue;
    } catch (const toml::parse_error& error) {
        throw CatalogueError(source + ":" + std::to_string(error.source().begin.line) + ": " +
                             std::string(error.description()));
    }
}

Catalogue LoadCatalogue(const std::string& path) {
    std::error_code failed;
    if (!fs::is_regular_file(path, failed))
        throw CatalogueError(path + ": cannot be read as a catalogue file");
    const auto size = fs::file_size(path, failed);
    if (failed || size > kMaxFileBytes)
        throw CatalogueError(path + ": is too long for a catalogue file");
    std::ifstream file(path, std::ios::binary);
    const std::string text{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    if (!file)
        throw CatalogueError(path + ": cannot be read");
    return ParseCatalogue(text, path, fs::absolute(path).parent_path().string());
}

} // namespace korvel::catalog

// Search by words. Texts are kept folded beside the records and searched by substring: that finds the middle
// of a word in any language, needs no second index to keep in step, and reads a hundred thousand songs in a
// fraction of a second.
#include "Pages.h"
#include "Rows.h"
#include "Sqlite.h"
#include "library/MediaDatabase.h"
#include "library/Utf8.h"

namespace korvel::media {

namespace {

constexpr std::size_t kMaxWords = 8;

// The folded words of a search, made up to kMaxWords with empty ones: every text contains those.
std::vector<std::string> Words(const std::string& text) {
    const std::string folded = FoldText(CleanText(text, MediaDatabase::kMaxSearchLength));
    std::vector<std::string> words;
    std::size_t at = folded.find_first_not_of(' ');
    while (at != std::string::npos && words.size() < kMaxWords) {
        const std::size_t end = folded.find(' ', at);
        words.push_back(folded.substr(at, end - at));
        at = folded.find_first_not_of(' ', end);
    }
    if (!words.empty())
        words.resize(kMaxWords);
    return words;
}

// The condition that `text` contains every word; the words are parameters 1 to 8.
std::string HasAllWords(const std::string& text) {
    std::string condition;
    for (std::size_t i = 1; i <= kMaxWords; ++i)
        condition += (i > 1 ? " AND instr(" : "instr(") + text + ", ?" + std::to_string(i) + ") > 0";
    return condition;
}

void BindWords(Query& query, const std::vector<std::string>& words) {
    for (const std::string& word : words)
        query.Bind(word);
}

std::vector<SongRecord> SongsWhere(Connection& connection, const char* condition, const std::string& value,
                                   std::uint32_t limit) {
    Query query = connection.Prepare(std::string("SELECT ") + kSongColumns + " FROM songs s WHERE " +
                                     condition + " ORDER BY s.id LIMIT ?");
    query.Bind(value).Bind(limit);
    std::vector<SongRecord> songs;
    while (query.Next())
        songs.push_back(ReadSong(query));
    return songs;
}

} // namespace

Page<SongRecord> MediaDatabase::SearchSongs(const std::string& text, Window window) {
    const auto words = Words(text);
    if (words.empty())
        return {};
    const PageQuery query = {kSongColumns, "songs s WHERE " + HasAllWords("s.folded"),
                             "NOT (" + HasAllWords("s.title_folded") + "), s.title_folded, s.id"};
    return ReadPage(
        *m_connection, query, [&](Query& q) { BindWords(q, words); }, window, ReadSongRow);
}

Page<AlbumSummary> MediaDatabase::SearchAlbums(const std::string& text, Window window) {
    const auto words = Words(text);
    if (words.empty())
        return {};
    const PageQuery query = {kAlbumColumns, "albums a WHERE " + HasAllWords("a.folded"),
                             "a.title_folded, a.id"};
    return ReadPage(
        *m_connection, query, [&](Query& q) { BindWords(q, words); }, window, ReadAlbum);
}

Page<NameSummary> MediaDatabase::SearchArtists(const std::string& text, Window window) {
    const auto words = Words(text);
    if (words.empty())
        return {};
    const PageQuery query = {"name, n", kArtists + (" WHERE " + HasAllWords("FOLD(name)")),
                             "FOLD(name), name"};
    return ReadPage(
        *m_connection, query, [&](Query& q) { BindWords(q, words); }, window, ReadName);
}

std::vector<SongRecord> MediaDatabase::FindSongsByTitle(const std::string& title) {
    std::vector<SongRecord> songs = SongsWhere(*m_connection, "s.title = ?", title, kMaxPageSize);
    if (songs.empty())
        songs = SongsWhere(*m_connection, "s.title_folded = ?", FoldText(title), kMaxPageSize);
    return songs;
}

std::optional<SongRecord> MediaDatabase::FindUniqueSong(const std::string& title) {
    if (title.empty())
        return std::nullopt;
    std::vector<SongRecord> songs = FindSongsByTitle(title);
    if (songs.empty())
        songs = SongsWhere(*m_connection, "instr(s.title_folded, ?) > 0", FoldText(title), 2);
    return songs.size() == 1 ? std::optional<SongRecord>(songs.front()) : std::nullopt;
}

} // namespace korvel::media

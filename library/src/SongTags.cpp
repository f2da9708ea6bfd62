#include "SongTags.h"

#include <filesystem>

#include "FolderPicture.h"
#include "library/Utf8.h"
#include "platform/Text.h"

namespace korvel::media {

namespace {

namespace fs = std::filesystem;

// Tags hold anything; larger numbers of tracks and discs are mistakes.
constexpr std::uint32_t kMaxTrackNumber = 9999;

// "3" and "3/12" alike.
std::uint32_t Number(const std::string& text) {
    const std::uint32_t number = kv::ToULong(CleanText(text));
    return number <= kMaxTrackNumber ? number : 0;
}

std::string OrElse(std::string text, const std::string& other) {
    return text.empty() ? other : text;
}

// "CD 2", "disc1": the discs of an album lie in folders of their own.
bool IsDiscFolder(const std::string& name) {
    const std::string lower = LowerAscii(name);
    for (const char* word : {"cd", "disc", "disk"}) {
        if (!lower.starts_with(word))
            continue;
        const std::string rest = lower.substr(std::string(word).size());
        const std::size_t digits = rest.find_first_not_of(" _-");
        return digits != std::string::npos &&
               rest.find_first_not_of("0123456789", digits) == std::string::npos;
    }
    return false;
}

fs::path AlbumFolder(const std::string& location) {
    const fs::path folder = fs::path(location).parent_path();
    return IsDiscFolder(folder.filename().native()) ? folder.parent_path() : folder;
}

} // namespace

void TakeTags(const FileTags& tags, ScannedSong& scanned) {
    SongRecord& song = scanned.song;
    const fs::path folder = AlbumFolder(song.location);
    song.title = OrElse(CleanText(tags.title), CleanText(fs::path(song.location).stem().native()));
    song.artist = OrElse(CleanText(tags.artist), "Unknown artist");
    song.album = OrElse(CleanText(tags.album), CleanText(folder.filename().native()));
    song.albumArtist = CleanText(tags.albumArtist);
    song.genre = CleanText(tags.genre);
    song.trackNumber = Number(tags.track);
    song.discNumber = Number(tags.disc);
    song.durationMs = tags.durationMs;
    scanned.albumGroup = song.albumArtist.empty() ? "in " + folder.native() : "by " + song.albumArtist;
    scanned.hasImage = scanned.hasImage || tags.hasPicture;
}

} // namespace korvel::media

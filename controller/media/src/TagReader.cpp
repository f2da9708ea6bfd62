#include "TagReader.h"

#include <taglib/audioproperties.h>
#include <taglib/tfilestream.h>
#include <taglib/tpropertymap.h>

#include <algorithm>
#include <filesystem>

#include "FolderPicture.h"
#include "media/Utf8.h"
#include "platform/Text.h"

namespace korvel::media {

namespace {

namespace fs = std::filesystem;

// Tags hold anything; larger numbers of tracks and discs are mistakes.
constexpr std::uint32_t kMaxTrackNumber = 9999;

std::string Value(const TagLib::PropertyMap& tags, const char* name) {
    const auto found = tags.find(name);
    return found == tags.end() ? "" : CleanText(found->second.toString(", ").to8Bit(true));
}

// "3" and "3/12" alike.
std::uint32_t Number(const TagLib::PropertyMap& tags, const char* name) {
    const std::uint32_t number = kv::ToULong(Value(tags, name));
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

void TakeTags(const TagLib::File& file, ScannedSong& scanned) {
    SongRecord& song = scanned.song;
    const TagLib::PropertyMap tags = file.properties();
    const fs::path folder = AlbumFolder(song.location);
    song.title = OrElse(Value(tags, "TITLE"), CleanText(fs::path(song.location).stem().native()));
    song.artist = OrElse(Value(tags, "ARTIST"), "Unknown artist");
    song.album = OrElse(Value(tags, "ALBUM"), CleanText(folder.filename().native()));
    song.albumArtist = Value(tags, "ALBUMARTIST");
    song.genre = Value(tags, "GENRE");
    song.trackNumber = Number(tags, "TRACKNUMBER");
    song.discNumber = Number(tags, "DISCNUMBER");
    song.durationMs = static_cast<std::uint32_t>(std::max(file.audioProperties()->lengthInMilliseconds(), 0));
    scanned.albumGroup = song.albumArtist.empty() ? "in " + folder.native() : "by " + song.albumArtist;
}

} // namespace

const TagLib::AudioProperties* AudioOf(const TagLib::FileRef& reference) {
    TagLib::File* file = reference.file();
    const TagLib::AudioProperties* audio = file && file->isValid() ? file->audioProperties() : nullptr;
    return audio && audio->sampleRate() > 0 && audio->channels() > 0 ? audio : nullptr;
}

TagOutcome ReadTags(const std::string& location, ScannedSong& scanned) {
    try {
        TagLib::FileStream stream(location.c_str(), true);
        if (!stream.isOpen())
            return TagOutcome::Unreadable;
        const TagLib::FileRef reference(&stream);
        if (!AudioOf(reference))
            return TagOutcome::NoAudio;
        scanned.song.location = location;
        TakeTags(*reference.file(), scanned);
        scanned.hasImage = scanned.hasImage || !ReadPictures(*reference.file()).empty();
        return TagOutcome::Song;
    } catch (const std::exception&) {
        // A length in the file that no memory suffices for.
        return TagOutcome::NoAudio;
    }
}

} // namespace korvel::media

// What the program that reads media files says to the controller, which believes none of it. The first byte
// of the input tells how many bytes come at a time.
#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <iostream>
#include <string_view>

#include "Answers.h"
#include "SongTags.h"
#include "library/Utf8.h"

namespace {

using namespace korvel::media;

void Require(bool holds, const char* rule) {
    if (!holds) {
        std::cerr << "broken rule: " << rule << std::endl;
        std::abort();
    }
}

// The records up to the end, or up to one that does not add up.
struct Talk {
    std::vector<Record> records;
    bool broken = false;

    bool operator==(const Talk&) const = default;
};

Talk Listen(std::string_view bytes, std::size_t piece) {
    Talk talk;
    RecordReader reader;
    try {
        while (!bytes.empty()) {
            const std::string_view part = bytes.substr(0, piece);
            reader.Add(part);
            bytes.remove_prefix(part.size());
            while (auto record = reader.Next())
                talk.records.push_back(std::move(*record));
        }
    } catch (const BadRecord&) {
        talk.broken = true;
    }
    return talk;
}

void CheckText(const std::string& text) {
    Require(text.size() <= kMaxTextLength, "a text of a song is short");
    Require(CleanText(text) == text, "a text of a song is clean");
}

void CheckTags(const Record& record) {
    FileTags tags;
    if (!ReadAnswer(record, tags))
        return;
    ScannedSong scanned;
    scanned.song.location = "/music/An album/CD 1/A song.mp3";
    TakeTags(tags, scanned);
    const SongRecord& song = scanned.song;
    for (const std::string* text : {&song.title, &song.artist, &song.album, &song.albumArtist, &song.genre})
        CheckText(*text);
    Require(!song.title.empty() && !song.artist.empty() && !song.album.empty(), "a song has a name");
}

void CheckEntries(const Record& record) {
    std::vector<FolderEntry> entries;
    if (!ReadAnswer(record, entries))
        return;
    for (const FolderEntry& entry : entries) {
        const std::string& name = entry.name;
        Require(!name.empty() && name != "." && name != "..", "a name is of the folder");
        Require(std::ranges::none_of(name, [](char c) { return c == '/' || c == '\0'; }),
                "a name is no path");
    }
}

void CheckOthers(const Record& record) {
    std::optional<CoverImage> picture;
    if (ReadAnswer(record, picture) && picture) {
        Require(picture->bytes.size() <= kMaxCoverBytes, "a picture has a limit");
        Require(std::ranges::count(kCoverTypes, picture->mimeType) == 1, "a picture is of a known type");
    }
    FileStatus status;
    ReadAnswer(record, status);
    SoundFile sound = SoundFile::Unreadable;
    ReadAnswer(record, sound);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    if (size == 0)
        return 0;
    const std::string_view said(reinterpret_cast<const char*>(bytes) + 1, size - 1);
    const Talk talk = Listen(said, 1 + bytes[0]);
    Require(talk == Listen(said, size), "how many bytes come at a time does not matter");
    std::string again;
    for (const Record& record : talk.records) {
        again += EncodeRecord(record);
        CheckTags(record);
        CheckEntries(record);
        CheckOthers(record);
    }
    Require(said.starts_with(again), "a record is written as it was read");
    return 0;
}

#include "TagReader.h"

#include <taglib/audioproperties.h>
#include <taglib/tpropertymap.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

#include "BoundedStream.h"
#include "common/Text.h"

namespace korvel::media {

namespace {

using Outcome = FileReader::Outcome;

std::string Value(const TagLib::PropertyMap& tags, const char* name) {
    const auto found = tags.find(name);
    if (found == tags.end())
        return "";
    // A character has a byte at least: what is cut off here would be cut off later.
    const TagLib::String text = found->second.toString(", ").substr(0, kMaxTagText);
    return std::string(common::CutText(text.to8Bit(true), kMaxTagText));
}

FileTags TagsOf(TagLib::File& file) {
    const TagLib::PropertyMap all = file.properties();
    FileTags tags;
    tags.title = Value(all, "TITLE");
    tags.artist = Value(all, "ARTIST");
    tags.album = Value(all, "ALBUM");
    tags.albumArtist = Value(all, "ALBUMARTIST");
    tags.genre = Value(all, "GENRE");
    tags.track = Value(all, "TRACKNUMBER");
    tags.disc = Value(all, "DISCNUMBER");
    tags.durationMs = static_cast<std::uint32_t>(std::max(file.audioProperties()->lengthInMilliseconds(), 0));
    tags.hasPicture = !ReadPictures(file).empty();
    return tags;
}

} // namespace

const TagLib::AudioProperties* AudioOf(const TagLib::FileRef& reference) {
    TagLib::File* file = reference.file();
    const TagLib::AudioProperties* audio = file && file->isValid() ? file->audioProperties() : nullptr;
    return audio && audio->sampleRate() > 0 && audio->channels() > 0 ? audio : nullptr;
}

FileReader::Answer<FileTags> ReadTags(const std::string& path) {
    try {
        BoundedStream stream(path.c_str());
        if (!stream.isOpen())
            return {Outcome::Unreadable, {}, std::strerror(errno)};
        const TagLib::FileRef reference(&stream);
        if (AudioOf(reference))
            return {Outcome::Done, TagsOf(*reference.file()), ""};
        return {Outcome::NoAudio,
                {},
                stream.WasBounded() ? "its tags are too large" : "no audio can be read from it"};
    } catch (const std::exception&) {
        // A length in the file that no memory suffices for.
        return {Outcome::NoAudio, {}, "its tags take too much memory"};
    }
}

} // namespace korvel::media

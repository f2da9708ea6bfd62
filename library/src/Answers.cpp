#include "Answers.h"

#include <algorithm>
#include <charconv>
#include <string_view>

namespace korvel::media {

namespace {

// The program's numbers are believed as little as its texts.
template <class Number>
bool Take(const std::string& text, Number& number) {
    const char* end = text.data() + text.size();
    const auto result = std::from_chars(text.data(), end, number);
    return result.ec == std::errc() && result.ptr == end;
}

bool Take(const std::string& text, FileType& type) {
    constexpr std::string_view kTypes = "fdlo";
    const std::size_t found = text.size() == 1 ? kTypes.find(text[0]) : std::string_view::npos;
    if (found == std::string_view::npos)
        return false;
    type = static_cast<FileType>(found);
    return true;
}

bool IsName(const std::string& text) {
    return !text.empty() && text != "." && text != ".." &&
           text.find_first_of(std::string_view("/\0", 2)) == std::string::npos;
}

} // namespace

bool ReadAnswer(const Record& answer, FileTags& value) {
    if (answer.size() != 10)
        return false;
    std::size_t at = 1;
    for (std::string* text : {&value.title, &value.artist, &value.album, &value.albumArtist, &value.genre,
                              &value.track, &value.disc}) {
        *text = answer[at++];
        if (text->size() > kMaxTagText)
            return false;
    }
    value.hasPicture = answer[9] == "1";
    return Take(answer[8], value.durationMs);
}

bool ReadAnswer(const Record& answer, std::optional<CoverImage>& value) {
    // The type is passed on in a line of its own.
    if (answer.size() == 3 && std::ranges::find(kCoverTypes, answer[1]) != kCoverTypes.end() &&
        answer[2].size() <= kMaxCoverBytes)
        value = CoverImage{answer[1], answer[2]};
    return value || answer.size() == 1;
}

bool ReadAnswer(const Record& answer, SoundFile& value) {
    value = SoundFile::Sound;
    return answer.size() == 1;
}

bool ReadAnswer(const Record& answer, FileStatus& value) {
    return answer.size() == 6 && Take(answer[1], value.type) && Take(answer[2], value.fileSystem) &&
           Take(answer[3], value.number) && Take(answer[4], value.size) && Take(answer[5], value.timeNs);
}

// Each text is a letter for the type and the name.
bool ReadAnswer(const Record& answer, std::vector<FolderEntry>& value) {
    for (std::size_t i = 1; i < answer.size(); ++i) {
        FolderEntry entry;
        entry.name = answer[i].substr(std::min<std::size_t>(answer[i].size(), 1));
        if (!Take(answer[i].substr(0, 1), entry.type) || !IsName(entry.name))
            return false;
        value.push_back(std::move(entry));
    }
    return true;
}

} // namespace korvel::media

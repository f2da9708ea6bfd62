#include "library/SoundFile.h"

#include <taglib/audioproperties.h>
#include <taglib/fileref.h>

#include <filesystem>

#include "BoundedStream.h"
#include "TagReader.h"

namespace korvel::media {

namespace {

// Less than this is a header alone, in a file whose header tells no length.
constexpr long kLeastBytesWithoutLength = 1024;
// Of a WAV file: its sound begins somewhere in them.
constexpr unsigned kHeadBytes = 64 * 1024;

// A stream whose format is found by its bytes alone.
class Nameless final : public BoundedStream {
public:
    using BoundedStream::BoundedStream;
    TagLib::FileName name() const override { return ""; }
};

bool HoldsSound(BoundedStream& stream) {
    const TagLib::FileRef reference(&stream);
    const TagLib::AudioProperties* audio = AudioOf(reference);
    return audio && (audio->lengthInMilliseconds() > 0 || stream.length() >= kLeastBytesWithoutLength);
}

// A WAV file whose writer could not know its length, such as speech that came through a pipe. TagLib makes
// nothing of it, but the audio server plays it to the file's end.
bool IsWavWithoutLength(TagLib::FileStream& stream) {
    stream.seek(0);
    const TagLib::ByteVector head = stream.readBlock(kHeadBytes);
    const int sound = head.find("data");
    return head.startsWith("RIFF") && head.containsAt("WAVE", 8) && sound > 0 &&
           stream.length() - sound >= kLeastBytesWithoutLength;
}

} // namespace

SoundFile LookForSound(const std::string& location) {
    std::error_code failed;
    if (!std::filesystem::is_regular_file(location, failed))
        return SoundFile::Unreadable;
    try {
        BoundedStream named(location.c_str());
        if (!named.isOpen())
            return SoundFile::Unreadable;
        if (HoldsSound(named))
            return SoundFile::Sound;
        // A name may belie what is in the file, and the audio server goes by the bytes.
        Nameless nameless(location.c_str());
        const bool sound = HoldsSound(nameless) || IsWavWithoutLength(nameless);
        return sound ? SoundFile::Sound : SoundFile::NoSound;
    } catch (const std::exception&) {
        // A length in the file that no memory suffices for.
        return SoundFile::NoSound;
    }
}

} // namespace korvel::media

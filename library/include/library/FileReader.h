#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "library/Cover.h"
#include "library/SoundFile.h"

namespace korvel::media {

class ReaderProcess;

// What the tags of a file tell. The texts are as long as kMaxTagText at most and otherwise as they stand.
struct FileTags {
    std::string title;
    std::string artist;
    std::string album;
    std::string albumArtist;
    std::string genre;
    std::string track; // "3" or "3/12"
    std::string disc;
    std::uint32_t durationMs = 0;
    bool hasPicture = false;
};

inline constexpr std::size_t kMaxTagText = 64u << 10;
// Larger blocks of tags are not read: the song is taken without them.
inline constexpr std::size_t kMaxTagBlock = 32u << 20;

enum class FileType { File, Folder, Link, Other };

struct FileStatus {
    FileType type = FileType::Other;
    std::uint64_t fileSystem = 0;
    std::uint64_t number = 0; // within the file system
    std::uint64_t size = 0;
    std::int64_t timeNs = 0;
};

struct FolderEntry {
    std::string name;
    FileType type = FileType::Other; // not followed
};

// Reads files and folders of media in a program of its own, korvel-mediareader: what is in a file may crash
// the one who reads it, eat its memory or its time, and a disk that does not answer holds up whoever asks it.
// The program is started when it is needed, again after it died, and given up when it does not answer in
// time.
//
// For one thread at a time, but for Cancel(). Every operation throws std::runtime_error when the program
// cannot be started.
class FileReader {
public:
    enum class Outcome {
        Done,
        NoAudio,    // nothing in the file could be played
        Unreadable, // the system refused it; may be different another time
        Died,       // the program died of it
        Stalled,    // no answer in time
        Cancelled
    };

    template <class Value>
    struct Answer {
        Outcome outcome = Outcome::Done;
        Value value{};   // when Done
        std::string why; // for a person, unless Done
    };

    static constexpr std::chrono::seconds kPatience{20};

    // The program that lies beside this one.
    static std::string DefaultProgram();

    explicit FileReader(std::string program = DefaultProgram(),
                        std::chrono::milliseconds patience = kPatience);
    // Does not wait for a file that hangs.
    ~FileReader();
    FileReader(const FileReader&) = delete;
    FileReader& operator=(const FileReader&) = delete;

    Answer<FileTags> ReadTags(const std::string& path);
    // None when there is no picture, see media::ReadCover().
    Answer<std::optional<CoverImage>> ReadPicture(const std::string& path);
    Answer<SoundFile> FindSound(const std::string& path);
    // Links are followed.
    Answer<FileStatus> Look(const std::string& path);
    // In no order, without "." and "..".
    Answer<std::vector<FolderEntry>> List(const std::string& path);

    // Ends the program: it takes memory.
    void Rest();
    // On any thread: the operation that is running and all later ones end at once as Cancelled, until
    // Resume().
    void Cancel();
    void Resume();

private:
    using Texts = std::vector<std::string>;

    template <class Value>
    Answer<Value> Ask(const char* what, const std::string& path);
    Answer<Texts> Exchange(const Texts& request);
    Answer<Texts> Receive();
    void Start();
    bool Send(const Texts& request);

    const std::string m_program;
    const std::chrono::milliseconds m_patience;
    std::unique_ptr<ReaderProcess> m_process;
    int m_wake; // an eventfd: readable while cancelled
    std::atomic<bool> m_cancelled = false;
};

} // namespace korvel::media

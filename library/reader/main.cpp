// korvel-mediareader: reads media files for the controller, so that nothing in them can harm it. It answers
// one request after the other on the socket that is its standard input and output, and ends with it.
#include <sys/resource.h>
#include <sys/socket.h>
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <array>
#include <csignal>
#include <stdexcept>

#include "Folders.h"
#include "ReaderWords.h"
#include "Records.h"
#include "TagReader.h"
#include "common/Program.h"

namespace {

using namespace korvel::media;

// What the largest tags that are read take several times over. The sanitizers' own memory is beyond any
// limit.
constexpr rlim_t kMaxMemory = 1ul << 30;
constexpr rlim_t kMaxOpenFiles = 16;
// Of processor time, for each file.
constexpr rlim_t kMaxSeconds = 10;

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr bool kSanitized = true;
#elif defined(__has_feature)
constexpr bool kSanitized = __has_feature(address_sanitizer) || __has_feature(thread_sanitizer);
#else
constexpr bool kSanitized = false;
#endif

void Limit(__rlimit_resource resource, rlim_t value) {
    const rlimit limit{value, value};
    ::setrlimit(resource, &limit);
}

void SetLimits() {
    if (!kSanitized)
        Limit(RLIMIT_AS, kMaxMemory);
    Limit(RLIMIT_FSIZE, 0);
    Limit(RLIMIT_CORE, 0);
    Limit(RLIMIT_NOFILE, kMaxOpenFiles);
    // A signal to the whole group, such as Ctrl-C, must not be held against the file: the controller ends
    // this.
    for (const int signal : {SIGINT, SIGTERM, SIGHUP})
        std::signal(signal, SIG_IGN);
    std::signal(SIGPIPE, SIG_IGN);
}

void LimitNextFile() {
    rusage used{};
    ::getrusage(RUSAGE_SELF, &used);
    const auto seconds = static_cast<rlim_t>(used.ru_utime.tv_sec + used.ru_stime.tv_sec);
    const rlimit limit{seconds + kMaxSeconds, RLIM_INFINITY};
    ::setrlimit(RLIMIT_CPU, &limit);
}

Record Failure(FileReader::Outcome outcome, const std::string& why) {
    return {outcome == FileReader::Outcome::NoAudio ? words::kNoAudio : words::kRefused, why};
}

Record Tags(const std::string& path) {
    const auto answer = ReadTags(path);
    if (answer.outcome != FileReader::Outcome::Done)
        return Failure(answer.outcome, answer.why);
    const FileTags& tags = answer.value;
    return {words::kDone,
            tags.title,
            tags.artist,
            tags.album,
            tags.albumArtist,
            tags.genre,
            tags.track,
            tags.disc,
            std::to_string(tags.durationMs),
            tags.hasPicture ? "1" : "0"};
}

Record Picture(const std::string& path) {
    auto picture = ReadCover(path);
    if (!picture)
        return {words::kDone};
    return {words::kDone, std::move(picture->mimeType), std::move(picture->bytes)};
}

Record Sound(const std::string& path) {
    switch (LookForSound(path)) {
        case SoundFile::Sound:
            return {words::kDone};
        case SoundFile::NoSound:
            return {words::kNoAudio, ""};
        case SoundFile::Unreadable:
            break;
    }
    return {words::kRefused, ""};
}

std::string Letter(FileType type) {
    return std::string(1, "fdlo"[static_cast<std::size_t>(type)]);
}

Record Look(const std::string& path) {
    const auto answer = LookAt(path);
    if (answer.outcome != FileReader::Outcome::Done)
        return Failure(answer.outcome, answer.why);
    const FileStatus& status = answer.value;
    return {words::kDone,
            Letter(status.type),
            std::to_string(status.fileSystem),
            std::to_string(status.number),
            std::to_string(status.size),
            std::to_string(status.timeNs)};
}

Record List(const std::string& path) {
    const auto answer = ListFolder(path);
    if (answer.outcome != FileReader::Outcome::Done)
        return Failure(answer.outcome, answer.why);
    Record record = {words::kDone};
    for (const FolderEntry& entry : answer.value)
        record.push_back(Letter(entry.type) + entry.name);
    return record;
}

Record Answer(const Record& request) {
    const std::string& word = request.at(0);
    const std::string& path = request.at(1);
    if (word == words::kTags)
        return Tags(path);
    if (word == words::kPicture)
        return Picture(path);
    if (word == words::kSound)
        return Sound(path);
    if (word == words::kLook)
        return Look(path);
    if (word == words::kList)
        return List(path);
    return {words::kDone};
}

std::string Encoded(const Record& answer) {
    try {
        return EncodeRecord(answer);
    } catch (const BadRecord&) {
        return EncodeRecord({words::kRefused, "it holds too much"});
    }
}

bool WriteAll(std::string_view bytes) {
    while (!bytes.empty()) {
        const ssize_t written = ::write(STDOUT_FILENO, bytes.data(), bytes.size());
        if (written <= 0)
            return false;
        bytes.remove_prefix(static_cast<std::size_t>(written));
    }
    return true;
}

// Whether somebody is at the other end of the socket.
bool IsAsked() {
    sockaddr_storage peer{};
    socklen_t length = sizeof peer;
    return ::getpeername(STDIN_FILENO, reinterpret_cast<sockaddr*>(&peer), &length) == 0;
}

void Serve() {
    RecordReader in;
    std::array<char, 65536> buffer;
    for (;;) {
        const ssize_t got = ::read(STDIN_FILENO, buffer.data(), buffer.size());
        if (got <= 0)
            return;
        in.Add({buffer.data(), static_cast<std::size_t>(got)});
        while (const auto request = in.Next()) {
            LimitNextFile();
            if (!WriteAll(Encoded(Answer(*request))))
                return;
        }
    }
}

} // namespace

int main(int argc, char** argv) {
    CLI::App app("Reads media files for the controller, which starts it.", "korvel-mediareader");
    return korvel::common::RunProgram(app, argc, argv, [] {
        if (!IsAsked())
            throw std::runtime_error("the controller starts this program");
        SetLimits();
        Serve();
        return korvel::common::kExitDone;
    });
}

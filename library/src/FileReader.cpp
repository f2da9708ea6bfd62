#include "library/FileReader.h"

#include <poll.h>
#include <sys/eventfd.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <filesystem>
#include <stdexcept>

#include "Answers.h"
#include "ReaderProcess.h"
#include "ReaderWords.h"

namespace korvel::media {

namespace {

using Clock = std::chrono::steady_clock;
using Texts = std::vector<std::string>;

} // namespace

std::string FileReader::DefaultProgram() {
    return std::filesystem::read_symlink("/proc/self/exe").parent_path() / "korvel-mediareader";
}

FileReader::FileReader(std::string program, std::chrono::milliseconds patience)
    : m_program(std::move(program)),
      m_patience(patience),
      m_process(std::make_unique<ReaderProcess>()),
      m_wake(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {
    if (m_wake < 0)
        throw std::runtime_error("no descriptor is left for a reader of media files");
}

FileReader::~FileReader() {
    ::close(m_wake);
}

template <class Value>
FileReader::Answer<Value> FileReader::Ask(const char* what, const std::string& path) {
    Answer<Texts> reply = Exchange({what, path});
    Answer<Value> answer{reply.outcome, {}, std::move(reply.why)};
    if (answer.outcome == Outcome::Done && !ReadAnswer(reply.value, answer.value)) {
        m_process->End();
        return {Outcome::Died, {}, "the reader answered nonsense"};
    }
    return answer;
}

FileReader::Answer<FileTags> FileReader::ReadTags(const std::string& path) {
    return Ask<FileTags>(words::kTags, path);
}

FileReader::Answer<std::optional<CoverImage>> FileReader::ReadPicture(const std::string& path) {
    return Ask<std::optional<CoverImage>>(words::kPicture, path);
}

FileReader::Answer<SoundFile> FileReader::FindSound(const std::string& path) {
    return Ask<SoundFile>(words::kSound, path);
}

FileReader::Answer<FileStatus> FileReader::Look(const std::string& path) {
    return Ask<FileStatus>(words::kLook, path);
}

FileReader::Answer<std::vector<FolderEntry>> FileReader::List(const std::string& path) {
    return Ask<std::vector<FolderEntry>>(words::kList, path);
}

void FileReader::Start() {
    m_process->Start(m_program);
    // A program that cannot run at all must not be held against the file.
    if (Send({words::kHello, ""}) && Receive().outcome == Outcome::Done)
        return;
    const std::string end = m_process->End();
    if (!m_cancelled)
        throw std::runtime_error("cannot start " + m_program + ": it " + end);
}

FileReader::Answer<Texts> FileReader::Exchange(const Texts& request) {
    if (!m_process->IsRunning() && !m_cancelled)
        Start();
    if (m_cancelled)
        return {Outcome::Cancelled, {}, "cancelled"};
    Answer<Texts> answer;
    if (Send(request))
        answer = Receive();
    else
        answer.outcome = Outcome::Died;
    if (answer.outcome == Outcome::Died)
        answer.why = "the reader " + m_process->End();
    else if (answer.outcome == Outcome::Stalled || answer.outcome == Outcome::Cancelled)
        m_process->End();
    return answer;
}

bool FileReader::Send(const Texts& request) {
    // It takes one request at a time, which fits into the socket: this never waits.
    const std::string bytes = EncodeRecord(request);
    const ssize_t sent =
        ::send(m_process->GetSocket(), bytes.data(), bytes.size(), MSG_NOSIGNAL | MSG_DONTWAIT);
    return sent == static_cast<ssize_t>(bytes.size());
}

FileReader::Answer<Texts> FileReader::Receive() {
    const auto end = Clock::now() + m_patience;
    RecordReader reader;
    std::array<char, 65536> buffer;
    for (;;) {
        const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(end - Clock::now());
        std::array<pollfd, 2> ready = {pollfd{m_process->GetSocket(), POLLIN, 0}, pollfd{m_wake, POLLIN, 0}};
        const int count =
            left.count() > 0 ? ::poll(ready.data(), ready.size(), static_cast<int>(left.count())) : 0;
        if (count < 0 && errno == EINTR)
            continue;
        if (m_cancelled)
            return {Outcome::Cancelled, {}, "cancelled"};
        if (count == 0)
            return {Outcome::Stalled, {}, "no answer in " + std::to_string(m_patience.count() / 1000) + " s"};
        const ssize_t got = ::recv(m_process->GetSocket(), buffer.data(), buffer.size(), MSG_DONTWAIT);
        if (got < 0 && (errno == EAGAIN || errno == EINTR))
            continue;
        if (got <= 0)
            return {Outcome::Died, {}, ""};
        try {
            reader.Add({buffer.data(), static_cast<std::size_t>(got)});
            if (auto record = reader.Next()) {
                const std::string word = record->empty() ? "" : record->front();
                const std::string why = record->size() == 2 ? (*record)[1] : "";
                if (word == words::kNoAudio)
                    return {Outcome::NoAudio, {}, why};
                if (word == words::kRefused)
                    return {Outcome::Unreadable, {}, why};
                return {word == words::kDone ? Outcome::Done : Outcome::Died, std::move(*record), ""};
            }
        } catch (const BadRecord&) {
            return {Outcome::Died, {}, ""};
        }
    }
}

void FileReader::Rest() {
    m_process->End();
}

void FileReader::Cancel() {
    m_cancelled = true;
    const std::uint64_t one = 1;
    [[maybe_unused]] const ssize_t written = ::write(m_wake, &one, sizeof one);
}

void FileReader::Resume() {
    std::uint64_t count = 0;
    [[maybe_unused]] const ssize_t got = ::read(m_wake, &count, sizeof count);
    m_cancelled = false;
}

} // namespace korvel::media

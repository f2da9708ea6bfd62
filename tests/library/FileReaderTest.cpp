// The program that reads files, and what becomes of what harms it.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <set>
#include <thread>

#include "AudioFiles.h"
#include "BoundedStream.h"
#include "Folders.h"
#include "HangingFile.h"
#include "HostileFiles.h"
#include "ScanHarness.h"
#include "TempFolder.h"
#include "library/FileReader.h"

namespace fs = std::filesystem;
using namespace std::chrono_literals;

namespace korvel::media {
namespace {

using Outcome = FileReader::Outcome;

// The programs that this one has started and that are still there.
std::set<pid_t> Children() {
    std::set<pid_t> children;
    for (const auto& task : fs::directory_iterator("/proc/self/task")) {
        std::ifstream list(task.path() / "children");
        for (pid_t child = 0; list >> child;)
            children.insert(child);
    }
    return children;
}

rlim_t LimitOf(pid_t process, __rlimit_resource resource) {
    rlimit limit{};
    EXPECT_EQ(::prlimit(process, resource, nullptr, &limit), 0);
    return limit.rlim_cur;
}

std::time_t ProcessorSecondsOf(pid_t process) {
    clockid_t clock{};
    timespec used{};
    EXPECT_EQ(::clock_getcpuclockid(process, &clock), 0);
    EXPECT_EQ(::clock_gettime(clock, &used), 0);
    return used.tv_sec;
}

class Reader : public testing::Test {
protected:
    std::string Put(const std::string& name, const std::string& bytes) { return folder.Write(name, bytes); }

    TempFolder folder;
    FileReader reader;
};

TEST_F(Reader, ReadsTagsPicturesSoundAndFolders) {
    const std::string path = Put("x/a.wav", WavBytes());
    ASSERT_TRUE(Tag(path, {{"TITLE", "Blue"}, {"TRACKNUMBER", "3/12"}}));
    ASSERT_TRUE(AddPicture(path, JpegBytes("inside")));
    const auto tags = reader.ReadTags(path);
    EXPECT_EQ(tags.outcome, Outcome::Done);
    EXPECT_EQ(tags.value.title, "Blue");
    EXPECT_EQ(tags.value.track, "3/12");
    EXPECT_EQ(tags.value.durationMs, 100u);
    EXPECT_TRUE(tags.value.hasPicture);
    EXPECT_EQ(reader.ReadPicture(path).value->bytes, JpegBytes("inside"));
    EXPECT_EQ(reader.FindSound(path).outcome, Outcome::Done);
    EXPECT_EQ(reader.Look(path).value.size, fs::file_size(path));
    const auto list = reader.List(folder / "x");
    ASSERT_EQ(list.value.size(), 1u);
    EXPECT_EQ(list.value[0].name, "a.wav");
    EXPECT_EQ(list.value[0].type, FileType::File);
    EXPECT_EQ(Children().size(), 1u);
}

TEST_F(Reader, TellsWhatItCannotRead) {
    EXPECT_EQ(reader.ReadTags(folder / "none.wav").outcome, Outcome::Unreadable);
    EXPECT_EQ(reader.Look(folder / "none.wav").why, "No such file or directory");
    EXPECT_EQ(reader.List(folder / "none").why, "No such file or directory");
    const auto words = reader.ReadTags(Put("words.wav", "words"));
    EXPECT_EQ(words.outcome, Outcome::NoAudio);
    EXPECT_EQ(words.why, "no audio can be read from it");
    EXPECT_FALSE(reader.ReadPicture(folder / "none.wav").value);
}

TEST_F(Reader, DiesInsteadOfTheController) {
    EXPECT_EQ(reader.Look(folder.Path()).outcome, Outcome::Done);
    errno = EAGAIN; // left by somebody else: the end of the answers is no reason to wait
    const auto answer = reader.ReadTags(Put("nested.m4a", NestedAtoms(200000)));
    EXPECT_EQ(answer.outcome, Outcome::Died);
    EXPECT_EQ(answer.why, kNestedAtomsEnd);
    EXPECT_TRUE(Children().empty());
    // The next file has the next one.
    EXPECT_EQ(reader.ReadTags(Put("a.wav", WavBytes())).outcome, Outcome::Done);
}

TEST_F(Reader, IsGivenUpWhenAFileHangs) {
    const std::string path = Put("a.wav", WavBytes());
    FileReader hasty(FileReader::DefaultProgram(), 3s);
    {
        const HangingFile hanging(path);
        EXPECT_EQ(hasty.ReadTags(path).outcome, Outcome::Stalled);
        EXPECT_TRUE(Children().empty());
    }
    EXPECT_EQ(hasty.ReadTags(path).outcome, Outcome::Done);
}

TEST_F(Reader, IsCancelledInTheMiddle) {
    const std::string path = Put("a.wav", WavBytes());
    const HangingFile hanging(path);
    std::thread other([&] { reader.Cancel(); });
    EXPECT_EQ(reader.ReadTags(path).outcome, Outcome::Cancelled);
    other.join();
    EXPECT_EQ(reader.Look(path).outcome, Outcome::Cancelled);
    reader.Resume();
    EXPECT_EQ(reader.Look(path).outcome, Outcome::Done);
}

TEST_F(Reader, HasLimits) {
    // Nor is what this program forgets to keep to itself.
    const int next = STDERR_FILENO + 1;
    ASSERT_TRUE(::fcntl(next, F_GETFD) >= 0 || ::dup2(STDERR_FILENO, next) == next);
    ASSERT_EQ(::fcntl(next, F_SETFD, 0), 0);
    EXPECT_EQ(reader.Look(folder.Path()).outcome, Outcome::Done);
    ASSERT_EQ(Children().size(), 1u);
    const pid_t program = *Children().begin();
    EXPECT_EQ(LimitOf(program, RLIMIT_FSIZE), 0u);
    EXPECT_EQ(LimitOf(program, RLIMIT_CORE), 0u);
    EXPECT_LE(LimitOf(program, RLIMIT_CPU), 20u);
#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
    EXPECT_EQ(LimitOf(program, RLIMIT_AS), 1u << 30);
#endif
    // Nothing of ours is open there: standard input, output and error.
    const auto files = fs::directory_iterator("/proc/" + std::to_string(program) + "/fd");
    EXPECT_EQ(std::distance(begin(files), end(files)), 3);
    ::fcntl(next, F_SETFD, FD_CLOEXEC);
    reader.Rest();
    EXPECT_TRUE(Children().empty());
}

TEST_F(Reader, HasItsProcessorTimeForEachFileAnew) {
    const std::string path = Put("a.mp3", Mp3WithTitle(kMaxTagBlock / 2));
    ASSERT_EQ(reader.ReadTags(path).outcome, Outcome::Done);
    const pid_t program = *Children().begin();
    const rlim_t first = LimitOf(program, RLIMIT_CPU);
    while (ProcessorSecondsOf(program) < 2)
        ASSERT_EQ(reader.ReadTags(path).outcome, Outcome::Done);
    EXPECT_EQ(reader.ReadTags(path).outcome, Outcome::Done);
    EXPECT_GT(LimitOf(program, RLIMIT_CPU), first);
}

TEST_F(Reader, LooksWhatAFileIsWhereTheFileSystemDoesNotTell) {
    Put("x/a.wav", "");
    dirent entry{};
    entry.d_type = DT_UNKNOWN;
    std::ranges::copy(std::string_view("a.wav"), entry.d_name);
    EXPECT_EQ(TypeOf(folder / "x", entry), FileType::File);
    std::ranges::copy(std::string_view("none."), entry.d_name);
    EXPECT_EQ(TypeOf(folder / "x", entry), FileType::Other);
    entry.d_type = DT_DIR;
    EXPECT_EQ(TypeOf(folder / "x", entry), FileType::Folder);
}

TEST_F(Reader, CutsTextsAtACharacter) {
    const std::string path = Put("a.wav", WavBytes());
    std::string title = "x";
    while (title.size() < 2 * kMaxTagText)
        title += "å"; // two bytes: the limit falls into one
    ASSERT_TRUE(Tag(path, {{"TITLE", title}}));
    EXPECT_EQ(reader.ReadTags(path).value.title, title.substr(0, kMaxTagText - 1));
}

TEST_F(Reader, LeavesTagsOutThatAreTooLarge) {
    const auto small = reader.ReadTags(Put("small.mp3", Mp3WithTitle(1u << 20)));
    EXPECT_EQ(small.outcome, Outcome::Done);
    EXPECT_EQ(small.value.title, std::string(kMaxTagText, 't'));
    const auto large = reader.ReadTags(Put("large.mp3", Mp3WithTitle(kMaxTagBlock)));
    EXPECT_EQ(large.outcome, Outcome::Done);
    EXPECT_EQ(large.value.title, "");
    EXPECT_GT(large.value.durationMs, 0u);
    const auto alone = reader.ReadTags(Put("alone.mp3", Mp3WithTitle(kMaxTagBlock, 0)));
    EXPECT_EQ(alone.outcome, Outcome::NoAudio);
    EXPECT_EQ(alone.why, "its tags are too large");
}

TEST_F(Reader, LeavesPicturesOutThatAreTooLarge) {
    const std::string path = Put("a.wav", WavBytes());
    ASSERT_TRUE(AddPicture(path, JpegBytes(std::string(kMaxCoverBytes, 'x'))));
    EXPECT_FALSE(reader.ReadTags(path).value.hasPicture);
    EXPECT_FALSE(reader.ReadPicture(path).value);
}

TEST_F(Reader, ReadsSoMuchOfAFileAtMost) {
    constexpr unsigned long kBlock = BoundedStream::kMaxRead / 4;
    const std::string path = Put("a.wav", WavBytes());
    fs::resize_file(path, 2 * BoundedStream::kMaxRead);
    BoundedStream stream(path.c_str());
    EXPECT_TRUE(stream.readBlock(kMaxTagBlock + 1).isEmpty());
    EXPECT_TRUE(stream.WasBounded());
    for (int i = 0; i < 4; ++i)
        EXPECT_EQ(stream.readBlock(kBlock).size(), kBlock);
    EXPECT_TRUE(stream.readBlock(1).isEmpty());
}

TEST_F(Reader, SaysWhichProgramCannotBeStarted) {
    FileReader none(folder / "none");
    try {
        none.Look("/");
        FAIL();
    } catch (const std::runtime_error& error) {
        EXPECT_EQ(error.what(), "cannot start " + (folder / "none") + ": No such file or directory");
    }
    // One that runs, but is another program.
    FileReader other("/bin/true");
    EXPECT_THROW(other.Look("/"), std::runtime_error);
}

} // namespace
} // namespace korvel::media

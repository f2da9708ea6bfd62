// Media that cannot be played.
#include <sys/stat.h>

#include <algorithm>

#include "Bed.h"

namespace korvel::tests {
namespace {

class Failure : public Bed {
protected:
    void SetUp() override {
        m_serverOptions = {"--catalog", "127.0.0.1:1"}; // where nothing listens
        m_driver = Connect();
        m_stream = std::to_string(m_driver->AddStream());
    }
    // The event that a media brings after its OK, without "* addmed ".
    std::string EventOf(const std::string& media) {
        EXPECT_EQ(m_driver->Ask("addmed " + m_stream + " " + media), "OK addmed " + m_stream) << media;
        const std::string event = m_driver->NextEvent();
        const std::string start = "* addmed ";
        EXPECT_TRUE(event.starts_with(start)) << event;
        return event.substr(std::min(event.size(), start.size()));
    }
    std::string Bad(const std::string& reason) { return "BAD=" + m_stream + " " + reason; }

    std::unique_ptr<LineClient> m_driver;
    std::string m_stream;
};

TEST_F(Failure, FilesThatCannotBeOpened) {
    EXPECT_EQ(EventOf(FileMedia(PathOf("missing.flac"))), Bad("No such file or directory"));
    EXPECT_EQ(EventOf(FileMedia(PathOf(""))), Bad("not a file"));
    // Opening a pipe without a writer would block for ever.
    ASSERT_EQ(::mkfifo(PathOf("pipe").c_str(), 0600), 0);
    EXPECT_EQ(EventOf(FileMedia(PathOf("pipe"))), Bad("not a file"));
    EXPECT_EQ(EventOf(FileMedia("/" + std::string(5000, 'a'))), Bad("File name too long"));
}

TEST_F(Failure, FilesWithoutSound) {
    WriteFile(PathOf("text.mp3"), "This is a letter and not a song, however long it goes on.\n");
    WriteFile(PathOf("empty.wav"), "");
    WriteFile(PathOf("noise.bin"), std::string(4096, '\x01'));
    for (const char* name : {"text.mp3", "empty.wav", "noise.bin"})
        EXPECT_TRUE(EventOf(FileMedia(PathOf(name))).starts_with(Bad(""))) << name;
    EXPECT_TRUE(EventOf(FileMedia(ToneFile("nothing.wav", {}))).starts_with(Bad("")));
}

TEST_F(Failure, AFileCutShortPlaysAsFarAsItGoes) {
    const std::string whole = WavOf({{500, 2}});
    WriteFile(PathOf("cut.wav"), whole.substr(0, whole.size() / 8));
    EXPECT_EQ(EventOf(FileMedia(PathOf("cut.wav"))), "EOM=" + m_stream);
}

TEST_F(Failure, ReferencesThatMakeNoSense) {
    EXPECT_EQ(EventOf("\"file:/home/a.flac\""), Bad("path is not absolute"));
    EXPECT_EQ(EventOf("\"file:/stream-gopher://x\""), Bad("not an http address"));
    EXPECT_EQ(EventOf("\"rhap://1:Tra.1\""), Bad("the catalogue cannot be reached: Connection refused"));
    EXPECT_EQ(EventOf("\"rhap://Tra.1\""), Bad("not a reference to the catalogue"));
    EXPECT_EQ(EventOf("\"other\""), Bad("unknown kind of reference"));
    EXPECT_EQ(EventOf("line-in"), Bad("no input of this name"));
}

TEST_F(Failure, TheStreamPlaysOnAfterwards) {
    EXPECT_EQ(EventOf(FileMedia(PathOf("missing.flac"))), Bad("No such file or directory"));
    EXPECT_EQ(EventOf(FileMedia(ToneFile("a.wav", {{500, 0.1}}))), "EOM=" + m_stream);
}

} // namespace
} // namespace korvel::tests

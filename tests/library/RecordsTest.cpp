// The talk with the program that reads files.
#include <gtest/gtest.h>

#include "Answers.h"

namespace korvel::media {
namespace {

TEST(Records, ComeOutAsTheyWentIn) {
    const Record record = {"done", "", std::string("a\0b\n", 4), std::string(100000, 'x')};
    RecordReader reader;
    reader.Add(EncodeRecord(record) + EncodeRecord({}));
    EXPECT_EQ(reader.Next(), record);
    EXPECT_EQ(reader.Next(), Record{});
    EXPECT_EQ(reader.Next(), std::nullopt);
}

TEST(Records, MayComeByteByByte) {
    const Record record = {"one", "two"};
    RecordReader reader;
    const std::string bytes = EncodeRecord(record);
    for (std::size_t i = 0; i + 1 < bytes.size(); ++i) {
        reader.Add(bytes.substr(i, 1));
        EXPECT_EQ(reader.Next(), std::nullopt);
    }
    reader.Add(bytes.substr(bytes.size() - 1));
    EXPECT_EQ(reader.Next(), record);
}

TEST(Records, ThatDoNotAddUpEndTheTalk) {
    for (const std::string& bytes : {std::string("\3\0\0\0abc", 7),       // no room for a length
                                     std::string("\5\0\0\0\2\0\0\0a", 9), // a text beyond the end
                                     std::string("\4\0\0\0\xFF\xFF\xFF\xFF", 8),
                                     std::string("\xFF\xFF\xFF\xFF", 4)}) { // longer than any
        RecordReader reader;
        reader.Add(bytes);
        EXPECT_THROW(reader.Next(), BadRecord);
    }
}

TEST(Records, AreLimited) {
    EXPECT_NO_THROW(EncodeRecord({std::string(kMaxRecordBytes - 8, 'x')}));
    EXPECT_THROW(EncodeRecord({std::string(kMaxRecordBytes, 'x')}), BadRecord);
    EXPECT_THROW(EncodeRecord({std::string(kMaxRecordBytes / 2, 'x'), std::string(kMaxRecordBytes / 2, 'x')}),
                 BadRecord);
}

template <class Value>
bool Reads(const Record& answer) {
    Value value{};
    return ReadAnswer(answer, value);
}

Record Tags(const std::string& title, const std::string& duration) {
    return {"done", title, "", "", "", "", "", "", duration, "0"};
}

TEST(Answers, OfWrongLengthAreNonsense) {
    EXPECT_TRUE(Reads<FileTags>(Tags("Blue", "100")));
    EXPECT_FALSE(Reads<FileTags>({"done"}));
    EXPECT_FALSE(Reads<FileTags>(Tags(std::string(kMaxTagText + 1, 'x'), "100")));
    EXPECT_FALSE(Reads<FileStatus>({"done", "f", "1", "2", "3"}));
    EXPECT_FALSE(Reads<SoundFile>({"done", "more"}));
    EXPECT_TRUE(Reads<std::optional<CoverImage>>({"done", "image/png", std::string(kMaxCoverBytes, 'x')}));
    EXPECT_FALSE(
        Reads<std::optional<CoverImage>>({"done", "image/png", std::string(kMaxCoverBytes + 1, 'x')}));
}

TEST(Answers, WithPicturesOfOtherTypesAreNonsense) {
    EXPECT_TRUE(Reads<std::optional<CoverImage>>({"done", "image/webp", "RIFF"}));
    for (const char* type : {"", "image/", "text/html", "image/png\r\nSet-Cookie: a=b"})
        EXPECT_FALSE(Reads<std::optional<CoverImage>>({"done", type, "RIFF"})) << type;
}

TEST(Answers, WithNumbersThatAreNoneAreNonsense) {
    for (const char* number : {"", "x", "1x", " 1", "-1", "4294967296"})
        EXPECT_FALSE(Reads<FileTags>(Tags("Blue", number))) << number;
    EXPECT_TRUE(Reads<FileStatus>({"done", "d", "1", "2", "3", "-4"}));
    EXPECT_FALSE(Reads<FileStatus>({"done", "x", "1", "2", "3", "4"}));
    EXPECT_FALSE(Reads<FileStatus>({"done", "", "1", "2", "3", "4"}));
}

TEST(Answers, NameWhatIsInTheFolderAlone) {
    EXPECT_TRUE(Reads<std::vector<FolderEntry>>({"done", "fa.mp3", "d...", "l "}));
    for (const std::string& entry : {std::string(), std::string("f"), std::string("f."), std::string("d.."),
                                     std::string("f../a"), std::string("fa\0b", 4), std::string("xa")})
        EXPECT_FALSE(Reads<std::vector<FolderEntry>>({"done", entry})) << entry;
}

} // namespace
} // namespace korvel::media

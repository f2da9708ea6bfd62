#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>
#include <vector>

#include "roomplayer/WavWriter.h"

namespace korvel::roomplayer {
namespace {

constexpr std::size_t kHeaderBytes = 44;

std::string Contents(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

std::uint32_t NumberAt(const std::string& bytes, std::size_t offset) {
    std::uint32_t value = 0;
    for (std::size_t i = 4; i > 0; --i)
        value = value << 8 | static_cast<unsigned char>(bytes.at(offset + i - 1));
    return value;
}

class WavWriterTest : public testing::Test {
protected:
    void TearDown() override { std::filesystem::remove(m_path); }

    std::filesystem::path m_path =
        std::filesystem::path(testing::TempDir()) /
        (std::string("korvel-wav-") + testing::UnitTest::GetInstance()->current_test_info()->name() + ".wav");
};

TEST_F(WavWriterTest, AnEmptyRecordingIsAValidFile) {
    { const WavWriter writer(m_path); }
    const std::string bytes = Contents(m_path);
    ASSERT_EQ(bytes.size(), kHeaderBytes);
    EXPECT_EQ(bytes.substr(0, 4) + bytes.substr(8, 8), "RIFFWAVEfmt ");
    EXPECT_EQ(NumberAt(bytes, 24), 48000U);
    EXPECT_EQ(NumberAt(bytes, 40), 0U);
}

TEST_F(WavWriterTest, TheHeaderHasTheSizesInTheEnd) {
    const std::vector<std::uint8_t> samples(1000, 7);
    {
        WavWriter writer(m_path);
        EXPECT_TRUE(writer.Append(samples));
        EXPECT_TRUE(writer.Append(samples));
    }
    const std::string bytes = Contents(m_path);
    ASSERT_EQ(bytes.size(), kHeaderBytes + 2000);
    EXPECT_EQ(NumberAt(bytes, 4), 2036U);
    EXPECT_EQ(NumberAt(bytes, 40), 2000U);
    EXPECT_EQ(bytes.back(), 7);
}

TEST_F(WavWriterTest, AGrowingFileIsReadable) {
    const std::vector<std::uint8_t> second(48000 * 4, 7);
    WavWriter writer(m_path);
    EXPECT_TRUE(writer.Append(second));
    EXPECT_EQ(NumberAt(Contents(m_path), 40), second.size());
}

TEST_F(WavWriterTest, TimeWithoutSoundIsFilledWithSilence) {
    const std::vector<std::uint8_t> samples(48000, 7); // a quarter of a second
    WavWriter writer(m_path);
    EXPECT_TRUE(writer.Append(samples));
    EXPECT_TRUE(writer.FillUpTo(std::chrono::milliseconds(1000)));
    EXPECT_EQ(writer.Length(), std::chrono::milliseconds(1000));
    EXPECT_TRUE(writer.FillUpTo(std::chrono::milliseconds(500))); // it is longer already
    EXPECT_EQ(NumberAt(Contents(m_path), 40), 192000U);
    EXPECT_TRUE(writer.Append(samples));
    EXPECT_EQ(writer.Length(), std::chrono::milliseconds(1250));
    const std::string bytes = Contents(m_path);
    ASSERT_EQ(bytes.size(), kHeaderBytes + 192000 + samples.size());
    const std::string filled = bytes.substr(kHeaderBytes + samples.size(), 192000 - samples.size());
    EXPECT_EQ(filled, std::string(filled.size(), '\0'));
    EXPECT_EQ(bytes.substr(kHeaderBytes + 192000), std::string(samples.size(), 7));
}

TEST_F(WavWriterTest, ARecordingMayOutgrowWhatAHeaderCanSay) {
    const std::vector<std::uint8_t> samples(1000, 7);
    WavWriter writer(m_path);
    EXPECT_TRUE(writer.FillUpTo(std::chrono::hours(7))); // a hole that takes no room
    EXPECT_TRUE(writer.Append(samples));
    EXPECT_EQ(std::filesystem::file_size(m_path), kHeaderBytes + std::uint64_t{7} * 3600 * 192000 + 1000);
    std::ifstream file(m_path, std::ios::binary);
    std::string header(kHeaderBytes, ' ');
    file.read(header.data(), kHeaderBytes);
    EXPECT_EQ(NumberAt(header, 40), 4294967295U - kHeaderBytes);
    EXPECT_EQ(NumberAt(header, 4), 4294967295U - 8);
}

TEST_F(WavWriterTest, AnUnusablePathIsAnError) {
    EXPECT_THROW(WavWriter("/nonexistent/a.wav"), std::runtime_error);
}

TEST_F(WavWriterTest, AFullDiskEndsTheRecordingAndNothingElse) {
    EXPECT_THROW(WavWriter("/dev/full"), std::runtime_error);
}

} // namespace
} // namespace korvel::roomplayer

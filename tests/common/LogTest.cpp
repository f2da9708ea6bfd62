#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <chrono>
#include <cstdio>
#include <memory>
#include <string>
#include <vector>

#include "common/Log.h"
#include "common/src/LogSink.h"

namespace korvel::common {
namespace {

using namespace std::chrono_literals;

// A file that what is written to it can be read from.
class LogFile {
public:
    LogFile() : m_file(std::tmpfile()) {}
    ~LogFile() { std::fclose(m_file); }
    LogFile(const LogFile&) = delete;
    LogFile& operator=(const LogFile&) = delete;

    std::FILE* Get() const { return m_file; }
    std::vector<std::string> Lines() const {
        std::vector<std::string> lines;
        std::rewind(m_file);
        char line[8192];
        while (std::fgets(line, sizeof line, m_file))
            lines.emplace_back(line);
        std::fseek(m_file, 0, SEEK_END);
        return lines;
    }

private:
    std::FILE* m_file;
};

// The line with every digit as 0.
std::string ShapeOf(std::string line) {
    std::ranges::replace_if(
        line, [](unsigned char character) { return std::isdigit(character) != 0; }, '0');
    return line;
}

TEST(Log, ALineIsTimeLevelAndText) {
    const LogFile file;
    const Log log(LogLevel::Debug, file.Get());
    log.Error("a");
    log.Warning("b");
    log.Info("c");
    log.Debug("d");
    const auto lines = file.Lines();
    ASSERT_EQ(lines.size(), 4u);
    const std::string time = "0000-00-00 00:00:00.000 ";
    EXPECT_EQ(ShapeOf(lines[0]), time + "error   a\n");
    EXPECT_EQ(ShapeOf(lines[1]), time + "warning b\n");
    EXPECT_EQ(ShapeOf(lines[2]), time + "info    c\n");
    EXPECT_EQ(ShapeOf(lines[3]), time + "debug   d\n");
}

TEST(Log, LevelsBeyondTheOneThatWasAskedForAreSilent) {
    const LogFile file;
    const Log log(LogLevel::Warning, file.Get());
    log.Error("a");
    log.Warning("b");
    log.Info("c");
    log.Debug("d");
    EXPECT_EQ(file.Lines().size(), 2u);
}

TEST(Log, ATextIsOneLineAndNoLongerThanALineMayBe) {
    const LogFile file;
    const Log log(LogLevel::Info, file.Get());
    log.Info("a\r\nb {} %v\n");
    log.Info(std::string(kMaxLogLine + 100, 'x'));
    const auto lines = file.Lines();
    ASSERT_EQ(lines.size(), 2u);
    EXPECT_TRUE(lines[0].ends_with(" a  b {} %v\n")) << lines[0];
    EXPECT_TRUE(lines[1].ends_with(" " + std::string(kMaxLogLine, 'x') + "\n"));
}

TEST(Log, ASourceThatGoesOnAndOnHidesNoOther) {
    const LogFile file;
    const Log log(LogLevel::Info, file.Get());
    const auto pass = [&](const std::string& source) { log.WriteFor(source, LogLevel::Info, source); };
    for (int i = 0; i < 5000; ++i)
        pass("room 1");
    pass("room 2");
    EXPECT_TRUE(file.Lines().back().ends_with("room 2\n"));
}

TEST(Log, APlaceThatGoesOnAndOnIsCountedAndOthersAreNot) {
    const LogFile file;
    constexpr int kLines = 5000;
    {
        const Log log(LogLevel::Info, file.Get());
        for (int i = 0; i < kLines; ++i)
            log.Info("again and again");
        log.Info("something else");
    }
    const auto lines = file.Lines();
    EXPECT_LT(lines.size(), kLines / 2u);
    EXPECT_TRUE(
        std::ranges::any_of(lines, [](const auto& line) { return line.ends_with("something else\n"); }));
    EXPECT_TRUE(std::ranges::any_of(
        lines, [](const auto& line) { return line.find("left out ") != std::string::npos; }));
}

// A line from the given place of a program at the given time.
class LogSinkTest : public testing::Test {
protected:
    void Write(std::chrono::milliseconds at, const std::string& text, int place = 1,
               spdlog::level::level_enum level = spdlog::level::info, const std::string& source = "") {
        sink->log({spdlog::log_clock::time_point(1000h + at),
                   spdlog::source_loc("a.cpp", place, source.c_str()), "", level, text});
        sink->flush();
    }
    void Write(std::chrono::milliseconds at, unsigned count) {
        for (unsigned i = 0; i < count; ++i)
            Write(at, "x");
    }
    void WriteFor(const std::string& source, std::chrono::milliseconds at, const std::string& text) {
        Write(at, text, 1, spdlog::level::info, source);
    }
    // The texts since the last question.
    std::vector<std::string> Texts() {
        std::vector<std::string> texts;
        const auto lines = file.Lines();
        for (; m_read < lines.size(); ++m_read)
            texts.push_back(lines[m_read].substr(0, lines[m_read].size() - 1));
        return texts;
    }

    const LogFile file;
    std::unique_ptr<LogSink> sink = [this] {
        auto made = std::make_unique<LogSink>(file.Get());
        made->set_pattern("%v");
        return made;
    }();

private:
    std::size_t m_read = 0;
};

using Expected = std::vector<std::string>;

TEST_F(LogSinkTest, TenLinesOfASecondAreWritten) {
    Write(0ms, kMaxLogLinesPerSecond);
    EXPECT_EQ(Texts(), Expected(10, "x"));
    Write(999ms, 1);
    EXPECT_EQ(Texts().size(), 0u);
}

TEST_F(LogSinkTest, TheNextSecondBeginsWithTheCount) {
    Write(0ms, 12);
    Write(500ms, "the last");
    Texts();
    Write(1000ms, "y");
    EXPECT_EQ(Texts(), (Expected{"left out 3 lines, the last: the last", "y"}));
    Write(1001ms, 20);
    EXPECT_EQ(Texts().size(), 9u);
}

TEST_F(LogSinkTest, AnyLineBringsTheCountOfAnother) {
    Write(0ms, 11);
    Write(900ms, "other", 2);
    EXPECT_EQ(Texts().back(), "other");
    Write(1000ms, "other", 2);
    EXPECT_EQ(Texts(), (Expected{"left out 1 lines, the last: x", "other"}));
    Write(2000ms, "other", 2);
    EXPECT_EQ(Texts(), Expected{"other"}) << "the count comes once";
}

TEST_F(LogSinkTest, EachPlaceHasItsOwnTen) {
    for (int place = 1; place <= 3; ++place) {
        for (int i = 0; i < 11; ++i)
            Write(0ms, "x", place);
    }
    EXPECT_EQ(Texts().size(), 30u);
}

TEST_F(LogSinkTest, EachSourceOfAPlaceHasItsOwnTen) {
    for (int i = 0; i < 11; ++i)
        WriteFor("noisy", 0ms, "x");
    Texts();
    WriteFor("quiet", 0ms, "y");
    EXPECT_EQ(Texts(), Expected{"y"});
}

TEST_F(LogSinkTest, SourcesBeyondTheLimitShareTheirPlace) {
    for (std::size_t i = 0; i < kMaxLogSources; ++i)
        WriteFor("source " + std::to_string(i), 0ms, "x");
    Texts();
    for (int i = 0; i < 100; ++i)
        WriteFor("another " + std::to_string(i), 0ms, "y");
    EXPECT_EQ(Texts(), Expected(10, "y"));
    WriteFor("source 0", 0ms, "z");
    EXPECT_EQ(Texts(), Expected{"z"}) << "what has its own count keeps it";
}

TEST_F(LogSinkTest, ASourceThatHasBeenQuietForASecondMakesRoom) {
    for (std::size_t i = 0; i < kMaxLogSources; ++i)
        WriteFor("source " + std::to_string(i), 0ms, "x");
    for (int i = 0; i < 11; ++i)
        WriteFor("noisy", 1000ms, "x");
    Texts();
    WriteFor("quiet", 1000ms, "y");
    EXPECT_EQ(Texts(), Expected{"y"});
}

TEST_F(LogSinkTest, WhatIsLeftOutAtTheEndIsCounted) {
    Write(0ms, 15);
    Texts();
    sink.reset();
    EXPECT_EQ(Texts(), Expected{"left out 5 lines, the last: x"});
}

TEST_F(LogSinkTest, AClockThatIsPutBackSilencesNobody) {
    Write(5000ms, 11);
    Texts();
    Write(0ms, "y");
    EXPECT_EQ(Texts(), (Expected{"left out 1 lines, the last: x", "y"}));
}

TEST_F(LogSinkTest, DebugLinesAllCome) {
    for (int i = 0; i < 50; ++i)
        Write(0ms, "x", 1, spdlog::level::debug);
    EXPECT_EQ(Texts().size(), 50u);
}

} // namespace
} // namespace korvel::common

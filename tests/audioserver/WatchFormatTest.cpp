#include <gtest/gtest.h>

#include "audioserver/watch/WatchFormat.h"

namespace korvel::audioserver {
namespace {

using std::chrono::milliseconds;

const PlayPosition::Time kNow{milliseconds(812345)};

TEST(WatchFormat, SaysHello) {
    EXPECT_EQ(HelloLine("0123abcd", kNow, {}),
              "{\"hello\":1,\"run\":\"0123abcd\",\"clock\":812345,\"streams\":[]}\r\n");
    EXPECT_EQ(HelloLine("a", kNow, {3, 9}),
              "{\"hello\":1,\"run\":\"a\",\"clock\":812345,\"streams\":[3,9]}\r\n");
}

TEST(WatchFormat, AStreamThatHasNothing) {
    EXPECT_EQ(StreamLine(3, {}),
              "{\"stream\":3,\"media\":null,\"serial\":0,\"state\":\"stopped\",\"position\":null,"
              "\"duration\":null,\"buffer\":null,\"live\":false,\"canSeek\":false,"
              "\"error\":null,\"clients\":[]}\r\n");
}

TEST(WatchFormat, AStreamThatHasAll) {
    StreamFacts facts;
    facts.media = "\"file://a \xc3\xa4.flac\"";
    facts.serial = 4;
    facts.state = StreamState::kPlaying;
    facts.position = PlayPosition::Point{kNow, milliseconds(61500), true};
    facts.duration = 240000;
    facts.buffer = 75;
    facts.live = true;
    facts.canSeek = true;
    facts.error = "lost";
    facts.clients = {{"127.0.0.1", 5004}, {"fe80::1", 6200}};
    EXPECT_EQ(StreamLine(3, facts),
              "{\"stream\":3,\"media\":\"\\\"file://a \xc3\xa4.flac\\\"\",\"serial\":4,\"state\":\"playing\","
              "\"position\":{\"clock\":812345,\"ms\":61500,\"rate\":1},\"duration\":240000,\"buffer\":75,"
              "\"live\":true,\"canSeek\":true,\"error\":\"lost\","
              "\"clients\":[{\"ip\":\"127.0.0.1\",\"port\":5004},{\"ip\":\"fe80::1\",\"port\":6200}]}\r\n");
    facts.position->moves = false;
    EXPECT_NE(StreamLine(3, facts).find("\"ms\":61500,\"rate\":0}"), std::string::npos);
}

TEST(WatchFormat, EachStateHasItsWord) {
    const auto word = [](StreamState state) {
        StreamFacts facts;
        facts.state = state;
        const std::string line = StreamLine(1, facts);
        const auto start = line.find("\"state\":\"") + 9;
        return line.substr(start, line.find('"', start) - start);
    };
    EXPECT_EQ(word(StreamState::kStopped), "stopped");
    EXPECT_EQ(word(StreamState::kConnecting), "connecting");
    EXPECT_EQ(word(StreamState::kBuffering), "buffering");
    EXPECT_EQ(word(StreamState::kPlaying), "playing");
    EXPECT_EQ(word(StreamState::kPaused), "paused");
    EXPECT_EQ(word(StreamState::kReconnecting), "reconnecting");
    EXPECT_EQ(word(StreamState::kEnded), "ended");
    EXPECT_EQ(word(StreamState::kBad), "bad");
}

TEST(WatchFormat, Answers) {
    EXPECT_EQ(GoneLine(3), "{\"gone\":3}\r\n");
    EXPECT_EQ(PongLine(9, kNow), "{\"pong\":9,\"clock\":812345}\r\n");
    EXPECT_EQ(DoneLine(7), "{\"id\":7,\"done\":true}\r\n");
    EXPECT_EQ(ProblemLine(7, {WatchProblem::kLive}),
              "{\"id\":7,\"problem\":{\"code\":\"live\",\"text\":\"a live source has no other place to go "
              "to\"}}\r\n");
    EXPECT_EQ(ProblemLine({}, {WatchProblem::kMalformed, "no\nobject"}),
              "{\"problem\":{\"code\":\"malformed\",\"text\":\"the line is no request: no object\"}}\r\n");
}

TEST(WatchFormat, EachProblemStandsAtItsPlace) {
    for (std::size_t index = 0; index < kWatchProblems.size(); ++index)
        EXPECT_EQ(static_cast<std::size_t>(kWatchProblems.at(index).problem), index);
}

TEST(WatchFormat, AnyBytesMakeOneLineOfJson) {
    StreamFacts facts;
    facts.media = "raw\xe4\r\n";
    facts.error = std::string("\x00\x1b", 2);
    const std::string line = StreamLine(1, facts);
    EXPECT_EQ(line.find('\n'), line.size() - 1);
    EXPECT_NE(line.find("raw\xef\xbf\xbd\\r\\n"), std::string::npos) << line;
}

} // namespace
} // namespace korvel::audioserver

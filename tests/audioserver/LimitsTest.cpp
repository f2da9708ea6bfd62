// Lines and peers that go too far.
#include <random>

#include "Bed.h"

namespace korvel::tests {
namespace {

constexpr std::size_t kMaxLineBytes = 64 * 1024;
constexpr int kMaxConnectionsPerAddress = 16;

using Limits = Bed;

TEST_F(Limits, MalformedLinesAreRefusedAndDoNoHarm) {
    const auto driver = Connect();
    const std::string stream = std::to_string(driver->AddStream());
    EXPECT_EQ(driver->Ask("setsta " + stream + " louder"), "NO setsta " + stream);
    EXPECT_EQ(driver->Ask("addmed " + stream), "NO addmed " + stream);
    EXPECT_EQ(driver->Ask("addcli " + stream + " nowhere 5004"), "NO addcli " + stream);
    EXPECT_EQ(driver->Ask("remcli " + stream + " 127.0.0.1 5004"), "OK remcli " + stream);
    EXPECT_EQ(driver->Ask("addmed 4095 x"), "NO addmed 4095");
    EXPECT_EQ(driver->Ask("dance"), "NO dance");
    EXPECT_EQ(driver->Ask(""), "NO unknown");
    driver->SendRaw("hello there\r\n\r\n\n");
    EXPECT_EQ(driver->ReadLine(), "0 NO there");
    EXPECT_EQ(driver->ReadLine(), "0 NO unknown");
    EXPECT_EQ(driver->ReadLine(), "0 NO unknown");
    EXPECT_EQ(driver->Ask("setsta " + stream + " play"), "OK setsta " + stream);
}

TEST_F(Limits, LinesMayComeInPiecesAndTogether) {
    const auto driver = Connect();
    driver->SendRaw("7 re");
    driver->SendRaw("set\r");
    driver->SendRaw("\n8 reset\r\n9 reset\n10 reset\r\n");
    for (const char* answer : {"7 OK reset", "8 OK reset", "9 OK reset", "10 OK reset"})
        EXPECT_EQ(driver->ReadLine(), answer);
}

TEST_F(Limits, TheLongestLineIsReadAndALongerOneIsRefused) {
    const auto driver = Connect();
    driver->AddStream();
    driver->SendRaw("5 addmed 1 " + std::string(kMaxLineBytes - 11, 'x') + "\r\n");
    EXPECT_EQ(driver->ReadLine(), "5 OK addmed 1");
    EXPECT_TRUE(driver->NextEvent().starts_with("* addmed BAD=1 "));
    driver->SendRaw("6 addmed 1 " + std::string(kMaxLineBytes - 10, 'x') + "\r\n");
    EXPECT_EQ(driver->ReadLine(), "6 NO addmed 1");
    driver->SendRaw("7 addann" + std::string(3 * kMaxLineBytes, ' ') + "\r\n");
    EXPECT_EQ(driver->ReadLine(), "* SYS addann=0");
    EXPECT_EQ(driver->ReadLine(), "7 NO addann");
    driver->SendRaw(std::string(kMaxLineBytes + 2, 'x'));
    EXPECT_EQ(driver->ReadLine(), "0 NO unknown") << "before it ends";
    driver->SendRaw(std::string(kMaxLineBytes, 'x') + "\n");
    EXPECT_EQ(driver->Ask("setsta 1 play"), "OK setsta 1") << "its stream is still there";
}

TEST_F(Limits, StreamsOfAConnection) {
    const auto driver = Connect();
    for (int count = 0; count < 64; ++count)
        ASSERT_NE(driver->AddStream(), 0U);
    EXPECT_EQ(driver->Ask("addstr"), "NO addstr");
    EXPECT_EQ(driver->Ask("addann"), "NO addann");
    EXPECT_EQ(driver->Ask("remstr 1"), "OK remstr 1");
    EXPECT_EQ(driver->Ask("addstr"), "addstr stream=65");
}

TEST_F(Limits, ClientsOfAStream) {
    const auto driver = Connect();
    driver->AddStream();
    for (int count = 0; count < 64; ++count)
        ASSERT_EQ(driver->Ask("addcli 1 127.0.0." + std::to_string(count + 2) + " 40000"), "OK addcli 1");
    EXPECT_EQ(driver->Ask("addcli 1 127.0.0.2 40000"), "OK addcli 1");
    EXPECT_EQ(driver->Ask("addcli 1 127.0.0.1 40000"), "NO addcli 1");
}

TEST_F(Limits, AConnectionWithoutStreamsGivesWay) {
    std::vector<std::unique_ptr<LineClient>> drivers;
    for (int count = 0; count < kMaxConnectionsPerAddress; ++count) {
        drivers.push_back(Connect());
        ASSERT_EQ(drivers.back()->Ask("reset"), "OK reset");
    }
    EXPECT_NE(drivers[0]->AddStream(), 0U);
    EXPECT_EQ(drivers[1]->Ask("reset"), "OK reset");
    EXPECT_EQ(Connect()->Ask("reset"), "OK reset");
    EXPECT_TRUE(drivers[2]->IsClosedByServer()) << "it has said nothing for longest";
    for (const int kept : {0, 1, 3})
        EXPECT_EQ(drivers[kept]->Ask("reset"), "OK reset") << kept;
}

TEST_F(Limits, AConnectionWithStreamsDoesNot) {
    std::vector<std::unique_ptr<LineClient>> drivers;
    for (int count = 0; count < kMaxConnectionsPerAddress; ++count) {
        drivers.push_back(Connect());
        ASSERT_NE(drivers.back()->AddStream(), 0U);
    }
    EXPECT_TRUE(Connect()->IsClosedByServer());
    drivers.pop_back();
    EXPECT_TRUE(WaitUntil([this] { return Connect()->Ask("reset") == "OK reset"; }));
}

TEST_F(Limits, APeerThatDoesNotReadIsDropped) {
    const auto driver = std::make_unique<LineClient>(ServerPort(), 4096);
    std::string lines;
    for (int count = 0; count < 1000; ++count)
        lines += "1 nothing\r\n";
    EXPECT_TRUE(WaitUntil([&] { return !driver->SendRaw(lines); }));
    EXPECT_EQ(Connect()->Ask("reset"), "OK reset");
    EXPECT_TRUE(WaitUntil([this] { return Server().Errors().find("does not read") != std::string::npos; }))
        << Server().Errors();
}

TEST_F(Limits, NoPeerAndNoStreamHidesTheLogLinesOfOthers) {
    constexpr unsigned kNoise = 20;
    const auto noisy = Connect();
    const auto quiet = Connect();
    ASSERT_EQ(noisy->AddStream(), 1U);
    for (unsigned count = 0; count < kNoise; ++count) {
        EXPECT_EQ(noisy->Ask("noise"), "NO noise");
        EXPECT_EQ(noisy->Ask("addmed 1 nothing"), "OK addmed 1");
        EXPECT_TRUE(noisy->NextEvent().starts_with("* addmed BAD=1 "));
    }
    EXPECT_EQ(quiet->Ask("whisper"), "NO whisper");
    EXPECT_EQ(quiet->Ask("addstr"), "addstr stream=2");
    EXPECT_EQ(quiet->Ask("addmed 2 nowhere"), "OK addmed 2");
    const auto isLogged = [this](const std::string& text) {
        return Server().Errors().find(text) != std::string::npos;
    };
    EXPECT_TRUE(WaitUntil([&] { return isLogged("stream 2: bad media"); }));
    EXPECT_TRUE(isLogged("sent an unusable line: 0 whisper"));
    EXPECT_TRUE(isLogged("stream 2: media nowhere"));
}

// A line out of the protocol's own words in any order, so that many get past the first checks.
std::string RandomLine(std::mt19937& random) {
    static const std::vector<std::string> kWords = {
        "1",      "2",         "4095",   "-1",     "addstr",       "addann",     "remstr",   "remmed",
        "setsta", "addcli",    "remcli", "addmed", "eos",          "reset",      "play",     "pause",
        "stop",   "127.0.0.1", "::1",    "5004",   "\"file://x\"", "\"",         "\"file:/", "line",
        "=",      "*",         "\t",     "\x01",   "\xff",         "99999999999"};
    std::string line;
    const auto count = random() % 7;
    for (unsigned word = 0; word < count; ++word)
        line += (word == 0 ? "" : " ") + kWords[random() % kWords.size()];
    return line;
}

TEST_F(Limits, AnyLineGetsExactlyOneAnswer) {
    constexpr unsigned kSeed = 20240611;
    constexpr int kLines = 3000;
    std::mt19937 random(kSeed);
    const auto driver = Connect();
    for (int count = 0; count < kLines; ++count) {
        const std::string line = RandomLine(random);
        ASSERT_TRUE(driver->SendRaw(line + "\r\n")) << "seed " << kSeed;
        std::string answer = "*";
        while (answer.starts_with("*"))
            answer = driver->ReadLine().value_or("");
        ASSERT_TRUE(answer.find(" OK ") != std::string::npos || answer.find(" NO ") != std::string::npos ||
                    answer.find(" stream=") != std::string::npos)
            << "seed " << kSeed << ", to " << line << ": " << answer;
    }
    EXPECT_EQ(driver->Ask("reset"), "OK reset");
}

} // namespace
} // namespace korvel::tests

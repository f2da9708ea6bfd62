#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "audioserver/LineParser.h"

namespace korvel::audioserver {
namespace {

Request Parsed(std::string_view line) {
    const auto result = ParseLine(line);
    const auto* request = std::get_if<Request>(&result);
    EXPECT_NE(request, nullptr) << line;
    return request != nullptr ? *request : Request{};
}

Refusal Refused(std::string_view line) {
    const auto result = ParseLine(line);
    const auto* refusal = std::get_if<Refusal>(&result);
    EXPECT_NE(refusal, nullptr) << line;
    return refusal != nullptr ? *refusal : Refusal{};
}

TEST(LineParser, ReadsCommandsWithoutArguments) {
    EXPECT_EQ(Parsed("0 reset").command, Command::kReset);
    EXPECT_EQ(Parsed("65535 addstr").command, Command::kAddStream);
    EXPECT_EQ(Parsed("65535 addstr").sequence, 65535U);
    EXPECT_EQ(Parsed("3 addann").command, Command::kAddAnnouncement);
    EXPECT_EQ(Parsed("65536 ping").command, Command::kPing);
}

TEST(LineParser, ReadsCommandsOfAStream) {
    EXPECT_EQ(Parsed("1 remstr 7").command, Command::kRemoveStream);
    EXPECT_EQ(Parsed("1 remstr 7").stream, 7U);
    EXPECT_EQ(Parsed("1 remmed 7").command, Command::kRemoveMedia);
    EXPECT_EQ(Parsed("1 eos 7").command, Command::kEndOfStream);
    EXPECT_EQ(Parsed("1 setsta 7 play").state, PlayState::kPlay);
    EXPECT_EQ(Parsed("1 setsta 7 pause").state, PlayState::kPause);
    EXPECT_EQ(Parsed("1 setsta 7 stop").state, PlayState::kStop);
}

TEST(LineParser, ReadsClients) {
    const Request request = Parsed("17 addcli 3 192.168.1.40 5004");
    EXPECT_EQ(request.command, Command::kAddClient);
    EXPECT_EQ(request.client.ip, "192.168.1.40");
    EXPECT_EQ(request.client.port, 5004);
    EXPECT_EQ(Parsed("17 remcli 3 192.168.1.40 65534").client.port, 65534);
    EXPECT_EQ(Parsed("17 remcli 3 192.168.1.40 1").client.port, 1);
    EXPECT_EQ(Parsed("17 addcli 3 ::0:1 5004").client.ip, "::1");
}

TEST(LineParser, KeepsMediaTextAsItIs) {
    EXPECT_EQ(Parsed("4 addmed 3 \"file://home/a  \"b\".flac\"").media, "\"file://home/a  \"b\".flac\"");
    EXPECT_EQ(Parsed("4 addmed 3 line in").media, "line in");
    EXPECT_EQ(Parsed("4 addmed 3 \"\"").media, "\"\"");
}

TEST(LineParser, IgnoresExtraSpaces) {
    const Request request = Parsed("  12   remcli   4  10.0.0.1   5004  ");
    EXPECT_EQ(request.sequence, 12U);
    EXPECT_EQ(request.stream, 4U);
    EXPECT_EQ(request.client.port, 5004);
}

TEST(LineParser, RefusesWithWhatIsReadable) {
    const Refusal refusal = Refused("12 setsta 3 louder");
    EXPECT_EQ(refusal.sequence, 12U);
    EXPECT_EQ(refusal.command, "setsta");
    EXPECT_EQ(refusal.stream, 3U);
    EXPECT_EQ(Refused("12 dance 3").command, "dance");
    EXPECT_EQ(Refused("x addstr").sequence, 0U);
    EXPECT_EQ(Refused("x addstr").command, "addstr");
    EXPECT_EQ(Refused("12 remstr x").stream, std::nullopt);
}

TEST(LineParser, ReplacesUnreadableCommandWords) {
    EXPECT_EQ(Refused("").command, kUnknownCommand);
    EXPECT_EQ(Refused("12").command, kUnknownCommand);
    EXPECT_EQ(Refused("12 ").sequence, 12U);
    EXPECT_EQ(Refused("12 a\tb").command, kUnknownCommand);
    EXPECT_EQ(Refused("12 " + std::string(kMaxEchoedWordBytes + 1, 'a')).command, kUnknownCommand);
    EXPECT_EQ(Refused("12 " + std::string(kMaxEchoedWordBytes, 'a')).command,
              std::string(kMaxEchoedWordBytes, 'a'));
}

TEST(LineParser, RefusesEveryMalformedShape) {
    const std::vector<std::string> lines = {"     ",
                                            "reset",
                                            "-1 reset",
                                            "+1 reset",
                                            "1.0 reset",
                                            "4294967296 reset",
                                            "1 RESET",
                                            "1 reset 2",
                                            "1 ping 2",
                                            "1 addstr 2",
                                            "1 addann x",
                                            "1 remstr",
                                            "1 remstr x",
                                            "1 remstr -1",
                                            "1 remstr 4294967296",
                                            "1 remstr 1 2",
                                            "1 remmed",
                                            "1 eos",
                                            "1 eos 1 1",
                                            "1 setsta",
                                            "1 setsta 1",
                                            "1 setsta 1 Play",
                                            "1 setsta 1 play now",
                                            "1 addcli",
                                            "1 addcli 1",
                                            "1 addcli 1 10.0.0.1",
                                            "1 addcli 1 10.0.0.1 0",
                                            "1 addcli 1 10.0.0.1 65535",
                                            "1 addcli 1 10.0.0.1 5004 5",
                                            "1 addcli 1 10.0.0 5004",
                                            "1 addcli 1 room 5004",
                                            "1 addcli 1 0.0.0.0 5004",
                                            "1 addcli 1 :: 5004",
                                            "1 addcli 1 10.0.0.1 x",
                                            "1 remcli 1 5004",
                                            "1 addmed",
                                            "1 addmed 1",
                                            "1 addmed 1 ",
                                            "1 addmed x \"file://a\"",
                                            "1 addmed 1 \"",
                                            "1 addmed 1 \"file://a",
                                            "1 addmed 1 a\tb",
                                            std::string("1 addmed 1 \"file://a\0b\"", 22),
                                            "* addmed EOM=1"};
    for (const std::string& line : lines)
        Refused(line);
}

TEST(LineParser, ABeginningIsRefusedWithWhatItTells) {
    const auto expect = [](std::string_view beginning, std::uint32_t sequence, std::string_view command,
                           std::optional<StreamNumber> stream) {
        const Refusal refusal = RefuseLine(beginning);
        EXPECT_EQ(refusal.sequence, sequence) << beginning;
        EXPECT_EQ(refusal.command, command) << beginning;
        EXPECT_EQ(refusal.stream, stream) << beginning;
    };
    expect("2 addmed 3 \"file://a", 2, "addmed", 3);
    expect("2 addmed 3 line-in", 2, "addmed", 3);
    expect("2 addstr", 2, "addstr", std::nullopt);
    expect("2 dance", 2, "dance", std::nullopt);
    expect(std::string(100, 'x'), 0, "unknown", std::nullopt);
}

TEST(LineParser, EveryCommandHasItsWord) {
    for (const CommandShape& shape : kCommands)
        EXPECT_EQ(CommandWord(shape.command), shape.word);
}

} // namespace
} // namespace korvel::audioserver

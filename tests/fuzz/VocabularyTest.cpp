// Made-up lines speak the language of the driver.
#include <gtest/gtest.h>

#include <algorithm>
#include <set>

#include "TestCore.h"
#include "Vocabulary.h"
#include "replay/Verbs.h"
#include "replay/Words.h"

namespace {

TEST(Vocabulary, HasValuesForEveryParameterOfTheCommandTableAndForNoOther) {
    std::set<std::string> read;
    for (const auto& command : fuzz::AllCommands())
        read.insert(command.parameters.begin(), command.parameters.end());
    const auto names = fuzz::ParameterNames();
    EXPECT_EQ(std::set<std::string>(names.begin(), names.end()), read);
}

TEST(Vocabulary, NamesEveryCommand) {
    const auto& commands = fuzz::AllCommands();
    const auto find = [&](const std::string& name) {
        return std::find_if(commands.begin(), commands.end(),
                            [&](const auto& command) { return command.name == name; });
    };
    const auto song = find("ADD_SONG");
    ASSERT_NE(song, commands.end());
    EXPECT_EQ(song->verb, "command");
    EXPECT_EQ(song->parameters,
              (std::vector<std::string>{"ROOM_ID", "MEDIA_ID", "SOURCE", "PLAY_NOW", "PLAY_NEXT", "CLEAR"}));
    const auto info = find("GET_QUEUE_INFO");
    ASSERT_NE(info, commands.end());
    EXPECT_EQ(info->verb, "request");
    EXPECT_EQ(info->parameters, (std::vector<std::string>{"ROOM_ID", "QUEUE_ID"}));
}

const std::vector<std::string> kStationOnStream1{
    "start",
    "online 3000 127.0.0.1",
    "command ADD_IR_STREAM ROOM_ID=7 MEDIA=http://r/1 DEVICE_ID=9",
    "select 7 queue=10000 kind=QUEUE ip=10.0.0.7 port=6200 target=7",
    R"(data 3000 "1 addstr stream=1\r\n")",
};
const std::vector<std::string> kAwaitedAnnouncement{
    "start",
    "online 3000 127.0.0.1",
    "announce create",
};

// What comes out after `line` in a situation with a command under way to the audio server.
std::vector<std::string> PlayIn(const std::vector<std::string>& situation, const std::string& line) {
    TestCore core;
    for (const std::string& before : situation)
        core.Run(before);
    auto lines = line.empty() ? std::vector<std::string>{}
                              : core.Run("data 3000 " + korvel::replay::FormatValue(line));
    for (const char* next : {"command PAUSE ROOM_ID=7", "advance 15000"}) {
        const auto some = core.Run(next);
        lines.insert(lines.end(), some.begin(), some.end());
    }
    return lines;
}

TEST(Vocabulary, TheDriverHearsEveryLineOfAnAudioServer) {
    const auto isHeard = [](const auto& situation, const std::string& line) {
        return PlayIn(situation, line) != PlayIn(situation, "");
    };
    for (const std::string& line : fuzz::ServerLines(2, 1))
        EXPECT_TRUE(isHeard(kStationOnStream1, line) || isHeard(kAwaitedAnnouncement, line)) << line;
}

TEST(Vocabulary, SpeaksEveryVerb) {
    fuzz::Dice dice(1);
    std::set<std::string> spoken;
    for (int left = 20000; left > 0; --left) {
        const std::string line = fuzz::AnyLine(dice);
        spoken.insert(line.substr(0, line.find(' ')));
    }
    using namespace korvel::replay;
    for (const auto& verbs : {GetWorldVerbs(), GetEntryVerbs(), GetRoutingVerbs(), GetServiceVerbs()}) {
        for (const Verb& verb : verbs)
            EXPECT_TRUE(spoken.contains(verb.name)) << verb.name;
    }
}

// The session's own end and beginning aside, a made-up line can always be run.
TEST(Vocabulary, EveryLineCanBeRun) {
    fuzz::Dice dice(1);
    for (int left = 2000; left > 0; --left) {
        const std::string line = fuzz::AnyLine(dice);
        if (line == "start")
            continue;
        TestCore core;
        core.Run({"start", "online 3000 127.0.0.1"});
        EXPECT_NO_THROW(core.Run(line)) << line;
    }
}

} // namespace

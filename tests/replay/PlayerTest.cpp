#include <gtest/gtest.h>

#include <fstream>
#include <sstream>

#include "TestDriver.h"
#include "replay/Player.h"
#include "replay/ScriptError.h"
#include "replay/Verbs.h"

namespace korvel::replay {
namespace {

using Lines = std::vector<std::string>;

// What the last line of a script gave.
Lines LastOf(const std::string& text) {
    return Play(ParseScript("a.txt", text), CreateTestDriver).back();
}

std::string ErrorOf(const std::string& text) {
    try {
        Play(ParseScript("a.txt", text), CreateTestDriver);
    } catch (const ScriptError& error) {
        return error.what();
    }
    return "none";
}

TEST(Player, StartsTheDriver) {
    const Lines lines = LastOf("start <state a=\"b\">c</state>\n");
    EXPECT_EQ(lines.front(), "< register TIMER");
    const Lines end(lines.end() - 4, lines.end());
    EXPECT_EQ(end, (Lines{"< register-ui INFO", "< vmadd 1 STATE 13 1 0", "< set 1 <state a=\"b\">c</state>",
                          "< initialized 0"}));
    EXPECT_EQ(LastOf("without StringX\nstart\n").back(), "< initialized -2");
}

TEST(Player, EchoesInputLinesAsTheyStandAndNoComments) {
    std::ostringstream echo;
    Play(ParseScript("a.txt", "exact\n# note\n\nname  7   \"Living room\"\n! x\nadvance 10\n"),
         CreateTestDriver, &echo);
    EXPECT_EQ(echo.str(), "exact\nname  7   \"Living room\"\nadvance 10\n");
}

TEST(Player, TwoRunsGiveTheSame) {
    const Script script =
        ParseScript("a.txt", "start\ncommand TIMER MS=10 FLAGS=17\nadvance 25\ncommand WORLD\n");
    EXPECT_EQ(Play(script, CreateTestDriver), Play(script, CreateTestDriver));
}

TEST(Player, ExpiriesHappenAtTheirOwnTime) {
    EXPECT_EQ(LastOf("start\ncommand TIMER MS=1500 FLAGS=1\ncommand TIMER MS=1000 FLAGS=17\nadvance 2000\n"),
              (Lines{"= timer 2", "< log 6 timer 2 at 1000000001", "= timer 1",
                     "< log 6 timer 1 at 1000000001", "= timer 2", "< log 6 timer 2 at 1000000002"}));
}

TEST(Player, TimersOfBothKindsShareOneSequence) {
    EXPECT_EQ(LastOf("start\ncommand TIMER MS=10 FLAGS=1\ncommand MANAGED MS=20 COUNT=2\n"),
              (Lines{"< timer 2 20"}));
    EXPECT_EQ(LastOf("start\ncommand MANAGED MS=20 COUNT=2\ncommand MANAGED MS=9 COUNT=1\ncommand FORGET\n"),
              (Lines{"< timer-stop 1", "< timer-stop 2"}));
}

TEST(Player, ATimerThatOutlivesTheDriverIsAFault) {
    EXPECT_EQ(LastOf("start\ncommand MANAGED MS=20 COUNT=2\ncommand TIMER MS=10 FLAGS=1\nstop\n"),
              (Lines{"< vmremove 1", "< fault timer 1 outlives the driver that it calls back"}));
    EXPECT_EQ(LastOf("start\ncommand MANAGED MS=20 COUNT=1\nadvance 20\nstop\n"), (Lines{"< vmremove 1"}));
}

TEST(Player, StoppingATimerIsTakenDownEvenWhenItIsGone) {
    EXPECT_EQ(LastOf("start\ncommand TIMER MS=10 FLAGS=1\nadvance 10\ncommand KILL ID=1\n"),
              (Lines{"< timer-stop 1"}));
    EXPECT_EQ(LastOf("start\ncommand KILL ID=0\n"), Lines());
    EXPECT_EQ(LastOf("start\ncommand TIMER MS=10 FLAGS=17\ncommand KILL ID=1\nadvance 100\n"), Lines());
}

TEST(Player, AnInputInsideACallRunsBeforeTheCallReturns) {
    const std::string ask = "command ASK NAME=PING\n";
    EXPECT_EQ(LastOf("start\ninside \"message 7\" command KILL ID=9\n" + ask),
              (Lines{"< message 7 PING queueid:INT=10000", "= command KILL ID=9", "< timer-stop 9",
                     "< return : ", "< message 7 PING queueid:INT=10000"}));
    // Once, in the order declared, and not while the driver is made.
    EXPECT_EQ(LastOf("inside register command KILL ID=9\nstart\n").back(), "< initialized 0");
    EXPECT_EQ(LastOf("start\ninside message name 7 A\ninside message name 7 B\n" + ask),
              (Lines{"< message 7 PING queueid:INT=10000", "= name 7 A",
                     "< return A: ", "< message 7 PING queueid:INT=10000", "= name 7 B"}));
}

TEST(Player, AnInputInsideACallMustBeOneThatCanRunThere) {
    EXPECT_EQ(ErrorOf("inside event\n"), "a.txt:1: INPUT is missing");
    EXPECT_EQ(ErrorOf("inside event stop\n"), "a.txt:1: nothing inside a call is named stop");
    EXPECT_EQ(ErrorOf("inside event fly\n"), "a.txt:1: nothing inside a call is named fly");
    EXPECT_EQ(ErrorOf("start\ninside message valid 6\ncommand ASK NAME=PING\n"), "a.txt:3: B is missing");
}

TEST(Player, LiveAnswersComeAfterTheInputHasReturned) {
    EXPECT_EQ(
        LastOf("engine 3000\nroom 7 ip=10.0.0.7 port=6200 channel=1\nstart\n"
               "command ASK NAME=SELECT_AUDIO_DEVICE\n"),
        (Lines{"< message 7 SELECT_AUDIO_DEVICE queueid:INT=10000",
               "< return : ", "< message 7 SELECT_AUDIO_DEVICE queueid:INT=10000",
               "= select 7 queue=10000 kind=QUEUE ip=10.0.0.7 port=6200 channel=1 target=7",
               "< log 6 selected 7 by 10.0.0.7 binding 0 media 0", "< selected queue=10000 media=0 kind=\"\"",
               "= select 7 queue=10000 kind=QUEUE ip=10.0.0.7 port=6200 channel=1 target=7",
               "< log 6 selected 7 by 10.0.0.7 binding 0 media 0",
               "< selected queue=10000 media=0 kind=\"\""}));
    EXPECT_EQ(LastOf("engine 3000\nstart\ncommand SEND LINE=\"1 addstr\\r\\n\"\n"),
              (Lines{R"(< send 3000 "1 addstr\r\n")", R"(= data 3000 "1 addstr stream=1\r\n")",
                     R"(< log 6 bound call 3000 DATA_RECEIVED [1 addstr stream=1\r\n] [])"}));
}

TEST(Player, RepliesGoToMessagesAndCommands) {
    EXPECT_EQ(LastOf("name 7 Kitchen\nreply 7 STATE all is well\nstart\ncommand ASK NAME=STATE\n"),
              (Lines{"< message 7 STATE queueid:INT=10000", "< return Kitchen: all is well",
                     "< message 7 STATE queueid:INT=10000", "< return all is well"}));
    EXPECT_EQ(LastOf("start\nfail CreateMessage\ncommand ASK NAME=STATE\n"), (Lines{"< return no message"}));
}

TEST(Player, TheWorldIsWhatTheTranscriptSays) {
    EXPECT_EQ(LastOf("random 42\nsystem-type 24\nlocal 10.0.0.1\nmp3devices 7 1,2\nstart\n"
                     "command WORLD ADDRESS=10.0.0.1 POINTER=0x1234\n"),
              (Lines{"< return 24 11 42 2", "< debug ret = @", "< assert \"a path/file\" 12"}));
    EXPECT_EQ(LastOf("random 1\nstart\ncommand WORLD ADDRESS=10.0.0.2\n").front(), "< return 0 10 1");
    EXPECT_EQ(LastOf("random 1\nmp3devices 7 1\nmp3devices 7 none\nstart\ncommand WORLD\n").front(),
              "< return 0 10 1");
}

TEST(Player, EachRoomHasItsOwnAnalogSource) {
    EXPECT_EQ(LastOf("analog 7 5,6\nanalog 8 0\nstart\ncommand ANALOG\n"),
              (Lines{"< analog 7 TakeSourceDevice 5", "< analog 7 GetDevicesInAnalogSource",
                     "< analog 8 SelectDevice 5", "< analog 8 SelectDevice 6"}));
    EXPECT_EQ(LastOf("analog 7 5\nstart\ncommand ANALOG\n"), (Lines{"< return no analog source"}));
}

TEST(Player, ALineOrATimerThatFailsLeavesNoMark) {
    EXPECT_EQ(LastOf("start\nfail CreateBindMessage\ncommand SEND LINE=x\n"), Lines{});
    EXPECT_EQ(LastOf("start\nfail StartTimer\ncommand MANAGED MS=1 COUNT=1\n"),
              (Lines{"< debug timer none"}));
}

TEST(Player, BoundCalls) {
    EXPECT_EQ(LastOf("start\nonline 3000 127.0.0.1 k=\"a b\"\n"),
              (Lines{"< log 6 bound call 3000 SERVER_ONLINE [127.0.0.1] [a b]"}));
    EXPECT_EQ(LastOf("start\noffline 3000\n"), (Lines{"< log 6 bound call 3000 SERVER_OFFLINE [] []"}));
    EXPECT_EQ(LastOf("start\ndata 3000 \"* SYS\\r\\n\"\n"),
              (Lines{R"(< log 6 bound call 3000 DATA_RECEIVED [* SYS\r\n] [])"}));
    EXPECT_EQ(LastOf("start\nname 7 Hall\nprotocol 3000 ASK NAME=X\n"),
              (Lines{"< log 6 bound call 3000 COMMAND [] []", "< message 7 X queueid:INT=10000",
                     "< return Hall: ", "< message 7 X queueid:INT=10000"}));
    EXPECT_EQ(LastOf("start\nbound 3001\n"), (Lines{"< log 6 binding 3001 bound", "< invalidate"}));
    EXPECT_EQ(LastOf("start\nunbound 3001\n"), (Lines{"< log 6 binding 3001 unbound", "< invalidate"}));
}

TEST(Player, QuestionsAndTheirAnswers) {
    EXPECT_EQ(LastOf("start\npersist\n"), (Lines{"< persist <state>7</state>"}));
    EXPECT_EQ(LastOf("start\nrequest INFO\n"), (Lines{"< reply <info>a b</info>"}));
    EXPECT_EQ(LastOf("start\nrequest OTHER\n"), (Lines{"< reply none"}));
    EXPECT_EQ(LastOf("start\ntest IsOne A=1\n"), (Lines{"< result true"}));
    EXPECT_EQ(LastOf("start\ntest IsOne\n"), (Lines{"< result false"}));
    EXPECT_EQ(LastOf("start\nvalid 6 15\n"), (Lines{"< result true"}));
    EXPECT_EQ(LastOf("start\nvalid 15 6\n"), (Lines{"< result false"}));
}

TEST(Player, Routing) {
    EXPECT_EQ(LastOf("start\nselect 7 ip=10.0.0.7 binding=3001 media=1,2 kind=SONG\n"),
              (Lines{"< log 6 selected 7 by 10.0.0.7 binding 3001 media 2"}));
    EXPECT_EQ(LastOf("start\ndeselect 7\n"), (Lines{"< log 6 deselected 7"}));
    EXPECT_EQ(LastOf("start\nlocation 7 kind=SONG media=1,2 location=\"a b\"\n"),
              (Lines{"< location a b, then that of 7 SONG 1"}));
    EXPECT_EQ(LastOf("start\nlocation 7 media=1\n"), (Lines{"< location"}));
}

TEST(Player, StreamingServiceAnswers) {
    EXPECT_EQ(LastOf("start\nrhapsody playlists 1 \"My list\" 2 Other\n"), (Lines{"< log 6 lists 2"}));
    EXPECT_EQ(LastOf("start\nrhapsody playlist-tracks Tra.1 Tra.2\n"), (Lines{"< log 6 tracks 2"}));
    EXPECT_EQ(LastOf("start\nrhapsody track id=Tra.1 name=Blue artist=Ann\n"),
              (Lines{"< log 6 track Blue by Ann"}));
    EXPECT_EQ(LastOf("start\nrhapsody track\n"), (Lines{"< log 6 track none"}));
    EXPECT_EQ(LastOf("start\nrhapsody error -5\n"), (Lines{"< log 6 error -5"}));
}

TEST(Player, MediaChangesAreTakenDownAlsoWhenTheyFail) {
    const Lines tried = {"< media CreatePlaylist 100002 \"A b\" 1050,2:Tra.1",
                         "< return saved",
                         "< media AddMedia 100002 <a></a> \"\" \"\" 1",
                         "< media AddSongToPlaylist 5 1050 0",
                         "< media UpdatePlaylist 5 \"\"",
                         "< media DeletePlaylist 5"};
    EXPECT_EQ(LastOf("start\ncommand SAVE NAME=\"A b\"\n"), tried);
    Lines refused = tried;
    refused[1] = "< return refused";
    EXPECT_EQ(
        LastOf(
            "fail CreatePlaylist\nfail AddMedia\nfail AddSongToPlaylist\nstart\ncommand SAVE NAME=\"A b\"\n"),
        refused);
}

TEST(Player, TheDatabaseHoldsTheDeclaredSongs) {
    EXPECT_EQ(LastOf("song 1050 location=\"/media/a b.flac\"\nstart\ncommand WHERE ID=1050\n"),
              (Lines{"< return /media/a b.flac"}));
    EXPECT_EQ(LastOf("start\ncommand WHERE ID=1050\n"), (Lines{"< return nowhere"}));
    EXPECT_EQ(LastOf("song 1050 location=/a\nstart\nfail SongLocation\ncommand WHERE ID=1050\n"),
              (Lines{"< return nowhere"}));
}

TEST(Player, StopDestroysTheDriverAndItsTimers) {
    EXPECT_EQ(LastOf("start\nstop\n"), (Lines{"< vmremove 1"}));
    EXPECT_EQ(LastOf("start\ncommand TIMER MS=10 FLAGS=17\nstop\nadvance 1000\n"), Lines());
    EXPECT_EQ(LastOf("start\nstop\nstart\n").back(), "< initialized 0");
}

TEST(Player, ASecondCreationGivesTheSameDriver) {
    EXPECT_EQ(LastOf("start\ncreate\n"), Lines());
}

TEST(Player, WhatTheDriverLetsOutIsAFault) {
    EXPECT_EQ(LastOf("start\noff 7\n"), (Lines{"< fault room off"}));
    const Script script = ParseScript("a.txt", "start\n");
    EXPECT_EQ(Play(script, CreateNoDriver).back(), (Lines{"< fault no driver was created"}));
    EXPECT_EQ(Play(script, CreateBrokenDriver).back(),
              (Lines{"< fault out of order", "< fault no driver was created"}));
}

TEST(Player, EntriesNeedADriver) {
    for (const char* line : {"create", "stop", "persist", "bound 1", "unbound 1", "online 1 a", "offline 1",
                             "data 1 a", "protocol 1 A", "command A", "request A", "test A", "select 7",
                             "deselect 7", "off 7", "valid 1 2", "announce create", "rhapsody error 1"}) {
        EXPECT_EQ(ErrorOf("clock 5\n" + std::string(line) + "\n"),
                  "a.txt:2: no driver runs: \"start\" comes first")
            << line;
    }
}

TEST(Player, AMistakeNamesItsLine) {
    EXPECT_EQ(ErrorOf("# head\nfly 7\n"), "a.txt:2: unknown verb fly");
    EXPECT_EQ(ErrorOf("name 7\n"), "a.txt:1: TEXT is missing");
    EXPECT_EQ(ErrorOf("name seven Kitchen\n"), "a.txt:1: DEVICE wants a number of 32 bits, not seven");
    EXPECT_EQ(ErrorOf("name 7 Living room\n"), "a.txt:1: too many words: room");
    EXPECT_EQ(ErrorOf("name 7 \"Living room\n"), "a.txt:1: a quote is not closed");
    EXPECT_EQ(ErrorOf("song 1050 titel=Blue\n"), "a.txt:1: unknown key titel");
    EXPECT_EQ(ErrorOf("song 0\n"), "a.txt:1: ID is 1 to 2147483647");
    EXPECT_EQ(ErrorOf("random -1\n"), "a.txt:1: N is 0 to 2147483647");
    EXPECT_EQ(ErrorOf("without Clock\n"), "a.txt:1: no service that can be missing is named Clock");
    EXPECT_EQ(ErrorOf("fail Everything\n"), "a.txt:1: no operation that can fail is named Everything");
    EXPECT_EQ(ErrorOf("start <a>\n"), "a.txt:1: the persisted element is not well-formed XML");
    EXPECT_EQ(ErrorOf("start\nstart\n"), "a.txt:2: the driver runs already");
    EXPECT_EQ(ErrorOf("start\nwithout TimerManager\n"),
              "a.txt:2: TimerManager is missing from the start or not at all");
    EXPECT_EQ(ErrorOf("without RhapsodyClient\nstart\nrhapsody error 1\n"),
              "a.txt:3: the driver has no client of the streaming service");
    EXPECT_EQ(ErrorOf("start\nannounce create\n"), "a.txt:2: the driver offers no announcements");
    EXPECT_EQ(ErrorOf("start\ncommand TIMER MS=0 FLAGS=17\nadvance 1000000\n"),
              "a.txt:3: more than 500000 timers expired");
}

TEST(Verbs, AreAllInTheGuide) {
    std::ifstream file(KORVEL_TRANSCRIPTS_GUIDE);
    std::stringstream guide;
    guide << file.rdbuf();
    for (const auto& table : {GetWorldVerbs(), GetEntryVerbs(), GetRoutingVerbs(), GetServiceVerbs()}) {
        for (const Verb& verb : table) {
            EXPECT_NE(guide.str().find("`" + std::string(verb.name)), std::string::npos) << verb.name;
            EXPECT_NE(DescribeVerbs().find("  " + std::string(verb.name)), std::string::npos) << verb.name;
        }
    }
}

} // namespace
} // namespace korvel::replay

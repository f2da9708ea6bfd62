// What comes of a command, and in which order: rooms are let in before the queue changes, what plays is told
// before the status, and each document is published once for each change.
#include <gtest/gtest.h>

#include "Outputs.h"
#include "TestCore.h"
#include "platform/Text.h"

namespace {

// Room 7 and its queue; the radio came while tracks of a playlist were awaited.
enum Situation { kNew, kPlaying, kEnded, kRadio };

struct Row {
    Situation situation;
    std::string input;
    std::string outputs;
};

void PrintTo(const Row& row, std::ostream* out) {
    *out << row.input << " in situation " << row.situation;
}

void Bring(TestCore& core, Situation situation) {
    core.Run({"song 1 location=/media/1.flac device=1 artist=Ann", "song 2 location=/media/2.flac",
              "station 5 location=http://radio.example/5", "album 8 songs=1", "playlist 6 Morning songs=2",
              "mp3devices 7 1", "engine 3000", "start", "online 3000 127.0.0.1"});
    if (situation == kNew)
        return;
    core.Run({"command ADD_SONG_LIST ROOM_ID=7 MEDIA=<MEDIA><MEDIA_ID>1</MEDIA_ID></MEDIA>",
              "select 7 queue=10000 kind=QUEUE ip=10.0.0.7 port=6200 channel=1 target=7"});
    if (situation == kEnded)
        core.Run("data 3000 \"* addmed EOM=1\\r\\n\"");
    if (situation == kRadio)
        core.Run(
            {"command ADD_SONG_LIST ROOM_ID=7 PLAY_NOW=0 "
             "MEDIA=\"<MEDIA><SONG SOURCE=\\\"4\\\" ID=\\\"p.1\\\"/></MEDIA>\"",
             "command ADD_IR_STREAM ROOM_ID=7 MEDIA_ID=5 DEVICE_ID=200"});
}

// The names of the outputs up to the first answer of the audio server; the timers of its lines are left out.
std::string Names(const std::vector<std::string>& lines) {
    std::string names;
    for (const std::string& line : lines) {
        if (line.starts_with("= "))
            break;
        std::istringstream in(line.substr(2));
        std::string kind, first, second, third;
        in >> kind >> first >> second >> third;
        if (kind == "timer")
            continue;
        std::string name = kind;
        if (kind == "set")
            name = outputs::VariableName(kv::ToULong(first));
        else if (kind == "event")
            name = first == "1" ? "roomAdded" : "roomRemoved";
        else if (kind == "message")
            name = second;
        else if (kind == "send")
            name = third.substr(0, third.find('\\'));
        names += (names.empty() ? "" : ", ") + name;
    }
    return names;
}

const Row kRows[] = {
    {kNew, "command ADD_SONG ROOM_ID=7 MEDIA_ID=2",
     "roomAdded, roomMap, status, oldStatus, roomMap, info, oldInfo, return"},
    {kPlaying, "command ADD_SONG ROOM_ID=7 MEDIA_ID=2",
     "roomAdded, roomMap, status, oldStatus, roomMap, info, oldInfo, return"},
    {kEnded, "command ADD_SONG ROOM_ID=7 MEDIA_ID=2",
     "roomAdded, roomMap, timer-stop, addmed, UPDATE_MEDIA_INFO, status, oldStatus, roomMap, info, oldInfo, "
     "return"},
    {kRadio, "command ADD_SONG ROOM_ID=7 MEDIA_ID=2",
     "roomAdded, roomMap, remmed, info, oldInfo, QUEUE_STATE_CHANGED, UPDATE_MEDIA_INFO, "
     "QUEUE_MEDIA_INFO_UPDATED, status, oldStatus, roomMap, info, oldInfo, return"},
    {kNew, "command ADD_SONG_LIST ROOM_ID=7 MEDIA=<MEDIA><MEDIA_ID>2</MEDIA_ID></MEDIA>",
     "roomAdded, roomMap, info, oldInfo, status, oldStatus, roomMap, return"},
    {kPlaying, "command ADD_SONG_LIST ROOM_ID=7 MEDIA=<MEDIA><MEDIA_ID>2</MEDIA_ID></MEDIA>",
     "roomAdded, roomMap, info, oldInfo, return"},
    {kEnded, "command ADD_SONG_LIST ROOM_ID=7 MEDIA=<MEDIA><MEDIA_ID>2</MEDIA_ID></MEDIA>",
     "timer-stop, roomAdded, roomMap, info, oldInfo, addmed, UPDATE_MEDIA_INFO, status, oldStatus, roomMap, "
     "return"},
    {kRadio, "command ADD_SONG_LIST ROOM_ID=7 MEDIA=<MEDIA><MEDIA_ID>2</MEDIA_ID></MEDIA>",
     "roomAdded, roomMap, remmed, info, oldInfo, info, oldInfo, QUEUE_STATE_CHANGED, UPDATE_MEDIA_INFO, "
     "QUEUE_MEDIA_INFO_UPDATED, status, oldStatus, roomMap, return"},
    {kNew, "command ADD_ALBUM_MP3 ROOM_ID=7 MEDIA_ID=8 PLAY_NEXT=1",
     "roomAdded, roomMap, info, oldInfo, status, oldStatus, roomMap, return"},
    {kEnded, "command ADD_ALBUM_MP3 ROOM_ID=7 MEDIA_ID=8 PLAY_NEXT=1",
     "timer-stop, roomAdded, roomMap, info, oldInfo, addmed, UPDATE_MEDIA_INFO, status, oldStatus, roomMap, "
     "return"},
    {kRadio, "command ADD_ALBUM_MP3 ROOM_ID=7 MEDIA_ID=8 PLAY_NEXT=1",
     "remmed, info, oldInfo, roomAdded, roomMap, info, oldInfo, QUEUE_STATE_CHANGED, UPDATE_MEDIA_INFO, "
     "QUEUE_MEDIA_INFO_UPDATED, status, oldStatus, roomMap, return"},
    {kNew, "command ADD_ALBUM_LIST ROOM_ID=7 MEDIA=<A><I>8</I></A>",
     "roomAdded, roomMap, info, oldInfo, UPDATE_MEDIA_INFO, status, oldStatus, roomMap"},
    {kEnded, "command ADD_ALBUM_LIST ROOM_ID=7 MEDIA=<A><I>8</I></A>",
     "roomAdded, roomMap, info, oldInfo, status, oldStatus, roomMap"},
    {kRadio, "command ADD_ALBUM_LIST ROOM_ID=7 MEDIA=<A><I>8</I></A>",
     "remmed, info, oldInfo, QUEUE_DELETED, roomAdded, roomMap, info, oldInfo"},
    {kNew, "command QUEUE_ALL ROOM_ID=7 ARTIST=Ann PLAY_NEXT=1",
     "roomAdded, roomMap, info, oldInfo, UPDATE_MEDIA_INFO, status, oldStatus, roomMap, return"},
    {kEnded, "command QUEUE_ALL ROOM_ID=7 ARTIST=Ann PLAY_NEXT=1",
     "roomAdded, roomMap, info, oldInfo, addmed, UPDATE_MEDIA_INFO, status, oldStatus, roomMap, return"},
    {kRadio, "command QUEUE_ALL ROOM_ID=7 ARTIST=Ann PLAY_NEXT=1",
     "remmed, info, oldInfo, QUEUE_DELETED, roomAdded, roomMap, info, oldInfo, UPDATE_MEDIA_INFO, status, "
     "oldStatus, roomMap, return"},
    {kNew, "command ADD_PLAYLIST ROOM_ID=7 MEDIA_ID=6",
     "roomAdded, roomMap, info, oldInfo, roomHistory, status, oldStatus, roomMap, return"},
    {kEnded, "command ADD_PLAYLIST ROOM_ID=7 MEDIA_ID=6",
     "timer-stop, roomAdded, roomMap, info, oldInfo, roomHistory, addmed, UPDATE_MEDIA_INFO, status, "
     "oldStatus, roomMap, return"},
    {kRadio, "command ADD_PLAYLIST ROOM_ID=7 MEDIA_ID=6",
     "roomAdded, roomMap, remmed, info, oldInfo, info, oldInfo, roomHistory, QUEUE_STATE_CHANGED, "
     "UPDATE_MEDIA_INFO, QUEUE_MEDIA_INFO_UPDATED, status, oldStatus, roomMap, return"},
    {kNew, "command ADD_IR_STREAM ROOM_ID=7 MEDIA_ID=5",
     "roomAdded, roomMap, info, oldInfo, status, oldStatus, roomMap, info, oldInfo, return"},
    {kEnded, "command ADD_IR_STREAM ROOM_ID=7 MEDIA_ID=5",
     "roomAdded, roomMap, info, oldInfo, timer-stop, addmed, UPDATE_MEDIA_INFO, status, oldStatus, roomMap, "
     "info, oldInfo, return"},
    {kRadio, "command ADD_IR_STREAM ROOM_ID=7 MEDIA_ID=5",
     "QUEUE_DELETED, roomAdded, roomMap, remmed, info, oldInfo, UPDATE_MEDIA_INFO, status, oldStatus, "
     "roomMap, info, oldInfo, return"},
    {kEnded, "command GO_TO_SONG ROOM_ID=7 MEDIA_ID=1",
     "timer-stop, addmed, UPDATE_MEDIA_INFO, status, oldStatus, roomMap"},
    {kEnded, "command PLAY ROOM_ID=7", "timer-stop, addmed, UPDATE_MEDIA_INFO, status, oldStatus, roomMap"},
    {kPlaying, "command STOP ROOM_ID=7", "remmed, status, oldStatus, roomMap"},
    {kPlaying, "command PAUSE ROOM_ID=7", "setsta, status, oldStatus, roomMap"},
    {kPlaying, "command EDIT_QUEUE ROOM_ID=7 MEDIA=<MEDIA><MEDIA_ID>2</MEDIA_ID></MEDIA>",
     "info, oldInfo, remmed, UPDATE_MEDIA_INFO, status, oldStatus, roomMap"},
    {kPlaying, "command REMOVE_SONG ROOM_ID=7 MEDIA_ID=1",
     "remmed, info, oldInfo, UPDATE_MEDIA_INFO, room-service, status, oldStatus, roomMap"},
    {kRadio, "command UPDATE_SECONDARY_MEDIA_INFO roomId=7 title=x",
     "UPDATE_MEDIA_INFO, QUEUE_MEDIA_INFO_UPDATED, info, oldInfo, status, oldStatus, roomMap"},
    {kRadio, "rhapsody playlist-tracks Tra.1",
     "roomAdded, roomMap, remmed, info, oldInfo, QUEUE_DELETED, info, oldInfo, rhapsody, UPDATE_MEDIA_INFO, "
     "info, oldInfo, status, oldStatus, roomMap"},
};

class CommandsOutputs : public ::testing::TestWithParam<Row> {};

TEST_P(CommandsOutputs, ComeInOrder) {
    TestCore core;
    Bring(core, GetParam().situation);
    EXPECT_EQ(Names(core.Run(GetParam().input)), GetParam().outputs);
}

INSTANTIATE_TEST_SUITE_P(All, CommandsOutputs, ::testing::ValuesIn(kRows));

} // namespace

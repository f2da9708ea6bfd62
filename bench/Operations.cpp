#include "Operations.h"

#include <string>

namespace bench {

namespace {

// Ended media within a minute count as errors; so long an operation is ago when the next one comes.
constexpr std::uint32_t kBetweenOperationsMs = 61000;

Command MakeRoomCommand(const std::string& name, std::vector<CmdParam> params = {}) {
    params.insert(params.begin(), {"ROOM_ID", "INT", "1"});
    return MakeCommand(name, params);
}

// Runs one command and takes it back with another.
Operation Commands(House& house, const Command& run, const Command& restore) {
    return {[&house, run] { house.Run(run); }, [&house, restore] { house.Run(restore); }};
}

Operation Skip(House& house) {
    return {[&house, skip = MakeRoomCommand("SKIP_FWD")] { house.Run(skip); }, {}};
}

// All queues are shuffled and play a song from somewhere in their lists.
Operation SkipShuffled(House& house) {
    for (std::uint32_t room = 1; room <= house.GetQueueCount(); ++room) {
        const CmdParam roomId = {"ROOM_ID", "INT", std::to_string(room)};
        house.Run(MakeCommand("SHUFFLE", {roomId, {"SHUFFLE", "INT", "1"}}));
        house.Run(MakeCommand("SKIP_FWD", {roomId}));
    }
    house.Core().AnswerLines();
    return Skip(house);
}

Operation Pause(House& house) {
    return Commands(house, MakeRoomCommand("PAUSE"), MakeRoomCommand("PLAY"));
}

Operation EndOfMedia(House& house) {
    const std::string line = "* addmed EOM=" + std::to_string(House::kFirstStream) + "\r\n";
    return {[&house, line] { house.Core().Receive(line); }, {}};
}

// The song comes last, and is the only one of its kind.
Operation AddSong(House& house) {
    const CmdParam song = {"MEDIA_ID", "INT", "999999"};
    return Commands(house, MakeRoomCommand("ADD_SONG", {song}), MakeRoomCommand("REMOVE_SONG", {song}));
}

Operation RemoveSong(House& house) {
    const Operation add = AddSong(house);
    add.run();
    house.Core().AnswerLines();
    return {add.restore, add.run};
}

// The list takes the place of the one before.
Operation AddSongList(House& house) {
    const Command add = MakeRoomCommand(
        "ADD_SONG_LIST",
        {{"CLEAR", "INT", "1"}, {"MEDIA", "STRING", SongListText(House::kFirstSong, kLongList)}});
    return {[&house, add] { house.Run(add); }, {}};
}

// What plays is in both lists, so that it goes on playing.
Operation EditQueue(House& house) {
    const auto edit = [](std::uint32_t first) {
        return MakeRoomCommand("EDIT_QUEUE", {{"MEDIA", "STRING", SongListText(first, kLongList)}});
    };
    return {[&house, one = edit(House::kFirstSong), other = edit(House::kFirstSong - 1),
             turn = false]() mutable { house.Run((turn = !turn) ? other : one); },
            {}};
}

} // namespace

const std::vector<NamedOperation>& GetOperations() {
    static const std::vector<NamedOperation> operations = {
        {"Skip", Skip, false},
        {"SkipShuffled", SkipShuffled, false},
        {"Pause", Pause, false},
        {"EndOfMedia", EndOfMedia, false},
        {"AddSong", AddSong, false},
        {"RemoveSong", RemoveSong, false},
        {"AddSongList", AddSongList, true},
        {"EditQueue", EditQueue, true},
    };
    return operations;
}

void Finish(House& house, const Operation& operation) {
    if (operation.restore)
        operation.restore();
    house.Core().AnswerLines();
    house.Core().PassTime(kBetweenOperationsMs);
}

} // namespace bench

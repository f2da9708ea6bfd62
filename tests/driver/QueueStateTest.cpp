// Every operation in every state.
#include "QueueFixture.h"

namespace {

constexpr QueueState kStates[] = {STOP, PAUSE, PLAY, END};

struct Operation {
    const char* name;
    void (*run)(AudioQueue&);
    // What comes of it in STOP, PAUSE, PLAY and END: the lines to the audio server and the announced states
    // ("=STATE") in order, and the state left when none is announced.
    const char* outcome[4];
};

// Song A is current, song B follows it, C is the last.
#define ADD_A "addmed 1 \\\"file://media/a.flac\\\""
#define ADD_B "addmed 1 \\\"file://media/b.flac\\\""

void ToTheLastSong(AudioQueue& queue) {
    queue.SetNextSong(std::uint32_t{2});
    queue.GetNextSong();
}

const Operation kOperations[] = {
    {"SetQueueState(STOP)",
     [](AudioQueue& q) { q.SetQueueState(STOP); },
     {"", "remmed 1, =STOP", "remmed 1, =STOP", "remmed 1, =STOP"}},
    {"SetQueueState(PAUSE)",
     [](AudioQueue& q) { q.SetQueueState(PAUSE); },
     {"", "", "setsta 1 pause, =PAUSE", "setsta 1 pause, =PAUSE"}},
    {"SetQueueState(PAUSE) of a stream that cannot pause",
     [](AudioQueue& q) {
         q.UpdateCaps("NO-PAUSE");
         q.SetQueueState(PAUSE);
     },
     {"", "remmed 1, =STOP", "remmed 1, =STOP", "remmed 1, =STOP"}},
    {"SetQueueState(PLAY)",
     [](AudioQueue& q) { q.SetQueueState(PLAY); },
     {"=PLAY, " ADD_B, "setsta 1 play, =PLAY", "", ADD_A ", =PLAY"}},
    {"SetQueueState(PLAY) behind the last song",
     [](AudioQueue& q) {
         ToTheLastSong(q);
         q.SetQueueState(PLAY);
     },
     {"", "setsta 1 play, =PLAY", "", ADD_A ", =PLAY"}},
    {"SetQueueState(END)",
     [](AudioQueue& q) { q.SetQueueState(END); },
     {"=END, eos 1", "=END, eos 1", "=END, eos 1", ""}},
    {"SetQueueState of no state",
     [](AudioQueue& q) { q.SetQueueState(static_cast<QueueState>(4)); },
     {"", "", "", ""}},
    {"ChangeQueueState(STOP)",
     [](AudioQueue& q) { q.ChangeQueueState(STOP); },
     {"", "=STOP", "=STOP", "=STOP"}},
    {"ChangeQueueState(PAUSE)",
     [](AudioQueue& q) { q.ChangeQueueState(PAUSE); },
     {"=PAUSE", "", "=PAUSE", "=PAUSE"}},
    {"ChangeQueueState(PLAY)",
     [](AudioQueue& q) { q.ChangeQueueState(PLAY); },
     {"=PLAY", "=PLAY", "=PLAY", "=PLAY"}},
    {"ChangeQueueState(END)", [](AudioQueue& q) { q.ChangeQueueState(END); }, {"=END", "=END", "=END", ""}},
    {"PlayFirstSong",
     [](AudioQueue& q) { q.PlayFirstSong(); },
     {ADD_A ", =PLAY", ADD_A ", =PLAY", ADD_A ", =PLAY", ADD_A ", =PLAY"}},
    {"PlayNextSong forward",
     [](AudioQueue& q) { q.PlayNextSong(true, false); },
     {"=PLAY, " ADD_B, "=PLAY, " ADD_B, "=PLAY, " ADD_B, "=PLAY, " ADD_B}},
    {"PlayNextSong backward",
     [](AudioQueue& q) { q.PlayNextSong(false, false); },
     {"=PLAY, " ADD_A, "=PLAY, " ADD_A, "=PLAY, " ADD_A, "=PLAY, " ADD_A}},
    {"PlayNextSong behind the last song",
     [](AudioQueue& q) {
         ToTheLastSong(q);
         q.PlayNextSong(true, false);
     },
     {"", "", "", ""}},
    {"PlayNextSong behind the last song, ending",
     [](AudioQueue& q) {
         ToTheLastSong(q);
         q.PlayNextSong(true, true);
     },
     {"=END, eos 1", "=END, eos 1", "=END, eos 1", "eos 1"}},
    {"EndOfQueue",
     [](AudioQueue& q) { q.EndOfQueue(); },
     {"=END, eos 1", "=END, eos 1", "=END, eos 1", "eos 1"}},
    {"AddSongToStream", [](AudioQueue& q) { q.AddSongToStream(Song(1)); }, {ADD_A, ADD_A, ADD_A, ADD_A}},
    {"AddFileToStream",
     [](AudioQueue& q) {
         q.SetInputFile("line1");
         q.AddFileToStream();
     },
     {"addmed 1 line1", "addmed 1 line1", "addmed 1 line1", "addmed 1 line1"}},
    {"CreateStream", [](AudioQueue& q) { q.CreateStream(); }, {"addstr", "addstr", "addstr", "addstr"}},
    {"RemoveStream",
     [](AudioQueue& q) { q.RemoveStream(); },
     {"remstr 1", "remstr 1", "remstr 1", "remstr 1"}},
    {"SetStreamId", [](AudioQueue& q) { q.SetStreamId(2); }, {"", "", "", ""}},
    {"RemoveCurrentSong",
     [](AudioQueue& q) { q.RemoveCurrentSong(); },
     {"remmed 1", "remmed 1", "remmed 1", "remmed 1"}},
    {"AddSong", [](AudioQueue& q) { q.AddSong(Song(9), true, true); }, {"", "", "", ""}},
    {"AddSongList",
     [](AudioQueue& q) {
         q.AddSongList(Songs({8, 9}), true);
     },
     {"", "", "", ""}},
    {"RemoveSong", [](AudioQueue& q) { q.RemoveSong(Song(1)); }, {"", "", "", ""}},
    {"RemoveSong of the only song",
     [](AudioQueue& q) {
         q.ReplaceSongList(Songs({1}));
         q.RemoveSong(Song(1));
     },
     {"remmed 1", "remmed 1", "remmed 1", "remmed 1"}},
    {"ReplaceSongList",
     [](AudioQueue& q) {
         q.ReplaceSongList(Songs({8, 9}));
     },
     {"", "", "", ""}},
    {"ClearSongs", [](AudioQueue& q) { q.ClearSongs(); }, {"", "", "", ""}},
    {"SetNextSong", [](AudioQueue& q) { q.SetNextSong(Song(3)); }, {"", "", "", ""}},
    {"SetShuffle", [](AudioQueue& q) { q.SetShuffle(true); }, {"", "", "", ""}},
    {"SetRepeat", [](AudioQueue& q) { q.SetRepeat(true); }, {"", "", "", ""}},
    {"GetNextSong", [](AudioQueue& q) { q.GetNextSong(); }, {"", "", "", ""}},
    {"SetIsInternetRadio(true)", [](AudioQueue& q) { q.SetIsInternetRadio(true); }, {"", "", "", ""}},
    {"SetIsRhapsodyChannel(false)", [](AudioQueue& q) { q.SetIsRhapsodyChannel(false); }, {"", "", "", ""}},
    {"ShouldStopPlayback", [](AudioQueue& q) { q.ShouldStopPlayback(); }, {"", "", "", ""}},
    {"UpdateCaps", [](AudioQueue& q) { q.UpdateCaps("NO-PAUSE"); }, {"", "", "", ""}},
    {"UpdateStreamStatus", [](AudioQueue& q) { q.UpdateStreamStatus("buffering"); }, {"", "", "", ""}},
    {"UpdateCurrentSongMetaData", [](AudioQueue& q) { q.UpdateCurrentSongMetaData("x"); }, {"", "", "", ""}},
    {"AddRoomClient",
     [](AudioQueue& q) { q.AddRoomClient(8, "10.0.0.8", 6200, 1); },
     {"addcli 1 10.0.0.8 6200", "addcli 1 10.0.0.8 6200", "addcli 1 10.0.0.8 6200",
      "addcli 1 10.0.0.8 6200"}},
    {"RemoveRoomClient",
     [](AudioQueue& q) { q.RemoveRoomClient(7); },
     {"remcli 1 10.0.0.7 6200", "remcli 1 10.0.0.7 6200", "remcli 1 10.0.0.7 6200",
      "remcli 1 10.0.0.7 6200"}},
    {"AddRoomClientsToStream",
     [](AudioQueue& q) { q.AddRoomClientsToStream(); },
     {"addcli 1 10.0.0.7 6200", "addcli 1 10.0.0.7 6200", "addcli 1 10.0.0.7 6200",
      "addcli 1 10.0.0.7 6200"}},
    {"Close", [](AudioQueue& q) { q.Close(); }, {"", "=STOP", "=STOP", "=STOP"}},
};

class QueueStates : public QueueFixture {
protected:
    void Prepare(QueueState state) {
        NewQueue();
        GiveStream();
        queue->AddSongList(Songs({1, 2, 3}), false);
        queue->AddRoomClient(7, "10.0.0.7", 6200, 1);
        queue->GetFirstSong();
        queue->ChangeQueueState(state);
        Register();
        Out();
    }

    std::string Outcome() {
        std::string outcome;
        for (const std::string& line : Out()) {
            const std::size_t state = line.find(" QUEUE_STATE:STRING=");
            const bool sent = line.starts_with("send ");
            if (!sent && state == std::string::npos)
                continue;
            if (!outcome.empty())
                outcome += ", ";
            outcome += sent ? line.substr(5) : line.substr(state + 19);
        }
        return outcome;
    }
};

TEST_F(QueueStates, EveryOperationInEveryState) {
    Run("song 1 location=/media/a.flac");
    Run("song 2 location=/media/b.flac");
    Run("song 3 location=/media/c.flac");
    for (const Operation& operation : kOperations) {
        for (const QueueState before : kStates) {
            Prepare(before);
            operation.run(*queue);
            const std::string outcome = Outcome();
            EXPECT_EQ(outcome, operation.outcome[before])
                << operation.name << " in " << AudioQueue::QueueStateToStr(before);
            QueueState after = before;
            for (const QueueState announced : kStates) {
                if (outcome.find(std::string("=") + AudioQueue::QueueStateToStr(announced)) !=
                    std::string::npos)
                    after = announced;
            }
            EXPECT_EQ(queue->GetQueueState(), after)
                << operation.name << " in " << AudioQueue::QueueStateToStr(before);
        }
    }
}

} // namespace

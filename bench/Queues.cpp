// What a person does to one queue, in houses of several sizes. Beside each time, in the same run, the floor
// of its documents: "pugixml" is the time to build and print them once, "copy" the time to copy their bytes
// once.
#include <benchmark/benchmark.h>

#include <ctime>
#include <functional>

#include "Floor.h"
#include "House.h"

namespace {

using bench::Command;
using bench::House;
using bench::MakeCommand;

constexpr std::uint32_t kLongList = 4000;
// Ended media within a minute count as errors; so long an operation is ago when the next one comes.
constexpr std::uint32_t kBetweenOperationsMs = 61000;

struct Operation {
    std::function<void()> run;
    std::function<void()> restore; // not measured; may be empty
};

// The driver waits for nothing: its time is the processor's, which other programs do not disturb.
double ProcessorSeconds() {
    timespec now;
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) * 1e-9;
}

double SecondsOf(const std::function<void()>& action) {
    const double start = ProcessorSeconds();
    action();
    return ProcessorSeconds() - start;
}

// The mean over as many turns as fit into a moment, so that the clock itself weighs nothing.
double MeanSecondsOf(const std::function<void()>& action) {
    constexpr double kMoment = 0.05;
    for (int turns = 16;; turns *= 4) {
        const double seconds = SecondsOf([&] {
            for (int i = 0; i < turns; ++i)
                action();
        });
        if (seconds >= kMoment)
            return seconds / turns;
    }
}

void Finish(House& house, const Operation& operation) {
    if (operation.restore)
        operation.restore();
    house.Core().AnswerLines();
    house.Core().PassTime(kBetweenOperationsMs);
}

void Measure(benchmark::State& state, House& house, const Operation& operation) {
    for ([[maybe_unused]] const auto turn : state) {
        state.SetIterationTime(SecondsOf(operation.run));
        Finish(house, operation);
    }

    std::vector<std::string> documents;
    house.Core().KeepDocuments(&documents);
    operation.run();
    house.Core().KeepDocuments(nullptr);
    bench::Floor floor(documents);
    state.counters["pugixml_us"] = MeanSecondsOf([&] { floor.BuildAndPrint(); }) * 1e6;
    state.counters["copy_us"] = MeanSecondsOf([&] { floor.Copy(); }) * 1e6;
    state.counters["documents"] = static_cast<double>(documents.size());
    state.counters["kB"] = static_cast<double>(floor.GetBytes()) / 1000;
}

House MakeHouse(const benchmark::State& state) {
    return House(static_cast<std::uint32_t>(state.range(0)), static_cast<std::uint32_t>(state.range(1)));
}

void Skip(benchmark::State& state) {
    House house = MakeHouse(state);
    const Command skip = MakeCommand("SKIP_FWD", {{"ROOM_ID", "INT", "1"}});
    Measure(state, house, {[&] { house.Run(skip); }, {}});
}

// All queues are shuffled and play a song from somewhere in their lists.
void SkipShuffled(benchmark::State& state) {
    House house = MakeHouse(state);
    for (std::int64_t room = 1; room <= state.range(0); ++room) {
        const CmdParam roomId = {"ROOM_ID", "INT", std::to_string(room)};
        house.Run(MakeCommand("SHUFFLE", {roomId, {"SHUFFLE", "INT", "1"}}));
        house.Run(MakeCommand("SKIP_FWD", {roomId}));
    }
    house.Core().AnswerLines();
    const Command skip = MakeCommand("SKIP_FWD", {{"ROOM_ID", "INT", "1"}});
    Measure(state, house, {[&] { house.Run(skip); }, {}});
}

void EndOfMedia(benchmark::State& state) {
    House house = MakeHouse(state);
    const std::string line = "* addmed EOM=" + std::to_string(House::kFirstStream) + "\r\n";
    Measure(state, house, {[&] { house.Core().Receive(line); }, {}});
}

void AddSong(benchmark::State& state) {
    House house = MakeHouse(state);
    const std::vector<CmdParam> song = {{"ROOM_ID", "INT", "1"}, {"MEDIA_ID", "INT", "999999"}};
    const Command add = MakeCommand("ADD_SONG", song);
    const Command remove = MakeCommand("REMOVE_SONG", song);
    Measure(state, house, {[&] { house.Run(add); }, [&] { house.Run(remove); }});
}

// The list takes the place of the one before.
void AddSongList(benchmark::State& state) {
    House house = MakeHouse(state);
    const Command add = MakeCommand("ADD_SONG_LIST",
                                    {{"ROOM_ID", "INT", "1"},
                                     {"CLEAR", "INT", "1"},
                                     {"MEDIA", "STRING", bench::SongListText(House::kFirstSong, kLongList)}});
    Measure(state, house, {[&] { house.Run(add); }, {}});
}

// What plays is in both lists, so that it goes on playing.
void EditQueue(benchmark::State& state) {
    House house = MakeHouse(state);
    const auto edit = [](std::uint32_t first) {
        return MakeCommand("EDIT_QUEUE", {{"ROOM_ID", "INT", "1"},
                                          {"MEDIA", "STRING", bench::SongListText(first, kLongList)}});
    };
    const Command one = edit(House::kFirstSong);
    const Command other = edit(House::kFirstSong - 1);
    bool turn = false;
    Measure(state, house, {[&] { house.Run((turn = !turn) ? other : one); }, {}});
}

void EverySize(benchmark::internal::Benchmark* benchmark) {
    benchmark->ArgNames({"queues", "songs"})
        ->ArgsProduct({{1, 10, 100}, {10, 1000, 4000}})
        ->UseManualTime()
        ->Unit(benchmark::kMicrosecond);
}

void LongLists(benchmark::internal::Benchmark* benchmark) {
    benchmark->ArgNames({"queues", "songs"})
        ->ArgsProduct({{1, 10, 100}, {kLongList}})
        ->UseManualTime()
        ->Unit(benchmark::kMicrosecond);
}

BENCHMARK(Skip)->Apply(EverySize);
BENCHMARK(SkipShuffled)->Apply(EverySize);
BENCHMARK(EndOfMedia)->Apply(EverySize);
BENCHMARK(AddSong)->Apply(EverySize);
BENCHMARK(AddSongList)->Apply(LongLists);
BENCHMARK(EditQueue)->Apply(LongLists);

} // namespace

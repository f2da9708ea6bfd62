// What an operation on one queue takes, in houses of several sizes. Beside each time, in the same run, the
// floor of its documents: "pugixml" is the time to build and print them once, "copy" the time to copy their
// bytes once.
#include <benchmark/benchmark.h>

#include <ctime>

#include "Floor.h"
#include "Operations.h"

namespace {

using bench::House;
using bench::NamedOperation;
using bench::Operation;

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

void Measure(benchmark::State& state, House& house, const Operation& operation) {
    for ([[maybe_unused]] const auto turn : state) {
        state.SetIterationTime(SecondsOf(operation.run));
        bench::Finish(house, operation);
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

void Register(const NamedOperation& named) {
    const auto measure = [prepare = named.prepare](benchmark::State& state) {
        House house(static_cast<std::uint32_t>(state.range(0)), static_cast<std::uint32_t>(state.range(1)));
        Measure(state, house, prepare(house));
    };
    const std::vector<std::int64_t> songs = named.givesLongList
                                                ? std::vector<std::int64_t>{bench::kLongList}
                                                : std::vector<std::int64_t>{10, 1000, bench::kLongList};
    benchmark::RegisterBenchmark(named.name, measure)
        ->ArgNames({"queues", "songs"})
        ->ArgsProduct({{1, 10, 100}, songs})
        ->UseManualTime()
        ->Unit(benchmark::kMicrosecond);
}

[[maybe_unused]] const bool g_registered = [] {
    for (const NamedOperation& named : bench::GetOperations())
        Register(named);
    return true;
}();

} // namespace

// What queues and songs hold of memory: every allocation of the program is counted while it lives.
#include <benchmark/benchmark.h>
#include <malloc.h>

#include <cstdlib>
#include <new>

#include "House.h"

namespace {

std::size_t g_allocated = 0;

void* Allocate(std::size_t size) {
    void* memory = std::malloc(size);
    if (!memory)
        throw std::bad_alloc();
    g_allocated += malloc_usable_size(memory);
    return memory;
}

void Free(void* memory) {
    g_allocated -= malloc_usable_size(memory);
    std::free(memory);
}

double HeldBy(std::uint32_t queues, std::uint32_t songs) {
    const std::size_t before = g_allocated;
    const bench::House house(queues, songs);
    return static_cast<double>(g_allocated - before);
}

// "queue" is what a queue holds beside its songs, "song" what one more song in each queue adds.
void Memory(benchmark::State& state) {
    constexpr std::uint32_t kFewSongs = 10;
    const auto queues = static_cast<std::uint32_t>(state.range(0));
    const auto songs = static_cast<std::uint32_t>(state.range(1));
    double perQueue = 0;
    double perSong = 0;
    for ([[maybe_unused]] const auto turn : state) {
        const double none = HeldBy(0, 0);
        const double few = HeldBy(queues, kFewSongs);
        perSong = (HeldBy(queues, songs) - few) / queues / (songs - kFewSongs);
        perQueue = (few - none) / queues - kFewSongs * perSong;
    }
    state.counters["queue_bytes"] = perQueue;
    state.counters["song_bytes"] = perSong;
}

BENCHMARK(Memory)
    ->ArgNames({"queues", "songs"})
    ->ArgsProduct({{1, 10, 100}, {1000, 4000}})
    ->Iterations(1)
    ->Unit(benchmark::kMillisecond);

} // namespace

void* operator new(std::size_t size) {
    return Allocate(size);
}
void operator delete(void* memory) noexcept {
    Free(memory);
}
void operator delete(void* memory, std::size_t) noexcept {
    Free(memory);
}

// Counts the instructions of each operation, under valgrind; bench/instructions runs it.
#include <valgrind/callgrind.h>

#include <string>

#include "Operations.h"

namespace {

using bench::House;

struct Size {
    std::uint32_t queues, songs;
};

// The mean over some turns: what a growing list costs now and then counts, too.
constexpr int kTurns = 16;

// Callgrind writes what was counted to a file of its own, under the name of what was done.
void Count(const bench::NamedOperation& named, const Size& size) {
    House house(size.queues, size.songs);
    const bench::Operation operation = named.prepare(house);
    const auto finish = [&] { bench::Finish(house, operation); };
    operation.run(); // the first time finds nothing kept
    finish();
    for (int turn = 0; turn < kTurns; ++turn) {
        CALLGRIND_TOGGLE_COLLECT;
        operation.run();
        CALLGRIND_TOGGLE_COLLECT;
        finish();
    }
    const std::string name = std::string(named.name) + ' ' + std::to_string(size.queues) + ' ' +
                             std::to_string(size.songs) + ' ' + std::to_string(kTurns);
    CALLGRIND_DUMP_STATS_AT(name.c_str());
}

} // namespace

int main() {
    for (const bench::NamedOperation& named : bench::GetOperations()) {
        for (const Size& size : {Size{1, bench::kLongList}, Size{100, 10}}) {
            if (!named.givesLongList || size.songs == bench::kLongList)
                Count(named, size);
        }
    }
}

#pragma once

#include <cstdint>

// What a play queue is doing. END is a queue that played to its end.
enum QueueState : std::uint32_t { STOP = 0, PAUSE = 1, PLAY = 2, END = 3 };

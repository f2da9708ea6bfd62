#pragma once

// What a play queue is doing. END is a queue that played to its end.
enum QueueState { STOP = 0, PAUSE = 1, PLAY = 2, END = 3 };

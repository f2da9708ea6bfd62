// How long a stream is patient with what it plays.
#pragma once

#include <chrono>

namespace korvel::audioserver {

struct SourceTimes {
    // A source that gives no sound for so long is given up.
    std::chrono::milliseconds toSound{30000};
    // A source that does not end for so long is abandoned.
    std::chrono::milliseconds toEnd{5000};
    // Before a station is connected to again, the first time; twice as long each further time, up to lastRetry.
    std::chrono::milliseconds firstRetry{1000};
    std::chrono::milliseconds lastRetry{60000};
    // Between two titles of a station that are told.
    std::chrono::milliseconds betweenTitles{2000};
};

} // namespace korvel::audioserver

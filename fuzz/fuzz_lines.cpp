// What an audio server says: each line of the input, to a driver with queues in several states.
#include <cstdint>

#include "TestCore.h"
#include "replay/Words.h"

namespace {

// Three songs on stream 1, a station on stream 2, a channel of the streaming service on stream 3, an
// announcement on stream 4, and a queue that waits for its stream.
void FillQueues(TestCore& core) {
    for (const char* line : {"song 1 location=/media/a.flac",
                             "song 2 location=/media/b.flac",
                             "song 3 location=/media/c.flac",
                             "start",
                             "online 3000 127.0.0.1",
                             "command SET_PLAYLIST_CLEAR_FLAG FLAG_VALUE=true",
                             "command ADD_SONG ROOM_ID=7 MEDIA_ID=1",
                             "command ADD_SONG ROOM_ID=7 MEDIA_ID=2",
                             "command ADD_SONG ROOM_ID=7 MEDIA_ID=3",
                             "select 7 queue=10000 kind=QUEUE ip=10.0.0.7 port=6200 target=7",
                             R"(data 3000 "1 addstr stream=1\r\n")",
                             "command ADD_IR_STREAM ROOM_ID=8 MEDIA=http://radio/1 DEVICE_ID=50",
                             "select 8 queue=10001 kind=QUEUE ip=10.0.0.8 port=6200 target=8",
                             R"(data 3000 "2 addstr stream=2\r\n")",
                             "command ADD_SONG ROOM_ID=9 MEDIA_ID=ps.1 SOURCE=3",
                             "select 9 queue=10002 kind=QUEUE ip=10.0.0.9 port=6200 target=9",
                             R"(data 3000 "3 addstr stream=3\r\n")",
                             "announce create",
                             R"(data 3000 "4 addann stream=4\r\n")",
                             "command ADD_SONG ROOM_ID=6 MEDIA_ID=1",
                             "select 6 queue=10003 kind=QUEUE ip=10.0.0.6 port=6200 target=6"})
        core.Session().Execute(line);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    const std::string text(reinterpret_cast<const char*>(bytes), size);
    TestCore core;
    FillQueues(core);
    for (std::size_t start = 0; start < text.size();) {
        const std::size_t end = std::min(text.find('\n', start), text.size() - 1);
        const std::string line = text.substr(start, end + 1 - start);
        start = end + 1;
        // An empty line lets the link's timers expire.
        if (line == "\n")
            core.Session().Execute("advance 5000");
        else
            core.Session().Execute("data 3000 " + korvel::replay::FormatValue(line));
    }
    return 0;
}

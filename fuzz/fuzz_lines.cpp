// What an audio server says: each line of the input, to a driver with queues in several states.
#include "FuzzCore.h"
#include "server/link/ASPacket.h"

namespace {

// Three songs on stream 1, a station on stream 2, a channel of the streaming service on stream 3, an
// announcement on stream 4, and a queue that waits for its stream.
void FillQueues(fuzz::FuzzCore& core) {
    const auto add = [&](const char* room, const char* command, std::vector<CmdParam> params) {
        params.push_back({"ROOM_ID", "INT", room});
        core.Command(command, params);
    };
    core.Bound(3000, "SERVER_ONLINE", "127.0.0.1");
    core.Command("SET_PLAYLIST_CLEAR_FLAG", {{"FLAG_VALUE", "STRING", "true"}});
    add("7", "ADD_SONG", {{"MEDIA_ID", "INT", "1"}});
    add("7", "ADD_SONG", {{"MEDIA_ID", "INT", "2"}});
    add("7", "ADD_SONG", {{"MEDIA_ID", "INT", "3"}});
    core.Select(7, 10000, "QUEUE");
    core.Bound(3000, "DATA_RECEIVED", "1 addstr stream=1\r\n");
    add("8", "ADD_IR_STREAM", {{"MEDIA", "STRING", "http://radio/1"}, {"DEVICE_ID", "INT", "50"}});
    core.Select(8, 10001, "QUEUE");
    core.Bound(3000, "DATA_RECEIVED", "2 addstr stream=2\r\n");
    add("9", "ADD_SONG", {{"MEDIA_ID", "STRING", "ps.1"}, {"SOURCE", "INT", "3"}});
    core.Select(9, 10002, "QUEUE");
    core.Bound(3000, "DATA_RECEIVED", "3 addstr stream=3\r\n");
    core.Announcements()->CreateAnnouncementStream();
    core.Bound(3000, "DATA_RECEIVED", "4 addann stream=4\r\n");
    add("6", "ADD_SONG", {{"MEDIA_ID", "INT", "4"}});
    core.Select(6, 10003, "QUEUE");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    const std::string text(reinterpret_cast<const char*>(bytes), size);
    FuzzedDataProvider noData(nullptr, 0);
    fuzz::FuzzCore core(noData, {});
    if (!core.Start(nullptr))
        return 0;
    FillQueues(core);
    for (std::size_t start = 0; start < text.size();) {
        const std::size_t end = std::min(text.find('\n', start), text.size() - 1);
        const std::string line = text.substr(start, end + 1 - start);
        start = end + 1;
        const ASPacket packet(line);
        core.Bound(3000, "DATA_RECEIVED", line);
        if (line == "\n") // an empty line lets the next timer expire
            core.ExpireTimer(1);
    }
    return 0;
}

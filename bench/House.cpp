#include "House.h"

#include "driver/QueueIds.h"

namespace bench {

Command MakeCommand(const std::string& name, const std::vector<CmdParam>& params) {
    auto message = kv::CreateCmdMessage(name);
    for (const CmdParam& param : params)
        message->AddParam(param.name, param.type, param.value);
    return message;
}

std::string SongListText(std::uint32_t first, std::uint32_t count) {
    std::string text = "<MEDIA>";
    for (std::uint32_t i = 0; i < count; ++i)
        text.append("<SONG ID=\"").append(std::to_string(first + i)).append("\" SOURCE=\"1\"/>");
    return text + "</MEDIA>";
}

House::House(std::uint32_t queues, std::uint32_t songs) : m_queues(queues) {
    const std::string list = SongListText(kFirstSong, songs);
    for (std::uint32_t roomId = 1; roomId <= queues; ++roomId)
        AddQueue(roomId, list);
    Run(MakeCommand("REPEAT", {{"ROOM_ID", "INT", "1"}, {"REPEAT", "INT", "1"}}));
}

// The room selects the queue that its list made, and the queue plays when it gets its stream.
void House::AddQueue(std::uint32_t roomId, const std::string& songs) {
    Run(MakeCommand("ADD_SONG_LIST",
                    {{"ROOM_ID", "INT", std::to_string(roomId)}, {"MEDIA", "STRING", songs}}));
    const AVParams params{roomId, kFirstQueueId + roomId - 1, "QUEUE", 0};
    AVLocationInfo location;
    location.endpointAddress = "10.0.0." + std::to_string(roomId);
    location.endpointPort = 6200;
    location.endpointChannel = 1;
    AVReturn result;
    m_core.Driver().OnAVSelected(params, {}, {}, location, nullptr, result);
    m_core.AnswerLines();
}

} // namespace bench

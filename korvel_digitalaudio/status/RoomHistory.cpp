#include "basics/Variables.h"
#include "driver/korvel_digitalaudio.h"

namespace {
// This room's history is looked up, but not shown.
constexpr std::uint32_t kProbedRoom = 1;
} // namespace

void korvel_digitalaudio::OnGetRoomHistory(const ICmdMessage& message, ICmdReturn* ret) {
    const std::uint32_t roomId = message.GetNumber("ROOM_ID");
    if (!AudioServer_GetQueueFromRoom(roomId)) {
        setReturnValue(ret, "<history></history>\n");
        return;
    }
    std::string answer = "<history>\n <room>" + std::to_string(roomId) + "</room>\n";
    if (const auto playlists = m_roomHistories.HistoryToXml(roomId))
        playlists->AppendText(answer);
    setReturnValue(ret, answer + "</history>\n");
}

// The published element stays empty: a room's history is only told to who asks for it.
void korvel_digitalaudio::UpdateRoomHistoryVariable() {
    const auto histories = KVXML::CreateXmlNode("histories");
    m_roomHistories.HistoryToXml(kProbedRoom);
    ChangeMyVariable(variables::kRoomHistory, histories->ToText());
}

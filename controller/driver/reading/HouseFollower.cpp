#include "driver/reading/HouseFollower.h"

#include <chrono>
#include <string_view>

#include "links/MediaFailures.h"

namespace korvel::controller {

namespace {

constexpr std::uint32_t kRoomQueueSettings = 1003;
constexpr std::uint32_t kQueueInfo = 1007;
constexpr std::uint32_t kRoomMap = 1009;

Milliseconds Now() {
    return std::chrono::duration_cast<Milliseconds>(std::chrono::steady_clock::now().time_since_epoch());
}

// Whether it says that a media is not taken at all.
bool Refuses(std::string_view line) {
    const std::size_t blank = line.find(' ');
    return blank != std::string_view::npos && line.substr(blank).starts_with(" NO addmed");
}

} // namespace

HouseFollower::HouseFollower(const Parts& parts)
    : m_parts(parts),
      m_reader({parts.house, [this](std::uint32_t queueId) { return ListOf(queueId); },
                [this](RoomId room) { return InputIn(room); }, Now}) {
    m_parts.driver.SetListener(this);
}

HouseFollower::~HouseFollower() {
    m_parts.driver.SetListener(nullptr);
}

void HouseFollower::OnVariable(std::uint32_t id, const std::string& text) {
    if (id == kRoomMap)
        m_reader.OnRoomMap(text);
    else if (id == kQueueInfo)
        m_reader.OnList(text);
    else if (id == kRoomQueueSettings)
        m_reader.OnRoomSettings(text);
}

void HouseFollower::OnMessage(const Room& room, const ICmdMessage& message) {
    if (message.GetName() == "QUEUE_ENDED")
        m_reader.OnEnded(room.config.id);
}

void HouseFollower::OnServerLine(const std::string& line) {
    if (const auto reason = BadMediaIn(line))
        m_reader.OnRefused(*reason);
    else if (Refuses(line))
        m_reader.OnRefused("the audio server does not take it");
}

void HouseFollower::OnServerLost() {
    m_reader.OnServerLost();
    m_reader.Read();
}

kv::auto_com<KVXML::INode> HouseFollower::ListOf(std::uint32_t queueId) const {
    const auto request = kv::CreateCmdMessage("GET_QUEUE_INFO");
    request->AddParam("QUEUE_ID", "INT", std::to_string(queueId));
    return m_parts.driver.Request(*request);
}

std::optional<std::string> HouseFollower::InputIn(RoomId room) const {
    const Room* const found = m_parts.rooms.Find(room);
    return found ? m_parts.input(found->sourceDeviceId) : std::nullopt;
}

} // namespace korvel::controller

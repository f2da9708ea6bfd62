#include "front/http/HouseEvents.h"

#include <nlohmann/json.hpp>

#include "front/http/HouseJson.h"

namespace korvel::controller {

using nlohmann::json;

HouseEvents::HouseEvents(asio::io_context& loop, House& house, media::MediaDatabase& library,
                         EventBus& events)
    : m_poster(loop), m_house(house), m_library(library), m_events(events) {
    m_house.SetListener([this] { m_poster.Post([this] { Tell(); }); });
}

HouseEvents::~HouseEvents() {
    m_house.SetListener(nullptr);
}

void HouseEvents::Tell() {
    const Changes changes = m_house.TakeChanges();
    json sessions = json::array();
    json ended = json::array();
    json rooms = json::array();
    for (const auto& [id, what] : changes.sessions) {
        if (const Session* const session = m_house.FindSession(id))
            sessions.push_back(ToJson(*session, m_library));
        else
            ended.push_back(static_cast<std::uint64_t>(id));
    }
    for (const auto& [id, what] : changes.rooms)
        rooms.push_back(ToJson(m_house.GetRooms().at(id), m_house));
    m_events.Publish({{"type", "house"},
                      {"revision", static_cast<std::uint64_t>(changes.revision)},
                      {"sessions", sessions},
                      {"ended", ended},
                      {"rooms", rooms}});
}

} // namespace korvel::controller

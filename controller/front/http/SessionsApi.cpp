#include <algorithm>
#include <charconv>
#include <nlohmann/json.hpp>
#include <span>

#include "base/Refused.h"
#include "front/http/Handlers.h"
#include "front/http/HouseJson.h"

namespace korvel::controller {
namespace {

using nlohmann::json;

// Ids and revisions are larger than other numbers of the interface. None for a text that is no number.
std::optional<std::uint64_t> ParseLarge(std::string_view text) {
    std::uint64_t number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc() || end != text.data() + text.size())
        return {};
    return number;
}

const Session& RequireSession(const Api& api, const Call& call) {
    const std::string_view text = call.values.at("id");
    const auto id = ParseLarge(text);
    const Session* const session =
        id ? api.GetParts().house.FindSession(static_cast<SessionId>(*id)) : nullptr;
    if (!session)
        throw Refused(Refused::Why::NotFound, "there is no session " + std::string(text));
    return *session;
}

json AllOf(const House& house, media::MediaDatabase& library) {
    json sessions = json::array();
    for (const auto& [id, session] : house.GetSessions())
        sessions.push_back(ToJson(session, library));
    json rooms = json::array();
    for (const auto& [id, room] : house.GetRooms())
        rooms.push_back(ToJson(room, house));
    return {{"all", true}, {"sessions", sessions}, {"rooms", rooms}};
}

json ChangesOf(const House& house, const Since& since, media::MediaDatabase& library) {
    json sessions = json::array();
    for (const SessionId id : since.sessions)
        sessions.push_back(ToJson(*house.FindSession(id), library));
    json rooms = json::array();
    for (const RoomId id : since.rooms)
        rooms.push_back(ToJson(house.GetRooms().at(id), house));
    json ended = json::array();
    for (const SessionId id : since.ended)
        ended.push_back(static_cast<std::uint64_t>(id));
    return {{"all", false}, {"sessions", sessions}, {"rooms", rooms}, {"ended", ended}};
}

} // namespace

HttpReply ShowHouse(Api& api, const Call& call) {
    const House& house = api.GetParts().house;
    media::MediaDatabase& library = api.GetParts().library.Database();
    const std::string text = call.target.Text("since");
    const auto known = ParseLarge(text);
    if (!text.empty() && !known)
        throw Refused(Refused::Why::Invalid, "since must be a revision");
    const auto since = known ? house.GetSince(static_cast<Revision>(*known)) : std::nullopt;
    json answer = since ? ChangesOf(house, *since, library) : AllOf(house, library);
    answer["revision"] = static_cast<std::uint64_t>(house.GetRevision());
    return JsonReply(answer);
}

HttpReply ShowSession(Api& api, const Call& call) {
    return JsonReply(ToJson(RequireSession(api, call), api.GetParts().library.Database()));
}

HttpReply ListEntries(Api& api, const Call& call) {
    const Session& session = RequireSession(api, call);
    const auto offset = call.target.Number("offset", 0);
    const auto limit = call.target.Number("limit", media::kMaxPageSize);
    if (!offset || !limit)
        throw Refused(Refused::Why::Invalid, "offset and limit must be whole numbers");
    const std::span<const Entry> all = session.entries;
    const std::size_t begin = std::min<std::size_t>(*offset, all.size());
    const std::size_t count = std::min<std::size_t>({*limit, media::kMaxPageSize, all.size() - begin});
    return JsonReply({{"total", all.size()},
                      {"offset", *offset},
                      {"revision", static_cast<std::uint64_t>(session.entriesRevision)},
                      {"items", ToJson(all.subspan(begin, count), api.GetParts().library.Database())}});
}

} // namespace korvel::controller

#include <nlohmann/json.hpp>
#include <utility>

#include "front/http/Handlers.h"
#include "front/http/StaticFiles.h"

namespace korvel::controller {

using nlohmann::json;

HttpReply ShowStatus(Api& api, const Call&) {
    return JsonReply(api.Status());
}

HttpReply ListRooms(Api& api, const Call&) {
    return JsonReply(api.Rooms());
}

HttpReply ListVariables(Api& api, const Call&) {
    return JsonReply(api.GetParts().variables.ToJson());
}

HttpReply ShowEvents(Api&, const Call&) {
    return ErrorReply(400, "/api/events is a WebSocket");
}

HttpReply ShowOther(Api& api, const Call& call) {
    const auto& path = call.target.path;
    if (path.size() >= 2 && path[0] == "api" && path[1] == "library")
        return NotInLibrary(call.target);
    if (!path.empty() && path[0] == "api")
        return ErrorReply(404, "there is no such address");
    if (!api.GetWebFolder().empty())
        return ServeFile(api.GetWebFolder(), call.target);
    if (path.empty())
        return {200, "text/plain; charset=utf-8",
                "This is the Korvel controller. Its interface is under /api.\n", ""};
    return ErrorReply(404, "there is nothing here");
}

std::optional<HttpReply> RunCommand(Api& api, const kv::auto_com<ICmdMessage>& command,
                                    const Api::Done& done) {
    const Api::Done checked = api.Checking(done);
    api.AnswerSoon(checked, [answer = api.GetParts().commands.Execute(*command)] {
        return json{{"return", answer}};
    });
    return std::nullopt;
}

std::optional<HttpReply> RunRequest(Api& api, const kv::auto_com<ICmdMessage>& request,
                                    const Api::Done& done) {
    const Api::Done checked = api.Checking(done);
    const auto reply = api.GetParts().commands.Request(*request);
    // Read before anything changes what it stands for.
    api.AnswerSoon(checked, [text = reply ? json(reply->ToText()) : json(nullptr)] {
        return json{{"reply", text}};
    });
    return std::nullopt;
}

// Writes nothing, and takes its time.
std::optional<HttpReply> Announce(Api& api, AnnouncementOrder order, const Api::Done& done) {
    Announcements& announcements = api.GetParts().announcements;
    announcements.Start(std::move(order.rooms), order.file,
                        [&announcements, done](const std::optional<Refused>& refused) {
                            done(refused ? ReplyTo(*refused) : JsonReply(announcements.ToJson(), 202));
                        });
    return std::nullopt;
}

void SelectInRoom(RoomRouter& router, std::uint32_t id, const SelectOrder& order) {
    if (order.join)
        router.Join(id, *order.join);
    else
        router.Select(id, order.queue);
}

void DeselectRoom(RoomRouter& router, std::uint32_t id, Nothing) {
    router.Deselect(id);
}

void TurnRoomOff(RoomRouter& router, std::uint32_t id, Nothing) {
    router.TurnOff(id);
}

void AnswerWithRoom(Api& api, std::uint32_t id, const Api::Done& done) {
    api.AnswerSoon(done, [&rooms = api.GetParts().rooms, id] { return ToJson(*rooms.Find(id)); });
}

} // namespace korvel::controller

#include "front/http/Api.h"

#include <nlohmann/json.hpp>

#include "base/Refused.h"
#include "front/http/ApiRequests.h"
#include "front/http/StaticFiles.h"
#include "library/DatabaseError.h"

namespace korvel::controller {
namespace {

using nlohmann::json;
using Why = Refused::Why;

unsigned StatusOf(Why why) {
    switch (why) {
        case Why::Invalid:
            return 400;
        case Why::NotFound:
            return 404;
        case Why::Conflict:
            return 409;
        case Why::Unplayable:
            return 422;
        case Why::Unavailable:
            return 503;
    }
    return 500;
}

HttpReply ReplyTo(const Refused& refused) {
    return ErrorReply(StatusOf(refused.GetWhy()), refused.what());
}

HttpReply NotWrittenReply(const std::string& why, bool noRoom) {
    return ErrorReply(noRoom ? 507 : 500, why);
}

HttpReply MethodReply(const std::string& allow) {
    HttpReply reply = ErrorReply(405, "use " + allow);
    reply.allow = allow;
    return reply;
}

} // namespace

void Api::Handle(const HttpRequest& request, const Done& done) {
    std::optional<HttpReply> reply;
    try {
        const auto target = ParseTarget(request.target);
        if (!target)
            reply = ErrorReply(400, "the address is badly encoded");
        else if (!target->path.empty() && target->path[0] == "api" && IsPostPath(target->path))
            reply = request.method == "POST" ? Post(*target, request, done) : MethodReply("POST");
        else
            reply = request.method == "GET" ? Get(*target) : MethodReply("GET");
    } catch (const Refused& refused) {
        reply = ReplyTo(refused);
    } catch (const media::DatabaseError& error) {
        reply = NotWrittenReply(error.what(), error.GetKind() == media::DatabaseError::Kind::NoRoom);
    } catch (const std::exception& error) {
        reply = ErrorReply(500, error.what());
    }
    if (reply)
        done(std::move(*reply));
}

json Api::Status() const {
    const std::string why = m_parts.bindings.WhyNotReady();
    return {{"version", m_parts.version},
            {"ready", why.empty()},
            {"notReadyBecause", why},
            {"servers", m_parts.bindings.ToJson()},
            {"scan", m_parts.library.ScanStatus()},
            {"storage", m_parts.storage.ToJson()},
            {"announcement", m_parts.announcements.ToJson()}};
}

json Api::Rooms() const {
    json list = json::array();
    for (const Room& room : m_parts.rooms.All())
        list.push_back(ToJson(room));
    return list;
}

json Api::Snapshot() const {
    return {{"type", "snapshot"},
            {"status", Status()},
            {"rooms", Rooms()},
            {"variables", m_parts.variables.ToJson()}};
}

Api::Done Api::Checking(const Done& done) const {
    const StorageStatus& storage = m_parts.storage;
    return [&storage, done, before = storage.CountFailures()](HttpReply reply) {
        const StorageStatus::Failure* failure = storage.FailureAfter(before);
        done(failure ? NotWrittenReply(failure->text, failure->noRoom) : std::move(reply));
    };
}

// Rooms follow a command after the driver's call, and settings are written, by handlers that wait on the loop
// already.
void Api::AnswerSoon(const Done& done, std::function<json()> answer) {
    m_poster.Post([done, answer = std::move(answer)] { done(JsonReply(answer())); });
}

HttpReply Api::Get(const Target& target) {
    const auto& path = target.path;
    if (path.empty() || path[0] != "api") {
        if (!m_webFolder.empty())
            return ServeFile(m_webFolder, target);
        if (path.empty())
            return {200, "text/plain; charset=utf-8",
                    "This is the Korvel controller. Its interface is under /api.\n", ""};
        return ErrorReply(404, "there is nothing here");
    }
    if (path.size() >= 2 && path[1] == "library")
        return BrowseLibrary(m_parts.library, target);
    if (path.size() == 2 && path[1] == "variables")
        return JsonReply(m_parts.variables.ToJson());
    if (path.size() == 2 && path[1] == "rooms")
        return JsonReply(Rooms());
    if (path.size() == 2 && path[1] == "status")
        return JsonReply(Status());
    if (path.size() == 2 && path[1] == "events")
        return ErrorReply(400, "/api/events is a WebSocket");
    return ErrorReply(404, "there is no such address");
}

std::optional<HttpReply> Api::Post(const Target& target, const HttpRequest& request, const Done& done) {
    if (!request.body.empty() && request.contentType.rfind("application/json", 0) != 0)
        return ErrorReply(415, "the body must be application/json");
    const json body = ParseBody(request);
    if (target.path[1] == "library" && target.path[2] == "save-playlist")
        return SavePlaylist(m_parts.library, body);
    if (target.path[1] == "library")
        return ChangeLibrary(m_parts.library, target.path[2]);
    if (target.path[1] == "announce") // writes nothing, and takes its time
        Announce(body, done);
    else if (target.path[1] == "command")
        RunCommand(body, Checking(done));
    else if (target.path[1] == "request")
        RunRequest(body, Checking(done));
    else
        ChangeRoom(target, body, Checking(done));
    return std::nullopt;
}

void Api::RunCommand(const json& body, const Done& done) {
    const auto message = ReadMessage(body);
    AnswerSoon(done, [answer = m_parts.commands.Execute(*message)] { return json{{"return", answer}}; });
}

void Api::RunRequest(const json& body, const Done& done) {
    const auto reply = m_parts.commands.Request(*ReadMessage(body));
    // Read before anything changes what it stands for.
    AnswerSoon(done, [text = reply ? json(reply->ToText()) : json(nullptr)] {
        return json{{"reply", text}};
    });
}

void Api::Announce(const json& body, const Done& done) {
    AnnouncementOrder order = ReadAnnouncement(body);
    m_parts.announcements.Start(
        std::move(order.rooms), order.file, [this, done](const std::optional<Refused>& refused) {
            done(refused ? ReplyTo(*refused) : JsonReply(m_parts.announcements.ToJson(), 202));
        });
}

void Api::ChangeRoom(const Target& target, const json& body, const Done& done) {
    const auto id = ParseNumber(target.path[2]);
    if (!id || !m_parts.rooms.Find(*id))
        throw Refused(Why::NotFound, "there is no room " + target.path[2]);
    const std::string& action = target.path[3];
    RoomRouter& router = m_parts.router;
    if (action == "select") {
        const SelectOrder order = ReadSelect(body);
        if (order.join)
            router.Join(*id, *order.join);
        else
            router.Select(*id, order.queue);
    } else {
        RefuseMembers(body);
        if (action == "off")
            router.TurnOff(*id);
        else
            router.Deselect(*id);
    }
    AnswerSoon(done, [this, room = *id] { return ToJson(*m_parts.rooms.Find(room)); });
}

} // namespace korvel::controller

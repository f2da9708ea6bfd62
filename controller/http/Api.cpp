#include "http/Api.h"

#include <algorithm>
#include <array>
#include <nlohmann/json.hpp>

#include "host/Refused.h"
#include "media/DatabaseError.h"

namespace korvel::controller {
namespace {

using nlohmann::json;
using Why = Refused::Why;

constexpr std::size_t kMaxParameters = 100;
constexpr std::size_t kMaxParameterName = 100;

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

// An object; an empty body is an empty one.
json ParseBody(const HttpRequest& request) {
    if (request.body.empty())
        return json::object();
    json body = json::parse(request.body, nullptr, false);
    if (!body.is_object())
        throw Refused(Why::Invalid, "the body must be a JSON object");
    return body;
}

std::uint32_t NumberOf(const json& value, const char* name) {
    if (!value.is_number_unsigned() || value.get<std::uint64_t>() > 2147483647)
        throw Refused(Why::Invalid, std::string("\"") + name + "\" must be a whole number");
    return value.get<std::uint32_t>();
}

std::uint32_t NumberIn(const json& body, const char* name) {
    return NumberOf(body.at(name), name);
}

void RefuseOtherMembers(const json& body, std::initializer_list<std::string_view> known) {
    for (const auto& [key, value] : body.items()) {
        if (std::ranges::find(known, key) == known.end())
            throw Refused(Why::Invalid, "unknown member \"" + key + "\"");
    }
}

void AddParameter(ICmdMessage& message, const std::string& name, const json& value) {
    if (name.empty() || name.size() > kMaxParameterName)
        throw Refused(Why::Invalid, "a parameter's name must have 1 to 100 characters");
    if (value.is_string())
        message.AddParam(name, "STRING", value.get<std::string>());
    else if (value.is_number_integer())
        message.AddParam(name, "INT", value.dump());
    else
        throw Refused(Why::Invalid, "parameter " + name + " must be a text or a whole number");
}

kv::auto_com<ICmdMessage> MessageOf(const json& body) {
    if (!body.contains("name") || !body["name"].is_string())
        throw Refused(Why::Invalid, "\"name\" must be a text");
    RefuseOtherMembers(body, {"name", "parameters"});
    auto message = kv::CreateCmdMessage(body["name"].get<std::string>());
    const auto parameters = body.find("parameters");
    if (parameters == body.end())
        return message;
    if (!parameters->is_object() || parameters->size() > kMaxParameters)
        throw Refused(Why::Invalid, "\"parameters\" must be an object with at most 100 members");
    for (const auto& [name, value] : parameters->items())
        AddParameter(*message, name, value);
    return message;
}

HttpReply MethodReply(const std::string& allow) {
    HttpReply reply = ErrorReply(405, "use " + allow);
    reply.allow = allow;
    return reply;
}

bool IsPostPath(const std::vector<std::string>& path) {
    static constexpr std::array<std::string_view, 3> kActions = {"select", "deselect", "off"};
    if (path.size() == 2)
        return path[1] == "command" || path[1] == "request" || path[1] == "announce";
    if (path.size() == 3)
        return path[1] == "library" &&
               (path[2] == "scan" || path[2] == "forget-missing" || path[2] == "save-playlist");
    return path.size() == 4 && path[1] == "rooms" && std::ranges::find(kActions, path[3]) != kActions.end();
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

Api::Done Api::Checking(const Done& done) const {
    const StorageStatus& storage = m_core.GetStorage();
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
        return BrowseLibrary(m_core.GetLibrary(), target);
    if (path.size() == 2 && path[1] == "variables")
        return JsonReply(m_core.GetVariables().ToJson());
    if (path.size() == 2 && path[1] == "rooms")
        return JsonReply(RoomsToJson(m_core.GetRooms()));
    if (path.size() == 2 && path[1] == "status")
        return JsonReply(m_core.Status());
    if (path.size() == 2 && path[1] == "events")
        return ErrorReply(400, "/api/events is a WebSocket");
    return ErrorReply(404, "there is no such address");
}

std::optional<HttpReply> Api::Post(const Target& target, const HttpRequest& request, const Done& done) {
    if (!request.body.empty() && request.contentType.rfind("application/json", 0) != 0)
        return ErrorReply(415, "the body must be application/json");
    const json body = ParseBody(request);
    if (target.path[1] == "library" && target.path[2] == "save-playlist")
        return SavePlaylist(m_core.GetLibrary(), body);
    if (target.path[1] == "library")
        return ChangeLibrary(m_core.GetLibrary(), target.path[2]);
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
    const auto message = MessageOf(body);
    AnswerSoon(done, [answer = m_core.GetCommands().Execute(*message)] { return json{{"return", answer}}; });
}

void Api::RunRequest(const json& body, const Done& done) {
    const auto reply = m_core.GetCommands().Request(*MessageOf(body));
    // Read before anything changes what it stands for.
    AnswerSoon(done, [text = reply ? json(reply->ToText()) : json(nullptr)] {
        return json{{"reply", text}};
    });
}

void Api::Announce(const json& body, const Done& done) {
    RefuseOtherMembers(body, {"rooms", "file"});
    const auto list = body.find("rooms");
    if (list == body.end() || !list->is_array())
        throw Refused(Why::Invalid, "\"rooms\" must be a list of rooms");
    if (!body.contains("file") || !body["file"].is_string())
        throw Refused(Why::Invalid, "\"file\" must be a path");
    std::vector<std::uint32_t> rooms;
    for (const json& room : *list)
        rooms.push_back(NumberOf(room, "rooms"));
    m_core.GetAnnouncements().Start(
        std::move(rooms), body["file"].get<std::string>(),
        [this, done](const std::optional<Refused>& refused) {
            done(refused ? ReplyTo(*refused) : JsonReply(m_core.GetAnnouncements().ToJson(), 202));
        });
}

void Api::ChangeRoom(const Target& target, const json& body, const Done& done) {
    const auto id = ParseNumber(target.path[2]);
    if (!id || !m_core.GetRooms().Find(*id))
        throw Refused(Why::NotFound, "there is no room " + target.path[2]);
    const std::string& action = target.path[3];
    if (action == "select")
        RefuseOtherMembers(body, {"queue", "join"});
    else
        RefuseOtherMembers(body, {});
    RoomRouter& router = m_core.GetRouter();
    if (action == "deselect")
        router.Deselect(*id);
    else if (action == "off")
        router.TurnOff(*id);
    else if (body.size() == 2)
        throw Refused(Why::Invalid, "give a queue or a room to join, not both");
    else if (body.contains("join"))
        router.Join(*id, NumberIn(body, "join"));
    else
        router.Select(*id, body.contains("queue") ? NumberIn(body, "queue") : 0);
    AnswerSoon(done, [this, room = *id] { return ToJson(*m_core.GetRooms().Find(room)); });
}

} // namespace korvel::controller

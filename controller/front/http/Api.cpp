#include "front/http/Api.h"

#include <nlohmann/json.hpp>

#include "base/Refused.h"
#include "front/http/ApiRequests.h"
#include "front/http/Routes.h"
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

HttpReply NotWrittenReply(const std::string& why, bool noRoom) {
    return ErrorReply(noRoom ? 507 : 500, why);
}

HttpReply MethodReply(const std::string& allow) {
    HttpReply reply = ErrorReply(405, "use " + allow);
    reply.allow = allow;
    return reply;
}

std::optional<HttpReply> Answer(Api& api, const HttpRequest& request, const Api::Done& done) {
    const auto target = ParseTarget(request.target);
    if (!target)
        return ErrorReply(400, "the address is badly encoded");
    const FoundRoute found = FindRoute(Routes(), request.method, target->path);
    if (!found.route)
        return MethodReply(found.allow);
    json body;
    if (request.method != "GET") {
        if (!request.body.empty() && request.contentType.rfind("application/json", 0) != 0)
            return ErrorReply(415, "the body must be application/json");
        body = ParseBody(request);
    }
    return found.route->handle(api, {*target, found.values, body}, done);
}

} // namespace

HttpReply ReplyTo(const Refused& refused) {
    return ErrorReply(StatusOf(refused.GetWhy()), refused.what());
}

void Api::Handle(const HttpRequest& request, const Done& done) {
    std::optional<HttpReply> reply;
    try {
        reply = Answer(*this, request, done);
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

} // namespace korvel::controller

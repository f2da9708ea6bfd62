#pragma once

#include <functional>
#include <nlohmann/json_fwd.hpp>
#include <string>

#include "actions/Commands.h"
#include "actions/Library.h"
#include "base/EventBus.h"
#include "base/Poster.h"
#include "driver/rooms/Announcements.h"
#include "driver/rooms/RoomRouter.h"
#include "driver/rooms/RoomTable.h"
#include "driver/services/ServerBindings.h"
#include "driver/services/VariableStore.h"
#include "front/http/Message.h"
#include "house/House.h"
#include "store/StorageStatus.h"

namespace korvel::controller {

// The HTTP interface without its connections: finds the route of a request and has it answered. docs/api.md describes
// what can be asked.
class Api {
public:
    using Done = std::function<void(HttpReply)>;

    struct Parts {
        EventBus& events;
        const House& house;
        const StorageStatus& storage;
        Library& library;
        Commands& commands;
        RoomRouter& router;
        Announcements& announcements;
        RoomTable& rooms;
        const VariableStore& variables;
        const ServerBindings& bindings;
        std::string version; // of the controller
    };

    // Without a `webFolder` there is no page.
    Api(asio::io_context& loop, Parts parts, std::string webFolder)
        : m_poster(loop), m_parts(std::move(parts)), m_webFolder(std::move(webFolder)) {}

    // Calls `done` once, on the loop: at once, or when the rooms have followed what the request did.
    void Handle(const HttpRequest& request, const Done& done);

    EventBus& GetEvents() { return m_parts.events; }
    // The event that a new listener begins with: {"type":"snapshot","status","rooms","variables"}.
    nlohmann::json Snapshot() const;

    // For the handlers of routes.
    const Parts& GetParts() const { return m_parts; }
    const std::string& GetWebFolder() const { return m_webFolder; }
    // {"version","ready","notReadyBecause","servers","scan","storage","announcement"}
    nlohmann::json Status() const;
    // [{"id","name",...}, ...]
    nlohmann::json Rooms() const;
    // `done` for a request that begins now: when something could not be written until the answer, that is the
    // answer.
    Done Checking(const Done& done) const;
    // Answers with what `answer` returns once the rooms have followed the present call of the driver.
    void AnswerSoon(const Done& done, std::function<nlohmann::json()> answer);

private:
    Poster m_poster;
    const Parts m_parts;
    const std::string m_webFolder;
};

// The answer that says why.
HttpReply ReplyTo(const Refused& refused);

} // namespace korvel::controller

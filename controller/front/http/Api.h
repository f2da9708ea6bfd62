#pragma once

#include <functional>
#include <nlohmann/json_fwd.hpp>
#include <optional>
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
#include "store/StorageStatus.h"

namespace korvel::controller {

// What stands behind each address of the HTTP interface; docs/api.md describes them.
class Api {
public:
    using Done = std::function<void(HttpReply)>;

    struct Parts {
        EventBus& events;
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

    Api(asio::io_context& loop, Parts parts, std::string webFolder)
        : m_poster(loop), m_parts(std::move(parts)), m_webFolder(std::move(webFolder)) {}

    // Calls `done` once, on the loop: at once, or when the rooms have followed what the request did.
    void Handle(const HttpRequest& request, const Done& done);

    EventBus& GetEvents() { return m_parts.events; }
    // The event that a new listener begins with: {"type":"snapshot","status","rooms","variables"}.
    nlohmann::json Snapshot() const;

private:
    // {"version","ready","notReadyBecause","servers","scan","storage","announcement"}
    nlohmann::json Status() const;
    // [{"id","name",...}, ...]
    nlohmann::json Rooms() const;

    HttpReply Get(const Target& target);
    // None when `done` will be called later.
    std::optional<HttpReply> Post(const Target& target, const HttpRequest& request, const Done& done);
    void RunCommand(const nlohmann::json& body, const Done& done);
    void RunRequest(const nlohmann::json& body, const Done& done);
    void Announce(const nlohmann::json& body, const Done& done);
    void ChangeRoom(const Target& target, const nlohmann::json& body, const Done& done);
    // `done` for a request that begins now: when something could not be written until the answer, that is the
    // answer.
    Done Checking(const Done& done) const;
    // Answers with what `answer` returns once the rooms have followed the present call of the driver.
    void AnswerSoon(const Done& done, std::function<nlohmann::json()> answer);

    Poster m_poster;
    Parts m_parts;
    std::string m_webFolder;
};

// POST /api/library/scan and /forget-missing. Throws Refused and media::DatabaseError.
HttpReply ChangeLibrary(Library& library, const std::string& action);
// GET under /api/library.
HttpReply BrowseLibrary(Library& library, const Target& target);

// POST /api/library/save-playlist. Throws Refused.
HttpReply SavePlaylist(Library& library, const nlohmann::json& body);

} // namespace korvel::controller

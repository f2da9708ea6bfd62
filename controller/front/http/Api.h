#pragma once

#include <functional>
#include <nlohmann/json_fwd.hpp>
#include <optional>
#include <string>

#include "app/Core.h"
#include "base/Poster.h"
#include "front/http/Message.h"

namespace korvel::controller {

// What stands behind each address of the HTTP interface; docs/api.md describes them.
class Api {
public:
    using Done = std::function<void(HttpReply)>;

    Api(asio::io_context& loop, Core& core, std::string webFolder)
        : m_poster(loop), m_core(core), m_webFolder(std::move(webFolder)) {}

    // Calls `done` once, on the loop: at once, or when the rooms have followed what the request did.
    void Handle(const HttpRequest& request, const Done& done);

    Core& GetCore() { return m_core; }

private:
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
    Core& m_core;
    std::string m_webFolder;
};

// POST /api/library/scan and /forget-missing. Throws Refused and media::DatabaseError.
HttpReply ChangeLibrary(Library& library, const std::string& action);
// GET under /api/library.
HttpReply BrowseLibrary(Library& library, const Target& target);

// POST /api/library/save-playlist. Throws Refused.
HttpReply SavePlaylist(Library& library, const nlohmann::json& body);

} // namespace korvel::controller

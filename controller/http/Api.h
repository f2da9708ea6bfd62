#pragma once

#include <functional>
#include <nlohmann/json_fwd.hpp>
#include <string>

#include "app/Core.h"
#include "http/Message.h"
#include "net/Poster.h"

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
    HttpReply Post(const Target& target, const HttpRequest& request, std::function<nlohmann::json()>& later);
    HttpReply RunCommand(const nlohmann::json& body, std::function<nlohmann::json()>& later);
    HttpReply RunRequest(const nlohmann::json& body);
    HttpReply Announce(const nlohmann::json& body);
    HttpReply ChangeRoom(const Target& target, const nlohmann::json& body,
                         std::function<nlohmann::json()>& later);

    Poster m_poster;
    Core& m_core;
    std::string m_webFolder;
};

// GET under /api/library.
HttpReply BrowseLibrary(Library& library, const Target& target);

// The file of the page that the path names, from the folder; 404 when there is none.
HttpReply ServeFile(const std::string& folder, const Target& target);

} // namespace korvel::controller

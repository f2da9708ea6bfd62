// What requests ask for, out of their bodies; docs/api.md describes them. All functions are pure, and those
// that read a body throw Refused for one that is not as it must be.
#pragma once

#include <cstdint>
#include <nlohmann/json_fwd.hpp>
#include <optional>
#include <string>
#include <vector>

#include "front/http/Message.h"
#include "platform/CmdMessage.h"

namespace korvel::controller {

// An object; an empty body is an empty one.
nlohmann::json ParseBody(const HttpRequest& request);

// A command or a request for the driver.
kv::auto_com<ICmdMessage> ReadMessage(const nlohmann::json& body);

struct AnnouncementOrder {
    std::vector<std::uint32_t> rooms;
    std::string file;
};
AnnouncementOrder ReadAnnouncement(const nlohmann::json& body);

// What a room is to hear.
struct SelectOrder {
    std::optional<std::uint32_t> join; // a room
    std::uint32_t queue = 0;           // where no room is joined; 0 for the one that it heard last
};
SelectOrder ReadSelect(const nlohmann::json& body);

struct PlaylistOrder {
    std::string title;
    std::vector<std::uint32_t> songs;
};
PlaylistOrder ReadPlaylist(const nlohmann::json& body);

// For what takes nothing.
struct Nothing {};
Nothing ReadNothing(const nlohmann::json& body);

} // namespace korvel::controller

#include "front/http/ApiRequests.h"

#include <algorithm>
#include <initializer_list>
#include <nlohmann/json.hpp>
#include <string_view>

#include "base/Refused.h"
#include "common/Text.h"

namespace korvel::controller {
namespace {

using nlohmann::json;
using Why = Refused::Why;

constexpr std::size_t kMaxParameters = 100;
constexpr std::size_t kMaxParameterName = 100;
constexpr std::size_t kMaxTitle = 100;

std::uint32_t NumberOf(const json& value, const char* name) {
    if (!value.is_number_unsigned() || value.get<std::uint64_t>() > kMaxNumber)
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

std::string TitleIn(const json& body) {
    const auto title = body.find("title");
    if (title == body.end() || !title->is_string())
        throw Refused(Why::Invalid, "\"title\" must be a text");
    auto text = title->get<std::string>();
    if (text.empty() || text.size() > kMaxTitle || common::HasControl(text))
        throw Refused(Why::Invalid, "\"title\" must be a line of 1 to 100 bytes");
    return text;
}

std::vector<std::uint32_t> SongsIn(const json& body) {
    const auto songs = body.find("songs");
    if (songs == body.end() || !songs->is_array() || songs->empty())
        throw Refused(Why::Invalid, "\"songs\" must be a list of songs");
    std::vector<std::uint32_t> ids;
    for (const json& song : *songs) {
        if (!song.is_number_unsigned() || song.get<std::uint64_t>() > kMaxNumber)
            throw Refused(Why::Invalid, "a song is named by its id");
        ids.push_back(song.get<std::uint32_t>());
    }
    return ids;
}

} // namespace

json ParseBody(const HttpRequest& request) {
    if (request.body.empty())
        return json::object();
    json body = json::parse(request.body, nullptr, false);
    if (!body.is_object())
        throw Refused(Why::Invalid, "the body must be a JSON object");
    return body;
}

kv::auto_com<ICmdMessage> ReadMessage(const json& body) {
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

AnnouncementOrder ReadAnnouncement(const json& body) {
    RefuseOtherMembers(body, {"rooms", "file"});
    const auto list = body.find("rooms");
    if (list == body.end() || !list->is_array())
        throw Refused(Why::Invalid, "\"rooms\" must be a list of rooms");
    if (!body.contains("file") || !body["file"].is_string())
        throw Refused(Why::Invalid, "\"file\" must be a path");
    AnnouncementOrder order;
    for (const json& room : *list)
        order.rooms.push_back(NumberOf(room, "rooms"));
    order.file = body["file"].get<std::string>();
    return order;
}

SelectOrder ReadSelect(const json& body) {
    RefuseOtherMembers(body, {"queue", "join"});
    if (body.size() == 2)
        throw Refused(Why::Invalid, "give a queue or a room to join, not both");
    SelectOrder order;
    if (body.contains("join"))
        order.join = NumberIn(body, "join");
    else if (body.contains("queue"))
        order.queue = NumberIn(body, "queue");
    return order;
}

PlaylistOrder ReadPlaylist(const json& body) {
    if (body.size() != 2)
        throw Refused(Why::Invalid, "a playlist has \"title\" and \"songs\"");
    return {TitleIn(body), SongsIn(body)};
}

Nothing ReadNothing(const json& body) {
    RefuseOtherMembers(body, {});
    return {};
}

} // namespace korvel::controller

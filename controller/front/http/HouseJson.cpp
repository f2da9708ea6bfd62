#include "front/http/HouseJson.h"

#include <nlohmann/json.hpp>

#include "front/http/Message.h"

namespace korvel::controller {

namespace {

using nlohmann::json;

template <class Id>
json Number(Id id) {
    const auto number = static_cast<std::uint64_t>(id);
    return number == 0 ? json(nullptr) : json(number);
}

const char* Text(SessionState state) {
    switch (state) {
        case SessionState::Stopped:
            return "stopped";
        case SessionState::Playing:
            return "playing";
        case SessionState::Paused:
            return "paused";
        case SessionState::Ended:
            return "ended";
        case SessionState::Buffering:
            return "buffering";
        case SessionState::Reconnecting:
            return "reconnecting";
        case SessionState::Sleeping:
            break;
    }
    return "sleeping";
}

const char* Text(MediaKind kind) {
    switch (kind) {
        case MediaKind::Song:
            return "song";
        case MediaKind::Track:
            return "track";
        case MediaKind::Channel:
            return "channel";
        case MediaKind::Station:
            return "station";
        case MediaKind::Input:
            return "input";
        case MediaKind::Unknown:
            break;
    }
    return "unknown";
}

json ToJson(const std::optional<Problem>& problem) {
    return problem ? json{{"code", problem->code}, {"text", problem->text}} : json(nullptr);
}

// What the library knows of it.
void AddRecord(json& entry, const MediaRef& media, media::MediaDatabase& library) {
    const auto id = ParseNumber(media.id);
    if (media.kind == MediaKind::Song && id) {
        if (const auto song = library.FindSong(*id)) {
            entry["title"] = song->title;
            entry["artist"] = song->artist;
            entry["album"] = song->album;
            entry["image"] = song->image;
            entry["durationMs"] = song->durationMs;
            entry["missing"] = song->presence != media::Presence::Here;
        }
    } else if (media.kind == MediaKind::Station && id) {
        if (const auto station = library.FindStation(*id)) {
            entry["title"] = station->name;
            entry["image"] = station->image;
        }
    } else if (media.kind == MediaKind::Input) {
        entry["title"] = media.id;
    }
}

json ToJson(const Entry& entry, media::MediaDatabase& library) {
    json object{{"id", Number(entry.id)},
                {"kind", Text(entry.media.kind)},
                {"media", entry.media.id},
                {"unplayable", ToJson(entry.unplayable)}};
    AddRecord(object, entry.media, library);
    return object;
}

} // namespace

json ToJson(const HouseRoom& room, const House& house) {
    const Session* const session = house.SessionOf(room.id);
    return {{"id", room.id},
            {"name", room.name},
            {"revision", Number(room.revision)},
            {"session", session ? Number(session->id) : json(nullptr)},
            {"problem", ToJson(room.problem)}};
}

json ToJson(const Session& session, media::MediaDatabase& library) {
    const Abilities abilities = session.GetAbilities();
    const Entry* const current = session.FindEntry(session.current);
    return {{"id", Number(session.id)},
            {"revision", Number(session.revision)},
            {"rooms", session.rooms},
            {"state", Text(session.GetState())},
            {"current", current ? ToJson(*current, library) : json(nullptr)},
            {"shuffle", session.shuffle},
            {"repeat", session.repeat},
            {"canPause", abilities.canPause},
            {"canSeek", abilities.canSeek},
            {"canSkip", abilities.canSkip},
            {"entries", {{"count", session.entries.size()}, {"revision", Number(session.entriesRevision)}}},
            {"problem", ToJson(session.problem)}};
}

json ToJson(std::span<const Entry> entries, media::MediaDatabase& library) {
    json list = json::array();
    for (const Entry& entry : entries)
        list.push_back(ToJson(entry, library));
    return list;
}

} // namespace korvel::controller

#include "Service.h"

#include <algorithm>
#include <nlohmann/json.hpp>
#include <stdexcept>

namespace korvel::catalog {
namespace {

using nlohmann::json;

// Ends a request with an error reply.
class Failure : public std::runtime_error {
public:
    Failure(Code code, const std::string& text) : std::runtime_error(text), m_code(code) {}
    Code GetCode() const { return m_code; }

private:
    Code m_code;
};

const std::string& Text(const json& request, const char* key) {
    const auto found = request.find(key);
    if (found == request.end() || !found->is_string())
        throw Failure(Code::kInvalidData, std::string("'") + key + "' must be a text");
    return found->get_ref<const std::string&>();
}

bool IsNumber(const json& value) {
    return value.is_number_unsigned() && value.get<std::uint64_t>() <= UINT32_MAX;
}

std::uint32_t Number(const json& request, const char* key) {
    const auto found = request.find(key);
    if (found == request.end() || !IsNumber(*found))
        throw Failure(Code::kInvalidData, std::string("'") + key + "' must be a number from 0 to 4294967295");
    return found->get<std::uint32_t>();
}

std::uint32_t Number(const json& request, const char* key, std::uint32_t absent) {
    return request.contains(key) ? Number(request, key) : absent;
}

std::uint32_t StreamNumber(const json& request) {
    const std::uint32_t stream = Number(request, "stream");
    if (stream == 0)
        throw Failure(Code::kInvalidData, "'stream' must not be 0");
    return stream;
}

json ErrorReply(const json& id, Code code, const std::string& text) {
    return {{"id", id}, {"error", {{"code", static_cast<std::int32_t>(code)}, {"text", text}}}};
}

json TrackJson(const Track& track) {
    return {{"id", track.id},       {"title", track.title}, {"artist", track.artist},
            {"album", track.album}, {"image", track.image}, {"duration", track.duration.count()}};
}

json TrackReply(const Track& track, const std::string& context) {
    return {{"track", TrackJson(track)}, {"context", context}};
}

} // namespace

Service::Service(Catalogue catalogue, Clock clock)
    : m_catalogue(std::move(catalogue)), m_clock(std::move(clock)) {
    for (const TrackList& list : m_catalogue.channels) {
        std::vector<const Track*> tracks;
        for (const std::string& id : list.tracks)
            tracks.push_back(&m_catalogue.tracks.at(id));
        m_channels.try_emplace(list.id, std::move(tracks), m_clock());
    }
}

std::optional<json> Service::Answer(const std::string& line, ConnectionId from, bool final) {
    const json request = json::parse(line, nullptr, false);
    if (!request.is_object())
        return ErrorReply(nullptr, Code::kInvalidData, "not a JSON object");
    const auto id = request.find("id");
    if (id == request.end() || !IsNumber(*id))
        return ErrorReply(nullptr, Code::kInvalidData, "'id' must be a number from 0 to 4294967295");
    try {
        auto reply = Perform(request, from, final);
        if (reply)
            (*reply)["id"] = *id;
        return reply;
    } catch (const Failure& failure) {
        return ErrorReply(*id, failure.GetCode(), failure.what());
    }
}

std::optional<json> Service::Perform(const json& request, ConnectionId from, bool final) {
    const std::string& operation = Text(request, "op");
    if (operation == "playlists")
        return Playlists();
    if (operation == "playlist-tracks")
        return PlaylistTracks(request);
    if (operation == "track")
        return TrackData(request);
    if (operation == "playing")
        return Playing(request, final);
    if (operation == "resolve")
        return Resolve(request, from);
    if (operation == "stop")
        return Stop(request, from);
    throw Failure(Code::kInvalidData, "no such 'op'");
}

json Service::Playlists() const {
    json list = json::array();
    for (const TrackList& playlist : m_catalogue.playlists)
        list.push_back({{"id", playlist.id}, {"name", playlist.name}});
    return {{"playlists", std::move(list)}};
}

json Service::PlaylistTracks(const json& request) const {
    const std::string& id = Text(request, "playlist");
    const std::size_t offset = Number(request, "offset", 0);
    const std::size_t count = Number(request, "count", kMaxTracksPerReply);
    const auto playlist = std::ranges::find(m_catalogue.playlists, id, &TrackList::id);
    if (playlist == m_catalogue.playlists.end())
        throw Failure(Code::kNotAvailable, "no such playlist");
    const std::vector<std::string>& tracks = playlist->tracks;
    const std::size_t first = std::min(offset, tracks.size());
    const std::size_t last = first + std::min({count, kMaxTracksPerReply, tracks.size() - first});
    json list = json::array();
    for (std::size_t i = first; i < last; ++i)
        list.push_back(tracks[i]);
    return {{"total", tracks.size()}, {"tracks", std::move(list)}};
}

json Service::TrackData(const json& request) const {
    return {{"track", TrackJson(FindTrack(Text(request, "track")))}};
}

const Track& Service::FindTrack(const std::string& id) const {
    const auto track = m_catalogue.tracks.find(id);
    if (track == m_catalogue.tracks.end())
        throw Failure(Code::kInvalidTrack, "no such track");
    return track->second;
}

std::optional<json> Service::Playing(const json& request, bool final) {
    const std::string& context = Text(request, "context");
    const std::uint32_t stream = Number(request, "stream");
    if (stream == 0)
        return TrackReply(FindTrack(context), "");
    const auto session = m_sessions.find(stream);
    if (session != m_sessions.end()) {
        const Session& what = session->second;
        return TrackReply(what.channel ? *what.channel->At(m_clock()).track : *what.track, context);
    }
    if (final)
        throw Failure(Code::kNotAvailable, "this stream plays nothing of the catalogue");
    return std::nullopt;
}

json Service::Resolve(const json& request, ConnectionId from) {
    const std::uint32_t stream = StreamNumber(request);
    const std::string& media = Text(request, "media");
    m_sessions.erase(stream);
    if (!media.starts_with(kChannelPrefix)) {
        const Track& track = FindTrack(media);
        StartSession(stream, {from, &track, nullptr});
        return {{"track", track.id}, {"media", track.media}, {"offset", 0}};
    }
    const auto found = m_channels.find(media.substr(std::string(kChannelPrefix).size()));
    if (found == m_channels.end())
        throw Failure(Code::kNotAvailable, "no such channel");
    Channel& channel = found->second;
    const auto place =
        request.contains("after") ? channel.GoOn(Number(request, "after"), m_clock()) : channel.At(m_clock());
    StartSession(stream, {from, nullptr, &channel});
    return {{"track", place.track->id},
            {"media", place.track->media},
            {"offset", place.offset.count()},
            {"turn", place.turn}};
}

void Service::StartSession(std::uint32_t stream, const Session& session) {
    if (m_sessions.size() >= kMaxSessions)
        throw Failure(Code::kTooManySessions, "too many streams");
    m_sessions[stream] = session;
    if (m_listener)
        m_listener();
}

json Service::Stop(const json& request, ConnectionId from) {
    const auto session = m_sessions.find(StreamNumber(request));
    // What another audio server has put on the same number goes on.
    if (session != m_sessions.end() && session->second.owner == from)
        m_sessions.erase(session);
    return json::object();
}

void Service::Forget(ConnectionId connection) {
    std::erase_if(m_sessions, [&](const auto& entry) { return entry.second.owner == connection; });
}

bool Service::IsPlaying(ConnectionId connection) const {
    return std::ranges::any_of(m_sessions,
                               [connection](const auto& entry) { return entry.second.owner == connection; });
}

json TooLongReply() {
    return ErrorReply(nullptr, Code::kTooLong, "the request is too long");
}

} // namespace korvel::catalog

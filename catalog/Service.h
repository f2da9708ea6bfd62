#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <nlohmann/json_fwd.hpp>
#include <optional>
#include <string>
#include <vector>

#include "Channel.h"
#include "Protocol.h"

namespace korvel::catalog {

// One connection, for as long as it lasts.
using ConnectionId = std::uint32_t;

// What each request does. Knows which streams play what; a stream belongs to the connection that resolved its
// media last, and is forgotten with it.
class Service {
public:
    using Clock = std::function<Channel::Time()>;

    // The channels begin now.
    Service(Catalogue catalogue, Clock clock);
    Service(const Service&) = delete;
    Service& operator=(const Service&) = delete;

    // The reply to a line; its id stands in it. Empty when the request has to wait for a stream to play
    // something, which never happens with `final`. Never throws for what is in the line.
    std::optional<nlohmann::json> Answer(const std::string& line, ConnectionId from, bool final);

    // Ends what the streams of this connection play.
    void Forget(ConnectionId connection);

    // Whether a stream plays what this connection has resolved for it.
    bool IsPlaying(ConnectionId connection) const;

    // Called inside Answer() when a stream has begun to play something.
    void SetStreamListener(std::function<void()> listener) { m_listener = std::move(listener); }

private:
    struct Session {
        ConnectionId owner = 0;
        const Track* track = nullptr; // null: the channel's present one
        Channel* channel = nullptr;
    };

    nlohmann::json Playlists() const;
    nlohmann::json PlaylistTracks(const nlohmann::json& request) const;
    nlohmann::json TrackData(const nlohmann::json& request) const;
    std::optional<nlohmann::json> Playing(const nlohmann::json& request, bool final);
    nlohmann::json Resolve(const nlohmann::json& request, ConnectionId from);
    nlohmann::json Stop(const nlohmann::json& request, ConnectionId from);

    std::optional<nlohmann::json> Perform(const nlohmann::json& request, ConnectionId from, bool final);
    const Track& FindTrack(const std::string& id) const;
    void StartSession(std::uint32_t stream, const Session& session);

    const Catalogue m_catalogue;
    Clock m_clock;
    std::map<std::string, Channel, std::less<>> m_channels;
    std::map<std::uint32_t, Session> m_sessions; // by stream
    std::function<void()> m_listener;
};

// The reply to a request that is longer than kMaxRequestBytes and was not read.
nlohmann::json TooLongReply();

} // namespace korvel::catalog

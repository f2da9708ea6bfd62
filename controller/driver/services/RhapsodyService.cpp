#include "driver/services/RhapsodyService.h"

#include <algorithm>
#include <nlohmann/json.hpp>
#include <stdexcept>

#include "common/Text.h"

namespace korvel::controller {
namespace {

using nlohmann::json;

// The readers throw json's own exceptions for a reply of another shape than the one that was asked for.
std::string Text(const json& value) {
    std::string text = value.get<std::string>();
    // The documents that it goes into have no place for control characters.
    std::ranges::replace_if(text, common::IsControl, ' ');
    return text;
}

std::vector<DataPlaylistLite> ReadPlaylists(const json& reply) {
    std::vector<DataPlaylistLite> playlists;
    for (const json& playlist : reply.at("playlists"))
        playlists.push_back({Text(playlist.at("id")), Text(playlist.at("name"))});
    return playlists;
}

// An id goes into lines of the audio server as it is: what cannot stand there is left out.
std::vector<DataTrackInfo> ReadTracks(const json& reply, const common::Log& log) {
    std::vector<DataTrackInfo> tracks;
    for (const json& track : reply.at("tracks")) {
        auto id = track.get<std::string>();
        if (common::IsReference(id))
            tracks.push_back({std::move(id)});
        else
            log.Warning("left out a track that the catalogue names: its id is no reference to media");
    }
    return tracks;
}

std::vector<DataTrackFull> ReadTrack(const json& reply) {
    const json& track = reply.at("track");
    return {{Text(track.at("id")), Text(reply.at("context")), Text(track.at("album")),
             Text(track.at("artist")), Text(track.at("title")), Text(track.at("image"))}};
}

class Client final : public KVRhapsodyClient::RhapsodyClient {
public:
    Client(asio::io_context& loop, const common::Log& log, DriverPort& driver, const std::string& address,
           const CatalogTiming& timing, IRhapsodyCallback* callback)
        : m_driver(driver),
          m_log(log),
          m_address(address),
          m_link(std::make_shared<CatalogLink>(loop, log, timing, [&driver, callback](bool connected) {
              if (callback)
                  driver.Enter("RC_ConnectionChanged", [&] { callback->RC_ConnectionChanged(connected); });
          })) {}
    ~Client() override { m_link->Stop(); }

    void Connect(const std::string& address) override {
        m_link->Connect(m_address.empty() ? address : m_address);
    }
    void DisableOfflineMode() override { m_link->GoOnline(); }

    void GetMemberPlaylists(IRhapsodyCallback* callback) override {
        Ask({{"op", "playlists"}}, callback, [](const json& reply, IRhapsodyCallback& receiver) {
            auto playlists = ReadPlaylists(reply);
            return [playlists, &receiver]() mutable { receiver.RC_Completed(playlists); };
        });
    }
    void GetTracksForPlaylist(const std::string& playlistId, unsigned int offset, unsigned int count,
                              unsigned int, IRhapsodyCallback* callback) override {
        Ask({{"op", "playlist-tracks"}, {"playlist", playlistId}, {"offset", offset}, {"count", count}},
            callback, [&log = m_log](const json& reply, IRhapsodyCallback& receiver) {
                auto tracks = ReadTracks(reply, log);
                const auto total = reply.at("total").get<std::uint32_t>();
                return [tracks, total, &receiver]() mutable { receiver.RC_Completed(total, tracks); };
            });
    }
    void GetCurrentSongInfo(const std::string& id, std::int32_t stream,
                            IRhapsodyCallback* callback) override {
        Ask({{"op", "playing"}, {"context", id}, {"stream", static_cast<std::uint32_t>(stream)}}, callback,
            [](const json& reply, IRhapsodyCallback& receiver) {
                auto tracks = ReadTrack(reply);
                return [tracks, &receiver]() mutable { receiver.RC_Completed(tracks); };
            });
    }

private:
    // `read` turns a good reply into the call that hands it over. Apart from that call, because only what
    // reading throws is an answer that cannot be read.
    template <class Read>
    void Ask(json question, IRhapsodyCallback* callback, Read read) {
        m_link->Ask(
            std::move(question), [&driver = m_driver, callback, read](RC_Error code, const json& reply) {
                if (!callback)
                    return;
                std::function<void()> handOver = [callback, code] { callback->RC_ErrorHandler(code); };
                if (code == kRhapsodyDone) {
                    try {
                        handOver = read(reply, *callback);
                    } catch (const json::exception&) {
                        handOver = [callback] { callback->RC_ErrorHandler(kRhapsodyInvalidData); };
                    }
                }
                driver.Enter("an answer of the streaming service", handOver);
            });
    }

    DriverPort& m_driver;
    const common::Log& m_log;
    const std::string m_address;
    std::shared_ptr<CatalogLink> m_link;
};

} // namespace

RhapsodyService::RhapsodyService(asio::io_context& loop, const common::Log& log, DriverPort& driver,
                                 std::string address, CatalogTiming timing)
    : m_loop(loop), m_log(log), m_driver(driver), m_address(std::move(address)), m_timing(timing) {}

std::unique_ptr<KVRhapsodyClient::RhapsodyClient> RhapsodyService::CreateClient(
    KVRhapsodyClient::RhapsodyBranding, ITimerManager&, IRhapsodyCallback* callback) {
    return std::make_unique<Client>(m_loop, m_log, m_driver, m_address, m_timing, callback);
}

} // namespace korvel::controller

// Asks the catalogue of the streaming service for media.
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>

#include "audioserver/Protocol.h"
#include "common/OutgoingLink.h"

namespace korvel::audioserver {

// One connection to the gateway, made when it is needed and kept. Nothing waits for it: answers come later,
// on the loop, never from inside a call. The gateway takes a stream for playing what was last resolved for
// it, until Release() or the end of the connection.
class CatalogClient : public std::enable_shared_from_this<CatalogClient>,
                      private common::OutgoingLink::Listener {
public:
    static constexpr std::chrono::milliseconds kPatience{5000};

    struct Place {
        // A path or a web address.
        std::string media;
        std::uint32_t offsetMilliseconds = 0;
        // Set for a channel: what to give with the request for the track after this one.
        std::optional<std::uint32_t> turn;
    };
    // Takes the place, or for lack of one the reason.
    using Resolved = std::function<void(const std::optional<Place>& place, const std::string& error)>;

    // `patience`: from the request to the answer, a connection in between included.
    CatalogClient(common::asio::any_io_executor executor, common::HostPort address,
                  std::chrono::milliseconds patience = kPatience);
    ~CatalogClient();
    CatalogClient(const CatalogClient&) = delete;
    CatalogClient& operator=(const CatalogClient&) = delete;

    // `after`: the turn of the channel's track that has ended on this stream.
    void Resolve(StreamNumber stream, const std::string& id, std::optional<std::uint32_t> after,
                 Resolved resolved);

    // Forgets a request of this stream that is under way and what the stream plays.
    void Release(StreamNumber stream);

    // Ends the connection and answers nothing more.
    void Close();

private:
    struct Request {
        std::uint32_t id;
        std::string line;
        Resolved resolved;
        std::shared_ptr<common::asio::steady_timer> deadline;
    };

    void OnConnected(common::OutgoingLink& link, const std::string& address) override;
    void OnLine(common::OutgoingLink& link, const common::Line& line) override;
    void OnLost(common::OutgoingLink& link, bool wasConnected, const std::string& why) override;

    void FailAll(const std::string& reason);
    void Answer(std::uint32_t id, const std::optional<Place>& place, const std::string& error);

    common::asio::any_io_executor m_executor;
    const std::chrono::milliseconds m_patience;
    std::shared_ptr<common::OutgoingLink> m_link;
    std::uint32_t m_lastId = 0;
    // A stream has one request at a time.
    std::map<StreamNumber, Request> m_requests;
};

} // namespace korvel::audioserver

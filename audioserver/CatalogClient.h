// Asks the catalogue of the streaming service for media.
#pragma once

#include <array>
#include <boost/asio/any_io_executor.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/steady_timer.hpp>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "audioserver/Protocol.h"

namespace korvel::audioserver {

/// Where the gateway of the catalogue listens.
struct CatalogAddress {
    std::string host = "127.0.0.1";
    std::string port = "5555";
};

/// One connection to the gateway, made when it is needed and kept. Nothing waits for it: answers come later,
/// on the loop, never from inside a call. The gateway takes a stream for playing what was last resolved for
/// it, until Release() or the end of the connection.
class CatalogClient : public std::enable_shared_from_this<CatalogClient> {
public:
    struct Place {
        /// A path or a web address.
        std::string media;
        std::uint32_t offsetMilliseconds = 0;
        /// Set for a channel: what to give with the request for the track after this one.
        std::optional<std::uint32_t> turn;
    };
    /// Takes the place, or for lack of one the reason.
    using Resolved = std::function<void(const std::optional<Place>& place, const std::string& error)>;

    CatalogClient(boost::asio::any_io_executor executor, CatalogAddress address);

    /// @param after the turn of the channel's track that has ended on this stream
    void Resolve(StreamNumber stream, const std::string& id, std::optional<std::uint32_t> after,
                 Resolved resolved);

    /// Forgets a request of this stream that is under way and what the stream plays.
    void Release(StreamNumber stream);

    /// Ends the connection and answers nothing more.
    void Close();

private:
    struct Request {
        std::uint32_t id;
        std::string line;
        Resolved resolved;
        std::shared_ptr<boost::asio::steady_timer> deadline;
    };

    template <class Body>
    auto InThisConnection(Body body);
    void Connect();
    void OnConnected();
    void Read();
    void OnBytes(std::string_view bytes);
    void OnLine(const std::string& line);
    void Send(std::string_view line);
    void Write();
    void Fail(const std::string& reason);
    void Answer(std::uint32_t id, const std::optional<Place>& place, const std::string& error);

    boost::asio::any_io_executor m_executor;
    const CatalogAddress m_address;
    boost::asio::ip::tcp::resolver m_resolver;
    boost::asio::ip::tcp::socket m_socket;
    bool m_closed = false;
    bool m_connecting = false;
    bool m_connected = false;
    std::uint32_t m_connection = 0;
    std::uint32_t m_lastId = 0;
    /// A stream has one request at a time.
    std::map<StreamNumber, Request> m_requests;
    std::array<char, 4096> m_chunk{};
    std::string m_line;
    std::string m_outgoing;
    std::string m_inFlight;
};

} // namespace korvel::audioserver

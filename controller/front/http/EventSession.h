#pragma once

#include "front/http/HttpServer.h"
// The order matters: Asio.h comes first, through HttpServer.h.
#include <boost/beast/core/flat_buffer.hpp>
#include <boost/beast/core/tcp_stream.hpp>
#include <boost/beast/http/message.hpp>
#include <boost/beast/http/string_body.hpp>
#include <boost/beast/websocket/stream.hpp>
#include <deque>
#include <memory>

namespace korvel::controller {

namespace beast = boost::beast;

// A WebSocket that hears everything that happens, starting with a snapshot.
class EventSession final : public Connection, public std::enable_shared_from_this<EventSession> {
public:
    static constexpr std::size_t kMaxWaiting = 8u
                                               << 20; // bytes; a listener that is slower than that is dropped
    static constexpr std::size_t kMaxIncoming = 4096; // what a listener says is read and ignored

    // The server knows it as a listener already.
    EventSession(tcp::socket socket, common::Acceptor::Place place, HttpServer& server);
    ~EventSession();

    void Start(beast::http::request<beast::http::string_body> request);
    void Close() override;

private:
    using Text = std::shared_ptr<const std::string>;

    void OnAccepted();
    void Read();
    void Send(const Text& text);
    void Write();

    beast::websocket::stream<beast::tcp_stream, false> m_stream; // without compression
    const common::Acceptor::Place m_place;
    HttpServer* m_server; // null once closed
    std::uint32_t m_listener = 0;
    beast::flat_buffer m_incoming{kMaxIncoming};
    std::deque<Text> m_waiting; // the first is being written
    std::size_t m_waitingBytes = 0;
};

} // namespace korvel::controller

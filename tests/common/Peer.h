// The other side of a connection under test.
#pragma once

#include <array>
#include <boost/asio/write.hpp>
#include <string>
#include <utility>

#include "Loop.h"

namespace korvel::common {

// Reads all that comes once it has been told to. Must not go before its handlers: its socket lives on the test's loop.
class Peer : public std::enable_shared_from_this<Peer> {
public:
    explicit Peer(tcp::socket socket) : m_socket(std::move(socket)) {}

    static std::shared_ptr<Peer> Connect(Loop& loop, const tcp::endpoint& to,
                                         const std::string& from = "127.0.0.1") {
        tcp::socket socket(loop.loop);
        socket.open(tcp::v4());
        socket.bind({asio::ip::make_address(from), 0});
        socket.connect(to);
        auto peer = std::make_shared<Peer>(std::move(socket));
        peer->Read();
        return peer;
    }

    void Send(const std::string& bytes) { asio::write(m_socket, asio::buffer(bytes)); }
    void Read() {
        m_socket.async_read_some(asio::buffer(m_chunk),
                                 [self = shared_from_this()](error_code error, std::size_t count) {
                                     self->received.append(self->m_chunk.data(), count);
                                     self->ended = static_cast<bool>(error);
                                     if (!error)
                                         self->Read();
                                 });
    }
    void Close() { m_socket.close(); }

    std::string received;
    bool ended = false;

private:
    tcp::socket m_socket;
    std::array<char, 4096> m_chunk{};
};

} // namespace korvel::common

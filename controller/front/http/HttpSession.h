#pragma once

#include "front/http/HttpServer.h"
// The order matters: Asio.h comes first, through HttpServer.h.
#include <boost/beast/core/tcp_stream.hpp>

#include "front/http/RequestReader.h"

namespace korvel::controller {

// One connection: requests, one after the other, until one asks for the events.
class HttpSession final : public Connection, public std::enable_shared_from_this<HttpSession> {
public:
    static constexpr std::chrono::seconds kPatience{30}; // for a whole request, or for an answer to be taken

    HttpSession(tcp::socket socket, common::Acceptor::Place place, HttpServer& server);
    ~HttpSession();

    void Start();
    void Close() override;

private:
    void Read();
    void ReadSome();
    void OnRequest(const boost::system::error_code& error);
    void Serve(bool keepAlive);
    void Listen();
    void Reply(HttpReply reply, bool keepAlive, unsigned version);

    beast::tcp_stream m_stream;
    common::Acceptor::Place m_place;
    HttpServer* m_server; // null once closed
    RequestReader m_reader;
};

} // namespace korvel::controller

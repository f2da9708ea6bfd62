#pragma once

#include "http/HttpServer.h"
// The order matters: Asio.h comes first, through HttpServer.h.
#include <boost/beast/core/flat_buffer.hpp>
#include <boost/beast/core/tcp_stream.hpp>
#include <boost/beast/http/message.hpp>
#include <boost/beast/http/parser.hpp>
#include <boost/beast/http/string_body.hpp>
#include <optional>

namespace korvel::controller {

namespace beast = boost::beast;

// One connection: requests, one after the other, until one asks for the events.
class HttpSession final : public Session, public std::enable_shared_from_this<HttpSession> {
public:
    static constexpr std::uint64_t kMaxBody = 1u << 20;
    static constexpr std::uint32_t kMaxHeader = 16 * 1024;
    static constexpr std::chrono::seconds kPatience{30}; // for a whole request, or for an answer to be taken

    HttpSession(tcp::socket socket, common::Acceptor::Place place, HttpServer& server);
    ~HttpSession();

    void Start();
    void Close() override;

private:
    using Request = beast::http::request<beast::http::string_body>;

    void Read();
    void ReadHead();
    void OnHead(boost::system::error_code error, std::size_t bytes);
    void ReadBody();
    void OnRequest(boost::system::error_code error);
    void Serve(const Request& request);
    void Upgrade();
    void Reply(HttpReply reply, bool keepAlive, unsigned version);

    beast::tcp_stream m_stream;
    common::Acceptor::Place m_place;
    HttpServer* m_server; // null once closed
    beast::flat_buffer m_buffer{kMaxHeader + kMaxBody};
    std::size_t m_headBytes = 0; // of the request that is being read
    std::optional<beast::http::request_parser<beast::http::string_body>> m_parser;
};

} // namespace korvel::controller

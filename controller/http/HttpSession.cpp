#include "http/HttpSession.h"

#include <boost/beast/http/read.hpp>
#include <boost/beast/http/write.hpp>
#include <boost/beast/websocket/rfc6455.hpp>

#include "http/EventSession.h"

namespace korvel::controller {
namespace {

namespace http = beast::http;

std::string_view View(beast::string_view text) {
    return {text.data(), text.size()};
}

// Where a header is said twice, whoever passed the request on may have gone by the other one.
bool IsAmbiguous(const http::fields& header) {
    return header.count(http::field::host) > 1 || header.count(http::field::content_length) > 1 ||
           View(header[http::field::content_length]).find(',') != std::string_view::npos;
}

// What a page of this server may do: load from here, talk to here.
constexpr const char* kContentPolicy =
    "default-src 'self'; img-src 'self' data: http: https:; frame-ancestors 'none'";

} // namespace

HttpSession::HttpSession(tcp::socket socket, common::Acceptor::Place place, HttpServer& server)
    : m_stream(std::move(socket)), m_place(std::move(place)), m_server(&server) {}

HttpSession::~HttpSession() {
    Close();
}

void HttpSession::Start() {
    m_server->Add(*this);
    Read();
}

void HttpSession::Close() {
    if (m_server)
        m_server->Remove(*this);
    m_server = nullptr;
    m_stream.cancel();
    boost::system::error_code ignored;
    m_stream.socket().close(ignored);
}

void HttpSession::Read() {
    m_parser.emplace();
    m_parser->header_limit(kMaxHeader);
    m_parser->body_limit(kMaxBody);
    m_stream.expires_after(kPatience);
    // A request that does not end keeps nobody out.
    m_place.SetIdle([this] { Close(); });
    m_headBytes = 0;
    ReadHead();
}

void HttpSession::ReadHead() {
    http::async_read_some(m_stream, m_buffer, *m_parser,
                          [self = shared_from_this()](boost::system::error_code error, std::size_t bytes) {
                              if (self->m_server)
                                  self->OnHead(error, bytes);
                          });
}

// The parser bounds each field, not how many there are.
void HttpSession::OnHead(boost::system::error_code error, std::size_t bytes) {
    m_headBytes += bytes;
    if (!error && m_headBytes > kMaxHeader)
        error = http::error::header_limit;
    if (error)
        OnRequest(error);
    else if (m_parser->is_header_done())
        ReadBody();
    else
        ReadHead();
}

void HttpSession::ReadBody() {
    http::async_read(m_stream, m_buffer, *m_parser,
                     [self = shared_from_this()](boost::system::error_code error, std::size_t) {
                         if (self->m_server)
                             self->OnRequest(error);
                     });
}

void HttpSession::OnRequest(boost::system::error_code error) {
    m_place.SetBusy();
    if (!error && IsAmbiguous(m_parser->get()))
        Reply(ErrorReply(400, "Host and Content-Length may be there once only"), false, 11);
    else if (!error && beast::websocket::is_upgrade(m_parser->get()))
        Upgrade();
    else if (!error)
        Serve(m_parser->get());
    else if (error == http::error::body_limit)
        Reply(ErrorReply(413, "the body is longer than 1 MiB"), false, 11);
    else if (error == http::error::header_limit)
        Reply(ErrorReply(431, "the header is too long"), false, 11);
    else if (error == http::error::end_of_stream || error == beast::error::timeout ||
             error.category() == asio::error::get_system_category())
        Close();
    else
        Reply(ErrorReply(400, "not a request: " + error.message()), false, 11);
}

void HttpSession::Serve(const Request& request) {
    const bool keepAlive = request.keep_alive();
    const unsigned version = request.version();
    const std::string_view host = View(request[http::field::host]);
    if (!IsOwnHost(host, m_server->GetAddress())) {
        Reply(ErrorReply(403, "the Host header must name this machine: localhost or 127.0.0.1"), keepAlive,
              version);
        return;
    }
    if (request.method() != http::verb::get && !IsOwnOrigin(View(request[http::field::origin]), host)) {
        Reply(ErrorReply(403, "pages of other origins may not do this"), keepAlive, version);
        return;
    }
    const HttpRequest plain{std::string(View(request.method_string())), std::string(View(request.target())),
                            std::string(View(request[http::field::content_type])), request.body()};
    m_server->GetApi().Handle(plain, [self = shared_from_this(), keepAlive, version](HttpReply reply) {
        if (self->m_server)
            self->Reply(std::move(reply), keepAlive, version);
    });
}

void HttpSession::Upgrade() {
    const Request& request = m_parser->get();
    const std::string_view host = View(request[http::field::host]);
    if (!IsOwnHost(host, m_server->GetAddress()) || !IsOwnOrigin(View(request[http::field::origin]), host)) {
        Reply(ErrorReply(403, "pages of other origins may not listen"), false, request.version());
        return;
    }
    if (request.target() != "/api/events") {
        Reply(ErrorReply(404, "the events are at /api/events"), false, request.version());
        return;
    }
    if (!m_server->AddListener()) {
        Reply(ErrorReply(503, "too many listen to the events already"), false, request.version());
        return;
    }
    HttpServer& server = *m_server;
    server.Remove(*this);
    m_server = nullptr;
    m_stream.expires_never();
    std::make_shared<EventSession>(m_stream.release_socket(), std::move(m_place), server)
        ->Start(m_parser->release());
}

void HttpSession::Reply(HttpReply reply, bool keepAlive, unsigned version) {
    auto response =
        std::make_shared<http::response<http::string_body>>(static_cast<http::status>(reply.status), version);
    response->set(http::field::content_type, reply.contentType);
    response->set(http::field::cache_control, "no-store");
    response->set("X-Content-Type-Options", "nosniff");
    response->set("Content-Security-Policy", kContentPolicy);
    if (!reply.allow.empty())
        response->set(http::field::allow, reply.allow);
    response->keep_alive(keepAlive);
    response->body() = std::move(reply.body);
    response->prepare_payload();
    m_stream.expires_after(kPatience);
    http::async_write(m_stream, *response,
                      [self = shared_from_this(), response](boost::system::error_code error, std::size_t) {
                          if (!self->m_server)
                              return;
                          if (error || response->need_eof())
                              self->Close();
                          else
                              self->Read();
                      });
}

} // namespace korvel::controller

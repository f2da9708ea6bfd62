#include "front/http/HttpSession.h"

#include <boost/beast/http/read.hpp>
#include <boost/beast/http/write.hpp>

#include "front/http/EventSession.h"
#include "front/http/RequestRules.h"

namespace korvel::controller {
namespace {

namespace http = beast::http;

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
    m_reader.Start();
    m_stream.expires_after(kPatience);
    // A request that does not end keeps nobody out.
    m_place.SetIdle([this] { Close(); });
    ReadSome();
}

void HttpSession::ReadSome() {
    http::async_read_some(m_stream, m_reader.GetBuffer(), m_reader.GetParser(),
                          [self = shared_from_this()](boost::system::error_code error, std::size_t bytes) {
                              if (!self->m_server)
                                  return;
                              if (self->m_reader.OnRead(error, bytes))
                                  self->OnRequest(error);
                              else
                                  self->ReadSome();
                          });
}

void HttpSession::OnRequest(const boost::system::error_code& error) {
    m_place.SetBusy();
    if (error) {
        if (auto reply = ReplyToUnreadable(error))
            Reply(std::move(*reply), false, 11);
        else
            Close();
        return;
    }
    Verdict verdict = Judge(m_reader.Get(), m_server->GetAddress());
    switch (verdict.kind) {
        case Verdict::Kind::Serve:
            Serve(verdict.keepAlive);
            break;
        case Verdict::Kind::Listen:
            Listen();
            break;
        case Verdict::Kind::Refuse:
            Reply(std::move(verdict.refusal), verdict.keepAlive, m_reader.Get().version());
            break;
    }
}

void HttpSession::Serve(bool keepAlive) {
    const unsigned version = m_reader.Get().version();
    m_server->GetApi().Handle(PlainRequest(m_reader.Get()),
                              [self = shared_from_this(), keepAlive, version](HttpReply reply) {
                                  if (self->m_server)
                                      self->Reply(std::move(reply), keepAlive, version);
                              });
}

void HttpSession::Listen() {
    if (!m_server->AddListener()) {
        Reply(ErrorReply(503, "too many listen to the events already"), false, m_reader.Get().version());
        return;
    }
    HttpServer& server = *m_server;
    server.Remove(*this);
    m_server = nullptr;
    m_stream.expires_never();
    std::make_shared<EventSession>(m_stream.release_socket(), std::move(m_place), server)
        ->Start(m_reader.Release());
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

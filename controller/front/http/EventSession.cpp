#include "front/http/EventSession.h"

#include <boost/beast/core/buffers_to_string.hpp>
#include <nlohmann/json.hpp>

namespace korvel::controller {

namespace websocket = beast::websocket;
using boost::system::error_code;

EventSession::EventSession(tcp::socket socket, common::Acceptor::Place place, HttpServer& server)
    : m_stream(std::move(socket)), m_place(std::move(place)), m_server(&server) {}

EventSession::~EventSession() {
    Close();
}

void EventSession::Start(beast::http::request<beast::http::string_body> request) {
    m_server->Add(*this);
    // Listeners that vanish are found out by pings.
    m_stream.set_option(websocket::stream_base::timeout::suggested(beast::role_type::server));
    m_stream.read_message_max(kMaxIncoming);
    const auto kept = std::make_shared<decltype(request)>(std::move(request));
    m_stream.async_accept(*kept, [self = shared_from_this(), kept](error_code error) {
        if (!self->m_server)
            return;
        if (error)
            self->Close();
        else
            self->OnAccepted();
    });
}

void EventSession::OnAccepted() {
    Api& api = m_server->GetApi();
    Send(std::make_shared<const std::string>(JsonText(api.Snapshot())));
    m_listener = api.GetEvents().Add([this](const Text& text) { Send(text); });
    Read();
}

void EventSession::Close() {
    if (m_server) {
        if (m_listener != 0)
            m_server->GetApi().GetEvents().Remove(m_listener);
        m_server->Remove(*this);
        m_server->RemoveListener();
    }
    m_server = nullptr;
    m_listener = 0;
    beast::get_lowest_layer(m_stream).cancel();
    error_code ignored;
    beast::get_lowest_layer(m_stream).socket().close(ignored);
}

void EventSession::Read() {
    m_stream.async_read(m_incoming, [self = shared_from_this()](error_code error, std::size_t) {
        if (!self->m_server)
            return;
        if (error) {
            self->Close();
            return;
        }
        self->m_incoming.clear();
        self->Read();
    });
}

void EventSession::Send(const Text& text) {
    if (m_waitingBytes + text->size() > kMaxWaiting) {
        m_server->GetLog().Warning("dropped a listener that reads too slowly");
        Close();
        return;
    }
    m_waiting.push_back(text);
    m_waitingBytes += text->size();
    if (m_waiting.size() == 1)
        Write();
}

void EventSession::Write() {
    m_stream.text(true);
    m_stream.async_write(
        asio::buffer(*m_waiting.front()),
        [self = shared_from_this(), text = m_waiting.front()](error_code error, std::size_t) {
            if (!self->m_server)
                return;
            if (error) {
                self->Close();
                return;
            }
            self->m_waitingBytes -= text->size();
            self->m_waiting.pop_front();
            if (!self->m_waiting.empty())
                self->Write();
        });
}

} // namespace korvel::controller

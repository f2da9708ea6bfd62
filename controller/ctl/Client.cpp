#include "ctl/Client.h"

#include "base/Asio.h"
// The order matters: Asio.h comes first.
#include <boost/asio/connect.hpp>
#include <boost/beast/core/buffers_to_string.hpp>
#include <boost/beast/core/flat_buffer.hpp>
#include <boost/beast/core/tcp_stream.hpp>
#include <boost/beast/http.hpp>
#include <boost/beast/websocket.hpp>

namespace korvel::ctl {
namespace {

namespace asio = boost::asio;
namespace beast = boost::beast;
namespace http = beast::http;
using boost::system::error_code;
using tcp = asio::ip::tcp;

constexpr std::uint64_t kMaxAnswer = 64u << 20;

// Runs one asynchronous operation to its end, so that it has a time limit.
class Waiter {
public:
    asio::io_context loop{1};

    template <class Start>
    void Await(Start&& start) {
        error_code result;
        start([&result](error_code error, auto&&...) { result = error; });
        loop.restart();
        loop.run();
        if (result)
            throw boost::system::system_error(result);
    }
};

void Connect(Waiter& waiter, beast::tcp_stream& stream, const common::HostPort& server,
             std::chrono::milliseconds patience) {
    tcp::resolver resolver(waiter.loop);
    const auto endpoints = resolver.resolve(server.host, std::to_string(server.port));
    stream.expires_after(patience);
    waiter.Await([&](auto handler) { stream.async_connect(endpoints, handler); });
}

} // namespace

Client::Client(const std::string& url, std::chrono::milliseconds patience) : m_patience(patience) {
    const auto address = common::ParseWebAddress(url);
    if (!address || address->secure || (address->target != "" && address->target != "/"))
        throw Failure("'" + url + "' is not an address like http://127.0.0.1:8080");
    m_server = address->server;
}

std::string Client::Unreachable(const std::string& why) const {
    return "no answer from the controller at " + common::ToText(m_server) + ": " + why;
}

nlohmann::json Client::Ask(const std::string& method, const std::string& target, const std::string& body) {
    http::request<http::string_body> request(http::string_to_verb(method), target, 11);
    request.set(http::field::host, common::ToText(m_server));
    if (!body.empty())
        request.set(http::field::content_type, "application/json");
    request.body() = body;
    request.keep_alive(false);
    request.prepare_payload();
    http::response_parser<http::string_body> answer;
    answer.body_limit(kMaxAnswer);
    try {
        Waiter waiter;
        beast::tcp_stream stream(waiter.loop);
        Connect(waiter, stream, m_server, m_patience);
        waiter.Await([&](auto handler) { http::async_write(stream, request, handler); });
        beast::flat_buffer buffer;
        waiter.Await([&](auto handler) { http::async_read(stream, buffer, answer, handler); });
    } catch (const boost::system::system_error& error) {
        throw Failure(Unreachable(error.code().message()));
    }
    const auto json = nlohmann::json::parse(answer.get().body(), nullptr, false);
    if (json.is_discarded())
        throw Failure(Unreachable("it does not speak JSON"));
    if (answer.get().result_int() >= 400) {
        throw Failure(json.is_object() ? json.value("error", "the controller refused")
                                       : std::string("the controller refused"));
    }
    return json;
}

void Client::Watch(const std::function<bool(const nlohmann::json&)>& heard) {
    try {
        Waiter waiter;
        beast::websocket::stream<beast::tcp_stream, false> socket(waiter.loop);
        Connect(waiter, beast::get_lowest_layer(socket), m_server, m_patience);
        // From here on pings tell whether the controller is there.
        beast::get_lowest_layer(socket).expires_never();
        socket.set_option(beast::websocket::stream_base::timeout::suggested(beast::role_type::client));
        socket.read_message_max(kMaxAnswer);
        waiter.Await(
            [&](auto handler) { socket.async_handshake(common::ToText(m_server), "/api/events", handler); });
        nlohmann::json event;
        do {
            beast::flat_buffer buffer;
            waiter.Await([&](auto handler) { socket.async_read(buffer, handler); });
            event = nlohmann::json::parse(beast::buffers_to_string(buffer.data()), nullptr, false);
        } while (heard(event));
    } catch (const boost::system::system_error& error) {
        throw Failure(Unreachable(error.code().message()));
    }
}

std::string PercentEncode(const std::string& text) {
    static constexpr char kDigits[] = "0123456789ABCDEF";
    std::string out;
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        if ((byte >= 'a' && byte <= 'z') || (byte >= 'A' && byte <= 'Z') || (byte >= '0' && byte <= '9')) {
            out.push_back(c);
        } else {
            out.push_back('%');
            out.push_back(kDigits[byte >> 4]);
            out.push_back(kDigits[byte & 15]);
        }
    }
    return out;
}

} // namespace korvel::ctl

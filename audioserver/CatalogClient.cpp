#include "audioserver/CatalogClient.h"

#include <algorithm>
#include <boost/asio/buffer.hpp>
#include <boost/asio/connect.hpp>
#include <boost/asio/post.hpp>
#include <boost/asio/write.hpp>
#include <chrono>
#include <nlohmann/json.hpp>
#include <utility>

#include "audioserver/Log.h"

namespace korvel::audioserver {
namespace {

using boost::asio::ip::tcp;
using boost::system::error_code;
using nlohmann::json;

/// From the request to the answer, a connection in between included.
constexpr std::chrono::milliseconds kPatience{5000};
constexpr std::uint64_t kMaxOffsetMilliseconds = 24ULL * 3600 * 1000;

std::string LineOf(const json& request) {
    // An id that is not UTF-8 names nothing that there is.
    return request.dump(-1, ' ', false, json::error_handler_t::replace) + "\n";
}

/// Throws json's exceptions for a reply of another shape.
CatalogClient::Place ReadPlace(const json& reply) {
    CatalogClient::Place place;
    place.media = reply.at("media").get<std::string>();
    const auto offset = reply.at("offset").get<std::uint64_t>();
    place.offsetMilliseconds = static_cast<std::uint32_t>(std::min(offset, kMaxOffsetMilliseconds));
    if (reply.contains("turn")) {
        place.turn = reply.at("turn").get<std::uint32_t>();
    }
    return place;
}

} // namespace

CatalogClient::CatalogClient(boost::asio::any_io_executor executor, CatalogAddress address)
    : m_executor(std::move(executor)),
      m_address(std::move(address)),
      m_resolver(m_executor),
      m_socket(m_executor) {}

void CatalogClient::Resolve(StreamNumber stream, const std::string& id, std::optional<std::uint32_t> after,
                            Resolved resolved) {
    const std::uint32_t number = ++m_lastId;
    json request = {{"id", number}, {"op", "resolve"}, {"stream", stream}, {"media", id}};
    if (after) {
        request["after"] = *after;
    }
    auto deadline = std::make_shared<boost::asio::steady_timer>(m_executor, kPatience);
    deadline->async_wait([weak = weak_from_this(), number](const error_code& cancelled) {
        const auto self = weak.lock();
        if (!self || cancelled) {
            return;
        }
        if (self->m_connected) {
            self->Answer(number, std::nullopt, "the catalogue does not answer");
        } else {
            self->Fail("no connection in time");
        }
    });
    Request& entry = m_requests[stream];
    entry = {number, LineOf(request), std::move(resolved), std::move(deadline)};
    if (m_connected) {
        Send(entry.line);
    } else if (!m_connecting) {
        Connect();
    }
}

void CatalogClient::Release(StreamNumber stream) {
    m_requests.erase(stream);
    if (m_connected) {
        Send(LineOf({{"id", ++m_lastId}, {"op", "stop"}, {"stream", stream}}));
    }
}

void CatalogClient::Close() {
    m_closed = true;
    m_connected = false;
    m_requests.clear();
    m_resolver.cancel();
    error_code ignored;
    m_socket.close(ignored);
}

/// Wraps a handler so that it runs only for the connection that it was made for.
template <class Body>
auto CatalogClient::InThisConnection(Body body) {
    return [self = shared_from_this(), connection = m_connection, body = std::move(body)](
               const error_code& error, auto&&... results) {
        if (!self->m_closed && connection == self->m_connection) {
            body(error, std::forward<decltype(results)>(results)...);
        }
    };
}

void CatalogClient::Connect() {
    m_connecting = true;
    m_resolver.async_resolve(
        m_address.host, m_address.port,
        InThisConnection([this](const error_code& error, const tcp::resolver::results_type& endpoints) {
            if (error) {
                Fail(error.message());
                return;
            }
            boost::asio::async_connect(
                m_socket, endpoints,
                InThisConnection([this](const error_code& refused, const tcp::endpoint&) {
                    if (refused) {
                        Fail(refused.message());
                    } else {
                        OnConnected();
                    }
                }));
        }));
}

void CatalogClient::OnConnected() {
    error_code ignored;
    m_socket.set_option(tcp::no_delay(true), ignored);
    m_socket.set_option(boost::asio::socket_base::keep_alive(true), ignored);
    m_connecting = false;
    m_connected = true;
    Log("catalogue " + m_address.host + ":" + m_address.port + " connected");
    for (const auto& [stream, request] : m_requests) {
        Send(request.line);
    }
    Read();
}

void CatalogClient::Read() {
    m_socket.async_read_some(boost::asio::buffer(m_chunk),
                             InThisConnection([this](const error_code& error, std::size_t count) {
                                 if (error) {
                                     Fail(error == boost::asio::error::eof ? "closed" : error.message());
                                     return;
                                 }
                                 const std::uint32_t connection = m_connection;
                                 OnBytes({m_chunk.data(), count});
                                 if (!m_closed && connection == m_connection) {
                                     Read();
                                 }
                             }));
}

void CatalogClient::OnBytes(std::string_view bytes) {
    const std::uint32_t connection = m_connection;
    while (!bytes.empty() && !m_closed && connection == m_connection) {
        const auto end = bytes.find('\n');
        m_line.append(bytes.substr(0, end));
        if (m_line.size() > kMaxLineBytes) {
            Fail("too long a line");
            return;
        }
        if (end == std::string_view::npos) {
            return;
        }
        bytes.remove_prefix(end + 1);
        OnLine(std::exchange(m_line, {}));
    }
}

void CatalogClient::OnLine(const std::string& line) {
    const json reply = json::parse(line, nullptr, false);
    const auto id = reply.is_object() ? reply.find("id") : reply.end();
    if (!reply.is_object() || id == reply.end() || !id->is_number_unsigned() ||
        id->get<std::uint64_t>() > UINT32_MAX) {
        return;
    }
    const auto number = id->get<std::uint32_t>();
    try {
        if (reply.contains("error")) {
            Answer(number, std::nullopt,
                   "the catalogue says: " + reply.at("error").at("text").get<std::string>());
        } else if (reply.contains("media")) {
            Answer(number, ReadPlace(reply), {});
        }
    } catch (const json::exception&) {
        Answer(number, std::nullopt, "the catalogue's answer makes no sense");
    }
}

void CatalogClient::Answer(std::uint32_t id, const std::optional<Place>& place, const std::string& error) {
    const auto request = std::find_if(m_requests.begin(), m_requests.end(),
                                      [id](const auto& entry) { return entry.second.id == id; });
    if (request == m_requests.end()) {
        return; // released, or answered too late
    }
    const Resolved resolved = std::move(request->second.resolved);
    m_requests.erase(request);
    resolved(place, error);
}

void CatalogClient::Send(std::string_view line) {
    m_outgoing.append(line);
    if (m_outgoing.size() + m_inFlight.size() > kMaxPendingBytes) {
        // Not at once: a stream may be in the middle of a call.
        boost::asio::post(m_executor, [self = shared_from_this(), connection = m_connection] {
            if (!self->m_closed && connection == self->m_connection) {
                self->Fail("does not read");
            }
        });
        m_outgoing.clear();
        return;
    }
    if (m_inFlight.empty()) {
        Write();
    }
}

void CatalogClient::Write() {
    m_inFlight.swap(m_outgoing);
    boost::asio::async_write(m_socket, boost::asio::buffer(m_inFlight),
                             InThisConnection([this](const error_code& error, std::size_t) {
                                 if (error) {
                                     Fail(error.message());
                                     return;
                                 }
                                 m_inFlight.clear();
                                 if (!m_outgoing.empty()) {
                                     Write();
                                 }
                             }));
}

/// Ends this connection; a new one is made for the next request.
void CatalogClient::Fail(const std::string& reason) {
    Log("catalogue " + m_address.host + ":" + m_address.port + ": " + reason);
    ++m_connection; // whatever is still under way comes to nothing
    m_connecting = false;
    m_connected = false;
    error_code ignored;
    m_socket.close(ignored);
    m_line.clear();
    m_outgoing.clear();
    m_inFlight.clear();
    for (auto& [stream, request] : std::exchange(m_requests, {})) {
        request.resolved(std::nullopt, "the catalogue cannot be reached: " + reason);
    }
}

} // namespace korvel::audioserver

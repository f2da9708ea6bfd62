#include "audioserver/CatalogClient.h"

#include <algorithm>
#include <chrono>
#include <nlohmann/json.hpp>
#include <utility>

#include "common/Log.h"

namespace korvel::audioserver {
namespace {

using nlohmann::json;

constexpr std::uint64_t kMaxOffsetMilliseconds = 24ULL * 3600 * 1000;

std::string LineOf(const json& request) {
    // An id that is not UTF-8 names nothing that there is.
    return request.dump(-1, ' ', false, json::error_handler_t::replace) + "\n";
}

// Throws json's exceptions for a reply of another shape.
CatalogClient::Place ReadPlace(const json& reply) {
    CatalogClient::Place place;
    place.media = reply.at("media").get<std::string>();
    const auto offset = reply.at("offset").get<std::uint64_t>();
    place.offsetMilliseconds = static_cast<std::uint32_t>(std::min(offset, kMaxOffsetMilliseconds));
    if (reply.contains("turn"))
        place.turn = reply.at("turn").get<std::uint32_t>();
    return place;
}

common::OutgoingLink::Settings LinkTo(common::HostPort address, std::chrono::milliseconds patience) {
    return {std::move(address), "catalogue", {kMaxLineBytes, kMaxPendingBytes, kLinePatience}, patience, {}};
}

} // namespace

CatalogClient::CatalogClient(common::asio::any_io_executor executor, common::HostPort address,
                             std::chrono::milliseconds patience)
    : m_executor(std::move(executor)),
      m_patience(patience),
      m_link(std::make_shared<common::OutgoingLink>(m_executor, LinkTo(std::move(address), patience),
                                                    static_cast<common::OutgoingLink::Listener&>(*this),
                                                    common::ProgramLog())) {}

CatalogClient::~CatalogClient() {
    m_link->Stop();
}

void CatalogClient::Resolve(StreamNumber stream, const std::string& id, std::optional<std::uint32_t> after,
                            Resolved resolved) {
    const std::uint32_t number = ++m_lastId;
    json request = {{"id", number}, {"op", "resolve"}, {"stream", stream}, {"media", id}};
    if (after)
        request["after"] = *after;
    auto deadline = std::make_shared<common::asio::steady_timer>(m_executor, m_patience);
    deadline->async_wait([weak = weak_from_this(), number](const common::error_code& cancelled) {
        const auto self = weak.lock();
        if (self && !cancelled)
            self->Answer(number, std::nullopt,
                         self->m_link->IsConnected()
                             ? "the catalogue does not answer"
                             : "the catalogue cannot be reached: no connection in time");
    });
    Request& entry = m_requests[stream];
    entry = {number, LineOf(request), std::move(resolved), std::move(deadline)};
    m_link->Send(entry.line);
    m_link->Start();
}

void CatalogClient::Release(StreamNumber stream) {
    m_requests.erase(stream);
    m_link->Send(LineOf({{"id", ++m_lastId}, {"op", "stop"}, {"stream", stream}}));
}

void CatalogClient::Close() {
    m_link->Stop();
    m_requests.clear();
}

void CatalogClient::OnConnected(common::OutgoingLink& link, const std::string&) {
    for (const auto& [stream, request] : m_requests)
        link.Send(request.line);
}

void CatalogClient::OnLine(common::OutgoingLink&, const common::Line& line) {
    if (line.tooLong) {
        // It cannot be told which request it answers.
        FailAll("the catalogue's answer is too long");
        return;
    }
    const json reply = json::parse(line.GetText(), nullptr, false);
    const auto id = reply.is_object() ? reply.find("id") : reply.end();
    if (!reply.is_object() || id == reply.end() || !id->is_number_unsigned() ||
        id->get<std::uint64_t>() > UINT32_MAX)
        return;
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
    if (request == m_requests.end())
        return; // released, or answered too late
    const Resolved resolved = std::move(request->second.resolved);
    m_requests.erase(request);
    resolved(place, error);
}

// A new connection is made for the next request.
void CatalogClient::OnLost(common::OutgoingLink&, bool, const std::string& why) {
    FailAll("the catalogue cannot be reached: " + why);
}

void CatalogClient::FailAll(const std::string& reason) {
    for (auto& [stream, request] : std::exchange(m_requests, {}))
        request.resolved(std::nullopt, reason);
}

} // namespace korvel::audioserver

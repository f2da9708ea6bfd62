#include "driver/services/ServerBindings.h"

#include <algorithm>
#include <nlohmann/json.hpp>

#include "driver/Ids.h"

namespace korvel::controller {

ServerBindings::ServerBindings(const Parts& parts, const std::vector<common::HostPort>& servers,
                               common::BackOff backOff, Heartbeat heartbeat)
    : m_parts(parts), m_poster(parts.loop), m_offered{kFirstServerBinding} {
    for (const common::HostPort& server : servers)
        m_links.push_back(std::make_shared<ServerLink>(m_parts.loop, server, backOff, heartbeat,
                                                       static_cast<ServerLink::Listener&>(*this),
                                                       m_parts.log));
}

ServerBindings::~ServerBindings() {
    Stop();
}

void ServerBindings::OnBindingOffered(std::uint32_t bindingId) {
    m_offered.insert(bindingId);
    // The driver is inside the call that offers it.
    if (m_running) {
        m_poster.Post([this] {
            if (m_running)
                BindOffered();
        });
    }
}

void ServerBindings::Start() {
    m_running = true;
    BindOffered();
}

void ServerBindings::Stop() {
    m_running = false;
    for (const auto& link : m_links)
        link->Stop();
}

void ServerBindings::BindOffered() {
    // Each binding that is taken makes the driver offer another.
    while (m_bound < m_links.size()) {
        const std::uint32_t bindingId = kFirstServerBinding + static_cast<std::uint32_t>(m_bound);
        if (!m_offered.contains(bindingId))
            return;
        ServerLink& link = *m_links[m_bound++];
        m_parts.driver.BindingChanged(bindingId);
        link.Start();
    }
}

std::string ServerBindings::WhyNotReady() const {
    const ServerLink* active = LinkOf(m_active);
    if (active && active->IsAnswering())
        return "";
    if (active && active->IsSilent())
        return "the audio server of this machine does not answer";
    if (std::ranges::none_of(m_links, [](const auto& link) { return link->IsAnswering(); }))
        return "no audio server is connected";
    return "the audio server of this machine is not connected";
}

std::uint32_t ServerBindings::BindingOf(const ServerLink& link) const {
    const auto found = std::ranges::find_if(m_links, [&](const auto& each) { return each.get() == &link; });
    return kFirstServerBinding + static_cast<std::uint32_t>(found - m_links.begin());
}

ServerLink* ServerBindings::LinkOf(std::uint32_t bindingId) const {
    if (bindingId < kFirstServerBinding || bindingId - kFirstServerBinding >= m_links.size())
        return nullptr;
    return m_links[bindingId - kFirstServerBinding].get();
}

void ServerBindings::OnConnected(ServerLink& link, const std::string& address) {
    const std::uint32_t bindingId = BindingOf(link);
    if (m_parts.system.IsLocalIPv4(address))
        m_active = bindingId;
    m_parts.driver.BoundCall(bindingId, "SERVER_ONLINE", address);
}

void ServerBindings::OnLine(ServerLink& link, const std::string& line) {
    m_parts.log.Debug("from " + common::ToText(link.GetServer()) + ": " + line);
    const std::uint32_t bindingId = BindingOf(link);
    if (m_heard)
        m_heard(bindingId, line);
    m_parts.driver.BoundCall(bindingId, "DATA_RECEIVED", line);
}

void ServerBindings::OnLost(ServerLink& link) {
    const std::uint32_t bindingId = BindingOf(link);
    m_parts.driver.BoundCall(bindingId, "SERVER_OFFLINE", "");
    PublishServer(link);
    if (m_lost)
        m_lost(bindingId);
}

void ServerBindings::SendBindMessage(std::uint32_t, std::uint32_t bindingId,
                                     const IOutboundBindMessage& message) {
    ServerLink* link = LinkOf(bindingId);
    if (!link || message.GetName() != "SEND") {
        m_parts.log.Warning("dropped a message " + message.GetName() + " to binding " +
                            std::to_string(bindingId));
        return;
    }
    m_parts.log.Debug((link->IsConnected() ? "to " : "dropped, not connected: to ") +
                      common::ToText(link->GetServer()) + ": " + message.GetData());
    link->Send(message.GetData());
}

nlohmann::json ServerBindings::ToJson(std::size_t index) const {
    const ServerLink& link = *m_links[index];
    const std::uint32_t bindingId = kFirstServerBinding + static_cast<std::uint32_t>(index);
    return {
        {"binding", bindingId},           {"host", link.GetServer().host},   {"port", link.GetServer().port},
        {"bound", index < m_bound},       {"connected", link.IsAnswering()}, {"problem", link.GetProblem()},
        {"active", bindingId == m_active}};
}

nlohmann::json ServerBindings::ToJson() const {
    nlohmann::json list = nlohmann::json::array();
    for (std::size_t i = 0; i < m_links.size(); ++i)
        list.push_back(ToJson(i));
    return list;
}

void ServerBindings::PublishServer(const ServerLink& link) {
    nlohmann::json event = ToJson(BindingOf(link) - kFirstServerBinding);
    event["type"] = "server";
    m_parts.events.Publish(event);
}

} // namespace korvel::controller

#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <nlohmann/json_fwd.hpp>
#include <set>
#include <vector>

#include "base/EventBus.h"
#include "base/Poster.h"
#include "driver/DriverPort.h"
#include "links/ServerLink.h"
#include "platform/Services.h"
#include "platform/System.h"

namespace korvel::controller {

// The audio servers of the configuration, each on a binding of the driver: the first on kFirstServerBinding,
// the others on those that follow, as soon as the driver offers them. A server that begins to answer or is lost,
// and what is known of why, is an event {"type":"server",...}.
class ServerBindings final : public IBindMessageSender, private ServerLink::Listener {
public:
    struct Parts {
        asio::io_context& loop;
        DriverPort& driver;
        kv::ISystem& system;
        EventBus& events;
        const common::Log& log;
    };

    ServerBindings(const Parts& parts, const std::vector<common::HostPort>& servers,
                   common::BackOff backOff = kServerBackOff, Heartbeat heartbeat = kServerHeartbeat);
    ~ServerBindings();

    // Called after the driver has heard that the server of this binding is lost.
    void SetServerLost(std::function<void(std::uint32_t)> lost) { m_lost = std::move(lost); }

    // Called with each line of an audio server, before the driver hears it.
    void SetLineListener(std::function<void(std::uint32_t, const std::string&)> listener) {
        m_heard = std::move(listener);
    }

    // The driver offers this binding now. May be called inside a call of the driver.
    void OnBindingOffered(std::uint32_t bindingId);
    // Binds and connects the servers; the driver must be attached and initialised.
    void Start();
    // Closes all connections.
    void Stop();

    // The binding of the audio server that the driver plays on: of those on this machine the one that
    // connected last, also after its loss. 0 before there was any.
    std::uint32_t ActiveBinding() const { return m_active; }
    // Why the driver cannot play now; "" when it can.
    std::string WhyNotReady() const;

    // [{"binding","host","port","bound","connected","problem","active"}, ...]
    nlohmann::json ToJson() const;

    void SendBindMessage(std::uint32_t fromDeviceId, std::uint32_t bindingId,
                         const IOutboundBindMessage& message) override;

private:
    void OnConnected(ServerLink& link, const std::string& address) override;
    void OnLine(ServerLink& link, const std::string& line) override;
    void OnLost(ServerLink& link) override;
    void OnChanged(ServerLink& link) override { PublishServer(link); }

    void BindOffered();
    std::uint32_t BindingOf(const ServerLink& link) const;
    ServerLink* LinkOf(std::uint32_t bindingId) const;
    nlohmann::json ToJson(std::size_t index) const;
    void PublishServer(const ServerLink& link);

    Parts m_parts;
    Poster m_poster;
    std::vector<std::shared_ptr<ServerLink>> m_links;
    std::size_t m_bound = 0; // the first m_bound links have their binding
    std::set<std::uint32_t> m_offered;
    std::uint32_t m_active = 0;
    bool m_running = false;
    std::function<void(std::uint32_t)> m_lost;
    std::function<void(std::uint32_t, const std::string&)> m_heard;
};

} // namespace korvel::controller

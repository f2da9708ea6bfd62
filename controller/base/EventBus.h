// Everything that happens, for whoever listens.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <nlohmann/json_fwd.hpp>
#include <string>

namespace korvel::controller {

// The text of a JSON value. Bytes that are not UTF-8 (a badly tagged song) come out as replacement
// characters.
std::string JsonText(const nlohmann::json& value);

// Hands each event, one JSON object as text, to every listener. Driver thread.
class EventBus {
public:
    using Listener = std::function<void(const std::shared_ptr<const std::string>&)>;

    // A listener may remove itself or another, but must not publish. The returned id is never 0.
    std::uint32_t Add(Listener listener);
    void Remove(std::uint32_t id) { m_listeners.erase(id); }

    void Publish(const nlohmann::json& event);

private:
    std::map<std::uint32_t, Listener> m_listeners;
    std::uint32_t m_nextId = 1;
};

} // namespace korvel::controller

#include "base/EventBus.h"

#include <nlohmann/json.hpp>
#include <utility>
#include <vector>

namespace korvel::controller {

std::string JsonText(const nlohmann::json& value) {
    return value.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
}

std::uint32_t EventBus::Add(Listener listener) {
    const std::uint32_t id = m_nextId++;
    m_listeners.emplace(id, std::move(listener));
    return id;
}

void EventBus::Publish(const nlohmann::json& event) {
    if (m_listeners.empty())
        return;
    const auto text = std::make_shared<const std::string>(JsonText(event));
    std::vector<std::uint32_t> ids;
    for (const auto& [id, listener] : m_listeners)
        ids.push_back(id);
    for (const std::uint32_t id : ids) {
        const auto found = m_listeners.find(id);
        if (found == m_listeners.end())
            continue;
        const Listener listener = found->second; // a copy: it may remove itself
        listener(text);
    }
}

} // namespace korvel::controller

#include "driver/services/VariableStore.h"

#include <nlohmann/json.hpp>

namespace korvel::controller {

void VariableStore::Add(std::uint32_t id, const std::string& name, std::uint32_t type,
                        const std::string& value) {
    m_variables[id] = {name, type, value};
}

void VariableStore::Change(std::uint32_t id, const std::string& text, bool notify) {
    const auto found = m_variables.find(id);
    if (found == m_variables.end() || found->second.value == text)
        return;
    found->second.value = text;
    if (m_listener)
        m_listener(id, text);
    if (notify)
        m_events.Publish({{"type", "variable"}, {"id", id}, {"name", found->second.name}, {"value", text}});
}

// There is one driver, so every variable is its own.
void VariableStore::SetVariable(std::uint32_t, std::uint32_t, std::uint32_t id, const std::string& text,
                                bool notify) {
    Change(id, text, notify);
}

nlohmann::json VariableStore::ToJson() const {
    nlohmann::json list = nlohmann::json::array();
    for (const auto& [id, variable] : m_variables)
        list.push_back({{"id", id}, {"name", variable.name}, {"value", variable.value}});
    return list;
}

} // namespace korvel::controller

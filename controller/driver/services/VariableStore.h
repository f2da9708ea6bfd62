#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <utility>

#include "base/EventBus.h"
#include "platform/Services.h"

namespace korvel::controller {

// The driver's variables. A change is an event {"type":"variable","id","name","value"}.
class VariableStore final : public IVariableService {
public:
    struct Variable {
        std::string name;
        std::uint32_t type = 0;
        std::string value;
    };

    explicit VariableStore(EventBus& events) : m_events(events) {}

    // `listener` is called with each change, within the driver's call.
    void SetListener(std::function<void(std::uint32_t, const std::string&)> listener) {
        m_listener = std::move(listener);
    }

    void Add(std::uint32_t id, const std::string& name, std::uint32_t type, const std::string& value);
    void Remove(std::uint32_t id) { m_variables.erase(id); }
    // Nothing happens for a variable that is not there. Setting the same text again is no change.
    void Change(std::uint32_t id, const std::string& text, bool notify = true);

    void SetVariable(std::uint32_t deviceId, std::uint32_t fromDeviceId, std::uint32_t id,
                     const std::string& text, bool notify) override;

    const std::map<std::uint32_t, Variable>& All() const { return m_variables; }
    // [{"id","name","value"}, ...]
    nlohmann::json ToJson() const;

private:
    EventBus& m_events;
    std::function<void(std::uint32_t, const std::string&)> m_listener;
    std::map<std::uint32_t, Variable> m_variables;
};

} // namespace korvel::controller

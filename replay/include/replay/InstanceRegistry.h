#pragma once

#include <map>
#include <string>

#include "platform/InstanceManager.h"

namespace korvel::replay {

class InstanceRegistry final : public IInstanceManager {
public:
    bool GetInstance(const std::string& id, void** instance) override {
        const auto found = m_instances.find(id);
        *instance = found == m_instances.end() ? nullptr : found->second;
        return found != m_instances.end();
    }
    void RegisterInstance(const std::string& id, void* instance) override { m_instances[id] = instance; }
    void RevokeInstance(const std::string& id) override { m_instances.erase(id); }

    // Registers a service as the very interface that it is looked up as.
    template <class Interface>
    void Offer(Interface& service) {
        RegisterInstance(Interface::kInterfaceId, &service);
    }

private:
    std::map<std::string, void*> m_instances;
};

} // namespace korvel::replay

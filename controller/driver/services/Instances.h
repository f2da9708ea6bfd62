#pragma once

#include <map>
#include <string>

#include "platform/InstanceManager.h"

namespace korvel::controller {

// The services that the driver finds by identifier.
class Instances final : public IInstanceManager {
public:
    bool GetInstance(const std::string& id, void** instance) override;
    void RegisterInstance(const std::string& id, void* instance) override { m_instances[id] = instance; }
    void RevokeInstance(const std::string& id) override { m_instances.erase(id); }

    // Offers `service` under its interface's identifier; it must outlive the driver.
    template <class Interface>
    void Offer(Interface& service) {
        RegisterInstance(Interface::kInterfaceId, &service);
    }

private:
    std::map<std::string, void*> m_instances;
};

} // namespace korvel::controller

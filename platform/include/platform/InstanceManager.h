// How services, and drivers that offer one, are found: by identifier text.
#pragma once

#include <string>

// Implemented by the core, handed to a driver's creation function. One per driver, so that a service knows
// which driver is asking. Outlives the driver.
class IInstanceManager {
public:
    // True when something is registered under `id`; `*instance` is then its pointer, exactly as registered
    // (it may be null), and stays owned by whoever registered it. False leaves `*instance` null.
    virtual bool GetInstance(const std::string& id, void** instance) = 0;
    // Registers `instance` under `id`, replacing what was there. Not owned.
    virtual void RegisterInstance(const std::string& id, void* instance) = 0;
    virtual void RevokeInstance(const std::string& id) = 0;

protected:
    ~IInstanceManager() = default;
};

namespace kv {

// The service that `Interface::kInterfaceId` names, or null.
template <class Interface>
Interface* GetService(IInstanceManager& instances) {
    void* instance = nullptr;
    return instances.GetInstance(Interface::kInterfaceId, &instance) ? static_cast<Interface*>(instance)
                                                                     : nullptr;
}

} // namespace kv

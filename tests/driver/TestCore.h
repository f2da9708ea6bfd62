// A controller core for unit tests: the deterministic core of korvel-replay around the driver's own classes,
// with a hook in front of every call that the driver makes of a service.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "platform/DriverHelper.h"
#include "platform/IDriver.h"
#include "replay/Session.h"

// One call of a service: the operation's name and its arguments as texts.
struct ServiceCall {
    std::string name;
    std::vector<std::string> arguments;

    // NAME ARGUMENT ...
    std::string ToText() const;
};

class TestCore {
public:
    // May throw (the service fails) or call into the driver (the core calls back at once).
    using Hook = std::function<void(const ServiceCall&)>;

    // `create` makes the driver at "start"; the default is the driver that is linked into the test.
    explicit TestCore(CreationFunc create = nullptr);
    ~TestCore();
    TestCore(const TestCore&) = delete;
    TestCore& operator=(const TestCore&) = delete;

    // Runs input lines as they stand in a transcript and returns what came out, "< " and "= " included.
    std::vector<std::string> Run(const std::string& line);
    std::vector<std::string> Run(std::initializer_list<std::string> lines);
    // What came out since the last call, for tests that call the driver's classes themselves.
    std::vector<std::string> TakeLines();

    // Called before a service sees a call. The hook may replace itself.
    void SetHook(Hook hook) { m_hook = std::make_shared<Hook>(std::move(hook)); }
    void ClearHook() { m_hook.reset(); }
    void Note(const ServiceCall& call);

    // Makes `service` an interface of a device or room; it must outlive the core.
    template <class Interface>
    void OfferToDevice(std::uint32_t deviceId, Interface& service) {
        m_deviceServices[{deviceId, Interface::kInterfaceId}] = &service;
    }
    // Null when the test made none.
    void* DeviceService(std::uint32_t deviceId, const std::string& interfaceId) const;

    IDriver& Driver() { return m_session.GetDriver(); }
    korvel::replay::Session& Session() { return m_session; }
    korvel::replay::InstanceRegistry& Instances() { return m_session.GetInstances(); }
    IDriverHelperV2& Helper();
    kv::ISystem& System();

private:
    struct Services;

    korvel::replay::Session m_session;
    std::shared_ptr<Hook> m_hook;
    std::map<std::pair<std::uint32_t, std::string>, void*> m_deviceServices;
    std::unique_ptr<Services> m_services;
};

// Is one of the lines exactly `line`; does one begin with it?
bool Has(const std::vector<std::string>& lines, const std::string& line);
bool HasStart(const std::vector<std::string>& lines, const std::string& start);
// The lines that begin with `start`.
std::vector<std::string> Only(const std::vector<std::string>& lines, const std::string& start);

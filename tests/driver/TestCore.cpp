#include "TestCore.h"

#include <algorithm>

#include "HookedServices.h"
#include "driver/korvel_digitalaudio.h"

std::string ServiceCall::ToText() const {
    std::string text = name;
    for (const std::string& argument : arguments)
        text.append(" ").append(argument);
    return text;
}

// The hooked services stand before the session's own under the same identifiers.
struct TestCore::Services {
    explicit Services(TestCore& core)
        : system(core, Replaced<kv::ISystem>(core)),
          timers(core, Replaced<ITimerManager>(core)),
          media(core, Replaced<IMediaManager>(core)),
          messaging(core, Replaced<IDeviceMessaging>(core)),
          uiNotifier(core, Replaced<IUINotifier>(core)),
          sender(core, Replaced<IBindMessageSender>(core)),
          variables(core, Replaced<IVariableService>(core)),
          rooms(core, Replaced<IRoomService>(core)),
          announcements(core, Replaced<IAnnouncementNotifier>(core)),
          rhapsody(core, Replaced<KVRhapsodyClient::IRhapsodyClientFactory>(core)),
          helper(core, Replaced<IDriverHost>(core).GetHelper()),
          host(core, Replaced<IDriverHost>(core), media, timers, helper) {
        auto& instances = core.Instances();
        instances.Offer<kv::ISystem>(system);
        instances.Offer<ITimerManager>(timers);
        instances.Offer<IMediaManager>(media);
        instances.Offer<IDeviceMessaging>(messaging);
        instances.Offer<IUINotifier>(uiNotifier);
        instances.Offer<IBindMessageSender>(sender);
        instances.Offer<IVariableService>(variables);
        instances.Offer<IRoomService>(rooms);
        instances.Offer<IAnnouncementNotifier>(announcements);
        instances.Offer<KVRhapsodyClient::IRhapsodyClientFactory>(rhapsody);
        instances.Offer<IDriverHost>(host);
        kv::InstallSystem(&system);
    }
    ~Services() { kv::UninstallSystem(&system); }

    template <class Interface>
    static Interface& Replaced(TestCore& core) {
        return *kv::GetService<Interface>(core.Instances());
    }

    HookedSystem system;
    HookedTimers timers;
    HookedMedia media;
    HookedMessaging messaging;
    HookedUINotifier uiNotifier;
    HookedSender sender;
    HookedVariables variables;
    HookedRooms rooms;
    HookedAnnouncements announcements;
    HookedRhapsody rhapsody;
    HookedHelper helper;
    HookedHost host;
};

TestCore::TestCore(CreationFunc create)
    : m_session(create ? create : &korvel_digitalaudio::Create),
      m_services(std::make_unique<Services>(*this)) {}

TestCore::~TestCore() {
    ClearHook();
    try {
        m_session.Stop();
    } catch (const std::exception&) {
        // No driver runs.
    }
}

std::vector<std::string> TestCore::Run(const std::string& line) {
    TakeLines();
    m_session.Execute(line);
    return TakeLines();
}

std::vector<std::string> TestCore::Run(std::initializer_list<std::string> lines) {
    std::vector<std::string> all;
    for (const std::string& line : lines) {
        const auto some = Run(line);
        all.insert(all.end(), some.begin(), some.end());
    }
    return all;
}

std::vector<std::string> TestCore::TakeLines() {
    return m_session.GetWorld().recorder.TakeLines();
}

void TestCore::Note(const ServiceCall& call) {
    if (const auto hook = m_hook)
        (*hook)(call);
}

void* TestCore::DeviceService(std::uint32_t deviceId, const std::string& interfaceId) const {
    const auto found = m_deviceServices.find({deviceId, interfaceId});
    return found == m_deviceServices.end() ? nullptr : found->second;
}

IDriverHelperV2& TestCore::Helper() {
    return m_services->helper;
}
kv::ISystem& TestCore::System() {
    return m_services->system;
}

bool Has(const std::vector<std::string>& lines, const std::string& line) {
    return std::find(lines.begin(), lines.end(), line) != lines.end();
}

bool HasStart(const std::vector<std::string>& lines, const std::string& start) {
    return !Only(lines, start).empty();
}

std::vector<std::string> Only(const std::vector<std::string>& lines, const std::string& start) {
    std::vector<std::string> only;
    std::copy_if(lines.begin(), lines.end(), std::back_inserter(only),
                 [&](const std::string& line) { return line.starts_with(start); });
    return only;
}

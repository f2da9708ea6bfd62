#include "replay/Session.h"

#include "replay/Arguments.h"
#include "replay/Verbs.h"
#include "replay/Words.h"

namespace korvel::replay {

Session::Session(CreationFunc create, std::ostream* echo) : m_create(create), m_world(echo) {
    m_instances.Offer<kv::ISystem>(m_system);
    m_instances.Offer<IDriverHost>(m_host);
    m_instances.Offer<ITimerManager>(m_timers);
    m_instances.Offer<IMediaManager>(m_media);
    m_instances.Offer<IDeviceMessaging>(m_messaging);
    m_instances.Offer<IUINotifier>(m_uiNotifier);
    m_instances.Offer<IBindMessageSender>(m_bindMessages);
    m_instances.Offer<IVariableService>(m_variables);
    m_instances.Offer<IRoomService>(m_rooms);
    m_instances.Offer<IAnnouncementNotifier>(m_announcements);
    m_instances.Offer<KVRhapsodyClient::IRhapsodyClientFactory>(m_rhapsody);
    m_instances.Offer<IStringX>(*m_stringX);
    m_instances.Offer<IKVMessage>(*m_message);
}

Session::~Session() {
    m_world.recorder.Mute();
    Enter([&] { m_driver.reset(); });
}

void Session::Execute(std::string_view line) {
    Dispatch(line);
    DeliverAnswers();
}

IDriver& Session::GetDriver() {
    if (!m_driver)
        throw FormatError("no driver runs: \"start\" comes first");
    return *m_driver;
}

void Session::Start(KVXML::INode* persist) {
    if (m_driver)
        throw FormatError("the driver runs already");
    Enter([&] { m_driver.reset(m_create(m_instances)); });
    if (!m_driver) {
        m_world.recorder.Fault("no driver was created");
        return;
    }
    Enter([&] {
        const auto config = KVXML::CreateXmlNode("config");
        const std::int32_t result = m_driver->Initialize(kDriverDeviceId, *config, persist);
        m_world.recorder.Output(OutputLine("initialized").Number(result));
    });
}

void Session::CreateAgain() {
    const IDriver& running = GetDriver();
    Enter([&] {
        if (m_create(m_instances) != &running)
            m_world.recorder.Fault("a second creation did not give the running driver");
    });
}

void Session::Stop() {
    GetDriver();
    Enter([&] { m_driver.reset(); });
    m_world.timers.Clear();
    m_world.live.DropAnswers();
}

void Session::Advance(std::uint32_t milliseconds) {
    const std::uint64_t end = m_world.clock.GetElapsed() + milliseconds;
    std::size_t expiries = 0;
    while (const auto expiry = m_world.timers.TakeDue(end)) {
        if (++expiries > kMaxExpiries)
            throw FormatError("more than " + std::to_string(kMaxExpiries) + " timers expired");
        m_world.clock.AdvanceTo(expiry->due);
        m_world.recorder.WorldInput(OutputLine("timer").Number(expiry->id).GetText());
        Expire(*expiry);
        DeliverAnswers();
    }
    m_world.clock.AdvanceTo(end);
}

void Session::Dispatch(std::string_view line) {
    Arguments arguments(line);
    const std::string name = arguments.Value("verb");
    const Verb* verb = FindVerb(name);
    if (!verb)
        throw FormatError("unknown verb " + FormatValue(name));
    verb->run(*this, arguments);
}

void Session::DeliverAnswers() {
    std::size_t answers = 0;
    while (const auto answer = m_world.live.TakeAnswer()) {
        if (++answers > kMaxLiveAnswers)
            throw FormatError("more than " + std::to_string(kMaxLiveAnswers) + " live answers to one input");
        m_world.recorder.WorldInput(*answer);
        Dispatch(*answer);
    }
}

void Session::Expire(const TimerQueue::Expiry& expiry) {
    Enter([&] {
        if (expiry.callback)
            expiry.callback->OnTimerExpired(expiry.id, 0);
        else
            GetDriver().OnTimerExpired(expiry.id, 0);
    });
}

} // namespace korvel::replay

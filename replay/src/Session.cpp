#include "replay/Session.h"

#include <algorithm>

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
    m_world.recorder.SetListener([this](std::string_view output) { RunInside(output); });
}

Session::~Session() {
    m_world.recorder.Mute();
    Enter([&] { m_driver.reset(); });
}

void Session::Execute(std::string_view line) {
    Dispatch(line);
    DeliverAnswers();
    if (m_insideError)
        std::rethrow_exception(std::exchange(m_insideError, nullptr));
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
    for (const std::uint32_t id : m_world.timers.GetCallbackIds())
        m_world.recorder.Fault("timer " + std::to_string(id) + " outlives the driver that it calls back");
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

// No driver is there to be called while one is made or destroyed.
void Session::RunInside(std::string_view output) {
    auto& waiting = m_world.insideCalls;
    const auto found = std::find_if(waiting.begin(), waiting.end(),
                                    [&](const InsideCall& call) { return output.starts_with(call.output); });
    if (!m_driver || found == waiting.end())
        return;
    const std::string input = std::move(found->input);
    waiting.erase(found);
    m_world.recorder.WorldInput(input);
    try {
        Dispatch(input);
    } catch (const FormatError&) {
        m_insideError = std::current_exception();
    }
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

// The driver's own timers reach nobody while it is made or destroyed.
void Session::Expire(const TimerQueue::Expiry& expiry) {
    Enter([&] {
        if (expiry.callback)
            expiry.callback->OnTimerExpired(expiry.id, 0);
        else if (m_driver)
            m_driver->OnTimerExpired(expiry.id, 0);
    });
}

} // namespace korvel::replay

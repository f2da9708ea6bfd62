#include "SessionRun.h"

#include <cstdlib>
#include <iostream>
#include <set>
#include <stdexcept>
#include <string_view>

#include "korvel_digitalaudio/IDigitalAudio.h"
#include "platform/Xml.h"
#include "replay/Words.h"

namespace fuzz {

namespace {

// Longer ones let the driver's own timer expire until the fuzzer takes the session to hang.
constexpr std::uint32_t kMaxAdvance = 3600000;

[[noreturn]] void Violation(const std::string& what) {
    std::cerr << "broken rule: " << what << std::endl;
    std::abort();
}

bool IsAmong(const std::set<std::string_view>& names, std::string_view name) {
    return names.contains(name);
}

bool CallsTheTimerManager(const ServiceCall& call) {
    static const std::set<std::string_view> kOperations{"StartTimer", "CancelTimer", "RemoveCallback"};
    return IsAmong(kOperations, call.name);
}

bool CarriesADocument(const ServiceCall& call) {
    static const std::set<std::string_view> kOperations{"ChangeVariable", "SendDataToUI", "SendToUIs",
                                                        "SendDataToDevice"};
    return IsAmong(kOperations, call.name);
}

std::string_view FirstWord(std::string_view line) {
    return line.substr(0, line.find(' '));
}

bool LastsTooLong(std::string_view line) {
    if (FirstWord(line) != "advance")
        return false;
    try {
        return korvel::replay::ParseNumber(line.substr(std::min(line.find(' ') + 1, line.size())), "MS") >
               kMaxAdvance;
    } catch (const korvel::replay::FormatError&) {
        return false;
    }
}

} // namespace

void SessionRun::AnalogRoom::TakeSourceDevice(std::uint32_t deviceId) {
    m_core.Note({"TakeSourceDevice", {std::to_string(deviceId)}});
}
std::vector<std::uint32_t> SessionRun::AnalogRoom::GetDevicesInAnalogSource() {
    m_core.Note({"GetDevicesInAnalogSource", {}});
    return {5, 6, 100002};
}
void SessionRun::AnalogRoom::SelectDevice(std::uint32_t deviceId) {
    m_core.Note({"SelectDevice", {std::to_string(deviceId)}});
}

SessionRun::SessionRun() {
    for (const std::uint32_t room : {7u, 8u})
        m_core.OfferToDevice<IAnalogSource>(room, m_analogRoom);
    m_core.SetHook([this](const ServiceCall& call) { OnCall(call); });
}

std::vector<std::string> SessionRun::Play(const Step& step) {
    m_step = &step;
    m_calls = 0;
    Execute(step.line);
    m_step = nullptr;
    const auto lines = m_core.TakeLines();
    for (const std::string& line : lines) {
        // The core is told so when a service fails while a driver is made.
        if (line.starts_with("< fault ") && line != "< fault no driver was created")
            Violation(line + " at " + step.line);
    }
    return lines;
}

void SessionRun::End() {
    Play({"stop", {}});
    if (kv::GetService<IDigitalAudio>(m_core.Instances()))
        Violation("the driver is gone and still registered");
}

void SessionRun::Execute(const std::string& line) {
    if (LastsTooLong(line))
        return;
    try {
        m_core.Session().Execute(line);
    } catch (const korvel::replay::FormatError&) {
    }
}

void SessionRun::OnCall(const ServiceCall& call) {
    const std::string& text = call.arguments.empty() ? call.name : call.arguments.back();
    if (CarriesADocument(call) && text.starts_with('<') && !KVXML::CreateXmlDocument(text))
        Violation("a document that cannot be read: " + text);
    if (!m_step)
        return;
    const std::uint32_t number = ++m_calls;
    const InTimers inside(*this, CallsTheTimerManager(call));
    for (const Disturbance& disturbance : m_step->disturbances) {
        if (disturbance.call == number)
            Disturb(disturbance.what);
    }
}

void SessionRun::Disturb(const std::string& what) {
    static const std::set<std::string_view> kNotWithinACall{"start", "stop"};
    static const std::set<std::string_view> kNotWithinTheTimerManager{"advance", "rhapsody"};
    if (what == kThrow)
        throw std::runtime_error("the service fails");
    if (what == kThrowOther)
        throw 30;
    const std::string_view verb = FirstWord(what);
    if (!IsAmong(kNotWithinACall, verb) && !(m_inTimers && IsAmong(kNotWithinTheTimerManager, verb)))
        Execute(what);
}

} // namespace fuzz

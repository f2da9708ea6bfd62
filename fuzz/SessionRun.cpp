#include "SessionRun.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <iostream>
#include <set>
#include <stdexcept>
#include <string_view>

#include "korvel_digitalaudio/IDigitalAudio.h"
#include "platform/Xml.h"
#include "replay/Arguments.h"
#include "replay/Words.h"

namespace fuzz {

namespace {

// Longer ones let the driver's own timer expire until the fuzzer takes the session to hang.
constexpr std::uint32_t kMaxAdvance = 3600000;

[[noreturn]] void Violation(const std::string& what) {
    std::cerr << "broken rule: " << what << std::endl;
    std::abort();
}

bool CallsTheTimerManager(const ServiceCall& call) {
    static const std::set<std::string_view> kOperations{"StartTimer", "CancelTimer", "RemoveCallback"};
    return kOperations.contains(call.name);
}

// The core is told so when a service fails while a driver is made.
bool IsFault(const std::string& line) {
    return line.starts_with("< fault ") && line != "< fault no driver was created";
}

// What the line ends with, when that is a document; or nothing.
std::string DocumentOf(const std::string& line) {
    static constexpr std::array<std::string_view, 5> kCarriers{"< set ", "< ui ", "< ui-device ", "< reply ",
                                                               "< persist "};
    const std::size_t start = line.find('<', 1);
    const bool carries = std::any_of(kCarriers.begin(), kCarriers.end(), [&](const std::string_view carrier) {
        return line.starts_with(carrier);
    });
    return carries && start != std::string::npos ? korvel::replay::ParseText(line.substr(start)) : "";
}

// Empty for a line that has none.
std::string VerbOf(std::string_view line) {
    try {
        return korvel::replay::Arguments(line).Value("verb");
    } catch (const korvel::replay::FormatError&) {
        return "";
    }
}

bool LastsTooLong(std::string_view line) {
    try {
        korvel::replay::Arguments arguments(line);
        return arguments.Value("verb") == "advance" && arguments.Number("MS") > kMaxAdvance;
    } catch (const korvel::replay::FormatError&) {
        return false;
    }
}

} // namespace

bool BreaksARule(const std::string& line) {
    if (IsFault(line))
        return true;
    const std::string document = DocumentOf(line);
    return !document.empty() && !KVXML::CreateXmlDocument(document);
}

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
        if (BreaksARule(line))
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
    // No timer expires while timers change, nor does the streaming service's client answer, which lives by them.
    static const std::set<std::string_view> kNotWithinTheTimerManager{"advance", "rhapsody"};
    if (what == kThrow)
        throw std::runtime_error("the service fails");
    if (what == kThrowOther)
        throw 30;
    const std::string verb = VerbOf(what);
    if (!kNotWithinACall.contains(verb) && !(m_inTimers && kNotWithinTheTimerManager.contains(verb)))
        Execute(what);
}

} // namespace fuzz

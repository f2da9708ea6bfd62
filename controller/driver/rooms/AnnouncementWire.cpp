#include "driver/rooms/AnnouncementWire.h"

#include <sstream>

#include "platform/Text.h"

namespace korvel::controller {
namespace {

constexpr const char* kStreamAnswer = "stream=";
constexpr const char* kAnnouncedBad = "BAD=";

// The number behind `prefix`; none when the word does not start with it.
std::optional<std::uint32_t> NumberBehind(const std::string& prefix, const std::string& word) {
    if (!word.starts_with(prefix))
        return std::nullopt;
    return kv::ToULong(word.substr(prefix.size()));
}

std::string RestOf(std::istream& words) {
    std::string text;
    std::getline(words >> std::ws, text);
    while (!text.empty() && text.back() == '\r')
        text.pop_back();
    return text;
}

} // namespace

void AnnouncementWire::Begin() {
    m_waiting = true;
    m_stream.reset();
    m_roomRefused = false;
    m_roomTaken = false;
    m_failure.clear();
}

std::string AnnouncementWire::GetFailure() const {
    return m_failure.empty() && m_roomRefused && !m_roomTaken ? "the audio server took none of the rooms"
                                                              : m_failure;
}

// "<n> addann stream=<S>", "<n> NO addann", "<n> OK addcli <S>", "<n> NO addcli <S>", "<n> NO addmed <S>",
// "* addmed BAD=<S> <reason>"
void AnnouncementWire::OnLine(const std::string& line) {
    std::istringstream words(line);
    std::string first;
    std::string second;
    std::string third;
    words >> first >> second >> third;
    if (m_waiting && first != "*" && (second == "addann" || (second == "NO" && third == "addann"))) {
        OnStream(third);
    } else if (!m_stream) {
        return;
    } else if (third == "addcli" && NumberBehind("", RestOf(words)) == m_stream) {
        (second == "OK" ? m_roomTaken : m_roomRefused) = true;
    } else if (second == "NO" && third == "addmed" && NumberBehind("", RestOf(words)) == m_stream) {
        Fail("the audio server refused the file");
    } else if (first == "*" && second == "addmed" && NumberBehind(kAnnouncedBad, third) == m_stream) {
        Fail(RestOf(words));
    }
}

void AnnouncementWire::OnStream(const std::string& answer) {
    m_waiting = false;
    m_stream = NumberBehind(kStreamAnswer, answer);
    if (!m_stream)
        Fail("the audio server has no stream for it");
}

void AnnouncementWire::Fail(const std::string& why) {
    if (m_failure.empty())
        m_failure = why.empty() ? "the audio server cannot play the file" : why;
}

} // namespace korvel::controller

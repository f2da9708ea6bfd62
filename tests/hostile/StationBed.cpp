#include "StationBed.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <utility>

namespace korvel::tests {

void StationBed::Listen() {
    m_driver = Connect();
    m_stream = std::to_string(m_driver->AddStream());
}

void StationBed::Play(const std::string& url) {
    EXPECT_EQ(m_driver->Ask("addmed " + m_stream + " \"file:/stream-" + url + "\""), "OK addmed " + m_stream);
}

std::vector<std::string> StationBed::EventsUntil(const std::string& last) {
    std::vector<std::string> events;
    for (std::string event = m_driver->NextEvent(); event != last; event = m_driver->NextEvent()) {
        if (event.empty()) {
            ADD_FAILURE() << "no " << last << " after " << (events.empty() ? "" : events.back());
            break;
        }
        events.push_back(event);
    }
    return events;
}

std::string StationBed::Failure() {
    std::string event = m_driver->NextEvent();
    while (!event.empty() && !event.starts_with("* addmed"))
        event = m_driver->NextEvent();
    return event;
}

// Events of the media before may still be under way.
bool StationBed::StillPlays() {
    m_driver->Ask("addmed " + m_stream + " " + FileMedia(ToneFile("after.wav", {{500, 0.1}})));
    return Failure() == "* addmed EOM=" + m_stream;
}

bool StationBed::IsLogged(const std::string& text) {
    return WaitUntil([&] { return Server().Errors().find(text) != std::string::npos; });
}

Trap::Trap(std::string path) : m_path(std::move(path)) {
    ::mkfifo(m_path.c_str(), 0600);
}

bool Trap::HasVisitor() const {
    const int writer = ::open(m_path.c_str(), O_WRONLY | O_NONBLOCK | O_CLOEXEC);
    if (writer >= 0)
        ::close(writer);
    return writer >= 0;
}

} // namespace korvel::tests

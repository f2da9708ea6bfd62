#pragma once

#include <optional>
#include <string>

#include "base/EventBus.h"
#include "common/Log.h"

namespace korvel::controller {

// Why a media cannot be played, in a line of an audio server that says so; none in any other.
std::optional<std::string> BadMediaIn(const std::string& line);

// Tells the house why an audio server could not play something: the driver only learns that it could not. Each
// failure is a line of the log and an event {"type":"media","state":"failed","reason"}.
class MediaFailures {
public:
    MediaFailures(EventBus& events, const common::Log& log) : m_events(events), m_log(log) {}

    // A line of an audio server, before the driver has it.
    void OnServerLine(const std::string& line) const;

private:
    EventBus& m_events;
    const common::Log& m_log;
};

} // namespace korvel::controller

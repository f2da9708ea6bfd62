#pragma once

#include "base/EventBus.h"
#include "base/Poster.h"
#include "house/House.h"
#include "library/MediaDatabase.h"

namespace korvel::controller {

// Tells the listeners of the interface what has changed in the house: once for each turn of the loop in which something
// has, one event {"type":"house", ...} with the objects as they are then. Driver thread.
class HouseEvents {
public:
    HouseEvents(asio::io_context& loop, House& house, media::MediaDatabase& library, EventBus& events);
    ~HouseEvents();
    HouseEvents(const HouseEvents&) = delete;
    HouseEvents& operator=(const HouseEvents&) = delete;

private:
    void Tell();

    const Poster m_poster;
    House& m_house;
    media::MediaDatabase& m_library;
    EventBus& m_events;
};

} // namespace korvel::controller

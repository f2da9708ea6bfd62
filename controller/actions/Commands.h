#pragma once

#include <optional>
#include <string>

#include "actions/CommandChecks.h"
#include "actions/Library.h"
#include "driver/rooms/RoomRouter.h"
#include "driver/services/DriverHost.h"
#include "driver/services/ServerBindings.h"
#include "store/StateKeeper.h"

namespace korvel::controller {

// Commands and requests from outside on their way to the driver. Both operations throw Refused: for a name
// that the driver does not know, for parameters that CheckParameters() refuses, while no audio server can play (the
// driver would make a queue that nobody answers for), for a command that names a room that is not there or fills
// the queue of none, for a playlist with an entry that no line can name, and for one that changes nothing
// (CommandChecks).
class Commands {
public:
    struct Parts {
        DriverPort& driver;
        const DriverHost& host;
        const ServerBindings& bindings;
        RoomRouter& router;
        const RoomTable& rooms;
        const VariableStore& variables;
        Library& library;
        StateKeeper& state;
    };

    explicit Commands(const Parts& parts)
        : m_parts(parts), m_checks({parts.driver, parts.variables, parts.rooms, parts.library}) {}

    // The text that the command returned. What the command leads to (a room that is routed) is done when
    // whatever the caller posts to the loop next runs.
    std::string Execute(const ICmdMessage& command);
    // The element that the request is answered with; null when there is none.
    kv::auto_com<KVXML::INode> Request(const ICmdMessage& request);

private:
    // The room that a media command is for, 0 for any other command, and the line input that it plays there.
    struct Target {
        std::uint32_t roomId = 0;
        std::optional<LineInput> input;
    };

    Target Prepare(const ICmdMessage& command);
    void RequireReady() const;
    void RequirePlayable(std::uint32_t playlistId) const;
    std::uint32_t RequireRoom(const ICmdMessage& command) const;

    Parts m_parts;
    CommandChecks m_checks;
};

} // namespace korvel::controller

#pragma once

#include <optional>
#include <string>

#include "actions/Library.h"
#include "driver/DriverPort.h"
#include "driver/rooms/RoomTable.h"
#include "driver/services/VariableStore.h"

namespace korvel::controller {

// The driver leaves a command alone that does not fit, and says nothing. Here whoever gave it learns why nothing
// happens: what can be told beforehand is refused before the driver sees it, the rest when it has run. Commands
// that are not known here pass. Both operations throw Refused.
class CommandChecks {
public:
    struct Parts {
        DriverPort& driver;
        const VariableStore& variables;
        const RoomTable& rooms;
        Library& library;
    };

    explicit CommandChecks(const Parts& parts) : m_parts(parts) {}

    void Before(const ICmdMessage& command) const;
    // `answered`: whether the command returned anything.
    void After(const ICmdMessage& command, bool answered) const;

private:
    struct Queue {
        std::uint32_t id = 0;
        kv::auto_com<KVXML::INode> info; // as GET_QUEUE_INFO answers

        std::size_t CountSongs() const;
        // Whether it holds what MEDIA_ID and SOURCE name.
        bool Holds(const ICmdMessage& item) const;
    };
    struct Status {
        std::string state; // "Play", "Pause" or "Stop"
        std::uint32_t index = 0;
        std::uint32_t source = 0; // of what plays, as SOURCE counts; 0 for nothing and for a line input
    };
    struct Rule;

    static const Rule* FindRule(const std::string& command);

    void Play(const ICmdMessage& command) const;
    void Pause(const ICmdMessage& command) const;
    void Stop(const ICmdMessage& command) const;
    void Skip(const ICmdMessage& command) const;
    void SkipBack(const ICmdMessage& command) const;
    void GoToSong(const ICmdMessage& command) const;
    void RemoveSong(const ICmdMessage& command) const;
    void EditQueue(const ICmdMessage& command) const;
    void SavePlaylist(const ICmdMessage& command) const;
    void Leave(const ICmdMessage& command) const;
    void Describe(const ICmdMessage& command) const;
    void AddRooms(const ICmdMessage& command) const;
    void RemoveRooms(const ICmdMessage& command) const;
    void Join(const ICmdMessage& command) const;
    void AddSong(const ICmdMessage& command) const;
    void AddStation(const ICmdMessage& command) const;
    void AddAlbum(const ICmdMessage& command) const;
    void AddPlaylist(const ICmdMessage& command) const;
    void AddAll(const ICmdMessage& command) const;
    void KnownPlaylist(const ICmdMessage& command) const;
    void MediaText(const ICmdMessage& command) const;

    void Played(const ICmdMessage& command, bool answered) const;
    void Skipped(const ICmdMessage& command, bool answered) const;
    void Added(const ICmdMessage& command, bool answered) const;
    void AlbumsAdded(const ICmdMessage& command, bool answered) const;

    const Room& RoomOf(const ICmdMessage& command) const;
    std::optional<Queue> FindQueue(const std::string& key, std::uint32_t value) const;
    // `lack` completes "<room> ..." when the room has none.
    Queue QueueOf(const ICmdMessage& command, const char* lack) const;
    Status StatusOf(const Queue& queue) const;

    Parts m_parts;
};

} // namespace korvel::controller

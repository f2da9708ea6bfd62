#include "actions/Commands.h"

#include "actions/Parameters.h"
#include "base/Refused.h"
#include "common/Text.h"
#include "platform/Text.h"

namespace korvel::controller {

std::string Commands::Execute(const ICmdMessage& command) {
    const std::string& name = command.GetName();
    if (!m_parts.host.HasCommand(name))
        throw Refused(Refused::Why::NotFound, "unknown command '" + name + "'");
    CheckParameters(command);
    RequireReady();
    m_checks.Before(command);
    const Target target = Prepare(command);
    CR_String answer;
    m_parts.library.Database().AsOneChange([&] { m_parts.driver.Execute(command, answer); });
    if (target.roomId != 0)
        m_parts.router.RouteSoon(target.roomId, QueueIdOf(answer.GetText()), target.input);
    // Settings may have changed, and the driver does not always say so.
    m_parts.state.SaveSoon();
    m_checks.After(command, !answer.GetText().empty());
    return answer.GetText();
}

kv::auto_com<KVXML::INode> Commands::Request(const ICmdMessage& request) {
    const std::string& name = request.GetName();
    CheckParameters(request);
    if (m_parts.host.HasUIRequest(name))
        return m_parts.driver.Request(request);
    if (!m_parts.host.HasCommand(name))
        throw Refused(Refused::Why::NotFound, "unknown request '" + name + "'");
    // Any command can be asked as a request; its effects are the same.
    RequireReady();
    m_checks.Before(request);
    const Target target = Prepare(request);
    kv::auto_com<KVXML::INode> reply;
    m_parts.library.Database().AsOneChange([&] { reply = m_parts.driver.Request(request); });
    if (target.roomId != 0) {
        const bool named = reply && reply->GetName() == "queueid";
        m_parts.router.RouteSoon(target.roomId, named ? kv::ToULong(reply->GetText()) : 0, target.input);
    }
    m_parts.state.SaveSoon();
    m_checks.After(request, reply != nullptr);
    return reply;
}

Commands::Target Commands::Prepare(const ICmdMessage& command) {
    Target target;
    if (!IsMediaCommand(command.GetName())) {
        // The driver remembers what is set for any room that it is told of.
        if (!command.GetParam("ROOM_ID").empty())
            RequireRoom(command);
        return target;
    }
    target.roomId = RequireRoom(command);
    if (command.GetName() == "ADD_PLAYLIST")
        RequirePlayable(command.GetNumber("MEDIA_ID"));
    const LineInput* input = command.GetName() == "ADD_ALBUM_MP3"
                                 ? m_parts.library.FindInput(command.GetNumber("MEDIA_ID"))
                                 : nullptr;
    if (input) {
        target.input = *input;
        // In the queue that the room hears, the input would wait for the song to end.
        if (m_parts.rooms.Find(target.roomId)->IsRouted())
            m_parts.router.Deselect(target.roomId);
    }
    return target;
}

// A playlist may have been written by another program than this one.
void Commands::RequirePlayable(std::uint32_t playlistId) const {
    for (const MediaItem& item : m_parts.library.Database().GetPlaylistSongs(playlistId)) {
        if (!common::IsReference(item.externalId))
            throw Refused(Refused::Why::Invalid, "the playlist holds an entry that is no reference to media");
    }
}

void Commands::RequireReady() const {
    if (const std::string why = m_parts.bindings.WhyNotReady(); !why.empty())
        throw Refused(Refused::Why::Unavailable, why);
}

std::uint32_t Commands::RequireRoom(const ICmdMessage& command) const {
    const std::uint32_t room = command.GetNumber("ROOM_ID");
    if (!m_parts.rooms.Find(room))
        throw Refused(Refused::Why::NotFound, command.GetName() + " needs ROOM_ID, the id of a room; '" +
                                                  command.GetParam("ROOM_ID") + "' is none");
    return room;
}

} // namespace korvel::controller

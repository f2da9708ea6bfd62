#include "app/Commands.h"

#include "host/Refused.h"
#include "platform/Text.h"

namespace korvel::controller {

std::string Commands::Execute(const ICmdMessage& command) {
    const std::string& name = command.GetName();
    if (!m_parts.host.HasCommand(name))
        throw Refused(Refused::Why::NotFound, "unknown command '" + name + "'");
    RequireReady();
    const std::uint32_t room = IsMediaCommand(name) ? RequireRoom(command) : 0;
    CR_String answer;
    m_parts.driver.Execute(command, answer);
    if (room != 0)
        m_parts.router.RouteSoon(room, QueueIdOf(answer.GetText()));
    // Settings may have changed, and the driver does not always say so.
    m_parts.state.SaveSoon();
    return answer.GetText();
}

kv::auto_com<KVXML::INode> Commands::Request(const ICmdMessage& request) {
    const std::string& name = request.GetName();
    if (m_parts.host.HasUIRequest(name))
        return m_parts.driver.Request(request);
    if (!m_parts.host.HasCommand(name))
        throw Refused(Refused::Why::NotFound, "unknown request '" + name + "'");
    // Any command can be asked as a request; its effects are the same.
    RequireReady();
    const std::uint32_t room = IsMediaCommand(name) ? RequireRoom(request) : 0;
    auto reply = m_parts.driver.Request(request);
    if (room != 0)
        m_parts.router.RouteSoon(room,
                                 reply && reply->GetName() == "queueid" ? kv::ToULong(reply->GetText()) : 0);
    m_parts.state.SaveSoon();
    return reply;
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

#include "rooms/Announcements.h"

#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <nlohmann/json.hpp>

#include "host/Ids.h"
#include "host/Refused.h"

namespace korvel::controller {
namespace {

using Why = Refused::Why;

constexpr std::size_t kMaxPathBytes = 4096;

// The path travels in a line of the audio server.
bool HasControlCharacter(const std::string& text) {
    return std::ranges::any_of(text, [](unsigned char c) { return c < 32 || c == 127; });
}

void CheckFile(const std::string& file) {
    if (file.empty() || file.front() != '/' || file.size() > kMaxPathBytes || HasControlCharacter(file))
        throw Refused(Why::Invalid, "the file of an announcement must be an absolute path");
    std::error_code failed;
    if (!std::filesystem::is_regular_file(file, failed) || access(file.c_str(), R_OK) != 0)
        throw Refused(Why::Invalid, file + " is not there or cannot be read");
}

} // namespace

void Announcements::CheckRooms(std::vector<std::uint32_t>& rooms) const {
    std::ranges::sort(rooms);
    const auto twice = std::ranges::unique(rooms);
    rooms.erase(twice.begin(), twice.end());
    if (rooms.empty())
        throw Refused(Why::Invalid, "an announcement needs a room");
    for (const std::uint32_t room : rooms) {
        if (!m_parts.rooms.Find(room))
            throw Refused(Why::NotFound, "there is no room " + std::to_string(room));
    }
}

void Announcements::Start(std::vector<std::uint32_t> rooms, const std::string& file) {
    CheckRooms(rooms);
    CheckFile(file);
    if (const std::string why = m_parts.whyNotReady(); !why.empty())
        throw Refused(Why::Unavailable, why);
    if (m_current)
        throw Refused(Why::Conflict, "another announcement is being made");
    if (!m_parts.driver.MakesAnnouncements())
        throw Refused(Why::Conflict, "the driver makes no announcements");
    m_current = Current{std::move(rooms), file, m_parts.activeBinding()};
    Publish();
    Wait(m_patience.stream, "no stream in time");
    // The rooms second: a new stream begins without any.
    m_parts.driver.CreateAnnouncementStream();
    SelectInRooms(m_current->rooms, "ANNOUNCEMENT");
}

void Announcements::AnnouncementStreamReady() {
    m_poster.Post([this] { Play(); });
}

void Announcements::AnnouncementComplete() {
    m_poster.Post([this] { End("complete", ""); });
}

void Announcements::Play() {
    // The stream of an announcement that was abandoned meanwhile.
    if (!m_current) {
        m_parts.driver.RemoveAnnouncementStream();
        return;
    }
    m_current->state = "playing";
    Publish();
    Wait(m_patience.play, "no end in time");
    m_parts.driver.PlayAnnouncement(m_current->file);
}

void Announcements::OnRoomOff() {
    End("abandoned", "a room was switched off");
}

void Announcements::OnServerLost(std::uint32_t bindingId) {
    if (m_current && m_current->bindingId == bindingId)
        Forget("abandoned", "its audio server is lost");
}

void Announcements::End(const char* state, const std::string& why) {
    if (!m_current)
        return;
    const std::vector<std::uint32_t> rooms = m_current->rooms;
    m_parts.driver.RemoveAnnouncementStream();
    SelectInRooms(rooms, "ANNOUNCEMENT_COMPLETE");
    Forget(state, why);
}

void Announcements::Forget(const char* state, const std::string& why) {
    m_parts.timers.CancelTimer(m_current->timer);
    m_current->state = state;
    Publish();
    if (!why.empty())
        m_parts.log.Warning("announcement " + m_current->file + " abandoned: " + why);
    m_current.reset();
}

void Announcements::Wait(std::chrono::milliseconds patience, const char* what) {
    m_parts.timers.CancelTimer(m_current->timer);
    m_current->timer = m_parts.timers.Start(static_cast<std::uint32_t>(patience.count()), 1,
                                            [this, what](std::uint32_t) { End("abandoned", what); });
}

void Announcements::SelectInRooms(const std::vector<std::uint32_t>& rooms, const char* kind) {
    for (const std::uint32_t id : rooms) {
        AVParams params;
        params.roomId = id;
        params.mediaKind = kind;
        params.sourceDeviceId = kDriverDeviceId;
        m_parts.driver.Select(params, EndpointOf(*m_parts.rooms.Find(id)));
    }
}

nlohmann::json Announcements::ToJson() const {
    if (!m_current)
        return nullptr;
    return {{"state", m_current->state}, {"rooms", m_current->rooms}, {"file", m_current->file}};
}

void Announcements::Publish() const {
    nlohmann::json event = ToJson();
    event["type"] = "announcement";
    m_parts.events.Publish(event);
}

} // namespace korvel::controller

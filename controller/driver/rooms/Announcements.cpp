#include "driver/rooms/Announcements.h"

#include <algorithm>
#include <nlohmann/json.hpp>

#include "common/Text.h"
#include "driver/Ids.h"
#include "library/FileReader.h"

namespace korvel::controller {
namespace {

using Why = Refused::Why;

constexpr std::size_t kMaxPathBytes = 4096;

// The path travels in a line of the audio server.
void CheckPath(const std::string& file) {
    if (file.empty() || file.front() != '/' || file.size() > kMaxPathBytes || common::HasControl(file))
        throw Refused(Why::Invalid, "the file of an announcement must be an absolute path");
}

// Not for the loop: it reads the file.
std::optional<Refused> CheckFile(media::FileReader& reader, const std::string& file) {
    using Outcome = media::FileReader::Outcome;
    Outcome outcome = Outcome::Unreadable;
    try {
        outcome = reader.FindSound(file).outcome;
        reader.Rest();
    } catch (const std::exception& error) {
        return Refused(Why::Unavailable, error.what());
    }
    if (outcome == Outcome::Done)
        return std::nullopt;
    if (outcome == Outcome::NoAudio || outcome == Outcome::Died)
        return Refused(Why::Unplayable, file + " holds no sound that can be played");
    return Refused(Why::NotFound, file + " is not there or cannot be read");
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

void Announcements::RequireFree() const {
    if (const std::string why = m_parts.whyNotReady(); !why.empty())
        throw Refused(Why::Unavailable, why);
    if (m_current)
        throw Refused(Why::Conflict, "another announcement is being made");
    if (!m_parts.driver.MakesAnnouncements())
        throw Refused(Why::Conflict, "the driver makes no announcements");
}

void Announcements::Start(std::vector<std::uint32_t> rooms, const std::string& file, Answer answer) {
    CheckRooms(rooms);
    CheckPath(file);
    RequireFree();
    m_worker.Run(
        [this, file] { return CheckFile(m_reader, file); },
        [this, rooms = std::move(rooms), file, answer = std::move(answer)](std::optional<Refused> refused) {
            try {
                if (!refused) {
                    RequireFree(); // it was so when the file began to be looked at
                    Begin(rooms, file);
                }
            } catch (const Refused& now) {
                refused = now;
            }
            answer(refused);
        });
}

void Announcements::Begin(const std::vector<std::uint32_t>& rooms, const std::string& file) {
    m_current = Current{++m_lastId, rooms, file, m_parts.activeBinding()};
    m_wire.Begin();
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
    m_poster.Post([this] {
        const std::string failure = m_wire.GetFailure();
        End(failure.empty() ? "complete" : "failed", failure);
    });
}

void Announcements::OnServerLine(std::uint32_t bindingId, const std::string& line) {
    if (m_current && m_current->bindingId == bindingId)
        m_wire.OnLine(line);
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
    m_current->reason = why;
    Publish();
    if (!why.empty())
        m_parts.log.Warning("announcement " + m_current->file + " " + state + ": " + why);
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
    nlohmann::json json = {{"id", m_current->id},
                           {"state", m_current->state},
                           {"rooms", m_current->rooms},
                           {"file", m_current->file}};
    if (!m_current->reason.empty())
        json["reason"] = m_current->reason;
    return json;
}

void Announcements::Publish() const {
    nlohmann::json event = ToJson();
    event["type"] = "announcement";
    m_parts.events.Publish(event);
}

} // namespace korvel::controller

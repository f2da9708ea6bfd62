// Rooms and audio servers that answer by themselves.
#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <map>
#include <optional>
#include <string>

class ICmdMessage;

namespace korvel::replay {

// More answers than these to one input are a loop between the driver and its world.
inline constexpr std::size_t kMaxLiveAnswers = 10000;

// Where a live room listens.
struct LiveRoom {
    std::string address;
    std::uint32_t port = 0;
    std::uint32_t channel = 0;
};

// Turns what the driver sends into answers: input lines that wait, in the order caused, until the present
// input has returned.
class LiveWorld {
public:
    // Replaces the room of that id.
    void AddRoom(std::uint32_t roomId, LiveRoom room) { m_rooms[roomId] = std::move(room); }
    // An engine that is there already goes on with its stream numbers.
    void AddEngine(std::uint32_t binding) { m_engines.try_emplace(binding, 0); }

    void OnMessage(std::uint32_t deviceId, const ICmdMessage& message);
    // `line` is "NUMBER COMMAND ...\r\n".
    void OnLine(std::uint32_t binding, const std::string& line);

    std::optional<std::string> TakeAnswer();
    void DropAnswers() { m_answers.clear(); }

private:
    // `text` without its end.
    void AnswerLine(std::uint32_t binding, const std::string& text);

    std::map<std::uint32_t, LiveRoom> m_rooms;
    std::map<std::uint32_t, std::uint32_t> m_engines; // the last stream number that each gave
    std::deque<std::string> m_answers;
};

} // namespace korvel::replay

#include "replay/LiveWorld.h"

#include <sstream>

#include "platform/CmdMessage.h"
#include "replay/Recorder.h"

namespace korvel::replay {

void LiveWorld::OnMessage(std::uint32_t deviceId, const ICmdMessage& message) {
    const auto room = m_rooms.find(deviceId);
    if (room == m_rooms.end())
        return;
    if (message.GetName() == "DESELECT_AUDIO_PATH") {
        m_answers.push_back(OutputLine("deselect").Number(deviceId).GetText());
    } else if (message.GetName() == "SELECT_AUDIO_DEVICE") {
        const LiveRoom& place = room->second;
        m_answers.push_back(OutputLine("select")
                                .Number(deviceId)
                                .Pair("queue", std::to_string(message.GetNumber("queueid")))
                                .Pair("kind", "QUEUE")
                                .Pair("ip", place.address)
                                .Pair("port", std::to_string(place.port))
                                .Pair("channel", std::to_string(place.channel))
                                .Pair("target", std::to_string(deviceId))
                                .GetText());
    }
}

void LiveWorld::OnLine(std::uint32_t binding, const std::string& line) {
    const auto engine = m_engines.find(binding);
    if (engine == m_engines.end())
        return;
    std::string number;
    std::string command;
    std::string stream;
    std::istringstream(line) >> number >> command >> stream;

    std::string answer = number;
    if (command == "addstr" || command == "addann") {
        const std::string created = std::to_string(++engine->second);
        // As a real server does it: the driver does not take the answer itself for an acknowledgement.
        if (command == "addann")
            AnswerLine(binding, "* SYS addann=" + created);
        answer.append(" ").append(command).append(" stream=").append(created);
    } else {
        answer.append(" OK");
        for (const std::string& word : {command, stream}) {
            if (!word.empty())
                answer.append(" ").append(word);
        }
    }
    AnswerLine(binding, answer);
}

void LiveWorld::AnswerLine(std::uint32_t binding, const std::string& text) {
    m_answers.push_back(OutputLine("data").Number(binding).Value(text + "\r\n").GetText());
}

std::optional<std::string> LiveWorld::TakeAnswer() {
    if (m_answers.empty())
        return std::nullopt;
    std::string answer = std::move(m_answers.front());
    m_answers.pop_front();
    return answer;
}

} // namespace korvel::replay

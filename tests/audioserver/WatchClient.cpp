#include "WatchClient.h"

#include <iostream>

namespace korvel::tests {

using json = nlohmann::json;

json WatchClient::Greet() {
    m_lines.SendRaw("{\"watch\":1}\n");
    return Next();
}

json WatchClient::Next() {
    const auto line = m_lines.ReadLine();
    json next = json::parse(line.value_or(""), nullptr, false);
    if (next.is_discarded())
        return {};
    if (next.contains("stream"))
        m_told[next["stream"].get<std::uint32_t>()].push_back(next);
    else if (next.contains("gone"))
        m_told[next["gone"].get<std::uint32_t>()].push_back(nullptr);
    return next;
}

json WatchClient::Ask(json request) {
    const std::uint64_t id = ++m_lastId;
    request["id"] = id;
    m_lines.SendRaw(request.dump() + "\n");
    for (json answer = Next(); !answer.is_null(); answer = Next()) {
        if (answer.contains("id") && answer["id"] == id) {
            answer.erase("id");
            return answer;
        }
    }
    return {};
}

std::string WatchClient::Try(json request) {
    const json answer = Ask(std::move(request));
    if (answer == json{{"done", true}})
        return "done";
    return answer.value("/problem/code"_json_pointer, answer.dump());
}

json WatchClient::Ping(std::uint64_t number) {
    m_lines.SendRaw(json{{"ping", number}}.dump() + "\n");
    json answer = Next();
    while (!answer.is_null() && !answer.contains("pong"))
        answer = Next();
    return answer;
}

json WatchClient::Stream(std::uint32_t stream) const {
    const auto told = m_told.find(stream);
    return told == m_told.end() || told->second.empty() ? json() : told->second.back();
}

bool WatchClient::Sees(std::uint32_t stream, const std::function<bool(const json&)>& holds) {
    for (;;) {
        const json now = Stream(stream);
        if (!now.is_null() && holds(now))
            return true;
        if (Next().is_null()) {
            std::cout << "last seen: " << now << "\n";
            return false;
        }
    }
}

bool WatchClient::SeesState(std::uint32_t stream, const std::string& state) {
    return Sees(stream, [&](const json& now) { return now["state"] == state; });
}

json SeekTo(std::uint32_t stream, unsigned milliseconds) {
    return {{"seek", {{"stream", stream}, {"position", milliseconds}}}};
}

json StartAt(std::uint32_t stream, const std::string& media, unsigned milliseconds) {
    return {{"start", {{"stream", stream}, {"media", media}, {"position", milliseconds}}}};
}

} // namespace korvel::tests

#include "audioserver/watch/WatchFormat.h"

#include <array>
#include <nlohmann/json.hpp>

#include "common/Text.h"

namespace korvel::audioserver {
namespace {

// Members in the order in which people read them.
using Json = nlohmann::ordered_json;

constexpr std::array<std::string_view, 8> kStates{"stopped", "connecting",   "buffering", "playing",
                                                  "paused",  "reconnecting", "ended",     "bad"};

std::string LineOf(const Json& object) {
    // A path, or what a source says, is any bytes.
    return object.dump(-1, ' ', false, Json::error_handler_t::replace) + std::string(kLineEnd);
}

std::int64_t ClockOf(PlayPosition::Time time) {
    return std::chrono::floor<std::chrono::milliseconds>(time.time_since_epoch()).count();
}

Json OrNull(const auto& value) {
    return value ? Json(*value) : Json();
}

Json TextOrNull(const std::string& text) {
    return text.empty() ? Json() : Json(text);
}

Json PositionOf(const std::optional<PlayPosition::Point>& point) {
    if (!point)
        return {};
    return {{"clock", ClockOf(point->at)}, {"ms", point->position.count()}, {"rate", point->moves ? 1 : 0}};
}

} // namespace

std::string HelloLine(const std::string& run, PlayPosition::Time now,
                      const std::vector<StreamNumber>& streams) {
    return LineOf({{"hello", kWatchVersion}, {"run", run}, {"clock", ClockOf(now)}, {"streams", streams}});
}

std::string StreamLine(StreamNumber stream, const StreamFacts& facts) {
    Json clients = Json::array();
    for (const ClientAddress& client : facts.clients)
        clients.push_back({{"ip", client.ip}, {"port", client.port}});
    return LineOf({{"stream", stream},
                   {"media", TextOrNull(facts.media)},
                   {"serial", facts.serial},
                   {"state", kStates.at(static_cast<std::size_t>(facts.state))},
                   {"position", PositionOf(facts.position)},
                   {"duration", OrNull(facts.duration)},
                   {"buffer", OrNull(facts.buffer)},
                   {"live", facts.live},
                   {"canSeek", facts.canSeek},
                   {"error", TextOrNull(facts.error)},
                   {"clients", clients}});
}

std::string GoneLine(StreamNumber stream) {
    return LineOf({{"gone", stream}});
}

std::string PongLine(std::uint64_t number, PlayPosition::Time now) {
    return LineOf({{"pong", number}, {"clock", ClockOf(now)}});
}

std::string DoneLine(std::uint64_t id) {
    return LineOf({{"id", id}, {"done", true}});
}

std::string ProblemLine(std::optional<std::uint64_t> id, const WatchRefusal& refusal) {
    const WatchProblemText& known = kWatchProblems.at(static_cast<std::size_t>(refusal.problem));
    std::string text(known.text);
    if (!refusal.detail.empty())
        text.append(": ").append(common::OneLine(refusal.detail, kMaxEventTextBytes));
    Json answer = Json::object();
    if (id)
        answer["id"] = *id;
    answer["problem"] = {{"code", known.code}, {"text", text}};
    return LineOf(answer);
}

} // namespace korvel::audioserver

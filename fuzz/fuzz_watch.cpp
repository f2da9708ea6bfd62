// What a watcher says to an audio server, line by line: a request means what it says, and whatever is answered or told
// of it is one line of JSON.
#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <iostream>
#include <nlohmann/json.hpp>
#include <string>
#include <string_view>

#include "audioserver/watch/WatchFormat.h"
#include "audioserver/watch/WatchRequest.h"

namespace {

using namespace korvel::audioserver;
using nlohmann::json;

void Require(bool holds, const char* rule) {
    if (!holds) {
        std::cerr << "broken rule: " << rule << std::endl;
        std::abort();
    }
}

// What stands in a line that the server writes.
json Read(const std::string& line) {
    Require(line.ends_with("\r\n") && line.find_first_of("\r\n") == line.size() - 2,
            "a line ends at its end only");
    json object = json::parse(line, nullptr, false);
    Require(object.is_object(), "a line is an object of JSON");
    return object;
}

void Check(const WatchGreeting& greeting, const json& said) {
    Require(said.at("watch") == greeting.version, "a greeting has the version that it names");
}

void Check(const WatchPing& ping, const json& said) {
    Require(said.at("ping") == ping.number, "a ping has its number");
    Require(Read(PongLine(ping.number, {})).at("pong") == ping.number, "a pong repeats it");
}

void Check(const WatchSeek& seek, const json& said) {
    const json& arguments = said.at("seek");
    Require(said.at("id") == seek.id && arguments.at("stream") == seek.stream &&
                arguments.at("position") == seek.position,
            "a seek has the numbers that it names");
    Require(seek.stream <= kLastStream, "a stream has a number that drivers know");
    Require(
        seek.serial ? arguments.at("serial") == *seek.serial : arguments.value("serial", json()).is_null(),
        "a seek has the serial that it names");
    Require(Read(DoneLine(seek.id)).at("id") == seek.id, "an answer repeats the id");
}

void Check(const WatchStart& start, const json& said) {
    const json& arguments = said.at("start");
    Require(said.at("id") == start.id && arguments.at("stream") == start.stream &&
                arguments.at("position") == start.position,
            "a start has the numbers that it names");
    Require(!start.media.empty() && arguments.at("media") == start.media,
            "a start has the media that it names");
    StreamFacts facts;
    facts.media = start.media;
    Require(Read(StreamLine(start.stream, facts)).at("media") == start.media,
            "a media is told as it was named");
}

void Check(const WatchNonsense& nonsense, const json&) {
    const json answer = Read(ProblemLine(nonsense.id, {WatchProblem::kMalformed, nonsense.reason}));
    Require(answer.at("problem").at("code") == "malformed", "nonsense is malformed");
    Require(nonsense.id ? answer.at("id") == *nonsense.id : !answer.contains("id"),
            "a refusal repeats the id");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    std::string_view rest(reinterpret_cast<const char*>(bytes), size);
    while (!rest.empty()) {
        const std::string line(rest.substr(0, rest.find('\n')));
        rest.remove_prefix(std::min(line.size() + 1, rest.size()));
        // Said is what another reading of the same line finds.
        const json said = json::parse(line, nullptr, false);
        std::visit([&said](const auto& request) { Check(request, said); }, ParseWatchLine(line));
        // As what a source says of itself.
        StreamFacts facts;
        facts.media = line;
        facts.error = line;
        Read(StreamLine(1, facts));
        Read(ProblemLine({}, {WatchProblem::kFailed, line}));
    }
    return 0;
}

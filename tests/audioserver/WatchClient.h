// A watcher's end of the connection, for tests.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "LineClient.h"

namespace korvel::tests {

class WatchClient {
public:
    using json = nlohmann::json;

    explicit WatchClient(std::uint16_t port, int receiveBytes = 0) : m_lines(port, receiveBytes) {}

    // Begins to watch; what the server answers first.
    json Greet();

    // Sends a request with the next id and returns its answer, without the id; null when none comes.
    json Ask(json request);
    // The code of the problem that a request has; "done" for none.
    std::string Try(json request);

    json Ping(std::uint64_t number);

    // What was told of the stream last; null before and when it is gone.
    json Stream(std::uint32_t stream) const;
    // Whether the stream comes to be in a state in which this holds; what is told until then is taken.
    bool Sees(std::uint32_t stream, const std::function<bool(const json&)>& holds);
    bool SeesState(std::uint32_t stream, const std::string& state);
    // All that was told of the stream, the oldest first.
    const std::vector<json>& Told(std::uint32_t stream) { return m_told[stream]; }

    // The next line, whatever it is; null when none comes.
    json Next();
    LineClient& Lines() { return m_lines; }

private:
    LineClient m_lines;
    std::uint64_t m_lastId = 0;
    std::map<std::uint32_t, std::vector<json>> m_told;
};

nlohmann::json SeekTo(std::uint32_t stream, unsigned milliseconds);
nlohmann::json StartAt(std::uint32_t stream, const std::string& media, unsigned milliseconds);

} // namespace korvel::tests

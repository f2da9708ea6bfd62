#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace korvel::controller {

// Listens to what an audio server says about the stream of an announcement: the driver tells that one is
// over, but not whether its file was played out or could not be played.
class AnnouncementWire {
public:
    // A stream is about to be asked for; what was before is forgotten.
    void Begin();
    // Each line of the server, before the driver hears it.
    void OnLine(const std::string& line);

    // Why nobody heard the file, or not all of it; "" while nothing speaks against it.
    std::string GetFailure() const;

private:
    void OnStream(const std::string& answer);
    void Fail(const std::string& why);

    bool m_waiting = false; // for the answer to "addann": the driver takes the first that comes
    std::optional<std::uint32_t> m_stream;
    bool m_roomRefused = false;
    bool m_roomTaken = false;
    std::string m_failure;
};

} // namespace korvel::controller

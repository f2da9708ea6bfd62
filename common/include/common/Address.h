// Addresses as people write them. All functions are pure.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace korvel::common {

// Where something listens.
struct HostPort {
    std::string host; // a name or a numeric address, an IPv6 one without its brackets; never empty
    std::uint16_t port = 0;

    bool operator==(const HostPort&) const = default;
};

// "HOST:PORT", an IPv6 address in brackets, the port 1 to 65535; none for anything else.
std::optional<HostPort> ParseHostPort(std::string_view text);

// "HOST" or "HOST:PORT", both as ParseHostPort() takes them; `standardPort` where no port is written.
std::optional<HostPort> ParseHost(std::string_view text, std::uint16_t standardPort);

// What ParseHostPort() takes.
std::string ToText(const HostPort& address);

// Whether both are one name, of which large and small letters are the same.
bool IsSameHost(std::string_view a, std::string_view b);

struct WebAddress {
    bool secure = false; // https
    HostPort server;     // the scheme's own port when none was written
    std::string target;  // what follows, from the "/", "?" or "#" on; "" for nothing
};

// An address that begins with "http://" or "https://" in small letters, names a host and may stand in a quoted word
// of a line: without control characters, blanks and quotes. What follows the host is not looked at further, for
// stations write what they like there. None for anything else.
std::optional<WebAddress> ParseWebAddress(std::string_view text);

} // namespace korvel::common

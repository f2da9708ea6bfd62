#include "common/Address.h"

#include <algorithm>
#include <boost/url/authority_view.hpp>
#include <boost/url/grammar/ci_string.hpp>
#include <boost/url/parse.hpp>

#include "common/Text.h"

namespace korvel::common {
namespace {

namespace urls = boost::urls;

constexpr std::size_t kMaxHostBytes = 255;
constexpr std::uint16_t kHttpPort = 80;
constexpr std::uint16_t kHttpsPort = 443;

// Boost.URL takes letters beyond ASCII percent-encoded only; resolvers take them as they are.
std::string EncodeBeyondAscii(std::string_view text) {
    static constexpr char kDigits[] = "0123456789ABCDEF";
    std::string encoded;
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        if (byte < 0x80)
            encoded += c;
        else
            encoded.append({'%', kDigits[byte >> 4], kDigits[byte & 15]});
    }
    return encoded;
}

// A host's name is written as it is, without escapes, and no address of the future is known.
std::optional<urls::authority_view> ParseAuthority(std::string_view text, std::string& encoded) {
    const std::size_t host = text.rfind('@') + 1; // 0 without a user
    if (text.find('%', host) != std::string_view::npos)
        return std::nullopt;
    encoded = EncodeBeyondAscii(text);
    const auto authority = urls::parse_authority(encoded);
    if (!authority || authority->host_type() == urls::host_type::ipvfuture)
        return std::nullopt;
    return *authority;
}

// `standardPort` counts when no port was written; 0 when one must be.
std::optional<HostPort> ReadServer(const urls::authority_view& authority, std::uint16_t standardPort) {
    const HostPort server{authority.host_address(),
                          authority.port().empty() ? standardPort : authority.port_number()};
    if (server.host.empty() || server.host.size() > kMaxHostBytes || HasControl(server.host) ||
        server.port == 0)
        return std::nullopt;
    return server;
}

} // namespace

std::optional<HostPort> ParseHostPort(std::string_view text) {
    return ParseHost(text, 0);
}

std::optional<HostPort> ParseHost(std::string_view text, std::uint16_t standardPort) {
    std::string encoded;
    const auto authority = ParseAuthority(text, encoded);
    if (!authority || authority->has_userinfo() || (authority->has_port() && authority->port().empty()))
        return std::nullopt;
    return ReadServer(*authority, standardPort);
}

std::string ToText(const HostPort& address) {
    const bool isIPv6 = address.host.find(':') != std::string::npos;
    return (isIPv6 ? "[" + address.host + "]" : address.host) + ":" + std::to_string(address.port);
}

bool IsSameHost(std::string_view a, std::string_view b) {
    return urls::grammar::ci_is_equal(a, b);
}

std::optional<WebAddress> ParseWebAddress(std::string_view text) {
    constexpr std::string_view kHttp = "http://";
    constexpr std::string_view kHttps = "https://";
    if (!FitsInQuotes(text) || text.find(' ') != std::string_view::npos)
        return std::nullopt;
    const bool secure = text.starts_with(kHttps);
    if (!secure && !text.starts_with(kHttp))
        return std::nullopt;
    text.remove_prefix(secure ? kHttps.size() : kHttp.size());
    const std::size_t end = std::min(text.find_first_of("/?#"), text.size());
    std::string encoded;
    const auto authority = ParseAuthority(text.substr(0, end), encoded);
    const auto server = authority ? ReadServer(*authority, secure ? kHttpsPort : kHttpPort) : std::nullopt;
    if (!server)
        return std::nullopt;
    return WebAddress{secure, *server, std::string(text.substr(end))};
}

} // namespace korvel::common

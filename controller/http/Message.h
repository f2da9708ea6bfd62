// Requests and answers of the HTTP interface, free of any transport.
#pragma once

#include <cstdint>
#include <map>
#include <nlohmann/json_fwd.hpp>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace korvel::controller {

struct HttpRequest {
    std::string method;
    std::string target;      // as it came: path and query, percent-encoded
    std::string contentType; // "" without one
    std::string body;
};

struct HttpReply {
    unsigned status = 200;
    std::string contentType = "application/json";
    std::string body;
    std::string allow; // of a 405: the methods that would do
};

HttpReply JsonReply(const nlohmann::json& value, unsigned status = 200);
// {"error": text}
HttpReply ErrorReply(unsigned status, const std::string& text);

// A request target in its parts, percent-decoded.
struct Target {
    std::vector<std::string> path; // its segments; an empty one at the end is left out
    std::map<std::string, std::string> query;

    // The query value as a number; `fallback` without one. None when it is no number or too large.
    std::optional<std::uint32_t> Number(const std::string& name, std::uint32_t fallback) const;
    std::string Text(const std::string& name) const;
};

// None when it does not start with "/" or is badly encoded.
std::optional<Target> ParseTarget(std::string_view text);

// The whole text as a decimal number below 2^31; none otherwise.
std::optional<std::uint32_t> ParseNumber(std::string_view text);

// True for the names under which a browser on this machine knows it ("localhost", "127.0.0.1", or `address`),
// with or without a port. Any other name may have been made to lead here by the page of a stranger.
bool IsOwnHost(std::string_view host, std::string_view address);
// True for a request that no page of another origin made: without an origin, or with the one that `host`
// names.
bool IsOwnOrigin(std::string_view origin, std::string_view host);

} // namespace korvel::controller

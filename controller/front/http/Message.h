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

// The largest number that a target or a body may hold.
inline constexpr std::uint32_t kMaxNumber = 2147483647;

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
// {"error": text}, as one line: a text may repeat what came, which may hold anything.
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

} // namespace korvel::controller

// Text and number helpers that give the same results on 32-bit and 64-bit machines.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace kv {

// How booleans are written and compared everywhere.
inline constexpr const char* TRUE_STRING = "true";
inline constexpr const char* FALSE_STRING = "false";

// Reads a decimal number as strtol does with a 32-bit long: leading white space, an optional sign, digits up
// to the first other character; 0 without digits; saturating at -2147483648 and 2147483647.
std::int32_t ToLong(std::string_view text);

// The same number as an unsigned id or count: "-1" is 4294967295, "4294967303" is 2147483647.
std::uint32_t ToULong(std::string_view text);

std::string ToString(bool value);

// Standard base64 with padding.
std::string base64EncodeString(std::string_view text);

} // namespace kv

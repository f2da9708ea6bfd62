// A session as the fuzzer keeps it: the input lines of a transcript, and under a line what disturbs it.
//
//     command SKIP_FWD ROOM_ID=7
//     > 3 data 3000 "* addmed EOM=1\r\n"     the core calls back within the third call of a service
//     > 9 throw                              the ninth call fails
//
// The calls that other disturbances cause count, too. A session without disturbances is a transcript's input.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace fuzz {

// In place of a line: the service throws.
inline constexpr const char* kThrow = "throw";            // a std::exception
inline constexpr const char* kThrowOther = "throw-other"; // anything else

inline constexpr std::size_t kMaxSteps = 200;
inline constexpr std::size_t kMaxDisturbances = 8; // of one step

struct Disturbance {
    std::uint32_t call = 0; // of a service, from 1
    std::string what;       // a line, or one of the words above
};

struct Step {
    std::string line;
    std::vector<Disturbance> disturbances;
};

// Lines that are neither are left out, and so is what exceeds the limits above.
std::vector<Step> ParseSession(std::string_view text);
std::string PrintSession(const std::vector<Step>& session);

} // namespace fuzz

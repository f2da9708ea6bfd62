#include "SessionText.h"

#include <charconv>

namespace fuzz {

namespace {

constexpr char kMark = '>';

bool StartsInput(std::string_view line) {
    return !line.empty() && line.front() >= 'a' && line.front() <= 'z';
}

// "> N WHAT"; false for anything else.
bool ParseDisturbance(std::string_view line, Disturbance& disturbance) {
    if (!line.starts_with(kMark))
        return false;
    line.remove_prefix(std::min(line.find_first_of("0123456789"), line.size()));
    const auto [end, error] = std::from_chars(line.data(), line.data() + line.size(), disturbance.call);
    if (error != std::errc())
        return false;
    line.remove_prefix(static_cast<std::size_t>(end - line.data()));
    line.remove_prefix(std::min(line.find_first_not_of(' '), line.size()));
    disturbance.what = line;
    return StartsInput(line);
}

} // namespace

std::vector<Step> ParseSession(std::string_view text) {
    std::vector<Step> session;
    while (!text.empty()) {
        const std::string_view line = text.substr(0, text.find('\n'));
        text.remove_prefix(std::min(line.size() + 1, text.size()));
        Disturbance disturbance;
        if (StartsInput(line)) {
            if (session.size() == kMaxSteps)
                break;
            session.push_back({std::string(line), {}});
        } else if (!session.empty() && session.back().disturbances.size() < kMaxDisturbances &&
                   ParseDisturbance(line, disturbance)) {
            session.back().disturbances.push_back(std::move(disturbance));
        }
    }
    return session;
}

std::string PrintSession(const std::vector<Step>& session) {
    std::string text;
    for (const Step& step : session) {
        text.append(step.line).append("\n");
        for (const Disturbance& disturbance : step.disturbances)
            text.append(1, kMark)
                .append(" ")
                .append(std::to_string(disturbance.call))
                .append(" ")
                .append(disturbance.what)
                .append("\n");
    }
    return text;
}

} // namespace fuzz

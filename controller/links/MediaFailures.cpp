#include "links/MediaFailures.h"

#include <algorithm>
#include <nlohmann/json.hpp>
#include <string_view>

#include "common/Text.h"

namespace korvel::controller {
namespace {

constexpr std::string_view kMediaIsBad = "* addmed BAD=";
constexpr std::size_t kMaxReason = 400; // bytes, as the audio server keeps to

} // namespace

std::optional<std::string> BadMediaIn(const std::string& line) {
    if (!line.starts_with(kMediaIsBad))
        return {};
    const std::size_t blank = std::min(line.find(' ', kMediaIsBad.size()), line.size());
    return common::OneLine(std::string_view(line).substr(blank), kMaxReason);
}

void MediaFailures::OnServerLine(const std::string& line) const {
    const auto reason = BadMediaIn(line);
    if (!reason)
        return;
    m_log.Warning("the audio server cannot play what it was given: " + *reason);
    m_events.Publish({{"type", "media"}, {"state", "failed"}, {"reason", *reason}});
}

} // namespace korvel::controller

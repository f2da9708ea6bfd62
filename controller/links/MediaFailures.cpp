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

void MediaFailures::OnServerLine(const std::string& line) const {
    if (!line.starts_with(kMediaIsBad))
        return;
    const std::size_t blank = std::min(line.find(' ', kMediaIsBad.size()), line.size());
    const std::string reason = common::OneLine(std::string_view(line).substr(blank), kMaxReason);
    m_log.Warning("the audio server cannot play what it was given: " + reason);
    m_events.Publish({{"type", "media"}, {"state", "failed"}, {"reason", reason}});
}

} // namespace korvel::controller

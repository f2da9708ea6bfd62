#include "store/StorageStatus.h"

#include <nlohmann/json.hpp>

namespace korvel::controller {

void StorageStatus::NotWritten(const std::string& what, const std::string& reason, bool noRoom) {
    ++m_failures;
    m_lastFailure = {"the " + what + " could not be written: " + reason, noRoom};
    m_log.Error(m_lastFailure.text);
    m_notWritten[what] = reason;
    Publish();
}

void StorageStatus::Written(const std::string& what) {
    if (m_notWritten.erase(what) == 0)
        return;
    m_log.Info("the " + what + " can be written again");
    Publish();
}

void StorageStatus::KeptAside(const std::string& path, const std::string& as, const std::string& reason) {
    m_log.Warning("cannot use " + path + " (" + reason + "): " +
                  (as.empty() ? "starting without it" : "kept aside as " + as + ", starting without it"));
    m_aside.push_back({path, as, reason});
    Publish();
}

void StorageStatus::SetCopies(const std::vector<std::string>& copies, const std::string& failure) {
    if (copies == m_copies && failure == m_copyFailure)
        return;
    if (!failure.empty() && failure != m_copyFailure)
        m_log.Error("no copy of the library: " + failure);
    m_copies = copies;
    m_copyFailure = failure;
    Publish();
}

nlohmann::json StorageStatus::ToJson() const {
    nlohmann::json notWritten = nlohmann::json::array();
    for (const auto& [what, reason] : m_notWritten)
        notWritten.push_back({{"what", what}, {"reason", reason}});
    nlohmann::json aside = nlohmann::json::array();
    for (const Aside& each : m_aside)
        aside.push_back({{"file", each.path}, {"as", each.as}, {"reason", each.reason}});
    return {{"notWritten", std::move(notWritten)},
            {"keptAside", std::move(aside)},
            {"copies", m_copies},
            {"copyFailure", m_copyFailure}};
}

void StorageStatus::Publish() {
    nlohmann::json event = ToJson();
    event["type"] = "storage";
    m_events.Publish(event);
}

} // namespace korvel::controller

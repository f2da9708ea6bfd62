#pragma once

#include <cstdint>
#include <map>
#include <nlohmann/json_fwd.hpp>
#include <string>
#include <vector>

#include "base/EventBus.h"
#include "common/Log.h"

namespace korvel::controller {

// How what a controller keeps on disk is: what could not be written, what was damaged, which copies there
// are. Tells the log and, as the event {"type":"storage",...}, whoever listens. Driver thread.
class StorageStatus {
public:
    struct Failure {
        std::string text; // one line for whoever asked for what was to be written
        bool noRoom = false;
    };

    StorageStatus(EventBus& events, const common::Log& log) : m_events(events), m_log(log) {}

    // `what`, such as "settings", could not be written because of `reason`, or was.
    void NotWritten(const std::string& what, const std::string& reason, bool noRoom);
    void Written(const std::string& what);
    // The file `path` was of no use because of `reason` and has the new name `as`; "" when it could not get
    // one.
    void KeptAside(const std::string& path, const std::string& as, const std::string& reason);
    // The copies of the library, newest first, and why none could be made; "" when it could.
    void SetCopies(const std::vector<std::string>& copies, const std::string& failure);

    // How often something could not be written, so that a request can tell whether that happened to it.
    std::uint64_t CountFailures() const { return m_failures; }
    // The last failure; null when there was none after the first `count`.
    const Failure* FailureAfter(std::uint64_t count) const {
        return m_failures > count ? &m_lastFailure : nullptr;
    }

    // {"notWritten","keptAside","copies","copyFailure"}
    nlohmann::json ToJson() const;

private:
    struct Aside {
        std::string path;
        std::string as;
        std::string reason;
    };

    void Publish();

    EventBus& m_events;
    const common::Log& m_log;
    std::map<std::string, std::string> m_notWritten; // the reason, by what it was
    std::vector<Aside> m_aside;
    std::vector<std::string> m_copies;
    std::string m_copyFailure;
    std::uint64_t m_failures = 0;
    Failure m_lastFailure;
};

} // namespace korvel::controller

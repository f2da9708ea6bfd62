// A controller under test, as its users see it.
#pragma once

#include <cstdint>
#include <nlohmann/json.hpp>
#include <string>

#include "Process.h"

namespace korvel::tests {

struct Reply {
    int status = 0; // 0 without an answer in time
    nlohmann::json body;

    // The one sentence that says why; "" for none.
    std::string Error() const { return body.is_object() ? body.value("error", "") : ""; }
};

class HouseProcess {
public:
    // What a busy house takes at most for an answer that needs no disk.
    static constexpr std::chrono::milliseconds kAnswerTime{2000};

    // Starts it with its state in the folder and these settings besides.
    HouseProcess(const std::string& folder, const std::string& settings);

    // 0 when it did not come up.
    std::uint16_t Port() const { return m_port; }
    std::string Log() const { return m_process.Errors(); }

    Reply Get(const std::string& target) const { return Ask("GET", target, "", kAnswerTime); }
    Reply Post(const std::string& target, const nlohmann::json& body) const {
        return Ask("POST", target, body.dump(), kPatience);
    }
    Reply Command(const std::string& name, const nlohmann::json& parameters) const {
        return Post("/api/command", {{"name", name}, {"parameters", parameters}});
    }
    // An empty object without an answer.
    nlohmann::json Status() const {
        const nlohmann::json status = Get("/api/status").body;
        return status.is_object() ? status : nlohmann::json::object();
    }
    // Waits until it takes commands.
    bool IsReady() const;

private:
    Reply Ask(const std::string& method, const std::string& target, const std::string& body,
              std::chrono::milliseconds patience) const;

    Process m_process;
    std::uint16_t m_port = 0;
};

} // namespace korvel::tests

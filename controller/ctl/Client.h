#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <nlohmann/json.hpp>
#include <stdexcept>
#include <string>

#include "common/Address.h"

namespace korvel::ctl {

// What went wrong, in one line for a person.
class Failure : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

// Speaks to the controller's HTTP interface. Every operation waits for its answer and throws Failure when
// there is none in time or it is an error.
class Client {
public:
    static constexpr std::chrono::seconds kPatience{30};

    // `url` is "http://HOST[:PORT]"; `patience` is for one operation.
    explicit Client(const std::string& url, std::chrono::milliseconds patience = kPatience);

    nlohmann::json Get(const std::string& target) { return Ask("GET", target, ""); }
    nlohmann::json Post(const std::string& target, const nlohmann::json& body = nlohmann::json::object()) {
        return Ask("POST", target, body.dump());
    }
    // Calls `heard` with every event, the snapshot first, as long as that returns true. A connection that the
    // controller ends is a Failure.
    void Watch(const std::function<bool(const nlohmann::json&)>& heard);

private:
    nlohmann::json Ask(const std::string& method, const std::string& target, const std::string& body);
    std::string Unreachable(const std::string& why) const;

    common::HostPort m_server;
    const std::chrono::milliseconds m_patience;
};

// The text as it may stand in a query value.
std::string PercentEncode(const std::string& text);

} // namespace korvel::ctl

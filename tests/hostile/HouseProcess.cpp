#include "HouseProcess.h"

#include <gtest/gtest.h>

#include <fstream>

#include "LineClient.h"

namespace korvel::tests {
namespace {

std::string ConfigIn(const std::string& folder, const std::string& settings) {
    const std::string path = folder + "/house.toml";
    std::ofstream(path) << "state = \"" << folder << "/state\"\nplugin = \"" << KORVEL_DRIVER << "\"\n"
                        << settings << "\n[http]\nport = 0\n";
    return path;
}

} // namespace

HouseProcess::HouseProcess(const std::string& folder, const std::string& settings)
    : m_process(KORVEL_CONTROLLER, {"--config", ConfigIn(folder, settings)}, folder + "/controller.log") {
    const std::string start = "http://127.0.0.1:";
    std::string log;
    std::size_t found = std::string::npos;
    const bool up = WaitUntil([&] {
        log = Log();
        found = log.find(start);
        return found != std::string::npos && log.find('\n', found) != std::string::npos;
    });
    EXPECT_TRUE(up) << log;
    if (up)
        m_port = static_cast<std::uint16_t>(std::stoul(log.substr(found + start.size())));
}

bool HouseProcess::IsReady() const {
    return WaitUntil([this] { return Status().value("ready", false); });
}

Reply HouseProcess::Ask(const std::string& method, const std::string& target, const std::string& body,
                        std::chrono::milliseconds patience) const {
    LineClient connection(m_port);
    connection.SendRaw(
        method + " " + target +
        " HTTP/1.1\r\nHost: localhost\r\nConnection: close\r\nContent-Type: application/json\r\n"
        "Content-Length: " +
        std::to_string(body.size()) + "\r\n\r\n" + body);
    Reply reply;
    const std::string head = connection.ReadLine(patience).value_or("");
    while (!connection.ReadLine(patience).value_or("").empty()) {
    }
    if (head.starts_with("HTTP/1.1 ")) {
        reply.status = std::stoi(head.substr(9));
        reply.body = nlohmann::json::parse(connection.ReadRest(patience), nullptr, false);
    }
    return reply;
}

} // namespace korvel::tests

#include "Bed.h"

#include <signal.h>

#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <stdexcept>

namespace korvel::tests {
namespace {

Process StartPlayer(const std::string& folder, const std::string& name, const std::string& hindrance,
                    const std::vector<std::string>& more) {
    // What is heard is looked at here, not when: late enough for any machine, which may have no real-time threads.
    std::vector<std::string> options{
        "--port", "0", "--no-device", "--latency", "500", "--record", folder + "/" + name + ".recording"};
    options.insert(options.end(), more.begin(), more.end());
    if (!hindrance.empty())
        options.insert(options.begin(), hindrance);
    return Process(hindrance.empty() ? KORVEL_ROOMPLAYER : KORVEL_HINDERED_ROOMPLAYER, options,
                   folder + "/" + name + ".log");
}

} // namespace

Room::Room(const std::string& folder, const std::string& name, const std::string& hindrance,
           const std::vector<std::string>& options)
    : m_process(StartPlayer(folder, name, hindrance, options)),
      m_recording(folder + "/" + name + ".recording"),
      m_port(PortOf(m_process.ReadLine().value_or(""))) {
    EXPECT_NE(m_port, 0) << m_process.Errors();
}

std::string Room::Client() const {
    return "127.0.0.1 " + std::to_string(m_port);
}

bool Room::Hears(int hertz, double seconds) const {
    const double before = m_recording.Seconds(hertz);
    if (WaitUntil([&] { return m_recording.Seconds(hertz) >= before + seconds; }))
        return true;
    std::cout << "heard " << m_recording.Seconds(hertz) << " s of " << hertz << " Hz in "
              << m_recording.Length() << " s, " << before << " s of it before; wanted " << seconds
              << " s more\n"
              << Log();
    return false;
}

bool Room::Stop() {
    m_process.Signal(SIGTERM);
    return m_process.WaitForExit() == 0;
}

Bed::Bed()
    : m_serverProgram(KORVEL_AUDIOSERVER),
      m_folder((std::filesystem::temp_directory_path() / "korvel-audio-XXXXXX").string()) {
    if (::mkdtemp(m_folder.data()) == nullptr)
        throw std::runtime_error("no temporary folder");
}

Bed::~Bed() {
    if (m_server) {
        m_server->Signal(SIGTERM);
        EXPECT_EQ(m_server->WaitForExit(), 0) << m_server->Errors();
    }
    std::error_code ignored;
    std::filesystem::remove_all(m_folder, ignored);
}

Process& Bed::Server() {
    if (!m_server) {
        std::vector<std::string> options{"--port", "0"};
        options.insert(options.end(), m_serverOptions.begin(), m_serverOptions.end());
        m_server = std::make_unique<Process>(m_serverProgram, options, PathOf("server.log"));
        m_serverPort = PortOf(m_server->ReadLine().value_or(""));
        EXPECT_NE(m_serverPort, 0) << m_server->Errors();
    }
    return *m_server;
}

std::uint16_t Bed::ServerPort() {
    Server();
    return m_serverPort;
}

std::unique_ptr<LineClient> Bed::Connect() {
    return std::make_unique<LineClient>(ServerPort());
}

std::unique_ptr<Room> Bed::AddRoom(const std::string& name, const std::string& hindrance,
                                   const std::vector<std::string>& options) {
    return std::make_unique<Room>(m_folder, name, hindrance, options);
}

std::string Bed::ToneFile(const std::string& name, const std::vector<Tone>& tones) {
    WriteFile(PathOf(name), WavOf(tones));
    return PathOf(name);
}

std::uint16_t PortOf(const std::string& line) {
    const std::string start = "listening on ";
    const auto colon = line.rfind(':');
    if (!line.starts_with(start) || colon == std::string::npos)
        return 0;
    return static_cast<std::uint16_t>(std::stoul(line.substr(colon + 1)));
}

} // namespace korvel::tests

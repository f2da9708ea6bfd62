#include "TestHouse.h"

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <thread>
// The order matters: Asio.h comes first, through TestHouse.h.
#include <boost/asio/read.hpp>
#include <boost/asio/read_until.hpp>
#include <boost/asio/streambuf.hpp>

namespace korvel::controller {
namespace {

using boost::system::error_code;

constexpr std::chrono::seconds kDeadline{10};
const asio::ip::address_v4 kLoopback = asio::ip::address_v4::loopback();

} // namespace

ScratchFolder::ScratchFolder() {
    std::string name = (std::filesystem::temp_directory_path() / "korvel-test-XXXXXX").string();
    m_path = mkdtemp(name.data());
}

ScratchFolder::~ScratchFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(m_path, ignored);
}

std::string ScratchFolder::Write(const std::string& name, const std::string& text) const {
    std::ofstream(File(name), std::ios::binary) << text;
    return File(name);
}

std::vector<std::string> ScratchFolder::Names(const std::string& folder, const std::string& start) const {
    std::vector<std::string> names;
    std::error_code failed;
    for (const auto& entry : std::filesystem::directory_iterator(File(folder), failed)) {
        if (entry.path().filename().string().starts_with(start))
            names.push_back(entry.path().filename().string());
    }
    std::ranges::sort(names);
    return names;
}

std::string ReadFile(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

bool TestLoop::RunUntil(const std::function<bool()>& condition) {
    const auto end = std::chrono::steady_clock::now() + kDeadline;
    while (!condition()) {
        if (std::chrono::steady_clock::now() > end)
            return false;
        loop.restart();
        loop.run_one_for(std::chrono::milliseconds(20));
    }
    return true;
}

bool TestLoop::RunBeside(const std::function<void()>& body) {
    std::atomic<bool> over = false;
    std::thread other([&] {
        body();
        over = true;
    });
    const bool inTime = RunUntil([&] { return over.load(); });
    other.join();
    return inTime;
}

void TestLoop::RunReady() {
    loop.restart();
    loop.poll();
}

struct ScriptedServer::Connection {
    explicit Connection(tcp::socket accepted) : socket(std::move(accepted)) {}

    tcp::socket socket;
    asio::streambuf in;
};

ScriptedServer::ScriptedServer(TestLoop& loop) : m_loop(loop) {
    Listen();
}

ScriptedServer::~ScriptedServer() {
    Kill();
}

void ScriptedServer::Listen() {
    m_acceptor = std::make_unique<tcp::acceptor>(m_loop.loop, tcp::endpoint(kLoopback, GetPort()), true);
    Accept();
}

void ScriptedServer::Accept() {
    m_acceptor->async_accept([this](error_code error, tcp::socket socket) {
        if (error)
            return;
        m_connection = std::make_shared<Connection>(std::move(socket));
        ++m_connections;
        Read(m_connection);
        Accept();
    });
}

void ScriptedServer::Read(std::shared_ptr<Connection> connection) {
    Connection& self = *connection;
    asio::async_read_until(self.socket, self.in, '\n', [this, connection](error_code error, std::size_t) {
        if (connection != m_connection)
            return;
        if (error) {
            m_connection.reset();
            return;
        }
        std::istream stream(&connection->in);
        std::string line;
        std::getline(stream, line);
        const bool ping = line == std::to_string(kOwnNumber) + " ping\r";
        if (ping)
            ++m_pings;
        else
            m_lines.push_back(line);
        if (!m_mute && !(ping && m_ignoresPings))
            Answer(*connection, line);
        Read(connection);
    });
}

void ScriptedServer::Answer(Connection&, const std::string& line) {
    std::istringstream words(line);
    std::string number;
    std::string command;
    std::string stream;
    words >> number >> command >> stream;
    const bool refused = command == m_refused;
    const bool creates = (command == "addstr" || command == "addann") && !refused;
    if (creates)
        ++m_streams;
    if (command == "addann")
        Send("* SYS addann=" + std::to_string(refused ? 0 : m_streams) + "\r\n");
    if (creates)
        Send(number + " " + command + " stream=" + std::to_string(m_streams) + "\r\n");
    else
        Send(number + (refused ? " NO " : " OK ") + command + " " + stream + "\r\n");
    if (command == "addmed" && !refused && !m_end.empty())
        Send("* addmed " + m_end + "=" + stream + (m_reason.empty() ? "" : " " + m_reason) + "\r\n");
    else if (command == "addmed" && !refused && line.find("stream-http") != std::string::npos)
        Send("* SYS STREAM=" + stream + " streamStatus:playing\r\n");
}

bool ScriptedServer::Heard(const std::string& text) const {
    for (const std::string& line : m_lines) {
        if (line.compare(std::min(line.find(' ') + 1, line.size()), text.size(), text) == 0)
            return true;
    }
    return false;
}

void ScriptedServer::Send(const std::string& bytes) {
    ASSERT_TRUE(m_loop.RunUntil([&] { return IsConnected(); }));
    error_code ignored;
    asio::write(m_connection->socket, asio::buffer(bytes), ignored);
}

void ScriptedServer::Kill() {
    error_code ignored;
    if (m_acceptor)
        m_acceptor->close(ignored);
    if (m_connection)
        m_connection->socket.close(ignored);
    m_connection.reset();
    m_loop.RunReady();
}

void ScriptedServer::Restart() {
    m_lines.clear();
    Listen();
}

TestHouse::TestHouse(TestLoop& loop, const std::string& plugin, const std::vector<std::uint16_t>& serverPorts,
                     const ScratchFolder& state, const std::string& web,
                     const std::function<void(Config&)>& adjust)
    : m_loop(loop) {
    Config config;
    config.rooms = {{1, "Living room", "127.0.0.1", 6200, 1}, {2, "Kitchen", "127.0.0.1", 6202, 1}};
    for (const std::uint16_t port : serverPorts)
        config.servers.push_back({"127.0.0.1", port});
    config.stateFolder = state.Path();
    config.plugin = plugin;
    if (adjust)
        adjust(config);
    m_core = std::make_unique<Core>(loop.loop, config, m_log);
    m_api = std::make_unique<Api>(loop.loop, m_core->GetParts(), web);
    m_http = std::make_unique<HttpServer>(loop.loop, *m_api, "127.0.0.1", std::uint16_t{0}, m_log);
    m_core->Start();
}

void TestHouse::Stop() {
    m_http->Stop();
    m_core->Stop();
}

std::string PostText(const std::string& target, const std::string& body) {
    return "POST " + target + " HTTP/1.1\r\nHost: localhost\r\nConnection: close\r\nContent-Type: " +
           "application/json\r\nContent-Length: " + std::to_string(body.size()) + "\r\n\r\n" + body;
}

RawReply ParseReply(const std::string& bytes) {
    RawReply reply;
    const std::size_t end = bytes.find("\r\n\r\n");
    if (bytes.rfind("HTTP/1.1 ", 0) == 0 && end != std::string::npos) {
        reply.status = std::atoi(bytes.c_str() + 9);
        reply.head = bytes.substr(0, end);
        reply.body = bytes.substr(end + 4);
    }
    return reply;
}

RawReply TestHouse::Exchange(const std::string& bytes) {
    tcp::socket socket(m_loop.loop);
    socket.connect({kLoopback, GetPort()});
    std::string answer;
    bool over = false;
    asio::async_write(socket, asio::buffer(bytes), [](error_code, std::size_t) {});
    asio::async_read(socket, asio::dynamic_buffer(answer), [&](error_code, std::size_t) { over = true; });
    EXPECT_TRUE(m_loop.RunUntil([&] { return over; })) << "no end of: " << answer;
    error_code ignored;
    socket.close(ignored);
    m_loop.RunReady();
    return ParseReply(answer);
}

RawReply TestHouse::Get(const std::string& target) {
    return Exchange("GET " + target + " HTTP/1.1\r\nHost: localhost\r\nConnection: close\r\n\r\n");
}

RawReply TestHouse::Post(const std::string& target, const std::string& body) {
    return Exchange(PostText(target, body));
}

RawReply TestHouse::Command(const std::string& name, const nlohmann::json& parameters) {
    return Post("/api/command", nlohmann::json{{"name", name}, {"parameters", parameters}}.dump());
}

nlohmann::json TestHouse::Room(std::uint32_t id) {
    for (const nlohmann::json& room : Get("/api/rooms").Json()) {
        if (room.at("id") == id)
            return room;
    }
    return nullptr;
}

} // namespace korvel::controller

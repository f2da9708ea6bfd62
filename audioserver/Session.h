// One connected controller.
#pragma once

#include <array>
#include <boost/asio/ip/tcp.hpp>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <string_view>

#include "audioserver/LineParser.h"
#include "audioserver/Stream.h"
#include "audioserver/StreamNumbers.h"

namespace korvel::audioserver {

/// What all sessions of a server share. Must outlive them.
struct SessionContext {
    StreamNumbers& numbers;
    const Inputs& inputs;
    CatalogClient& catalogue;
};

/// Reads request lines, answers each in order, and passes on the events of the streams that it made. A
/// session touches no other session's streams; its own go with it when the connection ends. Lives on the loop
/// and keeps itself alive while the connection is open.
class Session : public std::enable_shared_from_this<Session> {
public:
    using Closed = std::function<void(const std::shared_ptr<Session>&)>;

    /// @param closed called once when the session has ended
    Session(boost::asio::ip::tcp::socket socket, SessionContext context, Closed closed);
    ~Session();
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;

    void Start();

    /// Removes the streams and closes the connection. A second call does nothing.
    void Close(std::string_view reason);

private:
    void Read();
    void OnBytes(std::size_t count);
    void HandleLine(std::string_view line);
    void LogRefusal(std::string_view line);
    void Send(std::string_view line);
    void Write();

    // Commands.cpp
    void Dispatch(const Request& request);
    std::string CreateStream(const Request& request);
    std::string RemoveStream(const Request& request);
    std::string Reset(const Request& request);
    std::string WithStream(const Request& request);
    static bool Apply(const Request& request, Stream& stream);
    void RemoveAllStreams();

    boost::asio::ip::tcp::socket m_socket;
    SessionContext m_context;
    Closed m_closed;
    std::string m_name;
    bool m_open = true;

    std::array<char, 4096> m_chunk{};
    std::string m_line;
    unsigned m_loggedRefusals = 0;

    std::string m_outgoing;
    std::string m_inFlight;

    std::map<StreamNumber, std::shared_ptr<Stream>> m_streams;
};

} // namespace korvel::audioserver

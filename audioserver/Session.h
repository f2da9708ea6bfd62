// One connected controller.
#pragma once

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <string_view>

#include "audioserver/LineParser.h"
#include "audioserver/Stream.h"
#include "audioserver/StreamNumbers.h"
#include "audioserver/watch/Watch.h"
#include "common/Acceptor.h"
#include "common/LineConnection.h"

namespace korvel::audioserver {

// What all sessions of a server share. Must outlive them.
struct SessionContext {
    StreamNumbers& numbers;
    const StreamSettings& settings;
    CatalogClient& catalogue;
    Watch& watch;
};

// Reads request lines, answers each in order, and passes on the events of the streams that it made. A
// session touches no other session's streams; its own go with it when the connection ends. While it has none,
// it gives way to others. Lives on the loop.
class Session : public std::enable_shared_from_this<Session>, private common::LineConnection::Listener {
public:
    using Closed = std::function<void(const std::shared_ptr<Session>&)>;

    // `closed`: called once when the session has ended.
    Session(std::shared_ptr<common::LineConnection> lines, common::Acceptor::Place place,
            SessionContext context, Closed closed);
    ~Session();
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;

    // `first`: the line that it has begun with.
    void Start(const common::Line& first);

    // Removes the streams and closes the connection. A second call does nothing.
    void Close(const std::string& reason);

private:
    void OnLine(const common::Line& line) override;
    void OnEnd(const std::string& why) override;

    void Refuse(const Refusal& refusal, std::string_view line);
    void Send(std::string_view line);
    void Settle();

    // Commands.cpp
    void Dispatch(const Request& request);
    std::string CreateStream(const Request& request);
    std::string RemoveStream(const Request& request);
    std::string Reset(const Request& request);
    std::string WithStream(const Request& request);
    static bool Apply(const Request& request, Stream& stream);
    void RemoveAllStreams();

    std::shared_ptr<common::LineConnection> m_lines;
    common::Acceptor::Place m_place;
    SessionContext m_context;
    Closed m_closed;
    bool m_open = true;

    std::map<StreamNumber, std::shared_ptr<Stream>> m_streams;
};

} // namespace korvel::audioserver

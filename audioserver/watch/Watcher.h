// One connection that watches.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "audioserver/watch/WatchProblem.h"
#include "audioserver/watch/WatchRequest.h"
#include "common/Acceptor.h"
#include "common/LineConnection.h"

namespace korvel::audioserver {

class Watch;

// Reads requests and answers each; what changes is sent in between. Lives on the loop.
class Watcher : public std::enable_shared_from_this<Watcher>, private common::LineConnection::Listener {
public:
    // `watch`: must outlive it, unless it is closed.
    Watcher(std::shared_ptr<common::LineConnection> lines, common::Acceptor::Place place, Watch& watch);
    ~Watcher();
    Watcher(const Watcher&) = delete;
    Watcher& operator=(const Watcher&) = delete;

    // `first`: the line that it has begun with.
    void Start(const common::Line& first);

    void Send(std::string_view lines);

    // Whether it is told what changes.
    bool IsToldOf() const { return m_toldOf; }
    void SetToldOf() { m_toldOf = true; }

    // A second call does nothing.
    void Close(const std::string& reason);

private:
    void OnLine(const common::Line& line) override;
    void OnEnd(const std::string& why) override;

    void Do(const WatchGreeting& greeting);
    void Do(const WatchPing& ping);
    void Do(const WatchSeek& seek);
    void Do(const WatchStart& start);
    void Do(const WatchNonsense& nonsense);
    void Answer(std::uint64_t id, const std::optional<WatchRefusal>& refusal);

    std::shared_ptr<common::LineConnection> m_lines;
    common::Acceptor::Place m_place;
    Watch& m_watch;
    bool m_open = true;
    bool m_toldOf = false;
    unsigned m_nonsense = 0; // in a row
};

} // namespace korvel::audioserver

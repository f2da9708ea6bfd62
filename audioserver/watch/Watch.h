// All that is told to watchers.
#pragma once

#include <map>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "audioserver/Stream.h"
#include "audioserver/watch/Watcher.h"

namespace korvel::audioserver {

// Knows the streams and their watchers. What changes in one turn of the loop is told once, after it, and only what is
// really another than what was told. Lives on the loop.
class Watch {
public:
    explicit Watch(common::asio::any_io_executor executor);
    ~Watch();
    Watch(const Watch&) = delete;
    Watch& operator=(const Watch&) = delete;

    void AddStream(StreamNumber number, const std::shared_ptr<Stream>& stream);
    void RemoveStream(StreamNumber number);

    // Takes a connection whose first line is a watcher's.
    void Let(std::shared_ptr<common::LineConnection> lines, common::Acceptor::Place place,
             const common::Line& first);

    // Ends every watcher.
    void Close();

    // For its watchers.

    // Null when there is none.
    std::shared_ptr<Stream> Find(StreamNumber number) const;
    // From now on it is told what changes; first of all how everything is.
    void Tell(const std::shared_ptr<Watcher>& watcher);
    // It has said something.
    void Heard(const std::shared_ptr<Watcher>& watcher);
    void Forget(const std::shared_ptr<Watcher>& watcher);

private:
    void Mark(StreamNumber number);
    void TellChanges();
    void TellChange(StreamNumber number, const Stream& stream);
    void SendAll(const std::string& line);

    common::asio::any_io_executor m_executor;
    const std::string m_run;
    std::map<StreamNumber, std::weak_ptr<Stream>> m_streams;
    std::map<StreamNumber, std::string> m_told; // the last line of each stream, while anybody hears
    std::set<StreamNumber> m_changed;
    // Those that were heard of last at the end.
    std::vector<std::shared_ptr<Watcher>> m_watchers;
    // Handlers that are under way when it goes find it gone by this.
    const std::shared_ptr<bool> m_alive = std::make_shared<bool>();
};

} // namespace korvel::audioserver

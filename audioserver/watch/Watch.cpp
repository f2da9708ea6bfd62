#include "audioserver/watch/Watch.h"

#include <algorithm>
#include <array>
#include <boost/asio/post.hpp>
#include <cstdio>
#include <random>
#include <utility>

#include "audioserver/watch/WatchFormat.h"

namespace korvel::audioserver {
namespace {

std::string MakeRun() {
    std::random_device random;
    std::array<char, 17> text{};
    std::snprintf(text.data(), text.size(), "%08x%08x", random(), random());
    return text.data();
}

} // namespace

Watch::Watch(common::asio::any_io_executor executor) : m_executor(std::move(executor)), m_run(MakeRun()) {}

Watch::~Watch() {
    Close();
}

void Watch::AddStream(StreamNumber number, const std::shared_ptr<Stream>& stream) {
    m_streams[number] = stream;
    stream->SetChangeNotify([this, alive = std::weak_ptr(m_alive), number] {
        if (!alive.expired())
            Mark(number);
    });
    Mark(number);
}

void Watch::RemoveStream(StreamNumber number) {
    m_streams.erase(number);
    m_changed.erase(number);
    if (m_told.erase(number) > 0)
        SendAll(GoneLine(number));
}

std::shared_ptr<Stream> Watch::Find(StreamNumber number) const {
    const auto stream = m_streams.find(number);
    return stream == m_streams.end() ? nullptr : stream->second.lock();
}

void Watch::Let(std::shared_ptr<common::LineConnection> lines, common::Acceptor::Place place,
                const common::Line& first) {
    if (m_watchers.size() >= kMaxWatchers)
        std::shared_ptr(m_watchers.front())->Close("gives way to another watcher");
    auto watcher = std::make_shared<Watcher>(std::move(lines), std::move(place), *this);
    m_watchers.push_back(watcher);
    watcher->Start(first);
}

void Watch::Heard(const std::shared_ptr<Watcher>& watcher) {
    const auto place = std::ranges::find(m_watchers, watcher);
    if (place != m_watchers.end())
        std::rotate(place, place + 1, m_watchers.end());
}

void Watch::Forget(const std::shared_ptr<Watcher>& watcher) {
    std::erase(m_watchers, watcher);
}

void Watch::Close() {
    for (const auto& watcher : std::vector(m_watchers))
        watcher->Close("server stops");
}

void Watch::Tell(const std::shared_ptr<Watcher>& watcher) {
    // The others first: what they were told stands for all from now on.
    std::vector<StreamNumber> numbers;
    for (const auto& [number, weak] : m_streams) {
        if (const auto stream = weak.lock()) {
            TellChange(number, *stream);
            numbers.push_back(number);
        }
    }
    std::string lines = HelloLine(m_run, std::chrono::steady_clock::now(), numbers);
    for (const StreamNumber number : numbers)
        lines.append(m_told.at(number));
    watcher->Send(lines);
    watcher->SetToldOf();
}

void Watch::Mark(StreamNumber number) {
    const bool isFirst = m_changed.empty();
    m_changed.insert(number);
    if (!isFirst)
        return;
    common::asio::post(m_executor, [this, alive = std::weak_ptr(m_alive)] {
        if (!alive.expired())
            TellChanges();
    });
}

void Watch::TellChanges() {
    const bool isHeard =
        std::ranges::any_of(m_watchers, [](const auto& watcher) { return watcher->IsToldOf(); });
    if (!isHeard)
        m_told.clear();
    for (const StreamNumber number : std::exchange(m_changed, {})) {
        const auto stream = Find(number);
        if (isHeard && stream)
            TellChange(number, *stream);
    }
}

void Watch::TellChange(StreamNumber number, const Stream& stream) {
    std::string line = StreamLine(number, stream.Look());
    std::string& told = m_told[number];
    if (told == line)
        return;
    told = std::move(line);
    SendAll(told);
}

void Watch::SendAll(const std::string& line) {
    for (const auto& watcher : m_watchers)
        if (watcher->IsToldOf())
            watcher->Send(line);
}

} // namespace korvel::audioserver

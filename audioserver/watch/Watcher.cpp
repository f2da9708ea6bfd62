#include "audioserver/watch/Watcher.h"

#include <chrono>
#include <utility>

#include "audioserver/LineFormat.h"
#include "audioserver/MediaReference.h"
#include "audioserver/watch/Watch.h"
#include "audioserver/watch/WatchFormat.h"
#include "common/Log.h"

namespace korvel::audioserver {

Watcher::Watcher(std::shared_ptr<common::LineConnection> lines, common::Acceptor::Place place, Watch& watch)
    : m_lines(std::move(lines)), m_place(std::move(place)), m_watch(watch) {}

Watcher::~Watcher() {
    m_lines->Close();
}

void Watcher::Start(const common::Line& first) {
    // Watchers have a share of their own, in which one gives way to another.
    m_place.SetBusy();
    m_lines->SetListener(*this);
    common::ProgramLog().Info(m_lines->GetPeer() + " watches");
    OnLine(first);
}

void Watcher::Send(std::string_view lines) {
    m_lines->Send(lines);
}

void Watcher::Close(const std::string& reason) {
    if (!std::exchange(m_open, false))
        return;
    const auto self = shared_from_this();
    common::ProgramLog().Info(m_lines->GetPeer() + " closed: " + reason);
    m_lines->Close();
    m_watch.Forget(self);
}

void Watcher::OnEnd(const std::string& why) {
    Close(why);
}

void Watcher::OnLine(const common::Line& line) {
    const auto self = shared_from_this();
    m_watch.Heard(self);
    const WatchRequest request =
        line.tooLong ? WatchRequest(WatchNonsense{{}, "it is too long"}) : ParseWatchLine(line.GetText());
    if (!std::holds_alternative<WatchNonsense>(request))
        m_nonsense = 0;
    std::visit([this](const auto& known) { Do(known); }, request);
}

void Watcher::Do(const WatchGreeting& greeting) {
    if (greeting.version == kWatchVersion)
        m_watch.Tell(shared_from_this());
    else
        Send(ProblemLine({}, {WatchProblem::kVersion}));
}

void Watcher::Do(const WatchPing& ping) {
    Send(PongLine(ping.number, std::chrono::steady_clock::now()));
}

void Watcher::Do(const WatchSeek& seek) {
    const auto stream = m_watch.Find(seek.stream);
    if (!stream) {
        Answer(seek.id, WatchRefusal{WatchProblem::kUnknownStream});
        return;
    }
    stream->Seek(seek.serial, seek.position, [weak = weak_from_this(), id = seek.id](const auto& refusal) {
        if (const auto watcher = weak.lock())
            watcher->Answer(id, refusal);
    });
}

void Watcher::Do(const WatchStart& start) {
    const auto stream = m_watch.Find(start.stream);
    const MediaReference::Kind kind = ParseMediaReference(start.media).kind;
    if (!stream) {
        Answer(start.id, WatchRefusal{WatchProblem::kUnknownStream});
    } else if (kind == MediaReference::Kind::kInput) {
        Answer(start.id, WatchRefusal{WatchProblem::kLive});
    } else {
        stream->SetStart(start.media, start.position);
        Answer(start.id, {});
    }
}

void Watcher::Do(const WatchNonsense& nonsense) {
    common::ProgramLog().WriteFor(m_lines->GetPeer(), common::LogLevel::Warning,
                                  m_lines->GetPeer() + " sent an unusable line: " + nonsense.reason);
    if (++m_nonsense > kMaxNonsense)
        Close("says nothing that can be understood");
    else
        Send(ProblemLine(nonsense.id, {WatchProblem::kMalformed, nonsense.reason}));
}

void Watcher::Answer(std::uint64_t id, const std::optional<WatchRefusal>& refusal) {
    Send(refusal ? ProblemLine(id, *refusal) : DoneLine(id));
}

} // namespace korvel::audioserver

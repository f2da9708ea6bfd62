// Places in a media: where it begins, and where it is sent to while it plays.
#include <boost/asio/post.hpp>
#include <stdexcept>
#include <utility>

#include "audioserver/GstPointers.h"
#include "audioserver/Stream.h"

namespace korvel::audioserver {
namespace {

// A length that is guessed from what was read so far changes with every piece.
constexpr std::uint64_t kSameLengthMilliseconds = 1000;

bool IsSameLength(std::optional<std::uint64_t> one, std::optional<std::uint64_t> other) {
    return one && other && std::max(*one, *other) - std::min(*one, *other) < kSameLengthMilliseconds;
}

std::string AsUtf8(const std::string& text) {
    const GStringPtr valid(g_utf8_make_valid(text.data(), static_cast<gssize>(text.size())));
    return valid.get();
}

} // namespace

// What is said of the next media counts once.
void Stream::TakeStart(const std::string& media) {
    m_text = AsUtf8(media);
    const auto start = std::exchange(m_nextStart, std::nullopt);
    if (start && start->media == m_text && m_mediaKind != MediaReference::Kind::kInput)
        m_start = start->milliseconds;
}

void Stream::AskAbilities() {
    if (std::exchange(m_abilitiesAreAsked, true))
        return;
    m_abilitiesAreOld = false;
    m_media->FindAbilities();
}

void Stream::OnAbilities(const MediaAbilities& abilities) {
    m_abilitiesAreAsked = false;
    if (!m_abilities || !IsSameLength(m_abilities->milliseconds, abilities.milliseconds))
        m_abilities = abilities;
    if (m_abilitiesAreOld)
        AskAbilities();
    if (m_start > 0)
        GoToStart();
    if (m_move && !m_move->source) {
        if (const auto refusal = RefuseSeek(m_move->milliseconds))
            EndMove(refusal);
        else
            OpenMove();
    }
}

// What has no such place begins at its beginning.
void Stream::GoToStart() {
    const std::uint32_t place = std::exchange(m_start, 0);
    if (RefuseSeek(place))
        ConnectFeed();
    else
        m_media->StartAt(place);
}

// By what is known so far.
std::optional<WatchRefusal> Stream::RefuseSeek(std::uint32_t milliseconds) const {
    if (!m_loaded)
        return WatchRefusal{WatchProblem::kNoMedia};
    if (IsLive())
        return WatchRefusal{WatchProblem::kLive};
    if (m_abilities && !CanSeek())
        return WatchRefusal{WatchProblem::kNotSeekable};
    if (m_abilities && milliseconds >= m_abilities->milliseconds)
        return WatchRefusal{WatchProblem::kBeyondEnd};
    return std::nullopt;
}

void Stream::Seek(std::optional<std::uint64_t> serial, std::uint32_t milliseconds, SeekAnswer answered) {
    auto refusal = RefuseSeek(milliseconds);
    if (serial && serial != m_serial)
        refusal = WatchRefusal{WatchProblem::kStale};
    if (refusal) {
        answered(refusal);
        return;
    }
    if (m_move) {
        m_move->milliseconds = milliseconds;
        m_move->isNewer = true;
        std::exchange(m_move->answered, std::move(answered))(WatchRefusal{WatchProblem::kSuperseded});
        return;
    }
    m_move.emplace();
    m_move->milliseconds = milliseconds;
    m_move->answered = std::move(answered);
    if (m_abilities)
        OpenMove();
}

void Stream::OpenMove() {
    m_move->number = ++m_moves;
    std::string error;
    try {
        m_move->source =
            OpenPlace({m_executor, m_settings.times.toEnd, MakeMoveNotify(m_move->number)}, error);
    } catch (const std::runtime_error& failure) {
        error = failure.what();
    }
    if (!m_move->source) {
        EndMove(WatchRefusal{WatchProblem::kFailed, error});
        return;
    }
    m_untilMove.expires_after(m_settings.times.toSound);
    m_untilMove.async_wait(
        [weak = weak_from_this(), number = m_move->number](const boost::system::error_code& cancelled) {
            const auto stream = weak.lock();
            if (!cancelled && stream && stream->m_move && stream->m_move->number == number)
                stream->EndMove(WatchRefusal{WatchProblem::kFailed, "it takes too long"});
        });
}

// Titles are told by the source that was there first.
MediaNotify Stream::MakeMoveNotify(std::uint64_t number) {
    return [executor = m_executor, weak = weak_from_this(), number](MediaEvent event) {
        if (event.kind == MediaEvent::Kind::kTags)
            return;
        boost::asio::post(executor, [weak, number, event = std::move(event)]() mutable {
            if (const auto stream = weak.lock())
                stream->OnMoveEvent(number, event);
        });
    };
}

void Stream::OnMoveEvent(std::uint64_t number, MediaEvent& event) {
    if (number == m_adopted) {
        OnMediaEvent(m_generation, event);
        return;
    }
    if (!m_move || m_move->number != number)
        return;
    if (event.kind == MediaEvent::Kind::kReady && !std::exchange(m_move->open, true))
        MoveOn();
    else if (event.kind == MediaEvent::Kind::kFailed || !event.text.empty())
        EndMove(WatchRefusal{WatchProblem::kFailed, event.text});
    else if (event.kind == MediaEvent::Kind::kReady || event.kind == MediaEvent::Kind::kMoved)
        OnArrival(event.kind);
}

// Only what has sound of the place has arrived: a web server may refuse the part after all.
void Stream::OnArrival(MediaEvent::Kind what) {
    (what == MediaEvent::Kind::kMoved ? m_move->moved : m_move->sounds) = true;
    if (!m_move->moved || !m_move->sounds)
        return;
    if (m_move->isNewer)
        MoveOn();
    else
        AdoptMove();
}

void Stream::MoveOn() {
    m_move->isNewer = false;
    m_move->moved = false;
    m_move->sounds = false;
    m_move->source->StartAt(m_move->milliseconds);
}

void Stream::EndMove(const std::optional<WatchRefusal>& refusal) {
    if (!m_move)
        return;
    m_untilMove.cancel();
    const Move move = std::exchange(m_move, std::nullopt).value();
    move.answered(refusal);
}

// The source that was there until now is heard until this one has sound.
void Stream::AdoptMove() {
    ++m_generation;
    m_patience.cancel();
    m_output->GetFeeds().Leave();
    m_media = std::move(m_move->source);
    m_adopted = m_move->number;
    m_start = 0;
    m_sounds = false;
    m_abilitiesAreAsked = false;
    ConnectFeed();
    StartPatience();
    EndMove(std::nullopt);
    Changed();
}

} // namespace korvel::audioserver

// Sources that keep a stream waiting, stations that are lost and found again, and what stations say they play.
#include <stdexcept>
#include <utility>

#include "audioserver/LineFormat.h"
#include "audioserver/Stream.h"

namespace korvel::audioserver {
namespace {

// In whole seconds, rounded up.
std::string InSeconds(std::chrono::milliseconds time) {
    return std::to_string(std::chrono::ceil<std::chrono::seconds>(time).count()) + " s";
}

} // namespace

// From now on, until it is cancelled, the source has this long to give sound.
void Stream::StartPatience() {
    if (m_paused)
        return;
    m_patience.expires_after(m_settings.times.toSound);
    m_patience.async_wait(
        [weak = weak_from_this(), generation = m_generation](const boost::system::error_code& cancelled) {
            const auto stream = weak.lock();
            // A wait that was over just before it was cancelled does not know that.
            if (!cancelled && stream && generation == stream->m_generation && !stream->m_sounds &&
                !stream->m_paused)
                stream->OnFailed("no sound for " + InSeconds(stream->m_settings.times.toSound));
        });
}

// Whether the end has to wait for the length: only what has none is connected to again.
bool Stream::HoldEnd(MediaEvent end) {
    if (m_mediaKind != MediaReference::Kind::kWeb || !m_lengthIsAsked || !m_played)
        return false;
    if (m_heldEnd)
        return true;
    m_heldEnd = std::move(end);
    m_patience.cancel();
    m_untilLength.expires_after(m_settings.times.toEnd);
    m_untilLength.async_wait(
        [weak = weak_from_this(), generation = m_generation](const boost::system::error_code& cancelled) {
            const auto stream = weak.lock();
            if (!cancelled && stream && generation == stream->m_generation)
                stream->DecideEnd();
        });
    return true;
}

// With what is known of the length by now.
void Stream::DecideEnd() {
    m_lengthIsAsked = false;
    m_untilLength.cancel();
    if (const auto end = std::exchange(m_heldEnd, std::nullopt)) {
        if (end->kind == MediaEvent::Kind::kDrained)
            OnDrained();
        else
            OnFailed(end->text);
    }
}

bool Stream::CanReconnect() const {
    return m_mediaKind == MediaReference::Kind::kWeb && m_broadcast && m_played;
}

void Stream::Reconnect(const std::string& reason) {
    m_untilConnect = m_media ? 2 : 1;
    DropMedia([weak = weak_from_this(), generation = m_generation + 1](bool abandoned) {
        const auto stream = weak.lock();
        if (!stream || generation != stream->m_generation)
            return;
        if (abandoned)
            stream->Fail("the source does not end");
        else
            stream->ConnectWhenFree();
    });
    const auto wait = m_backOff.Next();
    Warn("the station is lost: " + OneLine(reason) + "; again in " + InSeconds(wait));
    Report(kStreamStatus, "reconnecting in " + InSeconds(wait), m_lastStatus);
    m_untilRetry.expires_after(wait);
    m_untilRetry.async_wait(
        [weak = weak_from_this(), generation = m_generation](const boost::system::error_code& cancelled) {
            const auto stream = weak.lock();
            if (!cancelled && stream && generation == stream->m_generation)
                stream->ConnectWhenFree();
        });
}

// A station has one source at a time: one that hangs must not take another with it.
void Stream::ConnectWhenFree() {
    if (--m_untilConnect == 0)
        Connect();
}

void Stream::Connect() {
    std::string error;
    try {
        m_media = MediaSource::OpenWeb(m_address, MakeOwner(), error);
    } catch (const std::runtime_error& failure) {
        error = failure.what();
    }
    if (!m_media) {
        Reconnect(error);
        return;
    }
    Report(kStreamStatus, "connecting", m_lastStatus);
    ConnectFeed();
    StartPatience();
}

// One after the other, with a pause between them: a station may say a thousand titles in a second.
void Stream::TellTitle() {
    if (m_titleWaits)
        return;
    std::optional<std::string> text;
    {
        const std::lock_guard lock(m_title->mutex);
        text.swap(m_title->text);
    }
    // The tags of a file are the controller's business already.
    if (!text || m_mediaKind != MediaReference::Kind::kWeb || !Report(kStreamInfo, *text, m_lastInfo))
        return;
    m_titleWaits = true;
    m_untilTitle.expires_after(m_settings.times.betweenTitles);
    m_untilTitle.async_wait(
        [weak = weak_from_this(), title = m_title](const boost::system::error_code& cancelled) {
            const auto stream = weak.lock();
            if (!cancelled && stream && title == stream->m_title) {
                stream->m_titleWaits = false;
                stream->TellTitle();
            }
        });
}

} // namespace korvel::audioserver

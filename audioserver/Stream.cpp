#include "audioserver/Stream.h"

#include <boost/asio/post.hpp>
#include <utility>

#include "audioserver/LineFormat.h"

namespace korvel::audioserver {
namespace {

// A channel may have a track that cannot be played; when several in a row cannot, it is of no use.
constexpr unsigned kMaxFailedTracks = 3;

} // namespace

std::shared_ptr<Stream> Stream::Create(boost::asio::any_io_executor executor, StreamNumber number,
                                       const StreamSettings& settings, CatalogClient& catalogue,
                                       LineSink sink) {
    std::shared_ptr<Stream> stream(
        new Stream(std::move(executor), number, settings, catalogue, std::move(sink)));
    stream->Start();
    return stream;
}

Stream::Stream(boost::asio::any_io_executor executor, StreamNumber number, const StreamSettings& settings,
               CatalogClient& catalogue, LineSink sink)
    : m_executor(std::move(executor)),
      m_number(number),
      m_settings(settings),
      m_catalogue(catalogue),
      m_sink(std::move(sink)),
      m_untilTitle(m_executor),
      m_patience(m_executor),
      m_untilRetry(m_executor),
      m_backOff(settings.times.firstRetry, settings.times.lastRetry),
      m_untilLength(m_executor) {}

Stream::~Stream() {
    LeaveCatalogue();
}

void Stream::Start() {
    m_output =
        std::make_unique<StreamOutput>([executor = m_executor, weak = weak_from_this()](std::string reason) {
            boost::asio::post(executor, [weak, reason = std::move(reason)] {
                if (const auto stream = weak.lock()) {
                    stream->Warn("output failed: " + OneLine(reason));
                    stream->m_sink(ReportLine(stream->m_number, kStreamError, reason));
                }
            });
        });
}

bool Stream::AddClient(const ClientAddress& client) {
    if (m_clients.contains(client))
        return true;
    if (m_clients.size() >= kMaxClientsPerStream)
        return false;
    m_clients.insert(client);
    m_output->AddClient(client);
    return true;
}

void Stream::RemoveClient(const ClientAddress& client) {
    if (m_clients.erase(client) > 0)
        m_output->RemoveClient(client);
}

void Stream::AddMedia(const MediaReference& reference) {
    LeaveMedia();
    m_mediaKind = reference.kind;
    m_paused = false;
    if (reference.kind == MediaReference::Kind::kCatalogue) {
        m_catalogueMedia = CatalogueMedia{reference.target, {}, 0, 0};
        LookUp();
        return;
    }
    std::string error;
    m_media = OpenMedia(reference, error);
    if (!m_media) {
        // Through the loop, so that the reply to the request goes out first.
        MakeNotify()({MediaEvent::Kind::kFailed, std::move(error)});
        return;
    }
    if (reference.kind == MediaReference::Kind::kWeb) {
        m_address = reference.target;
        MakeNotify()({MediaEvent::Kind::kStatus, "connecting"});
    } else if (reference.kind == MediaReference::Kind::kInput) {
        // A live source never reports that it has its first sound.
        MakeNotify()({MediaEvent::Kind::kReady, {}});
    }
    m_output->GetFeeds().Set(m_media->Feed());
    StartPatience();
}

void Stream::Unload() {
    LeaveMedia();
    m_output->GetFeeds().Set(nullptr);
}

void Stream::LeaveMedia() {
    DropMedia();
    LeaveCatalogue();
    m_untilRetry.cancel();
    m_untilTitle.cancel();
    m_titleWaits = false;
    m_title = std::make_shared<Title>();
    m_backOff.Reset();
    m_broadcast = false;
    m_station = false;
    m_played = false;
    m_lastInfo.clear();
    m_lastStatus.clear();
}

// `onEnd`: called when the source has ended or is abandoned, if there is one.
void Stream::DropMedia(SourceThread::EndNotify onEnd) {
    ++m_generation;
    m_output->GetFeeds().Leave();
    m_patience.cancel();
    m_untilLength.cancel();
    if (m_media && onEnd)
        m_media->SetEndNotify(std::move(onEnd));
    m_media.reset();
    // Its event comes too late to be heard: left there, it would keep every later title back.
    {
        const std::lock_guard lock(m_title->mutex);
        m_title->text.reset();
    }
    m_lengthIsAsked = false;
    m_heldEnd.reset();
    m_ready = false;
    m_sounds = false;
}

void Stream::SetState(PlayState state) {
    if (state == PlayState::kStop) {
        Unload();
        return;
    }
    m_paused = state == PlayState::kPause;
    m_output->GetFeeds().SetPaused(m_paused);
    // Nothing is drawn while it is paused, and so nothing can be missed.
    m_patience.cancel();
    if (m_media && !m_sounds)
        StartPatience();
}

// Hands events of the media that is being loaded over to the loop, marked with its generation.
MediaNotify Stream::MakeNotify() {
    return [executor = m_executor, weak = weak_from_this(), generation = m_generation,
            title = m_title](MediaEvent event) {
        if (event.kind == MediaEvent::Kind::kTags) {
            const std::lock_guard lock(title->mutex);
            if (std::exchange(title->text, std::move(event.text)))
                return; // the loop has not come for the one before
        }
        boost::asio::post(executor, [weak, generation, event = std::move(event)]() mutable {
            if (const auto stream = weak.lock())
                stream->OnMediaEvent(generation, event);
        });
    };
}

MediaSource::Owner Stream::MakeOwner() {
    return {m_executor, m_settings.times.toEnd, MakeNotify()};
}

std::unique_ptr<MediaSource> Stream::OpenMedia(const MediaReference& reference, std::string& error) {
    switch (reference.kind) {
        case MediaReference::Kind::kFile:
            return MediaSource::OpenFile(reference.target, MakeOwner(), error);
        case MediaReference::Kind::kWeb:
            return MediaSource::OpenWeb(reference.target, MakeOwner(), error);
        case MediaReference::Kind::kInput:
            if (const auto input = m_settings.inputs.find(reference.target); input != m_settings.inputs.end())
                return MediaSource::OpenInput(input->second, MakeOwner(), error);
            error = "no input of this name";
            return nullptr;
        case MediaReference::Kind::kCatalogue: // a place of it is opened
        case MediaReference::Kind::kBad:
            break;
    }
    error = reference.target;
    return nullptr;
}

void Stream::OnMediaEvent(std::uint64_t generation, MediaEvent& event) {
    if (generation != m_generation)
        return;
    switch (event.kind) {
        case MediaEvent::Kind::kReady:
            OnReady();
            break;
        case MediaEvent::Kind::kDrained:
            OnDrained();
            break;
        case MediaEvent::Kind::kFailed:
            OnFailed(event.text);
            break;
        case MediaEvent::Kind::kFinite:
        case MediaEvent::Kind::kBroadcast:
        case MediaEvent::Kind::kStation:
            OnLength(event.kind);
            break;
        case MediaEvent::Kind::kMoved:
            ConnectFeed();
            break;
        case MediaEvent::Kind::kPlaying:
            m_sounds = true;
            m_played = true;
            m_patience.cancel();
            m_backOff.Reset();
            break;
        case MediaEvent::Kind::kStarved:
            m_sounds = false;
            StartPatience();
            break;
        case MediaEvent::Kind::kTags:
            TellTitle();
            break;
        case MediaEvent::Kind::kStatus:
            Report(kStreamStatus, event.text, m_lastStatus);
            break;
    }
}

void Stream::OnDrained() {
    if (GoOnWithChannel()) {
        m_catalogueMedia->failedTracks = 0;
        return;
    }
    if (HoldEnd({MediaEvent::Kind::kDrained, {}}))
        return;
    // What ends in good order and is no station was a file without a length.
    if (m_station && CanReconnect()) {
        Reconnect("it has ended");
        return;
    }
    Unload();
    m_sink(EndOfMediaLine(m_number));
}

void Stream::OnFailed(const std::string& reason) {
    if (m_catalogueMedia && ++m_catalogueMedia->failedTracks < kMaxFailedTracks && GoOnWithChannel()) {
        Warn("left out: " + OneLine(reason));
        return;
    }
    if (HoldEnd({MediaEvent::Kind::kFailed, reason}))
        return;
    if (CanReconnect()) {
        Reconnect(reason);
        return;
    }
    Fail(reason);
}

void Stream::Fail(const std::string& reason) {
    Unload();
    Warn("bad media: " + OneLine(reason));
    m_sink(BadMediaLine(m_number, reason));
}

void Stream::OnReady() {
    if (std::exchange(m_ready, true) || m_mediaKind == MediaReference::Kind::kFile)
        return;
    if (m_mediaKind == MediaReference::Kind::kInput) {
        OnBroadcast();
    } else {
        m_lengthIsAsked = true;
        m_media->FindLength();
    }
    MoveToStart();
}

void Stream::OnLength(MediaEvent::Kind length) {
    if (length != MediaEvent::Kind::kFinite)
        OnBroadcast();
    m_station = m_station || length == MediaEvent::Kind::kStation;
    DecideEnd();
}

void Stream::OnBroadcast() {
    if (!std::exchange(m_broadcast, true))
        m_sink(ReportLine(m_number, kStreamCaps, kNoPause));
}

// No stream that fails all the time hides the lines of another.
void Stream::Warn(const std::string& text, common::LogPlace place) const {
    const std::string name = "stream " + std::to_string(m_number);
    common::ProgramLog().WriteFor(name, common::LogLevel::Warning, name + ": " + text, place);
}

// Whether it is news.
bool Stream::Report(std::string_view prefix, const std::string& text, std::string& last) {
    if (std::exchange(last, text) == text)
        return false;
    m_sink(ReportLine(m_number, prefix, text));
    return true;
}

} // namespace korvel::audioserver

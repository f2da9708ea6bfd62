#include "audioserver/Stream.h"

#include <boost/asio/post.hpp>
#include <utility>

#include "audioserver/LineFormat.h"
#include "common/Log.h"

namespace korvel::audioserver {
namespace {

/// A channel may have a track that cannot be played; when several in a row cannot, it is of no use.
constexpr unsigned kMaxFailedTracks = 3;

} // namespace

std::shared_ptr<Stream> Stream::Create(boost::asio::any_io_executor executor, StreamNumber number,
                                       const Inputs& inputs, CatalogClient& catalogue, LineSink sink) {
    std::shared_ptr<Stream> stream(
        new Stream(std::move(executor), number, inputs, catalogue, std::move(sink)));
    stream->Start();
    return stream;
}

Stream::Stream(boost::asio::any_io_executor executor, StreamNumber number, const Inputs& inputs,
               CatalogClient& catalogue, LineSink sink)
    : m_executor(std::move(executor)),
      m_number(number),
      m_inputs(inputs),
      m_catalogue(catalogue),
      m_sink(std::move(sink)) {}

Stream::~Stream() {
    LeaveCatalogue();
}

void Stream::Start() {
    m_output =
        std::make_unique<StreamOutput>([executor = m_executor, weak = weak_from_this()](std::string reason) {
            boost::asio::post(executor, [weak, reason = std::move(reason)] {
                if (const auto stream = weak.lock()) {
                    common::ProgramLog().Warning("stream " + std::to_string(stream->m_number) +
                                                 ": output failed: " + OneLine(reason));
                    stream->m_sink(ReportLine(stream->m_number, kStreamError, reason));
                }
            });
        });
}

bool Stream::AddClient(const ClientAddress& client) {
    if (m_clients.contains(client)) {
        return true;
    }
    if (m_clients.size() >= kMaxClientsPerStream) {
        return false;
    }
    m_clients.insert(client);
    m_output->AddClient(client);
    return true;
}

void Stream::RemoveClient(const ClientAddress& client) {
    if (m_clients.erase(client) > 0) {
        m_output->RemoveClient(client);
    }
}

void Stream::AddMedia(const MediaReference& reference) {
    Unload();
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
        MakeNotify()({MediaEvent::Kind::kStatus, "connecting"});
    } else if (reference.kind == MediaReference::Kind::kInput) {
        // A live source never reports that it has its first sound.
        MakeNotify()({MediaEvent::Kind::kReady, {}});
    }
    m_output->SetFeed(m_media->Feed());
}

void Stream::Unload() {
    DropMedia();
    LeaveCatalogue();
    m_lastInfo.clear();
    m_lastStatus.clear();
}

void Stream::DropMedia() {
    ++m_generation;
    m_output->SetFeed(nullptr);
    m_media.reset();
    m_ready = false;
}

void Stream::SetState(PlayState state) {
    if (state == PlayState::kStop) {
        Unload();
        return;
    }
    m_paused = state == PlayState::kPause;
    m_output->SetPaused(m_paused);
}

/// Hands events of the media that is being loaded over to the loop, marked with its generation.
MediaNotify Stream::MakeNotify() {
    return [executor = m_executor, weak = weak_from_this(), generation = m_generation](MediaEvent event) {
        boost::asio::post(executor, [weak, generation, event = std::move(event)]() mutable {
            if (const auto stream = weak.lock()) {
                stream->OnMediaEvent(generation, event);
            }
        });
    };
}

std::unique_ptr<MediaSource> Stream::OpenMedia(const MediaReference& reference, std::string& error) {
    switch (reference.kind) {
        case MediaReference::Kind::kFile:
            return MediaSource::OpenFile(reference.target, MakeNotify(), error);
        case MediaReference::Kind::kWeb:
            return MediaSource::OpenWeb(reference.target, MakeNotify(), error);
        case MediaReference::Kind::kInput:
            if (const auto input = m_inputs.find(reference.target); input != m_inputs.end()) {
                return MediaSource::OpenInput(input->second, MakeNotify(), error);
            }
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
    if (generation != m_generation) {
        return;
    }
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
        case MediaEvent::Kind::kTags:
            // The tags of a file are the controller's business already.
            if (m_mediaKind == MediaReference::Kind::kWeb) {
                Report(kStreamInfo, event.text, m_lastInfo);
            }
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
    Unload();
    m_sink(EndOfMediaLine(m_number));
}

void Stream::OnFailed(const std::string& reason) {
    if (m_catalogueMedia && ++m_catalogueMedia->failedTracks < kMaxFailedTracks && GoOnWithChannel()) {
        common::ProgramLog().Warning("stream " + std::to_string(m_number) + ": left out: " + OneLine(reason));
        return;
    }
    Fail(reason);
}

void Stream::Fail(const std::string& reason) {
    Unload();
    common::ProgramLog().Warning("stream " + std::to_string(m_number) + ": bad media: " + OneLine(reason));
    m_sink(BadMediaLine(m_number, reason));
}

void Stream::OnReady() {
    if (std::exchange(m_ready, true) || m_mediaKind == MediaReference::Kind::kFile) {
        return;
    }
    if (m_media->IsBroadcast()) {
        m_sink(ReportLine(m_number, kStreamCaps, kNoPause));
    }
    MoveToStart();
}

void Stream::Report(std::string_view prefix, const std::string& text, std::string& last) {
    if (std::exchange(last, text) != text) {
        m_sink(ReportLine(m_number, prefix, text));
    }
}

} // namespace korvel::audioserver

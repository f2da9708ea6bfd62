// Media of the catalogue: looked up, opened where they are, and for a channel looked up again.
#include <stdexcept>
#include <utility>

#include "audioserver/LineFormat.h"
#include "audioserver/Stream.h"
#include "common/Address.h"

namespace korvel::audioserver {

void Stream::LookUp() {
    m_catalogue.Resolve(m_number, m_catalogueMedia->id, m_catalogueMedia->turn,
                        [weak = weak_from_this(), generation = m_generation](
                            const std::optional<CatalogClient::Place>& place, const std::string& error) {
                            const auto stream = weak.lock();
                            if (!stream || generation != stream->m_generation)
                                return;
                            if (place)
                                stream->OnFound(*place);
                            else
                                stream->Fail(error);
                        });
}

void Stream::OnFound(const CatalogClient::Place& place) {
    m_catalogueMedia->turn = place.turn;
    m_catalogueMedia->startMilliseconds = place.offsetMilliseconds;
    if (place.turn)
        m_start = 0;
    m_place = place.media;
    m_isWebPlace = common::ParseWebAddress(place.media).has_value();
    std::string error = "not an absolute path or a web address";
    try {
        if (m_isWebPlace || m_place.starts_with('/'))
            m_media = OpenPlace(MakeOwner(), error);
    } catch (const std::runtime_error& failure) {
        error = failure.what();
    }
    if (!m_media) {
        OnFailed(error);
        return;
    }
    StartPatience();
    if (place.offsetMilliseconds == 0 && m_start == 0)
        ConnectFeed();
    Changed();
}

// What is not at its beginning is drawn from only when it has been moved.
void Stream::MoveToStart() {
    if (m_catalogueMedia && m_catalogueMedia->startMilliseconds > 0)
        m_media->StartAt(std::exchange(m_catalogueMedia->startMilliseconds, 0));
}

// A pause may have come while the media was looked up.
void Stream::ConnectFeed() {
    m_output->GetFeeds().Set(m_media->Feed(), m_paused);
}

// False when this is no channel.
bool Stream::GoOnWithChannel() {
    if (!m_catalogueMedia || !m_catalogueMedia->turn)
        return false;
    DropMedia();
    LookUp();
    return true;
}

void Stream::LeaveCatalogue() {
    if (m_catalogueMedia) {
        m_catalogue.Release(m_number);
        m_catalogueMedia.reset();
    }
}

} // namespace korvel::audioserver

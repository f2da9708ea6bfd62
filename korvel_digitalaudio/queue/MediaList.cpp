#include "queue/MediaList.h"

#include <algorithm>

namespace {

bool IsListed(const AudioMedia& media) {
    return media.type >= MEDIA_DIGITAL && media.type <= MEDIA_INTERNET_RADIO;
}

void PrintSong(KVXML::Printer& printer, const AudioMedia& media, bool internetRadio) {
    printer.Element("song", [&] {
        if (media.type == MEDIA_DIGITAL) {
            printer.Attribute("id", media.mediaId);
        } else if (media.type == MEDIA_RHAPSODY_TRACK) {
            printer.Attribute("id", media.externalId);
        } else if (media.type == MEDIA_RHAPSODY_CHANNEL) {
            printer.Attribute("id", media.metaData);
            printer.Attribute("station_id", media.externalId);
        }
        printer.Attribute("source", media.ShownSource(internetRadio));
    });
}

} // namespace

void MediaList::MakeRoom(std::size_t count) {
    const std::size_t size = m_items.size();
    if (size + count > m_items.capacity())
        m_items.reserve(size + size / 16 + count);
}

void MediaList::Add(const AudioMedia& item) {
    ++m_revision;
    m_unlisted += IsListed(item) ? 0 : 1;
    if (m_items.size() < m_items.capacity()) {
        m_items.push_back(item);
    } else {
        AudioMedia added = item; // maybe one of those that move
        MakeRoom(1);
        m_items.push_back(std::move(added));
    }
}

void MediaList::Remove(const AudioMedia& item) {
    const AudioMedia removed = item; // maybe one of those that go
    const auto first = std::find(m_items.begin(), m_items.end(), removed);
    if (first == m_items.end())
        return;
    const auto place = static_cast<std::size_t>(first - m_items.begin());
    const std::size_t before = m_items.size();
    m_items.erase(std::remove(first, m_items.end(), removed), m_items.end());

    ++m_revision;
    const std::size_t count = before - m_items.size();
    m_unlisted -= IsListed(removed) ? 0 : count;
    if (count == 1 && place < m_texts.GetCount())
        m_texts.Remove(place);
    else
        m_texts.Truncate(std::min(place, m_texts.GetCount()));
}

void MediaList::Replace(const std::vector<AudioMedia>& items) {
    ++m_revision;
    m_items = items;
    m_unlisted =
        m_items.size() - static_cast<std::size_t>(std::count_if(m_items.begin(), m_items.end(), IsListed));
    m_texts.Truncate(0);
}

void MediaList::SetMetaData(const std::string& text) {
    ++m_revision;
    m_items.front().metaData = text;
    m_texts.Truncate(0);
}

const std::string& MediaList::GetText(bool internetRadio) const {
    if (m_shownAsRadio != internetRadio)
        m_texts.Truncate(0);
    m_shownAsRadio = internetRadio;
    m_texts.Append(m_items.size() - m_texts.GetCount(), [&](KVXML::Printer& printer, std::size_t place) {
        PrintSong(printer, m_items[place], internetRadio);
    });
    return m_texts.GetText();
}

#include <optional>

#include "basics/Flags.h"
#include "driver/korvel_digitalaudio.h"

namespace {

// The parameter's text, or none when it is absent; a present one may be empty.
class OptionalText {
public:
    OptionalText(const ICmdMessage& message, const char* name) {
        if (message.HasParam(name))
            m_text = message.GetParam(name);
    }
    const std::string* Get() const { return m_text ? &*m_text : nullptr; }

private:
    std::optional<std::string> m_text;
};

} // namespace

// What is really playing, told by another device where the stream itself cannot tell.
void korvel_digitalaudio::OnUpdateSecondaryMediaInfo(const ICmdMessage& message, ICmdReturn*) {
    AudioQueue* queue = nullptr;
    if (message.HasParam("roomId"))
        queue = AudioServer_GetQueueFromRoom(message.GetNumber("roomId"));
    else if (message.HasParam("queueId"))
        queue = AudioServer_GetQueueFromId(message.GetNumber("queueId"));
    if (!queue)
        return;
    const OptionalText artist(message, "artist");
    const OptionalText album(message, "album");
    const OptionalText title(message, "title");
    const OptionalText genre(message, "genre");
    const OptionalText imageUrl(message, "imageUrl");
    queue->UpdateSecondaryInfo(flags::ReadNumberOrWord(message, "merge"), artist.Get(), album.Get(),
                               title.Get(), genre.Get(), imageUrl.Get());
    queue->UpdateRoomMediaVariable(queue->GetFirstSong(), nullptr, flags::ReadNumberOrWord(message, "force"));
    queue->UpdateInfoVariable();
    UpdateQueueStatusVariable();
}

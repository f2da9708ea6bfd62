#include <boost/algorithm/string/case_conv.hpp>
#include <optional>

#include "commands/Parameters.h"
#include "driver/korvel_digitalaudio.h"

namespace {

bool IsTrue(const std::string& flag) {
    return kv::ToLong(flag) != 0 || boost::algorithm::to_lower_copy(flag) == kv::TRUE_STRING;
}

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
    queue->UpdateSecondaryInfo(IsTrue(message.GetParam("merge")), artist.Get(), album.Get(), title.Get(),
                               genre.Get(), imageUrl.Get());
    queue->UpdateRoomMediaVariable(queue->GetFirstSong(), nullptr, IsTrue(message.GetParam("force")));
    queue->UpdateInfoVariable();
    UpdateQueueStatusVariable();
}

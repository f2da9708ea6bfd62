// Media as commands name them.
#pragma once

#include <cstdint>
#include <string_view>

#include "platform/CmdMessage.h"
#include "platform/Xml.h"
#include "queue/AudioMedia.h"

namespace commands {

// The sources that a command knows: the song of the database and the track of the streaming service, or these
// and the service's channel.
enum class Sources { kSongs, kSongsAndChannels };

// An item as it was named. One of a source that the command does not know has that type and no id; what
// becomes of it is up to the command.
struct NamedItem {
    AudioMedia media;
    bool known = false;
};

// The item of that source (an AudioMediaType) and id.
NamedItem ReadItem(std::int32_t source, std::string_view id, Sources sources);

// The item that MEDIA_ID and SOURCE of a command name; without SOURCE it is a song.
NamedItem ReadItem(const ICmdMessage& message, Sources sources);

// The item of a list's element: <MEDIA_ID>812</MEDIA_ID> or <SONG SOURCE="2" ID="Tra.1"/>. An element of any
// other name is the empty item.
NamedItem ReadItem(const KVXML::INode& element, Sources sources);

// Whether the element names its source.
inline bool IsSong(const KVXML::INode& element) {
    return element.GetName() == "SONG";
}

} // namespace commands

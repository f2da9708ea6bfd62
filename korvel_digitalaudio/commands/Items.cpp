#include "commands/Items.h"

#include "platform/Text.h"

namespace commands {

NamedItem ReadItem(std::int32_t source, std::string_view id, Sources sources) {
    NamedItem item{.media = AudioMedia(), .known = true};
    item.media.type = source;
    if (source == MEDIA_DIGITAL)
        item.media.mediaId = kv::ToULong(id);
    else if (source == MEDIA_RHAPSODY_TRACK ||
             (source == MEDIA_RHAPSODY_CHANNEL && sources == Sources::kSongsAndChannels))
        item.media.externalId = id;
    else
        item.known = false;
    return item;
}

NamedItem ReadItem(const ICmdMessage& message, Sources sources) {
    const std::string source = message.GetParam("SOURCE");
    return ReadItem(source.empty() ? std::int32_t{MEDIA_DIGITAL} : kv::ToLong(source),
                    message.GetParam("MEDIA_ID"), sources);
}

NamedItem ReadItem(const KVXML::INode& element, Sources sources) {
    if (element.GetName() == "MEDIA_ID")
        return ReadItem(MEDIA_DIGITAL, element.GetText(), sources);
    if (IsSong(element))
        return ReadItem(kv::ToLong(element.GetAttribute("SOURCE")), element.GetAttribute("ID"), sources);
    return {.media = AudioMedia(), .known = true};
}

} // namespace commands

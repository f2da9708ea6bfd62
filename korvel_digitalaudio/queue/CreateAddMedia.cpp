#include <boost/algorithm/string/predicate.hpp>

#include "basics/Asserts.h"
#include "platform/DriverHelper.h"
#include "platform/InstanceManager.h"
#include "platform/MediaManager.h"
#include "platform/Services.h"
#include "queue/AudioMedia.h"
#include "server/link/ASPacket.h"
#include "server/link/ASPackets.h"

namespace {

constexpr const char* kMountedPrefix = "/media";

std::string BroadcastText(IMediaManager& mediaManager, const AudioMedia& media) {
    std::string location = media.externalId;
    if (media.mediaId != 0) {
        location.clear();
        mediaManager.GetLocation(media.mediaId, "BROADCAST_AUDIO", location);
    }
    return "stream-" + location;
}

// Where the storage device is mounted on the audio server; "" when the device does not say or is not asked.
std::string AskMountPath(IDriverHelper& driverHelper, IDeviceMessaging& messaging,
                         std::uint32_t storageDevice, const std::function<bool()>& isWanted) {
    std::string reply;
    if (auto message = driverHelper.CreateMessage("GET_MOUNT_PATH")) {
        message->AddParam("ADD_AUDIO", "INT", "1");
        if (isWanted()) // each call so far may have ended the queue
            messaging.SendMessage(storageDevice, *message, &reply);
    }
    return reply;
}

// False when the song has no location.
bool SongText(IDriverHelper& driverHelper, IMediaManager& mediaManager, IDeviceMessaging& messaging,
              std::uint32_t mediaId, const std::function<bool()>& isWanted, std::string& text) {
    if (mediaManager.GetLocation(mediaId, "SONG", text) < 0)
        return false;
    const std::uint32_t storageDevice = mediaManager.GetStorageDevice(mediaId);
    if (!boost::algorithm::starts_with(text, kMountedPrefix)) {
        const std::string mountPath = AskMountPath(driverHelper, messaging, storageDevice, isWanted);
        if (!mountPath.empty())
            text = std::string(kMountedPrefix) + "/" + mountPath + "/" + text;
    }
    return true;
}

} // namespace

std::unique_ptr<ASPacketBase> ASPacket::CreateAddMedia(IDriverHelper& driverHelper,
                                                       IInstanceManager& instances, const AudioMedia& media,
                                                       bool broadcast,
                                                       const std::function<bool()>& isWanted) {
    switch (media.type) {
        case MEDIA_RHAPSODY_TRACK:
        case MEDIA_RHAPSODY_CHANNEL:
            return std::make_unique<ASAddRhapsodyMediaPacket>(media.externalId);
        case MEDIA_DIGITAL:
        case MEDIA_INTERNET_RADIO:
            break;
        default:
            return nullptr;
    }

    auto* mediaManager = kv::GetService<IMediaManager>(instances);
    auto* messaging = kv::GetService<IDeviceMessaging>(instances);
    if (!mediaManager || !messaging) {
        kv::AssertWrite(asserts::kPacketPath, asserts::kNoMediaServices, kv::StackTrace());
        return nullptr;
    }
    std::string text;
    if (broadcast)
        text = BroadcastText(*mediaManager, media);
    else if (!SongText(driverHelper, *mediaManager, *messaging, media.mediaId, isWanted, text))
        return nullptr;
    return std::make_unique<ASAddMediaPacket>("\"file:/" + text + "\"");
}

// The records of source selection: which room hears which source, and how.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

// Who selects what.
struct AVParams {
    std::uint32_t roomId = 0;
    std::uint32_t queueId = 0;        // the queue that the room is to join; 0 when none is named
    std::string mediaKind;            // "QUEUE", "SONG", "BROADCAST_AUDIO", "ANNOUNCEMENT", ...
    std::uint32_t sourceDeviceId = 0; // the device that provides the media
};

// One end of an audio or video connection.
struct AV_Class {
    std::uint32_t classType = 0;
    std::uint32_t bindingId = 0; // the binding of the audio server that is to play
};

// Class types that appear in validity checks: a digital-audio output and the audio endpoint of a room.
inline constexpr std::uint32_t kAvClassDigitalAudio = 6;
inline constexpr std::uint32_t kAvClassRoomEndpoint = 15;

// Where and what.
struct AVLocationInfo {
    std::string endpointAddress; // IP address of the room's audio endpoint
    std::uint32_t endpointPort = 0;
    std::uint32_t endpointChannel = 0;
    std::string inputName;               // a local input; empty for library media
    std::vector<std::uint32_t> mediaIds; // media to queue
    std::uint32_t targetDeviceId = 0;    // is sent "MEDIA_SELECTED"
    std::string locationKind;            // "GENERIC_MEDIA" bypasses all queue handling
    std::string location;                // filled by OnAVAddLocationInfo: where the media is
};

// A driver's private addition to a location; this driver makes none.
struct AVDriverLocationInfo;

// What the room ended in.
struct AVReturn {
    bool handled = false;
    std::uint32_t queueId = 0;
    std::uint32_t mediaId = 0;
    std::string mediaKind;
};

#pragma once

#include <string>

// Announcements, offered by the driver to the core: one audio file played at once, outside any queue, in the
// rooms that select the driver with the media kind "ANNOUNCEMENT". Registered with the instance manager under
// kInterfaceId while the driver lives; driver thread. Nothing happens while no local audio server has come
// online.
class IDigitalAudio {
public:
    static constexpr const char* kInterfaceId = "{3C11AB22-A8E6-45c7-9C22-1EC400C6AF45}";

    // Asks the audio server for an announcement stream; IAnnouncementNotifier::AnnouncementStreamReady tells
    // when it is there.
    virtual void CreateAnnouncementStream() = 0;
    // Gives the stream up.
    virtual void RemoveAnnouncementStream() = 0;
    // Plays the file at `path`; AnnouncementComplete tells when it has ended. Nothing happens for an empty
    // path.
    virtual void PlayAnnouncement(const std::string& path) = 0;

protected:
    ~IDigitalAudio() = default;
};

// The decoding half of a stream: one media, from its reference to 48 kHz stereo samples.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "audioserver/GstPointers.h"
#include "audioserver/MediaEvent.h"
#include "audioserver/PcmFeed.h"

namespace korvel::audioserver {

/// A pipeline of its own, so that whatever a media does (errors, odd timestamps, a stalled server) ends with
/// it and never reaches the sending half. Made, used and destroyed on the loop. Events go through the notify,
/// from any thread; a late one may come after the destructor, so the notify must tell old media from new.
class MediaSource {
public:
    /// Each opens a media and starts to decode. Null when it cannot be opened, with the reason in error.
    static std::unique_ptr<MediaSource> OpenFile(const std::string& path, MediaNotify notify,
                                                 std::string& error);
    static std::unique_ptr<MediaSource> OpenWeb(const std::string& url, MediaNotify notify,
                                                std::string& error);
    /// @param description a URI, or source elements in the notation of gst-launch
    static std::unique_ptr<MediaSource> OpenInput(const std::string& description, MediaNotify notify,
                                                  std::string& error);

    ~MediaSource();
    MediaSource(const MediaSource&) = delete;
    MediaSource& operator=(const MediaSource&) = delete;

    /// Goes to a place other than the beginning, if the media can. To be called after kReady, before anything
    /// is drawn from the feed.
    void StartAt(std::uint32_t milliseconds);

    /// Where the sender draws. The feed may outlive the source; it is then at its end.
    std::shared_ptr<PcmFeed> Feed() const { return m_feed; }

    /// Whether the source has no length, so that pausing would only lose what is played meanwhile. Meaningful
    /// once kReady was notified.
    bool IsBroadcast() const;

private:
    struct Reserve;

    MediaSource(ElementPtr head, const Reserve& reserve, MediaNotify notify);
    bool Start(std::string& error);
    void ConnectHead(GstElement* head, GstElement* converter);
    static std::unique_ptr<MediaSource> Open(ElementPtr head, const Reserve& reserve, MediaNotify notify,
                                             std::string& error);

    ElementPtr m_pipeline;
    GstElement* m_head = nullptr; // owned by the pipeline
    bool m_live;
    std::shared_ptr<PcmFeed> m_feed;
};

} // namespace korvel::audioserver

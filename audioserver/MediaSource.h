// The decoding half of a stream: one media, from its reference to 48 kHz stereo samples.
#pragma once

#include <boost/asio/any_io_executor.hpp>
#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>

#include "audioserver/GstPointers.h"
#include "audioserver/MediaEvent.h"
#include "audioserver/PcmFeed.h"
#include "audioserver/SourceThread.h"

namespace korvel::audioserver {

// A pipeline of its own, so that whatever a media does (errors, odd timestamps, a stalled server) ends with
// it and never reaches the sending half. Made, used and destroyed on the loop; all that may take long happens
// in its SourceThread. Events go through the notify, from any thread, and none once it is destroyed.
class MediaSource {
public:
    struct Owner {
        boost::asio::any_io_executor executor;
        std::chrono::milliseconds toEnd; // patience with the end of the source
        MediaNotify notify;
    };

    // Each makes a source for a media and begins to open it. Null when there is nothing to open, with the
    // reason in error; what opening finds is notified.
    // Throws std::runtime_error when GStreamer or the machine lacks what it takes.
    static std::unique_ptr<MediaSource> OpenFile(const std::string& path, Owner owner, std::string& error);
    static std::unique_ptr<MediaSource> OpenWeb(const std::string& url, Owner owner, std::string& error);
    // `description`: a URI, or source elements in the notation of gst-launch.
    static std::unique_ptr<MediaSource> OpenInput(const std::string& description, Owner owner,
                                                  std::string& error);
    ~MediaSource();
    MediaSource(const MediaSource&) = delete;
    MediaSource& operator=(const MediaSource&) = delete;

    // Goes to a place other than the beginning, if the media can, and notifies kMoved. To be called after
    // kReady; until then nothing must be drawn from the feed.
    void StartAt(std::uint32_t milliseconds);

    // Where the sender draws. The feed may outlive the source; it is then at its end.
    std::shared_ptr<PcmFeed> Feed() const { return m_feed; }

    // Finds out whether the source has no length, so that pausing would only lose what is played meanwhile,
    // and notifies kFinite, kBroadcast or kStation. To be called after kReady.
    void FindLength();

    // To be called on the loop when the source, once destroyed, has ended or is abandoned.
    void SetEndNotify(SourceThread::EndNotify notify);

private:
    struct Reserve;
    // The notify for as long as the source lives.
    struct Outlet;
    // What is found before the pipeline starts; empty when nothing is wrong.
    using Look = std::function<std::string()>;

    MediaSource(ElementPtr head, const Reserve& reserve, SourceThread::Kind kind, std::string device,
                Owner owner);

    void Start(Look look, bool trusted);
    void ConnectHead(GstElement* head, GstElement* converter);
    static bool HasRoom(SourceThread::Kind kind, std::string& error);

    std::shared_ptr<Outlet> m_outlet;
    std::shared_ptr<GstElement> m_pipeline; // the steps of the thread hold it, too
    GstElement* m_head = nullptr;           // owned by the pipeline
    std::shared_ptr<PcmFeed> m_feed;
    SourceThread m_thread;
};

} // namespace korvel::audioserver

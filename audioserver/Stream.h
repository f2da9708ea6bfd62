// One stream: its clients, its media and what it tells its owner.
#pragma once

#include <boost/asio/any_io_executor.hpp>
#include <boost/asio/steady_timer.hpp>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <set>
#include <string>

#include "audioserver/CatalogClient.h"
#include "audioserver/MediaEvent.h"
#include "audioserver/MediaReference.h"
#include "audioserver/MediaSource.h"
#include "audioserver/Protocol.h"
#include "audioserver/SourceTimes.h"
#include "audioserver/StreamOutput.h"
#include "common/BackOff.h"
#include "common/Log.h"

namespace korvel::audioserver {

// Local inputs by name.
using Inputs = std::map<std::string, std::string>;

// What all streams of a server have in common.
struct StreamSettings {
    Inputs inputs;
    SourceTimes times;
};

// Lives on the loop. A new media replaces the one before at once; each source of it has a generation, and an
// event of an earlier generation is dropped, so nothing is ever reported about a media that is no longer
// loaded. What was ready of the media before is heard until the new one has sound (Feeds).
//
//     empty --AddMedia--> playing <--SetState play/pause--> paused
//     playing, paused --a station is lost--> reconnecting --a wait, the end of the source--> playing, paused
//     any --AddMedia--> playing            (the new media)
//     any --Unload, end, failure--> empty  (the stream and its clients stay)
//
// A source whose first sound does not come in time has failed, unless it is paused; so has one with a reserve
// that has run dry for too long. A broadcast that has played does not fail and a station does not end: it is
// connected to again, after ever longer waits, until it is unloaded.
//
// A media of the catalogue is looked up first, which is silence. A channel of it has no end: after each
// track the next is looked up.
class Stream : public std::enable_shared_from_this<Stream> {
public:
    // Takes the lines of events, on the loop and never from inside a call of this class.
    using LineSink = std::function<void(std::string_view line)>;

    // `settings`: must outlive the stream.
    // `catalogue`: must outlive the stream.
    // Throws std::runtime_error when the output cannot be built.
    static std::shared_ptr<Stream> Create(boost::asio::any_io_executor executor, StreamNumber number,
                                          const StreamSettings& settings, CatalogClient& catalogue,
                                          LineSink sink);
    ~Stream();
    Stream(const Stream&) = delete;
    Stream& operator=(const Stream&) = delete;

    // Whether the client is in the stream now; false when it is full. Adding a client again changes nothing.
    bool AddClient(const ClientAddress& client);

    // Removing a client that is not in the stream changes nothing.
    void RemoveClient(const ClientAddress& client);

    // Starts a media. What is wrong with it is reported later as an event.
    void AddMedia(const MediaReference& reference);

    // Ends the media without an event.
    void Unload();

    void SetState(PlayState state);

private:
    Stream(boost::asio::any_io_executor executor, StreamNumber number, const StreamSettings& settings,
           CatalogClient& catalogue, LineSink sink);

    void Start();
    MediaNotify MakeNotify();
    std::unique_ptr<MediaSource> OpenMedia(const MediaReference& reference, std::string& error);
    void OnMediaEvent(std::uint64_t generation, MediaEvent& event);
    void OnReady();
    void OnLength(MediaEvent::Kind length);
    void OnBroadcast();
    void OnDrained();
    void OnFailed(const std::string& reason);
    void Fail(const std::string& reason);
    void LeaveMedia();
    void DropMedia(SourceThread::EndNotify onEnd = nullptr);
    void Warn(const std::string& text, common::LogPlace place = common::LogPlace::Here()) const;
    bool Report(std::string_view prefix, const std::string& text, std::string& last);
    MediaSource::Owner MakeOwner();

    // StreamStation.cpp
    void StartPatience();
    bool HoldEnd(MediaEvent end);
    void DecideEnd();
    bool CanReconnect() const;
    void Reconnect(const std::string& reason);
    void ConnectWhenFree();
    void Connect();
    void TellTitle();

    // StreamCatalogue.cpp
    void LookUp();
    void OnFound(const CatalogClient::Place& place);
    void MoveToStart();
    void ConnectFeed();
    bool GoOnWithChannel();
    void LeaveCatalogue();

    // What of the catalogue is loaded.
    struct CatalogueMedia {
        std::string id;
        // Of the channel's track that was found last; none for a track.
        std::optional<std::uint32_t> turn;
        // Where the media that is being opened starts; 0 once it has.
        std::uint32_t startMilliseconds = 0;
        unsigned failedTracks = 0;
    };

    boost::asio::any_io_executor m_executor;
    StreamNumber m_number;
    const StreamSettings& m_settings;
    CatalogClient& m_catalogue;
    LineSink m_sink;
    std::unique_ptr<StreamOutput> m_output;
    std::set<ClientAddress> m_clients;
    std::unique_ptr<MediaSource> m_media;
    MediaReference::Kind m_mediaKind = MediaReference::Kind::kBad;
    std::uint64_t m_generation = 0;
    bool m_ready = false;
    bool m_paused = false;
    std::optional<CatalogueMedia> m_catalogueMedia;
    std::string m_lastInfo;
    std::string m_lastStatus;

    // What a source says that it plays, from its thread to the loop. A source that says much replaces what
    // has not been told yet.
    struct Title {
        std::mutex mutex;
        std::optional<std::string> text;
    };
    std::shared_ptr<Title> m_title = std::make_shared<Title>();
    boost::asio::steady_timer m_untilTitle;
    bool m_titleWaits = false;

    boost::asio::steady_timer m_patience;
    boost::asio::steady_timer m_untilRetry;
    common::BackOff m_backOff;   // before the station is connected to again
    unsigned m_untilConnect = 0; // what has still to happen before: the wait, the end of the source
    std::string m_address;       // of the station
    boost::asio::steady_timer m_untilLength;
    bool m_lengthIsAsked = false;
    std::optional<MediaEvent> m_heldEnd; // how the source has ended while its length was asked
    bool m_broadcast = false;
    bool m_station = false;
    bool m_played = false; // ever, since it was added
    bool m_sounds = false; // now, unless it is paused
};

} // namespace korvel::audioserver

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
#include "audioserver/StreamFacts.h"
#include "audioserver/StreamOutput.h"
#include "audioserver/watch/WatchProblem.h"
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
// A seek opens the media once more, aside, and takes that source in place of the first one when it stands where it is
// to: until then the first one is heard, and a seek that fails changes nothing.
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

    // What it is and does now.
    StreamFacts Look() const;

    // `changed`: called whenever Look() may say something else; looks later.
    void SetChangeNotify(std::function<void()> changed) { m_changed = std::move(changed); }

    // Hears once what has become of a seek: nothing when it is done, the sound stands there. May be called at once.
    using SeekAnswer = std::function<void(const std::optional<WatchRefusal>&)>;

    // Goes to a place of the media, which goes on there, or stays paused there. The newest of several wins.
    // `serial`: of the media that is meant; none for the one that is there.
    void Seek(std::optional<std::uint64_t> serial, std::uint32_t milliseconds, SeekAnswer answered);

    // The next media begins at this place if it is this one (in UTF-8) and has such a place, so that no sound from
    // before it is heard.
    void SetStart(std::string media, std::uint32_t milliseconds) {
        m_nextStart = NextStart{std::move(media), milliseconds};
    }

private:
    Stream(boost::asio::any_io_executor executor, StreamNumber number, const StreamSettings& settings,
           CatalogClient& catalogue, LineSink sink);

    void Start();
    MediaNotify MakeNotify();
    std::unique_ptr<MediaSource> OpenMedia(const MediaReference& reference, std::string& error);
    std::unique_ptr<MediaSource> OpenPlace(MediaSource::Owner owner, std::string& error) const;
    void OnMediaEvent(std::uint64_t generation, MediaEvent& event);
    void OnReady();
    void OnLength(MediaEvent::Kind length);
    void OnBroadcast();
    void OnDrained();
    void OnFailed(const std::string& reason);
    void Fail(const std::string& reason);
    void LeaveMedia();
    void EndMedia(StreamState how, const std::string& error = {});
    void DropMedia(SourceThread::EndNotify onEnd = nullptr);
    void Warn(const std::string& text, common::LogPlace place = common::LogPlace::Here()) const;
    bool Report(std::string_view prefix, const std::string& text, std::string& last);
    MediaSource::Owner MakeOwner();
    void Changed() const;

    // StreamFacts.cpp
    StreamState State() const;
    bool IsLive() const;
    bool CanSeek() const;

    // StreamSeek.cpp
    void TakeStart(const std::string& media);
    void AskAbilities();
    void OnAbilities(const MediaAbilities& abilities);
    void GoToStart();
    std::optional<WatchRefusal> RefuseSeek(std::uint32_t milliseconds) const;
    void OpenMove();
    MediaNotify MakeMoveNotify(std::uint64_t number);
    void OnMoveEvent(std::uint64_t number, MediaEvent& event);
    void OnArrival(MediaEvent::Kind what);
    void MoveOn();
    void EndMove(const std::optional<WatchRefusal>& refusal);
    void AdoptMove();

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

    // A seek that is under way.
    struct Move {
        std::uint32_t milliseconds = 0; // of the newest
        SeekAnswer answered;
        std::uint64_t number = 0;
        std::unique_ptr<MediaSource> source; // null until it is known what the media can
        bool open = false;
        bool isNewer = false; // than the place to which the source is on its way
        // There: it has gone, and has the first sound.
        bool moved = false;
        bool sounds = false;
    };

    struct NextStart {
        std::string media;
        std::uint32_t milliseconds = 0;
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

    // For those who watch.
    std::function<void()> m_changed;
    bool m_loaded = false;
    StreamState m_end = StreamState::kStopped; // while nothing is loaded
    std::string m_text;                        // of the media, in UTF-8
    std::uint64_t m_serial = 0;
    std::string m_error;
    std::optional<unsigned> m_fill;

    std::string m_place; // the path or address that is open
    bool m_isWebPlace = false;
    std::optional<MediaAbilities> m_abilities;
    bool m_abilitiesAreAsked = false;
    bool m_abilitiesAreOld = false; // changed since they were asked
    std::optional<NextStart> m_nextStart;
    std::uint32_t m_start = 0; // where the media that is being opened begins
    std::optional<Move> m_move;
    std::uint64_t m_moves = 0;
    std::uint64_t m_adopted = 0; // number of the move whose source is loaded; 0 for none
    boost::asio::steady_timer m_untilMove;

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
    boost::asio::steady_timer m_untilLength;
    bool m_lengthIsAsked = false;
    std::optional<MediaEvent> m_heldEnd; // how the source has ended while its length was asked
    bool m_broadcast = false;
    bool m_station = false;
    bool m_played = false; // ever, since it was added
    bool m_sounds = false; // now, unless it is paused
    bool m_lost = false;   // since it was connected to again it has not played
};

} // namespace korvel::audioserver

// A play queue on a link of its own, for tests that call it directly.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <memory>
#include <ostream>
#include <string>
#include <utility>
#include <vector>

#include "TestCore.h"
#include "platform/Text.h"
#include "queue/AudioQueue.h"

using Lines = std::vector<std::string>;

inline AudioMedia Song(std::uint32_t mediaId) {
    return AudioMedia::CreateTypeDigital(mediaId);
}
inline AudioMedia Track(const std::string& id) {
    return AudioMedia::CreateExternal(MEDIA_RHAPSODY_TRACK, id);
}
inline AudioMedia Channel(const std::string& station) {
    return AudioMedia::CreateExternal(MEDIA_RHAPSODY_CHANNEL, station);
}
inline AudioMedia Radio(std::uint32_t mediaId) {
    AudioMedia media = Song(mediaId);
    media.type = MEDIA_INTERNET_RADIO;
    return media;
}

// How a failed expectation shows an item.
inline void PrintTo(const AudioMedia& media, std::ostream* out) {
    *out << "type " << media.type << " id " << media.mediaId << " external \"" << media.externalId << "\"";
}

inline std::vector<AudioMedia> Songs(std::initializer_list<std::uint32_t> mediaIds) {
    std::vector<AudioMedia> songs;
    for (const std::uint32_t mediaId : mediaIds)
        songs.push_back(Song(mediaId));
    return songs;
}

inline std::vector<std::uint32_t> MediaIds(const std::vector<AudioMedia>& songs) {
    std::vector<std::uint32_t> ids;
    for (const AudioMedia& song : songs)
        ids.push_back(song.mediaId);
    return ids;
}

// The audio server acknowledges every line at once, so that Out() shows all lines where they were said.
class QueueFixture : public ::testing::Test {
protected:
    static constexpr std::uint32_t kNone = AudioQueue::NO_SONG_INDEX;
    static constexpr std::uint32_t kQueueId = 12;
    static constexpr std::uint32_t kOwner = 34;
    static constexpr std::uint32_t kListener = 200; // the device that registers for notifications

    QueueFixture() {
        core.SetHook([this](const ServiceCall& call) { OnCall(call); });
        NewQueue();
    }
    ~QueueFixture() override {
        queue.reset();
        core.ClearHook();
    }

    void NewQueue(KVRhapsodyClient::RhapsodyClient* rhapsody = nullptr,
                  IRhapsodyCallback* callback = nullptr) {
        queue = std::make_unique<AudioQueue>(core.Helper(), core.Instances(), link.get(), kQueueId, kOwner,
                                             rhapsody, callback);
        Out();
    }
    // Gives the queue its stream, number 1.
    void GiveStream() {
        queue->SetStreamId(1);
        Out();
    }
    void Register(const std::string& info = "") {
        queue->SetNotificationDevice(kListener);
        queue->SetQueueInfo(info);
    }

    // What came out since the last call: "send COMMAND" for a line to the audio server, else as it stands in
    // a transcript without its "< ".
    Lines Out() {
        Keep();
        Lines all;
        for (std::string line : std::exchange(m_kept, {})) {
            line.erase(0, 2);
            if (line.starts_with("send ")) {
                const std::size_t number = line.find('"') + 1;
                const std::size_t text = line.find(' ', number) + 1;
                line = "send " + line.substr(text, line.rfind("\\r\\n\"") - text);
            }
            all.push_back(std::move(line));
        }
        return all;
    }
    Lines Out(const std::string& start) { return Only(Out(), start); }
    Lines Sent() { return Out("send "); }

    // How often a service was called since the last call.
    int Calls(const std::string& name) {
        const auto count = std::count(m_calls.begin(), m_calls.end(), name);
        m_calls.clear();
        return static_cast<int>(count);
    }

    // Runs an input line; what came out before stays for Out().
    void Run(const std::string& line) {
        Keep();
        core.Run(line);
    }
    void Random(const std::string& numbers) { Run("random " + numbers); }
    void Advance(std::uint32_t milliseconds) { Run("advance " + std::to_string(milliseconds)); }

    // The current index, read where reading it moves nothing; only with shuffle off.
    std::uint32_t CurrentIndex() {
        return kv::ToULong(queue->GetStatusDataVersion132()->FindChild("index")->GetText());
    }
    // The active list from its first item on; leaves the last one current.
    std::vector<std::uint32_t> WalkActiveList() {
        const std::size_t size = queue->GetSongList().size();
        std::vector<std::uint32_t> ids;
        for (std::size_t i = 0; i < size; ++i) {
            queue->SetNextSong(static_cast<std::uint32_t>(i));
            ids.push_back(queue->GetNextSong().mediaId);
        }
        return ids;
    }
    std::vector<std::uint32_t> ListedIds() { return MediaIds(queue->GetSongList()); }

    TestCore core;
    kv::auto_com<ServerUtility> link =
        kv::auto_com<ServerUtility>::adopt(new ServerUtility(core.Helper(), core.Instances(), 3000));
    std::unique_ptr<AudioQueue> queue;

    // Called after the fixture's own share, before the service sees the call.
    std::function<void(const ServiceCall&)> onCall;

private:
    void Keep() {
        const Lines lines = core.TakeLines();
        m_kept.insert(m_kept.end(), lines.begin(), lines.end());
    }
    void OnCall(const ServiceCall& call) {
        m_calls.push_back(call.name);
        if (call.name == "SendBindMessage")
            link->KillAckTimer();
        if (onCall)
            onCall(call);
    }

    Lines m_calls;
    Lines m_kept;
};

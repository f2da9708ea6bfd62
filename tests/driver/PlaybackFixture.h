// A queue that plays.
#pragma once

#include <string>

#include "QueueFixture.h"

class QueuePlayback : public QueueFixture {
protected:
    QueuePlayback() {
        Run("song 1 location=/media/a.flac");
        Run("song 2 location=/media/b.flac");
        Run("station 5 location=http://radio.example/5");
    }

    // The lines to the audio server and the announced states ("=STATE"), in order.
    Lines Actions() {
        Lines actions;
        for (const std::string& line : Out()) {
            const std::size_t state = line.find(" QUEUE_STATE:STRING=");
            if (line.starts_with("send "))
                actions.push_back(line.substr(5));
            else if (state != std::string::npos)
                actions.push_back(line.substr(state + 19));
        }
        return actions;
    }
    // Holds one item, pinned, on a queue that has its stream and is registered.
    void HoldOne(const AudioMedia& media) {
        GiveStream();
        queue->AddSong(media, false, false);
        Register();
        Out();
    }
    Lines MediaInfos() { return Out("message 200 QUEUE_MEDIA_INFO_UPDATED"); }
};

// "message 200 QUEUE_MEDIA_INFO_UPDATED" of the fixture's queue with `rest` behind its id.
inline std::string MediaInfo(const std::string& rest) {
    return "message 200 QUEUE_MEDIA_INFO_UPDATED QUEUE_ID:INT=12 MEDIA_INFO:STRING=<mediainfo>"
           "<deviceid>100002</deviceid><queueid>12</queueid>" +
           rest + "</mediainfo>";
}

inline const std::string kAddA = "addmed 1 \\\"file://media/a.flac\\\"";

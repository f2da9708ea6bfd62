// The sending half of a stream: RTP to every client, for as long as the stream lives.
#pragma once

#include <gst/app/gstappsrc.h>

#include <cstdint>
#include <functional>
#include <string>

#include "audioserver/Descriptors.h"
#include "audioserver/Feeds.h"
#include "audioserver/GstPointers.h"
#include "audioserver/LineParser.h"

namespace korvel::audioserver {

// One pipeline from a stream's first moment to its last:
//
//     appsrc ! rtpL16pay ! rtpbin ! multiudpsink (RTP)
//                          rtpbin ! multiudpsink (RTCP, each client's port + 1)
//
// Its source sends a packet each 4 ms, out of the feeds or, for lack of one, silence. So a change of media is a
// change of feed between two packets: source identifier, sequence numbers and
// timestamps run on, and the rooms keep their place. The sink holds each packet until its time, which paces
// the whole; the decoder is paced by being drawn from. When nothing has played for a while, the stream sends
// nothing until there is sound again.
//
// Made, used and destroyed on the loop, apart from the filling of packets, which happens in the pipeline's
// thread.
class StreamOutput {
public:
    // `onError`: hears why the output has failed; called from GStreamer's threads.
    // Throws std::runtime_error when the pipeline cannot be built or started.
    explicit StreamOutput(std::function<void(std::string)> onError);
    ~StreamOutput();
    StreamOutput(const StreamOutput&) = delete;
    StreamOutput& operator=(const StreamOutput&) = delete;

    // A client is sent to from the next packet on. Adding one twice would need removing it twice.
    void AddClient(const ClientAddress& client);
    void RemoveClient(const ClientAddress& client);

    // What is sent.
    Feeds& GetFeeds() { return m_feeds; }

private:
    static void OnNeedData(GstAppSrc* source, guint length, gpointer self);
    void BuildPipeline();
    void SendPacket();
    void RestWhileIdle();
    std::uint64_t PacketsUntilNow() const;

    const DescriptorShare m_share{kDescriptorsPerStream};
    ElementPtr m_pipeline;
    GstElement* m_source = nullptr; // these three are owned by the pipeline
    GstElement* m_rtpSink = nullptr;
    GstElement* m_rtcpSink = nullptr;

    Feeds m_feeds;

    // Only used by the pipeline's thread.
    std::uint64_t m_packet = 0;
    std::uint64_t m_silentPackets = 0;
    bool m_resumed = false;
};

} // namespace korvel::audioserver

#include <gst/app/gstappsink.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <memory>

#include "audioserver/Feeds.h"

namespace korvel::audioserver {
namespace {

// A media's decoder, played by hand: its sound is packets of one value.
class Media {
public:
    explicit Media(std::uint8_t sound) : m_sound(sound) {
        g_object_set(m_sink.get(), "sync", FALSE, "async", FALSE, "wait-on-eos", FALSE, nullptr);
        gst_element_set_state(m_sink.get(), GST_STATE_PLAYING);
        Tell(gst_event_new_stream_start("media"));
        const CapsPtr caps(gst_caps_from_string(kPcmCaps));
        Tell(gst_event_new_caps(caps.get()));
        GstSegment segment;
        gst_segment_init(&segment, GST_FORMAT_TIME);
        Tell(gst_event_new_segment(&segment));
        m_feed = std::make_shared<PcmFeed>(GST_APP_SINK(m_sink.get()), PcmFeed::Reserve{0, 500, false},
                                           [](const MediaEvent&) {});
        m_feed->Open();
    }
    ~Media() { End(); }
    Media(const Media&) = delete;
    Media& operator=(const Media&) = delete;

    Media& Give(std::size_t packets) {
        for (std::size_t given = 0; given < packets; ++given) {
            GstBuffer* buffer = gst_buffer_new_allocate(nullptr, kPacketBytes, nullptr);
            gst_buffer_memset(buffer, 0, m_sound, kPacketBytes);
            EXPECT_EQ(gst_pad_chain(m_pad.get(), buffer), GST_FLOW_OK);
        }
        return *this;
    }
    void End() { gst_element_set_state(m_sink.get(), GST_STATE_NULL); }
    const std::shared_ptr<PcmFeed>& Feed() const { return m_feed; }

private:
    void Tell(GstEvent* event) { EXPECT_TRUE(gst_pad_send_event(m_pad.get(), event)); }

    ElementPtr m_sink{GST_ELEMENT(gst_object_ref_sink(gst_element_factory_make("appsink", nullptr)))};
    PadPtr m_pad{gst_element_get_static_pad(m_sink.get(), "sink")};
    std::uint8_t m_sound;
    std::shared_ptr<PcmFeed> m_feed;
};

class FeedsTest : public testing::Test {
protected:
    static void SetUpTestSuite() { gst_init(nullptr, nullptr); }

    // The sound of the next packet; 0 for silence.
    int Next() {
        std::array<std::uint8_t, kPacketBytes> packet;
        packet.fill(99);
        const bool isSound = m_feeds.Fill(packet, {});
        EXPECT_EQ(isSound, packet.front() != 0);
        EXPECT_TRUE(
            std::all_of(packet.begin(), packet.end(), [&](auto one) { return one == packet.front(); }));
        return packet.front();
    }
    // How many of the next packets have this sound, one after the other.
    unsigned Count(int sound) {
        unsigned count = 0;
        while (Next() == sound)
            ++count;
        return count;
    }

    Feeds m_feeds;
    Media m_one{1};
    Media m_other{2};
};

TEST_F(FeedsTest, AMediaFollowsTheOneBeforeWithoutAGap) {
    m_feeds.Set(m_one.Give(100).Feed());
    EXPECT_EQ(Next(), 1);
    m_feeds.Leave();
    EXPECT_EQ(Next(), 1);
    m_feeds.Set(m_other.Feed());
    EXPECT_EQ(Next(), 1);
    m_other.Give(2);
    EXPECT_EQ(Next(), 2);
    EXPECT_EQ(Next(), 2);
    // Once the new one has been heard, the one before is gone.
    EXPECT_EQ(Next(), 0);
}

TEST_F(FeedsTest, TheOneBeforeNeedsNoSource) {
    m_feeds.Set(m_one.Give(20).Feed());
    EXPECT_EQ(Next(), 1);
    m_feeds.Leave();
    m_one.End();
    EXPECT_EQ(Count(1), 19U);
    EXPECT_EQ(Next(), 0);
}

TEST_F(FeedsTest, TheOneBeforeIsHeardForAShortWhile) {
    m_feeds.Set(m_one.Give(300).Feed());
    EXPECT_EQ(Next(), 1);
    m_feeds.Leave();
    m_feeds.Set(m_other.Feed());
    EXPECT_EQ(Count(1), Feeds::kOverlapPackets);
}

TEST_F(FeedsTest, AChangeBeforeTheNewOneHasSoundLeavesNoGapEither) {
    m_feeds.Set(m_one.Give(300).Feed());
    EXPECT_EQ(Next(), 1);
    m_feeds.Leave();
    m_feeds.Set(Media(3).Feed());
    EXPECT_EQ(Next(), 1);
    m_feeds.Leave();
    EXPECT_EQ(Next(), 1);
    m_feeds.Set(m_other.Give(1).Feed());
    EXPECT_EQ(Next(), 2);
}

TEST_F(FeedsTest, SilenceIsSilentAtOnce) {
    m_feeds.Set(m_one.Give(100).Feed());
    EXPECT_EQ(Next(), 1);
    m_feeds.Leave();
    m_feeds.Set(nullptr);
    EXPECT_EQ(Next(), 0);
}

TEST_F(FeedsTest, APauseIsSilentAndOnlyThePresentMediaGoesOn) {
    m_feeds.Set(m_one.Give(100).Feed());
    EXPECT_EQ(Next(), 1);
    m_feeds.Leave();
    m_feeds.Set(m_other.Give(1).Feed());
    m_feeds.SetPaused(true);
    EXPECT_EQ(Next(), 0);
    m_feeds.SetPaused(false);
    EXPECT_EQ(Next(), 2);
    EXPECT_EQ(Next(), 0);
}

TEST_F(FeedsTest, WhatWasPausedIsNotHeardBeforeANewOne) {
    m_feeds.Set(m_one.Give(100).Feed());
    EXPECT_EQ(Next(), 1);
    m_feeds.SetPaused(true);
    m_feeds.Leave();
    m_feeds.Set(m_other.Feed());
    EXPECT_EQ(Next(), 0);
    m_other.Give(1);
    EXPECT_EQ(Next(), 2);
}

TEST_F(FeedsTest, OnlyAFeedThatIsNotPausedIsWorthWakingUpFor) {
    m_feeds.Set(m_one.Feed());
    EXPECT_FALSE(m_feeds.WaitUntilWanted());
    m_feeds.Stop();
    m_feeds.SetPaused(true);
    EXPECT_FALSE(m_feeds.WaitUntilWanted());
}

} // namespace
} // namespace korvel::audioserver

// Commands to an audio server: their texts, and how they wait for their stream.
#include <gtest/gtest.h>

#include "TestCore.h"
#include "queue/AudioMedia.h"
#include "server/link/ASPacket.h"
#include "server/link/ASPackets.h"
#include "server/link/ServerUtility.h"

namespace {

template <class Packet>
std::string OnStream(Packet&& packet, std::uint32_t stream) {
    packet.SetStreamId(stream);
    return packet.str();
}

TEST(Packets, WithoutAStreamOfTheirOwn) {
    EXPECT_EQ(ASResetPacket().str(), "reset");
    EXPECT_EQ(ASAddStreamPacket().str(), "addstr");
    EXPECT_EQ(ASAddAnnouncementPacket().str(), "addann");
}

TEST(Packets, OnAStream) {
    EXPECT_EQ(OnStream(ASRemoveStreamPacket(), 7), "remstr 7");
    EXPECT_EQ(OnStream(ASEndOfStreamPacket(), 7), "eos 7");
    EXPECT_EQ(OnStream(ASRemoveMediaPacket(), 4294967295u), "remmed 4294967295");
    EXPECT_EQ(OnStream(ASAddClientPacket("10.0.0.5", 5004), 0), "addcli 0 10.0.0.5 5004");
    EXPECT_EQ(OnStream(ASRemoveClientPacket("10.0.0.5", 5004), 7), "remcli 7 10.0.0.5 5004");
}

TEST(Packets, ChangeOfState) {
    EXPECT_EQ(OnStream(ASChangeStatePacket(PLAY), 7), "setsta 7 play");
    EXPECT_EQ(OnStream(ASChangeStatePacket(PAUSE), 7), "setsta 7 pause");
    EXPECT_EQ(OnStream(ASChangeStatePacket(STOP), 7), "setsta 7 stop");
    EXPECT_EQ(OnStream(ASChangeStatePacket(END), 7), "setsta 7 stop");
}

TEST(Packets, Media) {
    EXPECT_EQ(OnStream(ASAddMediaPacket("\"file://a b\""), 7), "addmed 7 \"file://a b\"");
    EXPECT_EQ(OnStream(ASAddFileInputPacket("line in"), 7), "addmed 7 line in");
    EXPECT_EQ(OnStream(ASAddFileMediaPacket("/a \"b\".wav"), 7), "addmed 7 \"file://a \"b\".wav\"");
    EXPECT_EQ(OnStream(ASAddRhapsodyMediaPacket("Tra.1234"), 12), "addmed 12 \"rhap://12:Tra.1234\"");
}

TEST(Packets, PrintAsNothingWithoutTheirStream) {
    EXPECT_EQ(ASRemoveStreamPacket().str(), "");
    EXPECT_EQ(ASAddMediaPacket("x").str(), "");
    EXPECT_EQ(ASAddRhapsodyMediaPacket("x").str(), "");
    EXPECT_EQ(ASRemoveStreamPacket().build(), "remstr 4095");
    EXPECT_EQ(ASRemoveStreamPacket().GetStreamId(), 4095u);
}

class PacketQueue : public testing::Test {
protected:
    // A hook may refer to what a test has on its stack.
    void TearDown() override { m_core.ClearHook(); }

    // The texts sent since the last call; each line is acknowledged at once.
    std::vector<std::string> Sent() {
        while (!m_link->IsAckTimerExpired())
            m_link->KillAckTimer();
        std::vector<std::string> texts;
        for (const std::string& line : Only(m_core.TakeLines(), "< send")) {
            const std::size_t blank = line.find(' ', line.find('"'));
            texts.push_back(line.substr(blank + 1, line.size() - blank - 1 - std::string("\\r\\n\"").size()));
        }
        return texts;
    }
    template <class Packet, class... Arguments>
    void Add(bool skipWaiting, Arguments... arguments) {
        m_queue.Add(std::make_unique<Packet>(arguments...), skipWaiting);
    }

    using Texts = std::vector<std::string>;
    TestCore m_core;
    kv::auto_com<ServerUtility> m_link =
        kv::auto_com<ServerUtility>::adopt(new ServerUtility(m_core.Helper(), m_core.Instances(), 3000));
    ASPacketSendQueue m_queue{m_link.get()};
};

TEST_F(PacketQueue, AStreamPacketWaitsForItsStream) {
    Add<ASRemoveMediaPacket>(false);
    EXPECT_EQ(Sent(), Texts{});
    m_queue.SetStreamID(7);
    EXPECT_EQ(Sent(), Texts{"remmed 7"});
    Add<ASEndOfStreamPacket>(false);
    EXPECT_EQ(Sent(), Texts{"eos 7"});
}

TEST_F(PacketQueue, TheRequestForTheStreamGoesAheadOfWhatWaitsForIt) {
    Add<ASAddClientPacket>(false, "10.0.0.7", 6200u);
    Add<ASRemoveMediaPacket>(false);
    Add<ASAddStreamPacket>(true);
    EXPECT_EQ(Sent(), Texts{"addstr"});
    m_queue.SetStreamID(7);
    EXPECT_EQ(Sent(), (Texts{"addcli 7 10.0.0.7 6200", "remmed 7"}));
}

TEST_F(PacketQueue, NothingElseOvertakes) {
    Add<ASRemoveMediaPacket>(false);
    Add<ASResetPacket>(false);
    EXPECT_EQ(Sent(), Texts{});
    m_queue.Flush(false);
    EXPECT_EQ(Sent(), Texts{});
    m_queue.SetStreamID(3);
    EXPECT_EQ(Sent(), (Texts{"remmed 3", "reset"}));
}

TEST_F(PacketQueue, SkippingLetsEverythingThroughThatNeedsNoStream) {
    Add<ASRemoveMediaPacket>(false);
    Add<ASResetPacket>(false);
    Add<ASEndOfStreamPacket>(false);
    m_queue.Flush(true);
    EXPECT_EQ(Sent(), Texts{"reset"});
    m_queue.SetStreamID(3);
    EXPECT_EQ(Sent(), (Texts{"remmed 3", "eos 3"}));
}

TEST_F(PacketQueue, APacketIsStampedWithTheStreamOfTheQueue) {
    auto packet = std::make_unique<ASRemoveMediaPacket>();
    packet->SetStreamId(99);
    m_queue.SetStreamID(5);
    m_queue.Add(std::move(packet), false);
    EXPECT_EQ(Sent(), Texts{"remmed 5"});
}

TEST_F(PacketQueue, ClearDropsWithoutSendingAndKeepsTheStream) {
    Add<ASRemoveMediaPacket>(false);
    m_queue.Clear();
    m_queue.SetStreamID(5);
    EXPECT_EQ(Sent(), Texts{});
    m_queue.Clear();
    Add<ASEndOfStreamPacket>(false);
    EXPECT_EQ(Sent(), Texts{"eos 5"});
}

TEST_F(PacketQueue, ResetForgetsTheStreamAndDropsWithoutSending) {
    m_queue.SetStreamID(5);
    m_queue.Reset();
    Add<ASRemoveMediaPacket>(false);
    EXPECT_EQ(Sent(), Texts{});
    m_queue.Reset();
    m_queue.SetStreamID(6);
    EXPECT_EQ(Sent(), Texts{});
}

TEST_F(PacketQueue, ItsEndSendsNothing) {
    {
        ASPacketSendQueue queue(m_link.get());
        queue.Add(std::make_unique<ASRemoveMediaPacket>(), false);
    }
    EXPECT_EQ(Sent(), Texts{});
}

TEST_F(PacketQueue, MayBeResetWhileAPacketIsHandedOver) {
    Add<ASRemoveMediaPacket>(false);
    Add<ASEndOfStreamPacket>(false);
    m_core.SetHook([&](const ServiceCall& call) {
        if (call.name == "SendBindMessage") {
            m_core.ClearHook();
            m_queue.Reset();
        }
    });
    m_queue.SetStreamID(7);
    EXPECT_EQ(Sent(), Texts{"remmed 7"});
}

TEST_F(PacketQueue, MayGetMorePacketsWhileOneIsHandedOver) {
    Add<ASRemoveMediaPacket>(false);
    Add<ASEndOfStreamPacket>(false);
    m_core.SetHook([&](const ServiceCall& call) {
        if (call.name == "SendBindMessage") {
            m_core.ClearHook();
            Add<ASRemoveStreamPacket>(false);
        }
    });
    m_queue.SetStreamID(7);
    EXPECT_EQ(Sent(), (Texts{"remmed 7", "eos 7", "remstr 7"}));
}

class AddMedia : public testing::Test {
protected:
    // A hook may refer to what a test has on its stack.
    void TearDown() override { m_core.ClearHook(); }

    // What goes on the wire on stream 3; "none" without a packet.
    std::string Text(std::int32_t type, std::uint32_t mediaId, const std::string& externalId,
                     bool broadcast) {
        AudioMedia media;
        media.type = type;
        media.mediaId = mediaId;
        media.externalId = externalId;
        const auto packet = ASPacket::CreateAddMedia(m_core.Helper(), m_core.Instances(), media, broadcast);
        if (!packet)
            return "none";
        dynamic_cast<ASStreamPacketBase&>(*packet).SetStreamId(3);
        return packet->str();
    }

    TestCore m_core;
};

TEST_F(AddMedia, ForTheStreamingServiceLooksNothingUp) {
    std::vector<std::string> calls;
    m_core.SetHook([&](const ServiceCall& call) { calls.push_back(call.name); });
    EXPECT_EQ(Text(MEDIA_RHAPSODY_TRACK, 0, "Tra.1", false), "addmed 3 \"rhap://3:Tra.1\"");
    EXPECT_EQ(Text(MEDIA_RHAPSODY_CHANNEL, 0, "channel-st.1", true), "addmed 3 \"rhap://3:channel-st.1\"");
    EXPECT_EQ(calls, std::vector<std::string>{});
}

TEST_F(AddMedia, ForABroadcastTakesItsAddress) {
    m_core.Run("station 9 location=http://radio/9");
    EXPECT_EQ(Text(MEDIA_DIGITAL, 9, "http://x", true), "addmed 3 \"file:/stream-http://radio/9\"");
    EXPECT_EQ(Text(MEDIA_INTERNET_RADIO, 9, "", true), "addmed 3 \"file:/stream-http://radio/9\"");
    EXPECT_EQ(Text(MEDIA_INTERNET_RADIO, 0, "http://x", true), "addmed 3 \"file:/stream-http://x\"");
    EXPECT_EQ(Text(MEDIA_INTERNET_RADIO, 0, "", true), "addmed 3 \"file:/stream-\"");
    EXPECT_EQ(Text(MEDIA_INTERNET_RADIO, 77, "http://x", true), "addmed 3 \"file:/stream-\"");
}

TEST_F(AddMedia, ForASongTakesItsPath) {
    m_core.Run({"song 1 location=/media/a.flac device=300", "song 2 location=/mediabox/b.flac device=300"});
    EXPECT_EQ(Text(MEDIA_DIGITAL, 1, "", false), "addmed 3 \"file://media/a.flac\"");
    EXPECT_EQ(Text(MEDIA_DIGITAL, 2, "", false), "addmed 3 \"file://mediabox/b.flac\"");
    EXPECT_EQ(Text(MEDIA_INTERNET_RADIO, 1, "", false), "addmed 3 \"file://media/a.flac\"");
    EXPECT_FALSE(HasStart(m_core.TakeLines(), "< message"));
}

TEST_F(AddMedia, AsksTheStorageDeviceWhereItIsMounted) {
    m_core.Run({"song 1 location=music/a.flac device=300", "song 2 location=/other/b.flac device=301",
                "reply 300 GET_MOUNT_PATH usb1"});
    EXPECT_EQ(Text(MEDIA_DIGITAL, 1, "", false), "addmed 3 \"file://media/usb1/music/a.flac\"");
    EXPECT_EQ(m_core.TakeLines(), std::vector<std::string>{"< message 300 GET_MOUNT_PATH ADD_AUDIO:INT=1"});
    EXPECT_EQ(Text(MEDIA_DIGITAL, 2, "", false), "addmed 3 \"file://other/b.flac\"");
}

TEST_F(AddMedia, IsNothingForASongWithoutALocationAndForOtherTypes) {
    EXPECT_EQ(Text(MEDIA_DIGITAL, 1, "", false), "none");
    m_core.Run("song 1 location=/media/a.flac");
    for (const std::int32_t type : {0, 4, 6, -1, 100})
        EXPECT_EQ(Text(type, 1, "x", false), "none") << type;
}

TEST_F(AddMedia, WithoutTheMediaDatabaseIsNotedAsAnError) {
    m_core.Instances().RevokeInstance(IMediaManager::kInterfaceId);
    EXPECT_EQ(Text(MEDIA_DIGITAL, 1, "", false), "none");
    EXPECT_TRUE(HasStart(m_core.TakeLines(), "< assert korvel_digitalaudio/kvw/ASPacket"));
}

} // namespace

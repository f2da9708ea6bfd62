#include <gtest/gtest.h>

#include "roomplayer/PacketGate.h"

namespace korvel::roomplayer {
namespace {

using std::chrono::milliseconds;
using Bytes = std::vector<std::uint8_t>;

void Append(Bytes& bytes, std::uint32_t number, int count) {
    for (int shift = 8 * (count - 1); shift >= 0; shift -= 8)
        bytes.push_back(static_cast<std::uint8_t>(number >> shift));
}

SenderAddress Address(const char* text) {
    return ParseSenderAddress(text).value();
}

const SenderAddress kServer = Address("10.0.0.1");
const SenderAddress kOther = Address("10.0.0.2");

Bytes Part(unsigned kind, unsigned count, std::uint32_t stream, std::size_t bytes) {
    Bytes part{static_cast<std::uint8_t>(0x80 | count), static_cast<std::uint8_t>(kind)};
    Append(part, static_cast<std::uint32_t>(bytes / 4 - 1), 2);
    Append(part, stream, 4);
    part.resize(bytes);
    return part;
}

Bytes operator+(Bytes one, const Bytes& other) {
    one.insert(one.end(), other.begin(), other.end());
    return one;
}

class PacketGateTest : public testing::Test {
protected:
    Bytes Rtp(std::uint32_t stream) const {
        Bytes packet{0x80, 96, 0, 1};
        Append(packet, m_timestamp, 4);
        Append(packet, stream, 4);
        packet.resize(12 + 768);
        return packet;
    }
    bool Send(const SenderAddress& from, const Bytes& packet) {
        return m_gate->AdmitRtp(from, packet, m_now);
    }
    // Packets every 4 ms for a while; whether the last one passed.
    bool Play(const SenderAddress& from, std::uint32_t stream, milliseconds length) {
        bool passed = false;
        for (milliseconds sent{0}; sent < length; sent += milliseconds(4)) {
            Pass(milliseconds(4));
            passed = Send(from, Rtp(stream));
        }
        return passed;
    }
    void Pass(milliseconds time) {
        m_now += time;
        m_timestamp += static_cast<std::uint32_t>(time.count() * SenderGate::kTimestampRate / 1000);
    }
    void Configure(std::vector<SenderAddress> senders) {
        m_gate = std::make_unique<PacketGate>(std::move(senders));
    }

    std::unique_ptr<PacketGate> m_gate = std::make_unique<PacketGate>(std::vector<SenderAddress>{});
    PacketGate::Clock::time_point m_now{};
    std::uint32_t m_timestamp = 0;
};

TEST_F(PacketGateTest, AddressesAreComparedInOneForm) {
    EXPECT_EQ(Address("10.0.0.1"), Address("::ffff:10.0.0.1"));
    EXPECT_NE(Address("::1"), Address("127.0.0.1"));
    EXPECT_EQ(Address("10.0.0.1"), MakeSenderAddress(Bytes{10, 0, 0, 1}));
    EXPECT_EQ(Address("::1"), MakeSenderAddress(Bytes{0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1}));
    EXPECT_EQ(Address("::"), MakeSenderAddress(Bytes{10, 0, 0}));
    EXPECT_FALSE(ParseSenderAddress("server"));
    EXPECT_FALSE(ParseSenderAddress(""));
}

TEST_F(PacketGateTest, TheFirstThatPlaysIsHeardAloneUntilItIsSilent) {
    EXPECT_TRUE(Play(kServer, 1, milliseconds(100)));
    EXPECT_FALSE(Play(kOther, 2, PacketGate::kSilent - milliseconds(100)));
    EXPECT_TRUE(Play(kOther, 2, PacketGate::kAlone + milliseconds(200)));
    EXPECT_FALSE(Play(kServer, 1, milliseconds(500)));
    EXPECT_GT(m_gate->Count().foreign, 0U);
}

TEST_F(PacketGateTest, WhatWasHeldUpWasNotSilent) {
    Play(kServer, 1, milliseconds(100));
    Pass(PacketGate::kSilent * 2);
    for (int packets = 0; packets < 200; ++packets) {
        m_timestamp += 192;
        EXPECT_FALSE(Send(kOther, Rtp(2)));
        EXPECT_TRUE(Send(kServer, Rtp(1)));
    }
}

TEST_F(PacketGateTest, OnlyConfiguredSendersAreHeardAndTheNewestStreamOfAllOfThem) {
    Configure({kServer, kOther});
    EXPECT_FALSE(Play(Address("10.0.0.3"), 3, milliseconds(5000)));
    EXPECT_TRUE(Play(kServer, 1, milliseconds(100)));
    EXPECT_TRUE(Play(kOther, 2, milliseconds(100)));
    EXPECT_FALSE(Play(kServer, 1, milliseconds(100)));
    EXPECT_EQ(m_gate->Current(), 2U);
}

TEST_F(PacketGateTest, TheNewestStreamOfTheSenderIsHeard) {
    Play(kServer, 1, milliseconds(100));
    EXPECT_TRUE(Play(kServer, 2, milliseconds(4)));
    EXPECT_FALSE(Play(kServer, 1, milliseconds(100)));
    EXPECT_EQ(m_gate->Count().others, 25U);
}

TEST_F(PacketGateTest, ANumberThatIsTakenBelongsToWhoHadItFirst) {
    Configure({kServer, kOther});
    Play(kServer, 1, milliseconds(100));
    EXPECT_FALSE(Play(kOther, 1, milliseconds(100)));
    EXPECT_TRUE(Play(kServer, 1, milliseconds(4)));
}

TEST_F(PacketGateTest, ARoomComesBackToAnEarlierStreamOfAnotherSender) {
    Configure({kServer, kOther});
    Play(kServer, 1, milliseconds(100));
    Play(kOther, 2, milliseconds(100));
    EXPECT_TRUE(Play(kServer, 1, milliseconds(700)));
}

TEST_F(PacketGateTest, ANumberWhoseOwnerIsSilentIsFreeAgain) {
    Play(kServer, 1, milliseconds(100));
    EXPECT_FALSE(Play(kOther, 1, milliseconds(100)));
    Pass(PacketGate::kSilent);
    EXPECT_TRUE(Play(kOther, 1, PacketGate::kAlone + milliseconds(700)));
}

TEST_F(PacketGateTest, NobodyKeepsTheNextSenderWaitingForEver) {
    const SenderAddress noise = Address("10.0.0.3");
    Play(kServer, 1, milliseconds(100));
    Pass(PacketGate::kSilent);
    bool heard = false;
    for (int packets = 0; packets < 100; ++packets) {
        EXPECT_FALSE(Send(noise, {}));
        heard = Play(kOther, 2, milliseconds(4));
        EXPECT_FALSE(Play(noise, 3, milliseconds(4)));
    }
    EXPECT_TRUE(heard);
}

TEST_F(PacketGateTest, OnlyPlainPacketsOfTheOneTypePass) {
    Bytes packet = Rtp(1);
    for (const unsigned first : {0x00U, 0x40U, 0xc0U, 0x81U, 0x90U, 0xa0U}) {
        packet[0] = static_cast<std::uint8_t>(first);
        EXPECT_FALSE(Send(kServer, packet)) << first;
    }
    packet = Rtp(1);
    packet[1] = 97;
    EXPECT_FALSE(Send(kServer, packet));
    EXPECT_FALSE(Send(kServer, Bytes(packet.begin(), packet.begin() + 12)));
    EXPECT_FALSE(Send(kServer, {}));
    EXPECT_EQ(m_gate->Count().malformed, 9U);
    packet[1] = 96 | 0x80; // with the marker
    EXPECT_TRUE(Send(kServer, packet));
}

TEST_F(PacketGateTest, ReportsPassThatSpeakOfTheStreamThatIsHeard) {
    const Bytes report = Part(200, 0, 1, 28) + Part(202, 1, 1, 24);
    EXPECT_FALSE(m_gate->AdmitRtcp(kServer, report));
    Play(kServer, 1, milliseconds(100));
    EXPECT_TRUE(m_gate->AdmitRtcp(kServer, report));
    EXPECT_FALSE(m_gate->AdmitRtcp(kOther, report));
    EXPECT_TRUE(m_gate->AdmitRtcp(kServer, Part(201, 0, 1, 8) + Part(203, 1, 1, 8)));
    EXPECT_FALSE(m_gate->AdmitRtcp(kServer, Part(200, 0, 2, 28)));
    EXPECT_FALSE(m_gate->AdmitRtcp(kServer, Part(200, 0, 1, 28) + Part(202, 1, 2, 24)));
}

TEST_F(PacketGateTest, ReportsOfAnotherShapeDoNotPass) {
    Play(kServer, 1, milliseconds(100));
    Bytes padded = Part(200, 0, 1, 28);
    padded[0] |= 0x20;
    Bytes old = Part(200, 0, 1, 28);
    old[0] = 0x40;
    for (const Bytes& packet :
         {Bytes{}, Bytes{0x80}, Part(200, 1, 1, 52), Part(201, 1, 1, 32), Part(202, 2, 1, 24),
          Part(203, 0, 1, 8), Part(204, 0, 1, 12), Part(206, 1, 1, 12), Part(200, 0, 1, 24),
          Bytes{0x80, 201, 0, 0}, Part(200, 0, 1, 28) + Bytes{0x80}, padded, old})
        EXPECT_FALSE(m_gate->AdmitRtcp(kServer, packet)) << testing::PrintToString(packet);
    Bytes cut = Part(200, 0, 1, 28);
    cut.pop_back();
    EXPECT_FALSE(m_gate->AdmitRtcp(kServer, cut));
    EXPECT_EQ(m_gate->Count().malformed, 14U);
}

} // namespace
} // namespace korvel::roomplayer

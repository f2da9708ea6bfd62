// What the house makes of the driver's documents, one by one.
#include <gtest/gtest.h>

#include <algorithm>

#include "DriverHouse.h"

namespace korvel::controller {
namespace {

class HouseReaderTest : public testing::Test {
protected:
    void Add(const char* song) { m_house.Command("ADD_SONG", {{"ROOM_ID", "1"}, {"MEDIA_ID", song}}); }
    const Session& InRoom1() { return *m_house.GetHouse().SessionOf(1); }
    std::vector<const Session*> Asleep() {
        std::vector<const Session*> asleep;
        for (const auto& [id, session] : m_house.GetHouse().GetSessions())
            if (session.presence == Presence::Asleep)
                asleep.push_back(&session);
        return asleep;
    }

    DriverHouse m_house;
};

TEST_F(HouseReaderTest, AStationLetsTheSongsBeforeItSleep) {
    Add("1");
    Add("2");
    const SessionId songs = InRoom1().id;
    m_house.Command("ADD_IR_STREAM", {{"ROOM_ID", "1"}, {"MEDIA_ID", "31"}});
    ASSERT_EQ(Asleep().size(), 1U);
    EXPECT_EQ(Asleep()[0]->id, songs);
    EXPECT_EQ(Asleep()[0]->entries.size(), 2U);
    ASSERT_EQ(InRoom1().entries.size(), 1U);
    EXPECT_EQ(InRoom1().entries[0].media, (MediaRef{MediaKind::Station, "31"}));
}

TEST_F(HouseReaderTest, AnInputIsTheOnlyEntryOfItsSession) {
    m_house.SelectInput(1, "turntable");
    ASSERT_EQ(InRoom1().entries.size(), 1U);
    EXPECT_EQ(InRoom1().entries[0].media, (MediaRef{MediaKind::Input, "turntable"}));
    EXPECT_FALSE(InRoom1().GetAbilities().canSkip);
}

TEST_F(HouseReaderTest, TheEndOfTheLastSongIsAnEndAndNoStop) {
    Add("1");
    EXPECT_EQ(InRoom1().GetState(), SessionState::Playing);
    m_house.Say("* addmed EOM=1");
    EXPECT_EQ(InRoom1().GetState(), SessionState::Ended);
    m_house.Command("PLAY", {{"ROOM_ID", "1"}});
    EXPECT_EQ(InRoom1().GetState(), SessionState::Playing);
    m_house.Command("STOP", {{"ROOM_ID", "1"}});
    EXPECT_EQ(InRoom1().GetState(), SessionState::Stopped);
}

TEST_F(HouseReaderTest, AllEqualSongsAreRefusedTogetherAndNoneIsLost) {
    Add("1");
    Add("2");
    Add("1");
    m_house.Say("* addmed BAD=1 no such file");
    ASSERT_EQ(InRoom1().entries.size(), 3U);
    EXPECT_TRUE(InRoom1().entries[0].unplayable);
    EXPECT_FALSE(InRoom1().entries[1].unplayable);
    EXPECT_TRUE(InRoom1().entries[2].unplayable);
    EXPECT_EQ(InRoom1().current, InRoom1().entries[1].id);
}

TEST_F(HouseReaderTest, ARoomTakesItsModesIntoANewQueue) {
    m_house.Command("SHUFFLE", {{"ROOM_ID", "1"}, {"SHUFFLE", "1"}});
    m_house.Command("REPEAT", {{"ROOM_ID", "1"}, {"REPEAT", "1"}});
    Add("1");
    EXPECT_TRUE(InRoom1().shuffle);
    EXPECT_TRUE(InRoom1().repeat);
}

TEST_F(HouseReaderTest, ASessionThatIsExpectedIsThatOfTheNextQueue) {
    Add("1");
    const SessionId songs = InRoom1().id;
    m_house.Do("off 1");
    m_house.GetReader().Expect(1, songs);
    Add("1");
    EXPECT_EQ(InRoom1().id, songs);
    EXPECT_TRUE(Asleep().empty());
}

TEST_F(HouseReaderTest, OfTooManySleepersTheOldestEnds) {
    Add("1");
    const SessionId first = InRoom1().id;
    m_house.Do("off 1");
    for (std::size_t i = 1; i < kMaxAsleep; ++i) {
        Add("1");
        m_house.Do("off 1");
    }
    EXPECT_TRUE(m_house.GetHouse().FindSession(first));
    Add("1");
    m_house.Do("off 1");
    EXPECT_EQ(Asleep().size(), kMaxAsleep);
    EXPECT_FALSE(m_house.GetHouse().FindSession(first));
}

TEST_F(HouseReaderTest, OfTooManyRefusedEntriesTheFirstGoes) {
    Add("1");
    Add("2");
    const EntryId first = InRoom1().entries[0].id;
    Entries many = InRoom1().entries;
    while (many.size() < kMaxEntries)
        many.push_back(
            {m_house.GetHouse().NewEntry(), {MediaKind::Song, "3"}, Problem{"unplayable", "it is broken"}});
    const EntryId oldest = many[2].id;
    m_house.GetHouse().SetEntries(InRoom1().id, many);
    m_house.Say("* addmed BAD=1 no such file");
    EXPECT_EQ(InRoom1().entries.size(), kMaxEntries);
    EXPECT_TRUE(InRoom1().FindEntry(first)->unplayable);
    Add("1");
    m_house.Command("GO_TO_SONG", {{"ROOM_ID", "1"}, {"MEDIA_ID", "1"}});
    m_house.Say("* addmed BAD=1 no such file");
    EXPECT_EQ(InRoom1().entries.size(), kMaxEntries);
    EXPECT_FALSE(InRoom1().FindEntry(first)) << "the one that was refused first";
    EXPECT_TRUE(InRoom1().FindEntry(oldest));
}

} // namespace
} // namespace korvel::controller

// The event that comes right before every answer to "addann", so that a driver's next line goes out at once.
#include "Bed.h"

namespace korvel::tests {
namespace {

using Announcements = Bed;

TEST_F(Announcements, TheEventComesRightBeforeTheAnswer) {
    const auto driver = Connect();
    driver->SendRaw("7 addann\r\n8 addstr\r\n9 addann\r\n10 reset\r\n");
    for (const char* line : {"* SYS addann=1", "7 addann stream=1", "8 addstr stream=2", "* SYS addann=3",
                             "9 addann stream=3", "10 OK reset"})
        EXPECT_EQ(driver->ReadLine(), line);
}

TEST_F(Announcements, ARefusalHasItTooWithStream0) {
    const auto driver = Connect();
    for (int count = 0; count < 64; ++count)
        ASSERT_NE(driver->AddStream(), 0U);
    driver->SendRaw("70 addann\r\n71 addann twice\r\naddann\r\n72 addstr\r\n73 reset\r\n");
    for (const char* line : {"* SYS addann=0", "70 NO addann", "* SYS addann=0", "71 NO addann",
                             "0 NO unknown", "72 NO addstr", "73 OK reset"})
        EXPECT_EQ(driver->ReadLine(), line);
}

TEST_F(Announcements, ItsStreamPlaysLikeAnyOther) {
    const auto room = AddRoom();
    const auto driver = Connect();
    const std::string stream = std::to_string(driver->AddStream("addann"));
    EXPECT_EQ(driver->NextEvent(), "* SYS addann=" + stream);
    driver->Ask("addcli " + stream + " " + room->Client());
    driver->Ask("addmed " + stream + " " + FileMedia(ToneFile("chime.wav", {{500, 0.4}})));
    EXPECT_EQ(driver->NextEvent(), "* addmed EOM=" + stream);
    EXPECT_TRUE(room->Hears(0, 0.2));
    EXPECT_NEAR(room->Heard().Seconds(500), 0.4, 0.15);
}

} // namespace
} // namespace korvel::tests

// What the commands count and say.
#include <gtest/gtest.h>

#include "commands/RhapsodyMessages.h"
#include "driver/QueueIds.h"

namespace {

TEST(CommandsQueueIds, CountFromTheFirstOneAndNeverBelowIt) {
    EXPECT_EQ(kFirstQueueId, 10000u);
    EXPECT_EQ(NextQueueId(10000), 10001u);
    EXPECT_EQ(NextQueueId(9999), 10000u);
    EXPECT_EQ(NextQueueId(9998), 10000u);
    EXPECT_EQ(NextQueueId(0), 10000u);
    EXPECT_EQ(NextQueueId(4294967294u), 4294967295u);
    EXPECT_EQ(NextQueueId(4294967295u), 10000u);
}

TEST(CommandsServiceTexts, StandByTheirNumbers) {
    const char* const texts[] = {"Success",
                                 "End of track reached.",
                                 "Data not available.",
                                 "Communications error.",
                                 "Maximum number of {0} sessions for this account.",
                                 "Please close session and try again.",
                                 "The specified track is invalid.",
                                 "The input string was too large.",
                                 "{0} service connection failed.",
                                 "Unexpected error.  Please try again.",
                                 "Invalid data.",
                                 "Invalid {0} account name.",
                                 "Invalid {0} password.",
                                 "Unexpected error.  Please try again.",
                                 "Expired {0} account.",
                                 "{0} service error.",
                                 "Network error.",
                                 "{0} off line.",
                                 "Account in use on another device - this session will end."};
    ASSERT_EQ(rhapsody::kMessages.size(), std::size(texts));
    for (std::size_t row = 0; row < std::size(texts); ++row)
        EXPECT_STREQ(rhapsody::kMessages[row], texts[row]);
}

TEST(CommandsServiceTexts, ReservedMediaTexts) {
    EXPECT_STREQ(rhapsody::kLocalMedia, "RAD MP3");
    EXPECT_EQ(rhapsody::kTrackMediaId, "268435440");
    EXPECT_STREQ(rhapsody::kChannelMediaId, "268435442");
}

} // namespace

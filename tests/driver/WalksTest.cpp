// Walks over all queues, and what the core may do to the queues meanwhile.
#include <gtest/gtest.h>

#include "TestCore.h"

namespace {

using Lines = std::vector<std::string>;

class Walks : public testing::Test {
protected:
    Walks() { m_core.Run({"start", "online 3000 127.0.0.1"}); }
    // A hook may refer to what a test has on its stack.
    ~Walks() override { m_core.ClearHook(); }

    void AddChannels(std::initializer_list<const char*> rooms) {
        for (const std::string room : rooms)
            m_core.Run("command ADD_SONG SOURCE=3 MEDIA_ID=st.1 ROOM_ID=" + room);
    }
    // The queues that a poll asks for; when it asks for queue `at` the core runs `inside`.
    Lines Poll(const std::string& at, const std::vector<std::string>& inside) {
        Lines asked;
        m_core.SetHook([&, done = false](const ServiceCall& call) mutable {
            if (call.name != "GetCurrentSongInfo")
                return;
            asked.push_back(call.arguments.front());
            if (asked.back() != at || std::exchange(done, true))
                return;
            for (const std::string& line : inside)
                m_core.Session().Execute(line);
        });
        m_core.Run("advance 10000");
        m_core.ClearHook();
        return asked;
    }

    TestCore m_core;
};

TEST_F(Walks, GoOnBehindAQueueThatWentMeanwhile) {
    AddChannels({"7", "8", "9", "10"});
    EXPECT_EQ(Poll("10001", {"off 8"}), (Lines{"10000", "10001", "10002", "10003"}));
    EXPECT_EQ(Poll("10002", {"off 7", "off 9"}), (Lines{"10000", "10002", "10003"}));
    EXPECT_EQ(Poll("10003", {"off 10"}), Lines{"10003"});
    EXPECT_EQ(Poll("", {}), Lines{});
}

TEST_F(Walks, LeaveOutAQueueThatWentBeforeItsTurn) {
    AddChannels({"7", "8", "9"});
    EXPECT_EQ(Poll("10000", {"off 8"}), (Lines{"10000", "10002"}));
    EXPECT_EQ(Poll("10000", {"off 7", "off 9"}), Lines{"10000"});
}

TEST_F(Walks, ReachAQueueThatCameMeanwhile) {
    AddChannels({"7"});
    EXPECT_EQ(Poll("10000", {"command ADD_SONG SOURCE=3 MEDIA_ID=st.2 ROOM_ID=8"}),
              (Lines{"10000", "10001"}));
}

TEST_F(Walks, EndWithTheServer) {
    AddChannels({"7", "8"});
    EXPECT_EQ(Poll("10000", {"offline 3000"}), Lines{"10000"});
}

// No queue has the number that stands for the beginning of a walk.
TEST(WalksWithoutAStart, EndAsWell) {
    TestCore core;
    core.Run({"without StringX", "start", "online 3000 127.0.0.1"});
    EXPECT_TRUE(Has(core.Run("command ADD_SONG SOURCE=3 MEDIA_ID=st.1 ROOM_ID=7"),
                    "< return <queueid>10000</queueid>"));
    core.Run("advance 10000");
}

} // namespace

#include <gtest/gtest.h>
#include <linux/capability.h>
#include <sched.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <string>
#include <thread>

#include "common/RealTime.h"

namespace korvel::common {
namespace {

int PolicyHere() {
    return ::sched_getscheduler(0);
}

// Takes from the calling thread what lets root do everything.
void BecomeLikeEverybody() {
    __user_cap_header_struct header{_LINUX_CAPABILITY_VERSION_3, 0};
    std::array<__user_cap_data_struct, 2> none{};
    EXPECT_EQ(::syscall(SYS_capset, &header, none.data()), 0);
}

TEST(RealTime, AThreadAndThoseThatItStartsComeFirstUntilItIsOrdinaryAgain) {
    std::jthread([] {
        const int expected = MakeThreadRealTime() ? SCHED_RR : SCHED_OTHER;
        EXPECT_EQ(PolicyHere(), expected);
        std::jthread([expected] { EXPECT_EQ(PolicyHere(), expected); }).join();
        MakeThreadOrdinary();
        EXPECT_EQ(PolicyHere(), SCHED_OTHER);
    }).join();
}

TEST(RealTime, WhereItIsRefusedTheLogSaysSoOnce) {
    const rlimit none{0, 0};
    ASSERT_EQ(::setrlimit(RLIMIT_RTPRIO, &none), 0);
    testing::internal::CaptureStderr();
    for (int threads = 0; threads < 3; ++threads) {
        std::jthread([] {
            BecomeLikeEverybody();
            EXPECT_FALSE(MakeThreadRealTime());
            EXPECT_EQ(PolicyHere(), SCHED_OTHER);
        }).join();
    }
    const std::string log = testing::internal::GetCapturedStderr();
    EXPECT_EQ(std::count(log.begin(), log.end(), '\n'), 1) << log;
    EXPECT_NE(log.find("no real-time priority for sound: Operation not permitted"), std::string::npos) << log;
}

// Whoever may have it by the hard limit has it, without having raised the soft one.
TEST(RealTime, TheHardLimitCounts) {
    rlimit limit{};
    ASSERT_EQ(::getrlimit(RLIMIT_RTPRIO, &limit), 0);
    limit.rlim_cur = 0;
    ASSERT_EQ(::setrlimit(RLIMIT_RTPRIO, &limit), 0);
    MakeThreadRealTime();
    MakeThreadOrdinary();
    rlimit raised{};
    ASSERT_EQ(::getrlimit(RLIMIT_RTPRIO, &raised), 0);
    EXPECT_EQ(raised.rlim_cur, limit.rlim_max);
}

} // namespace
} // namespace korvel::common

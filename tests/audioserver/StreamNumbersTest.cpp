#include <gtest/gtest.h>

#include "audioserver/StreamNumbers.h"

namespace korvel::audioserver {
namespace {

TEST(StreamNumbers, StartAtOneAndAreNotReusedSoon) {
    StreamNumbers numbers;
    EXPECT_EQ(numbers.Take(), 1U);
    numbers.Release(1);
    EXPECT_EQ(numbers.Take(), 2U);
}

StreamNumber FirstAfter(std::chrono::milliseconds time) {
    return StreamNumbers::FirstAt(std::chrono::system_clock::time_point(time));
}

TEST(StreamNumbers, OfALaterRunAreBehindThoseOfAnEarlierOne) {
    using std::chrono::milliseconds;
    const milliseconds now = std::chrono::hours(24 * 365 * 56);
    const StreamNumber first = FirstAfter(now);
    EXPECT_EQ(FirstAfter(now + milliseconds(100)), first + 25) << "a server that died at once";
    EXPECT_EQ(FirstAfter(now + std::chrono::hours(1)), first + 3600 * StreamNumbers::kPerSecond);
}

TEST(StreamNumbers, OfARunAreThoseThatDriversKnow) {
    using std::chrono::seconds;
    EXPECT_EQ(FirstAfter(seconds(-1)), kFirstStream);
    EXPECT_EQ(FirstAfter(seconds(0)), kFirstStream);
    const seconds all(kLastStream / StreamNumbers::kPerSecond);
    EXPECT_EQ(FirstAfter(all), kLastStream - StreamNumbers::kPerSecond + 2);
    EXPECT_LT(FirstAfter(all + seconds(1)), StreamNumbers::kPerSecond);
}

TEST(StreamNumbers, LeaveOutTheReservedOne) {
    StreamNumbers numbers(kReservedStream - 1);
    EXPECT_EQ(numbers.Take(), kReservedStream - 1);
    EXPECT_EQ(numbers.Take(), kReservedStream + 1);
}

TEST(StreamNumbers, StartAgainAfterTheLastAndSkipThoseInUse) {
    StreamNumbers numbers;
    EXPECT_EQ(numbers.Take(), 1U);
    StreamNumbers late(kLastStream);
    EXPECT_EQ(late.Take(), kLastStream);
    EXPECT_EQ(late.Take(), 1U);
    late.Release(kLastStream);
    EXPECT_EQ(late.Take(), 2U);
}

} // namespace
} // namespace korvel::audioserver

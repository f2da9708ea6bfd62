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

#include <gtest/gtest.h>

#include "audioserver/SourceTimes.h"
#include "common/BackOff.h"

namespace korvel::audioserver {
namespace {

using std::chrono::seconds;

TEST(BackOff, DoublesUpToTheLastWaitAndStartsAnewWhenItPlays) {
    const SourceTimes times;
    common::BackOff backOff(times.firstRetry, times.lastRetry);
    for (const int wait : {1, 2, 4, 8, 16, 32, 60, 60})
        EXPECT_EQ(backOff.Next(), seconds(wait));
    backOff.Reset();
    EXPECT_EQ(backOff.Next(), seconds(1));
}

} // namespace
} // namespace korvel::audioserver

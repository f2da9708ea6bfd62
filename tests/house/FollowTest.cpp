#include <gtest/gtest.h>

#include "Songs.h"
#include "house/Follow.h"

namespace korvel::controller {
namespace {

// What the entries of `before` are once the driver's list is `after`; new ones count from 100.
std::string Followed(std::string_view before, std::string_view after) {
    std::uint64_t next = 100;
    return Text(Follow(Queue(before), Songs(after), [&] { return static_cast<EntryId>(next++); }));
}

TEST(Follow, WhatStaysKeepsItsEntry) {
    EXPECT_EQ(Followed("abc", "abc"), "1:a 2:b 3:c");
}

TEST(Follow, WhatIsAddedIsNew) {
    EXPECT_EQ(Followed("", "ab"), "100:a 101:b");
    EXPECT_EQ(Followed("ab", "abc"), "1:a 2:b 100:c");
    EXPECT_EQ(Followed("ab", "acb"), "1:a 100:c 2:b");
    EXPECT_EQ(Followed("ab", "aba"), "1:a 2:b 100:a");
}

TEST(Follow, WhatIsTakenOutIsGone) {
    EXPECT_EQ(Followed("abc", "ac"), "1:a 3:c");
    EXPECT_EQ(Followed("abc", ""), "");
}

TEST(Follow, WhatIsMovedKeepsItsEntry) {
    EXPECT_EQ(Followed("abcd", "adbc"), "1:a 4:d 2:b 3:c");
    EXPECT_EQ(Followed("abcd", "dcba"), "4:d 3:c 2:b 1:a");
}

TEST(Follow, EqualOnesAreToldApart) {
    EXPECT_EQ(Followed("aba", "ba"), "2:b 3:a");
    EXPECT_EQ(Followed("aba", "ab"), "1:a 2:b");
    EXPECT_EQ(Followed("abaca", "acaba"), "1:a 4:c 3:a 2:b 5:a");
    EXPECT_EQ(Followed("aaa", "aa"), "1:a 2:a");
}

TEST(Follow, AnotherListHasNewEntries) {
    EXPECT_EQ(Followed("abc", "xyz"), "100:x 101:y 102:z");
}

TEST(Follow, WhatCannotBePlayedStaysBehindWhatItStoodBehind) {
    EXPECT_EQ(Followed("aXb", "ab"), "1:a 2:X 3:b");
    EXPECT_EQ(Followed("aXb", "ba"), "3:b 1:a 2:X");
    EXPECT_EQ(Followed("abXYc", "ac"), "1:a 3:X 4:Y 5:c");
    EXPECT_EQ(Followed("Xa", "a"), "1:X 2:a");
    EXPECT_EQ(Followed("aX", ""), "2:X");
}

TEST(Follow, AnEqualOneDoesNotBecomeTheOneThatCannotBePlayed) {
    EXPECT_EQ(Followed("X", "X"), "1:X 100:X");
}

TEST(Says, ComparesWhatCanBePlayed) {
    EXPECT_TRUE(Says(Songs("ab"), Queue("aXb")));
    EXPECT_FALSE(Says(Songs("a"), Queue("ab")));
    EXPECT_FALSE(Says(Songs("abc"), Queue("ab")));
    EXPECT_FALSE(Says(Songs("ac"), Queue("ab")));
}

} // namespace
} // namespace korvel::controller

#include <gtest/gtest.h>

#include <memory>
#include <new>
#include <stdexcept>

#include "TestSystem.h"
#include "platform/EntryGuard.h"

namespace {

using Lines = std::vector<std::string>;

TEST(EntryGuard, PassesAResultThrough) {
    TestSystem system;
    EXPECT_EQ(kv::GuardEntry("Read", -1, [] { return 42; }), 42);
    EXPECT_EQ(kv::GuardEntry("Read", std::string("neutral"), [] { return "text"; }), "text");
    EXPECT_TRUE(system.log.empty());
}

TEST(EntryGuard, RunsABodyWithoutResult) {
    int calls = 0;
    kv::GuardEntry("Run", [&] { ++calls; });
    EXPECT_EQ(calls, 1);
}

TEST(EntryGuard, GivesTheNeutralValueForAnException) {
    TestSystem system;
    EXPECT_EQ(kv::GuardEntry("Read", -1, []() -> int { throw std::runtime_error("broken"); }), -1);
    EXPECT_EQ(system.log, Lines{"3 Exception in Read: broken"});
}

TEST(EntryGuard, TakesResultsThatCanOnlyBeMoved) {
    TestSystem system;
    const auto good = kv::GuardEntry("Make", std::unique_ptr<int>(), [] { return std::make_unique<int>(7); });
    EXPECT_EQ(*good, 7);
    const auto bad = kv::GuardEntry("Make", std::make_unique<int>(1),
                                    []() -> std::unique_ptr<int> { throw std::bad_alloc(); });
    EXPECT_EQ(*bad, 1);
}

TEST(EntryGuard, CatchesWhatIsNoStandardException) {
    TestSystem system;
    kv::GuardEntry("Run", [] { throw 42; });
    kv::GuardEntry("Run", [] { throw "text"; });
    EXPECT_EQ(system.log,
              (Lines{"3 Exception in Run: unknown exception", "3 Exception in Run: unknown exception"}));
}

TEST(EntryGuard, DropsTheRestOfTheEntry) {
    TestSystem system;
    Lines steps;
    kv::GuardEntry("Run", [&] {
        steps.push_back("before");
        if (steps.size() == 1)
            throw std::logic_error("stop");
        steps.push_back("after");
    });
    EXPECT_EQ(steps, Lines{"before"});
}

TEST(EntryGuard, AnInnerEntryFailsAlone) {
    TestSystem system;
    const int result = kv::GuardEntry("Outer", -1, [] {
        const int inner = kv::GuardEntry("Inner", -2, []() -> int { throw std::runtime_error("inside"); });
        return inner * 10;
    });
    EXPECT_EQ(result, -20);
    EXPECT_EQ(system.log, Lines{"3 Exception in Inner: inside"});
}

TEST(EntryGuard, SurvivesALogThatFails) {
    TestSystem system;
    system.throwOnLog = true;
    EXPECT_EQ(kv::GuardEntry("Read", 5, []() -> int { throw std::runtime_error("broken"); }), 5);
}

TEST(EntryGuard, NeedsNoSystem) {
    EXPECT_EQ(kv::GuardEntry("Read", 5, []() -> int { throw std::runtime_error("broken"); }), 5);
}

TEST(EntryGuard, LetsNothingOut) {
    static_assert(noexcept(kv::GuardEntry("Run", [] { throw 1; })));
    static_assert(noexcept(kv::GuardEntry("Read", 0, []() -> int { throw 1; })));
    static_assert(noexcept(kv::RecordEntryFailure("Read", "why")));
}

} // namespace

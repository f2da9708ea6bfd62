#include <gtest/gtest.h>

#include <algorithm>

#include "TestSystem.h"
#include "platform/System.h"

namespace {

TEST(System, WithoutOneNothingMovesAndNothingIsRecorded) {
    EXPECT_EQ(kv::Time(), 0u);
    EXPECT_EQ(kv::Random(), 0);
    kv::SeedRandom(5);
    timespec now{1, 1};
    EXPECT_EQ(KernelX::gettime(&now), 0);
    EXPECT_EQ(now.tv_sec, 0);
    EXPECT_EQ(now.tv_nsec, 0);
    EXPECT_EQ(KernelX::GetSystemType(), 0u);
    EXPECT_FALSE(NetworkInterfaces::isLocalIPv4("127.0.0.1"));
    LogXMessage(7, "nobody hears this");
    kv::AssertWrite("a/path", 1, kv::StackTrace());
}

TEST(System, TheInstalledOneAnswers) {
    TestSystem system;
    system.time = 1000000000;
    system.monotonic = {100, 5};
    system.random = 2147483647;
    system.type = 3;
    EXPECT_EQ(kv::Time(), 1000000000u);
    EXPECT_EQ(kv::Random(), 2147483647);
    kv::SeedRandom(77);
    EXPECT_EQ(system.seed, 77u);
    timespec now{};
    EXPECT_EQ(KernelX::gettime(&now), 0);
    EXPECT_EQ(now.tv_sec, 100);
    EXPECT_EQ(now.tv_nsec, 5);
    EXPECT_EQ(KernelX::GetSystemType(), 3u);
    EXPECT_TRUE(NetworkInterfaces::isLocalIPv4("127.0.0.1"));
    EXPECT_FALSE(NetworkInterfaces::isLocalIPv4("10.0.0.1"));
    LogXMessage(6, "a note");
    EXPECT_EQ(system.log, std::vector<std::string>{"6 a note"});
}

TEST(System, OnlyTheInstalledOneIsUninstalled) {
    TestSystem first;
    first.time = 1;
    {
        TestSystem second;
        second.time = 2;
        kv::UninstallSystem(&first);
        EXPECT_EQ(kv::Time(), 2u);
    }
    EXPECT_EQ(kv::Time(), 0u);
    kv::InstallSystem(&first);
    EXPECT_EQ(kv::Time(), 1u);
    kv::InstallSystem(nullptr);
    EXPECT_EQ(kv::Time(), 0u);
}

TEST(System, AnAssertionIsRecordedWithItsPlaceAndStack) {
    TestSystem system;
    kv::AssertWrite("some/source", 1385, kv::StackTrace());
    ASSERT_EQ(system.asserts.size(), 1u);
    EXPECT_EQ(system.asserts[0].path, "some/source");
    EXPECT_EQ(system.asserts[0].line, 1385);
    EXPECT_NE(system.asserts[0].stack, "");
}

TEST(StackTrace, HasOneFrameALine) {
    const std::string text = kv::StackTrace().ToString();
    ASSERT_FALSE(text.empty());
    EXPECT_EQ(text.back(), '\n');
    EXPECT_GE(std::count(text.begin(), text.end(), '\n'), 2);
    EXPECT_EQ(text.find("\n\n"), std::string::npos);
}

std::string DeepTrace(int depth) {
    volatile int left = depth;
    std::string text = left > 0 ? DeepTrace(depth - 1) : kv::StackTrace().ToString();
    return text.append(static_cast<std::size_t>(left * 0), ' ');
}

TEST(StackTrace, IsBounded) {
    const std::string text = DeepTrace(200);
    EXPECT_LE(std::count(text.begin(), text.end(), '\n'), 32);
    EXPECT_GE(std::count(text.begin(), text.end(), '\n'), 2);
}

} // namespace

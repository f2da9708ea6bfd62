#include <gtest/gtest.h>

#include <stdexcept>

#include "RecordingDriver.h"
#include "TestHouse.h"
#include "driver/DriverPort.h"
#include "driver/services/TimerService.h"
#include "platform/CmdMessage.h"

namespace korvel::controller {
namespace {

class DriverPortTest : public testing::Test {
protected:
    DriverPortTest() { port.Attach(driver); }
    void Play() {
        CR_String answer;
        port.Execute(*kv::CreateCmdMessage("PLAY"), answer);
    }

    common::Log log{common::LogLevel::Error, std::fopen("/dev/null", "w")};
    RecordingDriver driver;
    DriverPort port{log};
};

TEST_F(DriverPortTest, WhateverTheDriverThrowsTheNextEntryPasses) {
    driver.onCall = [](const std::string&) { throw std::runtime_error("broken"); };
    Play();
    driver.onCall = [](const std::string&) { throw 5; };
    Play();
    EXPECT_FALSE(port.Enter("a callback", [] { throw "text"; }));
    driver.onCall = nullptr;
    Play();
    EXPECT_EQ(driver.Count("PLAY"), 3u);
    EXPECT_TRUE(port.Enter("a callback", [] {}));
}

TEST_F(DriverPortTest, AnEntryInsideAnotherIsDropped) {
    bool called = false;
    driver.onCall = [&](const std::string&) {
        EXPECT_FALSE(port.Enter("a callback", [&] { called = true; }));
        port.BindingChanged(3001);
    };
    Play();
    EXPECT_FALSE(called);
    EXPECT_EQ(driver.calls, std::vector<std::string>{"PLAY"});
}

TEST_F(DriverPortTest, NothingEntersWithoutADriver) {
    port.Detach();
    Play();
    EXPECT_FALSE(port.Enter("a callback", [] { FAIL(); }));
    const auto settings = KVXML::CreateXmlNode("config");
    EXPECT_LT(port.Initialize(1, *settings, nullptr), 0);
    EXPECT_TRUE(driver.calls.empty());
}

// A callback that the driver gave to the timer service.
class ThrowingCallback final : public ITimerManagerCallback {
public:
    explicit ThrowingCallback(DriverPort& port) : m_port(port) {}
    void OnTimerExpired(std::uint32_t, std::int32_t) override {
        ++expiries;
        isEntry = !m_port.Enter("another callback", [] {});
        throw 5;
    }

    int expiries = 0;
    bool isEntry = false;

private:
    DriverPort& m_port;
};

TEST_F(DriverPortTest, ATimersCallbackIsAnEntryLikeAnyOther) {
    TestLoop loop;
    TimerService timers(loop.loop, port);
    ThrowingCallback callback(port);
    timers.StartTimer(0, 2, &callback);
    EXPECT_TRUE(loop.RunUntil([&] { return timers.Running() == 0; }));
    EXPECT_EQ(callback.expiries, 2);
    EXPECT_TRUE(callback.isEntry);
}

} // namespace
} // namespace korvel::controller

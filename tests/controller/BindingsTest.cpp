#include <gtest/gtest.h>

#include <chrono>

#include "RecordingDriver.h"
#include "TestHouse.h"
#include "bindings/ServerBindings.h"
#include "host/RealSystem.h"

namespace korvel::controller {
namespace {

using std::chrono::milliseconds;

class BindingsTest : public testing::Test {
protected:
    BindingsTest() { port.Attach(driver); }

    std::unique_ptr<ServerBindings> Bind(const std::vector<common::HostPort>& servers) {
        auto bindings =
            std::make_unique<ServerBindings>(ServerBindings::Parts{loop.loop, port, system, events, log},
                                             servers, common::BackOff(milliseconds(1), milliseconds(2)));
        return bindings;
    }
    static common::HostPort At(const ScriptedServer& server) { return {"127.0.0.1", server.GetPort()}; }
    bool RunUntilCalled(const std::string& call, std::size_t times = 1) {
        return loop.RunUntil([&] { return driver.Count(call) >= times; });
    }

    TestLoop loop;
    common::Log log{common::LogLevel::Error, std::fopen("/dev/null", "w")};
    RealSystem system{log};
    EventBus events;
    RecordingDriver driver;
    DriverPort port{log};
};

TEST_F(BindingsTest, AServerIsBoundThenOnlineThenHeard) {
    ScriptedServer server(loop);
    const auto bindings = Bind({At(server)});
    EXPECT_EQ(bindings->WhyNotReady(), "no audio server is connected");
    bindings->Start();
    ASSERT_TRUE(RunUntilCalled("SERVER_ONLINE 3000 127.0.0.1"));
    EXPECT_EQ(bindings->WhyNotReady(), "");
    EXPECT_EQ(bindings->ActiveBinding(), 3000u);
    server.Send("1 OK reset\r\n* SYS");
    server.Send(" STREAM=3 x\r\n");
    ASSERT_TRUE(RunUntilCalled("DATA_RECEIVED 3000 * SYS STREAM=3 x\r\n"));
    EXPECT_EQ(driver.calls, (std::vector<std::string>{"bound 3000", "SERVER_ONLINE 3000 127.0.0.1",
                                                      "DATA_RECEIVED 3000 1 OK reset\r\n",
                                                      "DATA_RECEIVED 3000 * SYS STREAM=3 x\r\n"}));
}

TEST_F(BindingsTest, WhatTheDriverSendsReachesTheServer) {
    ScriptedServer server(loop);
    const auto bindings = Bind({At(server)});
    driver.onCall = [&](const std::string& call) {
        if (call.rfind("SERVER_ONLINE", 0) == 0)
            bindings->SendBindMessage(100002, 3000, *kv::CreateOutboundBindMessage(1, "SEND", "0 reset\r\n"));
    };
    bindings->Start();
    EXPECT_TRUE(loop.RunUntil([&] { return server.Heard("reset"); }));
}

TEST_F(BindingsTest, ALostServerIsOfflineAndReachedAgainWhenItIsBack) {
    ScriptedServer server(loop);
    const auto bindings = Bind({At(server)});
    std::vector<std::uint32_t> lost;
    bindings->SetServerLost([&](std::uint32_t id) { lost.push_back(id); });
    bindings->Start();
    for (std::size_t round = 1; round <= 3; ++round) {
        ASSERT_TRUE(RunUntilCalled("SERVER_ONLINE 3000 127.0.0.1", round));
        ASSERT_TRUE(loop.RunUntil([&] { return server.IsConnected(); }));
        server.Kill();
        ASSERT_TRUE(RunUntilCalled("SERVER_OFFLINE 3000 ", round));
        EXPECT_EQ(bindings->WhyNotReady(), "no audio server is connected");
        EXPECT_EQ(bindings->ActiveBinding(), 3000u) << "the driver keeps it as well";
        server.Restart();
    }
    EXPECT_EQ(lost.size(), 3u);
    EXPECT_EQ(driver.Count("bound 3000"), 1u) << "a binding is taken once";
}

TEST_F(BindingsTest, ASecondServerWaitsForItsBindingToBeOffered) {
    ScriptedServer first(loop);
    ScriptedServer second(loop);
    const auto bindings = Bind({At(first), At(second)});
    bindings->Start();
    ASSERT_TRUE(RunUntilCalled("SERVER_ONLINE 3000 127.0.0.1"));
    EXPECT_EQ(driver.Count("bound 3001"), 0u);
    bindings->OnBindingOffered(3001);
    EXPECT_EQ(driver.Count("bound 3001"), 0u) << "not inside the driver's call";
    ASSERT_TRUE(RunUntilCalled("SERVER_ONLINE 3001 127.0.0.1"));
    EXPECT_EQ(driver.Count("bound 3001"), 1u);
    EXPECT_EQ(bindings->ActiveBinding(), 3001u);
    // The one that the driver plays on is gone: the other one does not help.
    ASSERT_TRUE(loop.RunUntil([&] { return second.IsConnected(); }));
    second.Kill();
    ASSERT_TRUE(RunUntilCalled("SERVER_OFFLINE 3001 "));
    EXPECT_EQ(bindings->WhyNotReady(), "the audio server of this machine is not connected");
}

TEST_F(BindingsTest, ALineThatIsTooLongIsLeftOut) {
    ScriptedServer server(loop);
    const auto bindings = Bind({At(server)});
    bindings->Start();
    ASSERT_TRUE(RunUntilCalled("SERVER_ONLINE 3000 127.0.0.1"));
    const std::string tooLong(kServerLines.line + 1, 'x');
    server.Send(tooLong + "\r\n1 OK reset\r\n");
    EXPECT_TRUE(RunUntilCalled("DATA_RECEIVED 3000 1 OK reset\r\n"));
    EXPECT_EQ(driver.calls.size(), 3u);
}

TEST_F(BindingsTest, AServerThatReadsNothingLosesTheConnection) {
    // It listens but nobody accepts: the system's buffers are all that takes bytes.
    tcp::acceptor deaf(loop.loop, tcp::endpoint(asio::ip::address_v4::loopback(), 0));
    const auto bindings = Bind({{"127.0.0.1", deaf.local_endpoint().port()}});
    bindings->Start();
    ASSERT_TRUE(RunUntilCalled("SERVER_ONLINE 3000 127.0.0.1"));
    const std::string line(60000, 'x');
    EXPECT_TRUE(loop.RunUntil([&] {
        bindings->SendBindMessage(100002, 3000, *kv::CreateOutboundBindMessage(1, "SEND", line + "\r\n"));
        return driver.Count("SERVER_OFFLINE 3000 ") > 0;
    }));
}

TEST_F(BindingsTest, MessagesToNobodyAreDropped) {
    ScriptedServer server(loop);
    const auto bindings = Bind({At(server)});
    const auto message = kv::CreateOutboundBindMessage(1, "SEND", "0 reset\r\n");
    bindings->SendBindMessage(100002, 3000, *message); // not connected yet
    bindings->SendBindMessage(100002, 3001, *message);
    bindings->SendBindMessage(100002, 0, *message);
    bindings->Start();
    ASSERT_TRUE(loop.RunUntil([&] { return server.IsConnected(); }));
    loop.RunReady();
    EXPECT_TRUE(server.GetLines().empty());
}

TEST_F(BindingsTest, NothingIsHeardAfterStopping) {
    ScriptedServer server(loop);
    auto bindings = Bind({At(server)});
    bindings->Start();
    ASSERT_TRUE(RunUntilCalled("SERVER_ONLINE 3000 127.0.0.1"));
    server.Send("1 OK reset\r\n");
    bindings.reset();
    EXPECT_TRUE(loop.RunUntil([&] { return !server.IsConnected(); }));
    EXPECT_EQ(driver.calls.size(), 2u);
}

TEST_F(BindingsTest, AnEntryInsideAnotherIsDropped) {
    driver.onCall = [&](const std::string& call) {
        if (call == "bound 1")
            port.BindingChanged(2);
    };
    port.BindingChanged(1);
    port.BindingChanged(3);
    EXPECT_EQ(driver.calls, (std::vector<std::string>{"bound 1", "bound 3"}));
}

} // namespace
} // namespace korvel::controller

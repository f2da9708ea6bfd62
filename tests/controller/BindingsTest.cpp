#include <gtest/gtest.h>

#include <chrono>

#include "RecordingDriver.h"
#include "TestHouse.h"
#include "driver/services/RealSystem.h"
#include "driver/services/ServerBindings.h"

namespace korvel::controller {
namespace {

using std::chrono::milliseconds;

class BindingsTest : public testing::Test {
protected:
    BindingsTest() { port.Attach(driver); }

    std::unique_ptr<ServerBindings> Bind(const std::vector<common::HostPort>& servers) {
        auto bindings = std::make_unique<ServerBindings>(
            ServerBindings::Parts{loop.loop, port, system, events, log}, servers,
            common::BackOff(milliseconds(1), milliseconds(2)), Heartbeat{milliseconds(10), 5});
        return bindings;
    }
    bool IsReady(const ServerBindings& bindings) {
        return loop.RunUntil([&] { return bindings.WhyNotReady().empty(); });
    }
    // Waits until the server has been pinged so many times more.
    bool Beats(const ScriptedServer& server, int times) {
        return loop.RunUntil([&, end = server.GetPings() + times] { return server.GetPings() >= end; });
    }
    static std::string ProblemOf(const ServerBindings& bindings) {
        return bindings.ToJson()[0].at("problem").get<std::string>();
    }
    static void Send(ServerBindings& bindings, const std::string& line) {
        bindings.SendBindMessage(100002, 3000, *kv::CreateOutboundBindMessage(1, "SEND", line));
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
    EXPECT_TRUE(IsReady(*bindings));
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
            Send(*bindings, "0 reset\r\n");
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
        Send(*bindings, line + "\r\n");
        return driver.Count("SERVER_OFFLINE 3000 ") > 0;
    }));
}

TEST_F(BindingsTest, AServerThatFallsSilentIsLostThoughTheDriverWaitsForNothing) {
    ScriptedServer server(loop);
    const auto bindings = Bind({At(server)});
    std::vector<std::uint32_t> lost;
    bindings->SetServerLost([&](std::uint32_t id) { lost.push_back(id); });
    bindings->Start();
    ASSERT_TRUE(IsReady(*bindings));
    ASSERT_TRUE(Beats(server, 20));
    EXPECT_TRUE(lost.empty()) << "as long as it answers";
    server.Mute();
    ASSERT_TRUE(RunUntilCalled("SERVER_OFFLINE 3000 "));
    EXPECT_EQ(lost, std::vector<std::uint32_t>{3000});
    EXPECT_EQ(bindings->WhyNotReady(), "the audio server of this machine does not answer");
    EXPECT_EQ(ProblemOf(*bindings), "it does not answer");
}

TEST_F(BindingsTest, AConnectionToAServerThatStandsStillWaitsForItAndChangesNothing) {
    ScriptedServer first(loop);
    ScriptedServer second(loop);
    const auto bindings = Bind({At(first), At(second)});
    bindings->Start();
    ASSERT_TRUE(RunUntilCalled("SERVER_ONLINE 3000 127.0.0.1"));
    bindings->OnBindingOffered(3001);
    ASSERT_TRUE(RunUntilCalled("SERVER_ONLINE 3001 127.0.0.1"));
    first.Mute();
    ASSERT_TRUE(RunUntilCalled("SERVER_OFFLINE 3000 "));
    ASSERT_TRUE(loop.RunUntil([&] { return first.GetConnections() == 2; }));
    ASSERT_TRUE(Beats(second, 20));
    EXPECT_EQ(driver.Count("SERVER_ONLINE 3000 127.0.0.1"), 1u) << "the system's word is not the server's";
    EXPECT_EQ(bindings->ActiveBinding(), 3001u);
    EXPECT_EQ(bindings->WhyNotReady(), "");
    EXPECT_EQ(ProblemOf(*bindings), "it does not answer");
    first.Unmute();
    first.Send("65536 OK ping\r\n");
    EXPECT_TRUE(RunUntilCalled("SERVER_ONLINE 3000 127.0.0.1", 2));
    EXPECT_EQ(ProblemOf(*bindings), "");
    EXPECT_EQ(first.GetConnections(), 2);
}

TEST_F(BindingsTest, OnlyTheDriversLinesReachTheDriver) {
    ScriptedServer server(loop);
    const auto bindings = Bind({At(server)});
    std::vector<std::string> heard;
    bindings->SetLineListener([&](std::uint32_t, const std::string& line) { heard.push_back(line); });
    bindings->Start();
    ASSERT_TRUE(IsReady(*bindings));
    server.Send("65536 NO ping\r\n65536 NO unknown\r\n0 NO ping\r\n7 OK reset\r\n");
    ASSERT_TRUE(RunUntilCalled("DATA_RECEIVED 3000 7 OK reset\r\n"));
    EXPECT_EQ(driver.calls.size(), 3u);
    EXPECT_EQ(heard, std::vector<std::string>{"7 OK reset\r\n"});
}

TEST_F(BindingsTest, AServerThatRefusesPingsIsThere) {
    ScriptedServer server(loop);
    server.Refuse("ping");
    const auto bindings = Bind({At(server)});
    bindings->Start();
    ASSERT_TRUE(IsReady(*bindings));
    ASSERT_TRUE(Beats(server, 20));
    EXPECT_EQ(driver.calls, (std::vector<std::string>{"bound 3000", "SERVER_ONLINE 3000 127.0.0.1"}));
}

TEST_F(BindingsTest, AServerThatIgnoresPingsMayKeepSilent) {
    ScriptedServer server(loop);
    server.IgnorePings();
    const auto bindings = Bind({At(server)});
    driver.onCall = [&](const std::string& call) {
        if (call.rfind("SERVER_ONLINE", 0) == 0)
            Send(*bindings, "0 reset\r\n");
    };
    bindings->Start();
    ASSERT_TRUE(IsReady(*bindings));
    ASSERT_TRUE(Beats(server, 20));
    EXPECT_EQ(driver.Count("SERVER_OFFLINE 3000 "), 0u);
    EXPECT_EQ(bindings->WhyNotReady(), "");
}

TEST_F(BindingsTest, AfterALossAnOlderServerMayCome) {
    ScriptedServer server(loop);
    const auto bindings = Bind({At(server)});
    driver.onCall = [&](const std::string& call) {
        if (call.rfind("SERVER_ONLINE", 0) == 0)
            Send(*bindings, "0 reset\r\n");
    };
    bindings->Start();
    ASSERT_TRUE(IsReady(*bindings));
    server.Kill();
    ASSERT_TRUE(RunUntilCalled("SERVER_OFFLINE 3000 "));
    server.IgnorePings();
    server.Restart();
    ASSERT_TRUE(IsReady(*bindings));
    ASSERT_TRUE(Beats(server, 20));
    EXPECT_EQ(driver.Count("SERVER_OFFLINE 3000 "), 1u);
}

TEST_F(BindingsTest, AServerThatStandsStillFromTheStartIsNotReady) {
    ScriptedServer server(loop);
    server.Mute();
    const auto bindings = Bind({At(server)});
    bindings->Start();
    EXPECT_TRUE(loop.RunUntil([&] { return ProblemOf(*bindings) == "it does not answer"; }));
    EXPECT_EQ(bindings->WhyNotReady(), "the audio server of this machine does not answer");
    EXPECT_EQ(bindings->ToJson()[0].at("connected"), false);
}

TEST_F(BindingsTest, HowAServerIsIsToldWhenThatChanges) {
    std::vector<std::string> told;
    events.Add([&](const auto& text) {
        const nlohmann::json event = nlohmann::json::parse(*text);
        if (event.at("type") == "server")
            told.push_back(event.at("problem").get<std::string>());
    });
    ScriptedServer server(loop);
    server.Mute();
    const auto bindings = Bind({At(server)});
    bindings->Start();
    EXPECT_TRUE(loop.RunUntil([&] { return !told.empty() && told.back() == "it does not answer"; }));
    server.Unmute();
    server.Send("65536 OK ping\r\n");
    ASSERT_TRUE(IsReady(*bindings));
    ASSERT_TRUE(Beats(server, 3));
    const std::size_t before = told.size();
    ASSERT_TRUE(Beats(server, 20));
    EXPECT_EQ(told.size(), before);
}

TEST_F(BindingsTest, WhatIsNotOneLineIsRefusedInTheServersStead) {
    ScriptedServer server(loop);
    const auto bindings = Bind({At(server)});
    bindings->Start();
    ASSERT_TRUE(IsReady(*bindings));
    bool inside = false;
    driver.onCall = [&](const std::string&) { inside = true; };
    Send(*bindings, "4 addmed 1 \"file://a\n5 remstr 1\"\r\n");
    EXPECT_FALSE(inside) << "not inside the driver's call";
    Send(*bindings, "5 addmed 2 \"file://" + std::string(kServerLines.line, 'x') + "\"\r\n");
    Send(*bindings, "6 addmed 3 \"\x7F\"\r\n");
    Send(*bindings, "7 eos 3");
    Send(*bindings, "8 addstr\r\n");
    ASSERT_TRUE(RunUntilCalled("DATA_RECEIVED 3000 7 NO eos 3\r\n"));
    EXPECT_EQ(driver.Count("DATA_RECEIVED 3000 4 NO addmed 1\r\n"), 1u);
    EXPECT_EQ(driver.Count("DATA_RECEIVED 3000 5 NO addmed 2\r\n"), 1u);
    EXPECT_EQ(driver.Count("DATA_RECEIVED 3000 6 NO addmed 3\r\n"), 1u);
    ASSERT_TRUE(loop.RunUntil([&] { return server.Heard("addstr"); }));
    EXPECT_EQ(server.GetLines().size(), 1u);
}

TEST_F(BindingsTest, TheLongestLineIsSent) {
    ScriptedServer server(loop);
    const auto bindings = Bind({At(server)});
    bindings->Start();
    ASSERT_TRUE(IsReady(*bindings));
    Send(*bindings, "1 " + std::string(kServerLines.line - 2, 'x') + "\r\n");
    EXPECT_TRUE(loop.RunUntil([&] { return server.Heard(std::string(kServerLines.line - 2, 'x')); }));
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

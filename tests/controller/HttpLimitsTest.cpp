// What the HTTP server refuses, and the WebSocket of events.
#include <gtest/gtest.h>

#include "TestHouse.h"
#include "front/http/EventSession.h"
// The order matters: Asio.h comes first, through TestHouse.h.
#include <boost/beast/core/buffers_to_string.hpp>
#include <boost/beast/websocket/stream.hpp>

namespace korvel::controller {
namespace {

using boost::system::error_code;
using nlohmann::json;

class HttpLimitsTest : public testing::Test {
protected:
    RawReply Send(const std::string& head, const std::string& body = "") {
        return house.Exchange(head + "\r\nConnection: close\r\n\r\n" + body);
    }

    ScratchFolder state;
    TestLoop loop;
    ScriptedServer server{loop};
    TestHouse house{loop, TestPlugin("WORKING"), {server.GetPort()}, state};
};

TEST_F(HttpLimitsTest, AForeignHostIsRefused) {
    EXPECT_EQ(Send("GET /api/status HTTP/1.1\r\nHost: evil.example").status, 403);
    EXPECT_EQ(Send("GET /api/status HTTP/1.1").status, 403);
    EXPECT_EQ(Send("GET /api/status HTTP/1.1\r\nHost: 127.0.0.1:8080").status, 200);
}

TEST_F(HttpLimitsTest, APostOfAForeignPageIsRefused) {
    const std::string head =
        "POST /api/library/scan HTTP/1.1\r\nHost: localhost\r\nContent-Length: 0\r\nOrigin: ";
    EXPECT_EQ(Send(head + "http://evil.example").status, 403);
    EXPECT_EQ(Send(head + "null").status, 403);
    EXPECT_NE(Send(head + "http://localhost").status, 403);
}

TEST_F(HttpLimitsTest, ABodyMustBeJsonByItsType) {
    EXPECT_EQ(
        Send("POST /api/command HTTP/1.1\r\nHost: localhost\r\nContent-Type: text/plain\r\nContent-Length: 2",
             "{}")
            .status,
        415);
}

TEST_F(HttpLimitsTest, ALongBodyIsRefused) {
    const std::string head =
        "POST /api/command HTTP/1.1\r\nHost: localhost\r\nContent-Type: application/json\r\n";
    EXPECT_EQ(Send(head + "Content-Length: 1048577").status, 413) << "before it comes";
    std::string largest = R"({"name":"ECHO","parameters":{"TEXT":"x"}})";
    largest.resize(1048576, ' ');
    ASSERT_TRUE(loop.RunUntil([&] { return house.GetCore().GetBindings().WhyNotReady().empty(); }));
    EXPECT_EQ(house.Post("/api/command", largest).status, 200);
}

TEST_F(HttpLimitsTest, AnEndlessChunkedBodyIsRefused) {
    std::string chunks;
    for (int i = 0; i < 20; ++i)
        chunks += "10000\r\n" + std::string(0x10000, 'x') + "\r\n";
    EXPECT_EQ(
        Send("POST /api/command HTTP/1.1\r\nHost: localhost\r\nTransfer-Encoding: chunked", chunks).status,
        413);
}

TEST_F(HttpLimitsTest, ALongHeaderIsRefused) {
    EXPECT_EQ(Send("GET /api/status HTTP/1.1\r\nHost: localhost\r\nX: " + std::string(20000, 'x')).status,
              431);
}

TEST_F(HttpLimitsTest, WhatIsNoRequestIsRefused) {
    EXPECT_EQ(house.Exchange("hello\r\n\r\n").status, 400);
    EXPECT_EQ(Send("GET nowhere HTTP/1.1\r\nHost: localhost").status, 400);
}

TEST_F(HttpLimitsTest, AHeaderThatIsThereTwiceIsRefused) {
    const std::string status = "GET /api/status HTTP/1.1\r\nHost: localhost";
    EXPECT_EQ(Send(status).status, 200);
    EXPECT_EQ(Send(status + "\r\nHost: localhost").status, 400);
    EXPECT_EQ(Send(status + "\r\nhost: evil.example").status, 400);
    const std::string command =
        "POST /api/command HTTP/1.1\r\nHost: localhost\r\nContent-Type: application/json\r\n";
    EXPECT_EQ(Send(command + "Content-Length: 2\r\nContent-Length: 2", "{}").status, 400);
    EXPECT_EQ(Send(command + "Content-Length: 2\r\nContent-Length: 3", "{}").status, 400);
    EXPECT_EQ(Send(command + "Content-Length: 2, 2", "{}").status, 400);
    EXPECT_EQ(Send(command + "Content-Length: 2\r\nTransfer-Encoding: chunked", "{}").status, 400);
}

TEST_F(HttpLimitsTest, AHeaderBehindTheBodyIsRefused) {
    const std::string head = "GET /api/status HTTP/1.1\r\nTransfer-Encoding: chunked";
    const std::string chunks = "2\r\n{}\r\n0\r\n";
    EXPECT_EQ(Send(head + "\r\nHost: localhost", chunks + "\r\n").status, 200);
    EXPECT_EQ(Send(head + "\r\nHost: localhost", chunks + "X: y\r\n\r\n").status, 400);
    EXPECT_EQ(Send(head, chunks + "Host: localhost\r\n\r\n").status, 400);
}

TEST_F(HttpLimitsTest, AMethodThatDoesNotFitNamesTheOneThatDoes) {
    const RawReply get = house.Get("/api/command");
    EXPECT_EQ(get.status, 405);
    EXPECT_NE(get.head.find("Allow: POST"), std::string::npos);
    EXPECT_EQ(house.Post("/api/status", "{}").status, 405);
    EXPECT_EQ(Send("DELETE /api/rooms HTTP/1.1\r\nHost: localhost").status, 405);
    EXPECT_EQ(house.Get("/api/nothing").status, 404);
}

TEST_F(HttpLimitsTest, ABusyPortIsOneClearLine) {
    const common::Log log(common::LogLevel::Error);
    Api api(loop.loop, house.GetCore().GetParts(), "");
    try {
        HttpServer second(loop.loop, api, "127.0.0.1", house.GetPort(), log);
        FAIL();
    } catch (const std::runtime_error& error) {
        EXPECT_EQ(std::string(error.what()), "cannot listen on 127.0.0.1:" + std::to_string(house.GetPort()) +
                                                 ": Address already in use");
    }
}

TEST_F(HttpLimitsTest, ConnectionsThatAskNothingKeepNobodyOut) {
    std::vector<tcp::socket> sockets;
    for (std::size_t i = 0; i < 2 * HttpServer::kMaxSessions; ++i) {
        sockets.emplace_back(loop.loop);
        sockets.back().connect({asio::ip::address_v4::loopback(), house.GetPort()});
        sockets.back().send(asio::buffer(std::string("GET /api/status HT")));
        loop.RunReady();
    }
    EXPECT_EQ(house.Get("/api/status").status, 200);
    char byte = 0;
    bool ended = false;
    sockets[0].async_read_some(asio::buffer(&byte, 1),
                               [&](error_code error, std::size_t) { ended = bool(error); });
    EXPECT_TRUE(loop.RunUntil([&] { return ended; })) << "the oldest gave way";
}

class EventsTest : public HttpLimitsTest {
protected:
    using Socket = beast::websocket::stream<tcp::socket>;

    error_code Connect(Socket& socket, const std::string& origin = "") {
        socket.next_layer().connect({asio::ip::address_v4::loopback(), house.GetPort()});
        if (!origin.empty()) {
            socket.set_option(beast::websocket::stream_base::decorator(
                [origin](beast::websocket::request_type& request) { request.set("Origin", origin); }));
        }
        std::optional<error_code> result;
        socket.async_handshake("localhost", "/api/events", [&](error_code error) { result = error; });
        EXPECT_TRUE(loop.RunUntil([&] { return result.has_value(); }));
        return result.value_or(asio::error::timed_out);
    }

    json Read(Socket& socket) {
        beast::flat_buffer buffer;
        std::optional<error_code> result;
        socket.async_read(buffer, [&](error_code error, std::size_t) { result = error; });
        if (!loop.RunUntil([&] { return result.has_value(); }) || *result)
            return nullptr;
        return json::parse(beast::buffers_to_string(buffer.data()));
    }

    // Skips other events.
    json ReadType(Socket& socket, const std::string& type) {
        for (;;) {
            json event = Read(socket);
            if (event.is_null() || event["type"] == type)
                return event;
        }
    }
};

TEST_F(EventsTest, StartWithASnapshotAndGoOnWithChanges) {
    ASSERT_TRUE(loop.RunUntil([&] { return house.GetCore().GetBindings().WhyNotReady().empty(); }));
    Socket socket(loop.loop);
    ASSERT_FALSE(Connect(socket));
    const json snapshot = Read(socket);
    EXPECT_EQ(snapshot["type"], "snapshot");
    EXPECT_EQ(snapshot["rooms"].size(), 2u);
    EXPECT_EQ(snapshot["variables"][0]["name"], "ECHOED");
    EXPECT_EQ(snapshot["status"]["ready"], true);
    house.Command("ECHO", {{"TEXT", "hello"}});
    EXPECT_EQ(ReadType(socket, "variable"),
              (json{{"type", "variable"}, {"id", 1}, {"name", "ECHOED"}, {"value", "hello"}}));
    house.Command("SELECT", json::object());
    const json message = ReadType(socket, "message");
    EXPECT_EQ(message["room"], 1);
    EXPECT_EQ(message["name"], "SELECT_AUDIO_DEVICE");
    EXPECT_EQ(message["parameters"]["deviceid"], "100002");
    server.Kill();
    const json lost = ReadType(socket, "server");
    EXPECT_EQ(lost["binding"], 3000);
    EXPECT_EQ(lost["connected"], false);
}

TEST_F(EventsTest, ListenersKeepNobodyOut) {
    std::vector<std::unique_ptr<Socket>> listeners;
    for (std::size_t i = 0; i < HttpServer::kMaxListeners; ++i) {
        listeners.push_back(std::make_unique<Socket>(loop.loop));
        ASSERT_FALSE(Connect(*listeners.back()));
    }
    Socket further(loop.loop);
    EXPECT_EQ(Connect(further), beast::websocket::error::upgrade_declined);
    EXPECT_EQ(house.Get("/api/status").status, 200);
    listeners.clear();
    EXPECT_TRUE(loop.RunUntil([&] { return !Connect(*std::make_unique<Socket>(loop.loop)); }));
}

TEST_F(EventsTest, AForeignPageMayNotListen) {
    Socket socket(loop.loop);
    EXPECT_EQ(Connect(socket, "http://evil.example"), beast::websocket::error::upgrade_declined);
    Socket own(loop.loop);
    EXPECT_FALSE(Connect(own, "http://localhost"));
}

TEST_F(EventsTest, AListenerThatReadsNothingIsDropped) {
    ASSERT_TRUE(loop.RunUntil([&] { return house.GetCore().GetBindings().WhyNotReady().empty(); }));
    Socket socket(loop.loop);
    ASSERT_FALSE(Connect(socket));
    // More than the listener's share and the system's buffers hold.
    const json large = {{"type", "test"}, {"text", std::string(1u << 20, 'x')}};
    for (int i = 0; i < 30; ++i) {
        house.GetCore().GetEvents().Publish(large);
        loop.RunReady();
    }
    int received = 0;
    while (!Read(socket).is_null())
        ++received;
    EXPECT_LT(received, 30);
}

TEST_F(EventsTest, AListenerThatSaysTooMuchIsDropped) {
    ASSERT_TRUE(loop.RunUntil([&] { return house.GetCore().GetBindings().WhyNotReady().empty(); }));
    Socket socket(loop.loop);
    ASSERT_FALSE(Connect(socket));
    socket.write(asio::buffer(std::string(EventSession::kMaxIncoming, 'x')));
    loop.RunReady();
    house.Command("ECHO", {{"TEXT", "hello"}});
    EXPECT_EQ(ReadType(socket, "variable")["value"], "hello");
    socket.write(asio::buffer(std::string(EventSession::kMaxIncoming + 1, 'x')));
    EXPECT_TRUE(ReadType(socket, "none").is_null());
}

TEST_F(EventsTest, APlainGetIsTold) {
    EXPECT_EQ(house.Get("/api/events").status, 400);
}

TEST_F(EventsTest, AListenerMayGoAtAnyTime) {
    {
        Socket socket(loop.loop);
        ASSERT_FALSE(Connect(socket));
    }
    house.Command("ECHO", {{"TEXT", "x"}});
    EXPECT_EQ(house.Get("/api/status").status, 200);
}

TEST_F(EventsTest, StoppingEndsTheListeners) {
    Socket socket(loop.loop);
    ASSERT_FALSE(Connect(socket));
    Read(socket);
    house.Stop();
    EXPECT_TRUE(ReadType(socket, "none").is_null());
}

} // namespace
} // namespace korvel::controller

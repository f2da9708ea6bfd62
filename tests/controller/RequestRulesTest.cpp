#include <gtest/gtest.h>

#include "front/http/RequestRules.h"

namespace korvel::controller {
namespace {

namespace http = beast::http;

constexpr const char* kAddress = "127.0.0.2";

TEST(OwnHost, IsThisMachineByItsLoopbackNames) {
    for (const char* host : {"localhost", "LOCALHOST:8080", "127.0.0.1", "127.0.0.1:80", "127.0.0.2:1"})
        EXPECT_TRUE(IsOwnHost(host, kAddress)) << host;
    for (const char* host :
         {"", "evil.example", "localhost.evil.example", "127.0.0.1.evil.example",
          "localhost:", "localhost:80x", "localhost:80:80", "localhost:0", "localhost:65536", "me@localhost",
          "local%68ost", "localhost/", "evil.example@127.0.0.1", "127.0.0.1\\evil.example"})
        EXPECT_FALSE(IsOwnHost(host, kAddress)) << host;
}

TEST(OwnOrigin, IsNoneOrThisServer) {
    EXPECT_TRUE(IsOwnOrigin("", "localhost:8080"));
    EXPECT_TRUE(IsOwnOrigin("http://localhost:8080", "localhost:8080"));
    EXPECT_TRUE(IsOwnOrigin("http://LOCALHOST:8080", "localhost:8080"));
    for (const char* origin : {"http://evil.example", "null", "https://localhost:8080",
                               "http://localhost:8081", "http://localhost:8080/", "http://me@localhost:8080",
                               "http://127.0.0.1:8080", "http://", "localhost:8080"})
        EXPECT_FALSE(IsOwnOrigin(origin, "localhost:8080")) << origin;
}

TEST(OwnOrigin, HasTheStandardPortWhereNoneIsSaid) {
    EXPECT_TRUE(IsOwnOrigin("http://localhost", "localhost"));
    EXPECT_TRUE(IsOwnOrigin("http://localhost", "localhost:80"));
    EXPECT_FALSE(IsOwnOrigin("http://localhost", "localhost:8080"));
}

class JudgeTest : public testing::Test {
protected:
    JudgeTest() {
        request.method(http::verb::post);
        request.target("/api/command");
        request.version(11);
        request.set(http::field::host, "localhost");
    }

    // 0 when it is not refused.
    unsigned Status() const {
        const Verdict verdict = Judge(request, kAddress);
        return verdict.kind == Verdict::Kind::Refuse ? verdict.refusal.status : 0;
    }

    RequestReader::Request request;
};

TEST_F(JudgeTest, WhatItIsJudgedByIsThereOnce) {
    const std::pair<http::field, const char*> headers[] = {{http::field::host, "localhost"},
                                                           {http::field::origin, "http://localhost"},
                                                           {http::field::content_type, "application/json"},
                                                           {http::field::content_length, "2"},
                                                           {http::field::transfer_encoding, "chunked"}};
    for (const auto& [name, value] : headers) {
        const auto before = request;
        request.set(name, value);
        EXPECT_EQ(Status(), 0u) << name;
        request.insert(name, value);
        EXPECT_EQ(Status(), 400u) << name;
        EXPECT_FALSE(Judge(request, kAddress).keepAlive) << name;
        request = before;
    }
}

TEST_F(JudgeTest, WhereABodyEndsIsSaidInOneWay) {
    request.set(http::field::content_length, "2, 2");
    EXPECT_EQ(Status(), 400u);
    request.erase(http::field::content_length);
    for (const char* coding : {"gzip", "identity", "gzip, chunked", "chunked, gzip", ""}) {
        request.set(http::field::transfer_encoding, coding);
        EXPECT_EQ(Status(), 400u) << coding;
    }
    request.set(http::field::transfer_encoding, "Chunked");
    EXPECT_EQ(Status(), 0u);
}

TEST_F(JudgeTest, APageMayReadAndOnlyItsOwnMayChange) {
    request.set(http::field::origin, "http://evil.example");
    EXPECT_EQ(Status(), 403u);
    request.method(http::verb::get);
    EXPECT_EQ(Status(), 0u) << "a browser keeps the answer from it";
    request.set(http::field::host, "evil.example");
    EXPECT_EQ(Status(), 403u);
}

TEST_F(JudgeTest, WhoUpgradesListensToTheEvents) {
    request.method(http::verb::get);
    request.target("/api/events");
    request.set(http::field::connection, "upgrade");
    request.set(http::field::upgrade, "websocket");
    request.set(http::field::sec_websocket_key, "AAAAAAAAAAAAAAAAAAAAAA==");
    request.set(http::field::sec_websocket_version, "13");
    EXPECT_EQ(Judge(request, kAddress).kind, Verdict::Kind::Listen);
    request.set(http::field::origin, "http://evil.example");
    EXPECT_EQ(Status(), 403u);
    request.erase(http::field::origin);
    request.target("/api/status");
    EXPECT_EQ(Status(), 404u);
}

} // namespace
} // namespace korvel::controller

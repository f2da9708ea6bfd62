#include <gtest/gtest.h>

#include "common/Address.h"

namespace korvel::common {
namespace {

TEST(Address, AHostAndItsPort) {
    EXPECT_EQ(ParseHostPort("127.0.0.1:7700"), (HostPort{"127.0.0.1", 7700}));
    EXPECT_EQ(ParseHostPort("audio-server_2.home:1"), (HostPort{"audio-server_2.home", 1}));
    EXPECT_EQ(ParseHostPort("[::1]:65535"), (HostPort{"::1", 65535}));
    EXPECT_EQ(ParseHostPort("küche:80"), (HostPort{"küche", 80}));
}

TEST(Address, WhatIsNotAHostAndItsPort) {
    for (const char* text :
         {"",           ":",         "home",       "home:",          ":80",        "home:0",
          "home:65536", "home:-1",   "home:8o",    "home:80 ",       " home:80",   "::1:80",
          "[::1]",      "[::1:80",   "[home]:80",  "me@home:80",     "home:80:80", "home/:80",
          "ho me:80",   "home\n:80", "ho%0Ame:80", "http://home:80", "ho%20me:80", "ho%22me:80",
          "ho%2Fme:80", "[v1.x]:80"})
        EXPECT_EQ(ParseHostPort(text), std::nullopt) << text;
    EXPECT_TRUE(ParseHostPort(std::string(255, 'a') + ":80"));
    EXPECT_EQ(ParseHostPort(std::string(256, 'a') + ":80"), std::nullopt);
}

TEST(Address, IsWrittenAsItIsRead) {
    for (const char* text : {"127.0.0.1:7700", "home:1", "[fe80::1]:9"})
        EXPECT_EQ(ToText(ParseHostPort(text).value()), text);
}

TEST(Address, APortMayBeLeftOutWhereThereIsAStandardOne) {
    EXPECT_EQ(ParseHost("home", 80), (HostPort{"home", 80}));
    EXPECT_EQ(ParseHost("home:8080", 80), (HostPort{"home", 8080}));
    EXPECT_EQ(ParseHost("[::1]", 80), (HostPort{"::1", 80}));
    for (const char* text :
         {"", ":80", "home:", "home:0", "home:65536", "::1", "me@home", "home/", "ho%6De", "ho me"})
        EXPECT_EQ(ParseHost(text, 80), std::nullopt) << text;
}

TEST(Address, TheLettersOfAHostMayBeLargeOrSmall) {
    EXPECT_TRUE(IsSameHost("LocalHost", "localhost"));
    EXPECT_FALSE(IsSameHost("localhost", "localhost."));
    EXPECT_FALSE(IsSameHost("local", "localhost"));
    EXPECT_FALSE(IsSameHost("[", "{")) << "no letters";
}

TEST(WebAddress, HasAServerAndATarget) {
    const auto plain = ParseWebAddress("http://radio.example/jazz?a=1#b");
    ASSERT_TRUE(plain);
    EXPECT_FALSE(plain->secure);
    EXPECT_EQ(plain->server, (HostPort{"radio.example", 80}));
    EXPECT_EQ(plain->target, "/jazz?a=1#b");
    const auto secure = ParseWebAddress("https://me:w%40rd@[::1]:8443?x");
    ASSERT_TRUE(secure);
    EXPECT_TRUE(secure->secure);
    EXPECT_EQ(secure->server, (HostPort{"::1", 8443}));
    EXPECT_EQ(secure->target, "?x");
    EXPECT_EQ(ParseWebAddress("https://a")->server.port, 443);
    EXPECT_EQ(ParseWebAddress("http://a:/")->server.port, 80);
}

TEST(WebAddress, BehindTheHostStationsWriteWhatTheyLike) {
    for (const char* text : {"http://a/|[x]{y}\\^%zz", "http://a/größe", "http://müller.example/a"})
        EXPECT_TRUE(ParseWebAddress(text)) << text;
}

TEST(WebAddress, WhatIsNone) {
    for (const char* text : {"",
                             "http",
                             "http:",
                             "http://",
                             "https://",
                             "http:///a",
                             "http://:80/",
                             "HTTP://a/",
                             "ftp://a/",
                             "file:///a",
                             "a",
                             " http://a/",
                             "http://a/b c",
                             "http://a/\"",
                             "http://a/\n",
                             "http://a/\x7F",
                             "http://a:0/",
                             "http://a:65536/",
                             "http://a:b/",
                             "http://a%2Fb/",
                             "http://[v1.x]/",
                             "http://[::1/"})
        EXPECT_FALSE(ParseWebAddress(text)) << text;
}

} // namespace
} // namespace korvel::common

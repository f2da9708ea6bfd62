// What can be asked of the HTTP interface: the table of routes, what follows from it, and the page that lists it.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <fstream>
#include <regex>
#include <set>
#include <sstream>

#include "TestHouse.h"
#include "front/http/Routes.h"

namespace korvel::controller {
namespace {

using nlohmann::json;
using Path = std::vector<std::string>;

constexpr std::array kMethods = {"GET", "HEAD", "POST", "PUT", "PATCH", "DELETE", "OPTIONS", "get", ""};

// A path that the pattern stands for, as a request names it.
std::string AddressOf(std::string_view pattern) {
    if (pattern == kAnyOther)
        return "/app.js";
    return std::regex_replace(std::string(pattern), std::regex("\\{[^}]*\\}"), "1");
}

Path PathOf(const std::string& address) {
    return ParseTarget(address).value().path;
}

std::string_view NameOf(May may) {
    switch (may) {
        case May::Read:
            return "read";
        case May::Change:
            return "change";
        case May::Administer:
            return "administer";
    }
    return "";
}

// All segments that any route has, and 1 for what has a name there.
Path Words() {
    std::set<std::string> words;
    for (const Route& route : Routes()) {
        for (std::string& word : PathOf(AddressOf(route.pattern)))
            words.insert(std::move(word));
    }
    return {words.begin(), words.end()};
}

// `address`, and all that begin so and go on with up to `depth` of the words.
void AddLonger(const std::string& address, const Path& words, int depth,
               std::vector<std::string>& addresses) {
    addresses.push_back(address);
    for (const std::string& word : words) {
        if (depth > 0)
            AddLonger(address + "/" + word, words, depth - 1, addresses);
    }
}

TEST(PathPattern, StandsForPathsOfItsSegments) {
    EXPECT_TRUE(MatchPath("/api/rooms", {"api", "rooms"}));
    for (const Path& other :
         {Path{}, Path{"api"}, Path{"api", "room"}, Path{"api", "roomss"}, Path{"api/rooms"},
          Path{"api", "rooms", ""}, Path{"rooms", "api"}, Path{"api", "rooms", "1"}})
        EXPECT_FALSE(MatchPath("/api/rooms", other));
}

TEST(PathPattern, NamesWhatMayBeAny) {
    const Path path = {"api", "rooms", "a/b c", "off"};
    const auto values = MatchPath("/api/rooms/{id}/off", path);
    ASSERT_TRUE(values);
    EXPECT_EQ(*values, (Placeholders{{"id", "a/b c"}}));
    EXPECT_FALSE(MatchPath("/api/rooms/{id}/off", {"api", "rooms", "off"}));
    EXPECT_EQ(MatchPath("/{a}/{b}", {"{b}", ""}), (Placeholders{{"a", "{b}"}, {"b", ""}}));
}

TEST(Routes, EachIsFoundWhereItsPatternLeads) {
    for (const Route& route : Routes())
        EXPECT_EQ(FindRoute(Routes(), route.method, PathOf(AddressOf(route.pattern))).route, &route)
            << route.method << " " << route.pattern;
}

TEST(Routes, WhatIsReadIsAskedForByGetAndNothingElseIs) {
    for (const Route& route : Routes())
        EXPECT_EQ(route.may == May::Read, route.method == "GET") << route.method << " " << route.pattern;
}

TEST(Routes, AMethodThatAPathDoesNotHaveIsToldTheOnesThatItHas) {
    static constexpr std::array kTwo = {
        Route{"GET", "/a/{x}", May::Read, nullptr}, Route{"GET", "/a/b", May::Read, nullptr},
        Route{"PUT", "/a/{x}", May::Change, nullptr}, Route{"GET", kAnyOther, May::Read, nullptr}};
    EXPECT_EQ(FindRoute(kTwo, "PUT", {"a", "c"}).route, &kTwo[2]);
    EXPECT_EQ(FindRoute(kTwo, "POST", {"a", "c"}).allow, "GET, PUT");
    EXPECT_EQ(FindRoute(kTwo, "POST", {"c"}).allow, "GET");
    EXPECT_EQ(FindRoute(std::span(kTwo).first(3), "GET", {"c"}).allow, "") << "there is no such path";
}

// All that the page says in its table: "GET /api/rooms | read".
std::vector<std::string> ListedRoutes(const std::string& page) {
    static const std::regex kRow("\\| `([A-Z]+ [^` ]+)` \\| (read|change|administer) \\|[^\n]*\n");
    std::vector<std::string> rows;
    for (std::sregex_iterator row(page.begin(), page.end(), kRow), end; row != end; ++row)
        rows.push_back((*row)[1].str() + " | " + (*row)[2].str());
    return rows;
}

class PageOfRoutes : public testing::Test {
protected:
    void SetUp() override {
        std::stringstream text;
        text << std::ifstream(KORVEL_API_PAGE).rdbuf();
        page = text.str();
        ASSERT_FALSE(page.empty());
    }

    std::string page;
};

TEST_F(PageOfRoutes, ListsEachOnceWithWhatItMayDo) {
    std::vector<std::string> routes;
    for (const Route& route : Routes())
        routes.push_back(std::string(route.method) + " " + std::string(route.pattern) + " | " +
                         std::string(NameOf(route.may)));
    std::vector<std::string> listed = ListedRoutes(page);
    std::ranges::sort(routes);
    std::ranges::sort(listed);
    EXPECT_EQ(listed, routes);
}

TEST_F(PageOfRoutes, SpeaksOfNoOther) {
    static const std::regex kMention("`(GET|HEAD|POST|PUT|PATCH|DELETE) (/[^`? ]*)");
    int mentions = 0;
    for (std::sregex_iterator one(page.begin(), page.end(), kMention), end; one != end; ++one, ++mentions) {
        const std::string method = (*one)[1].str(), address = AddressOf((*one)[2].str());
        const FoundRoute found = FindRoute(Routes(), method, PathOf(address));
        EXPECT_TRUE(found.route && found.route->pattern != kAnyOther) << method << " " << address;
    }
    EXPECT_GT(mentions, 0);
}

class RoutesTest : public testing::Test {
protected:
    void SetUp() override {
        house.GetCore().GetEvents().Add([this](const auto& text) {
            const json event = json::parse(*text);
            if (event["type"] == "scan" && event["phase"] == "finished")
                ++scans;
        });
        ASSERT_TRUE(loop.RunUntil([this] { return scans == 1; })) << "that of the start";
    }

    // What is answered at once; a status of 0 when it comes later.
    HttpReply Ask(const std::string& method, const std::string& address, const std::string& body = "") {
        const auto answer = std::make_shared<HttpReply>();
        answer->status = 0;
        api.Handle({method, address, "application/json", body},
                   [answer](HttpReply reply) { *answer = std::move(reply); });
        return *answer;
    }

    bool IsScanning() { return house.GetCore().GetLibrary().ScanStatus()["running"].get<bool>(); }

    int scans = 0; // that have finished
    ScratchFolder state;
    TestLoop loop;
    TestHouse house{loop, TestPlugin("WORKING"), {}, state};
    Api api{loop.loop, house.GetCore().GetParts(), ""};
};

TEST_F(RoutesTest, AnotherMethodIsRefusedWithTheOnesThatWouldDo) {
    for (const Route& route : Routes()) {
        const std::string address = AddressOf(route.pattern);
        for (const char* method : kMethods) {
            const FoundRoute found = FindRoute(Routes(), method, PathOf(address));
            if (found.route)
                continue;
            const HttpReply reply = Ask(method, address, "{}");
            EXPECT_EQ(reply.status, 405u) << method << " " << address;
            EXPECT_EQ(reply.allow, found.allow) << method << " " << address;
            EXPECT_NE(reply.allow.find(route.method), std::string::npos) << method << " " << address;
        }
    }
}

TEST_F(RoutesTest, WhereNoRouteLeadsThereIsNothing) {
    for (const char* address : {"/api", "/api/nothing", "/api/statuses", "/api/status/1", "/api/rooms/1",
                                "/api/library", "/api/library/songs/1/2", "/api/command/x", "/nothing"})
        EXPECT_EQ(Ask("GET", address).status, 404u) << address;
}

TEST_F(RoutesTest, APathIsDecodedBeforeItIsLookedFor) {
    EXPECT_EQ(Ask("GET", "/%61pi/st%61tus/?x=y#z").status, 200u);
    EXPECT_EQ(Ask("GET", "/api/library%2Fscan").status, 404u) << "a slash in a segment parts nothing";
    EXPECT_EQ(Ask("GET", "/api/library/%73can").allow, "POST");
    EXPECT_EQ(Ask("POST", "/api/rooms/%39/off").body, R"({"error":"there is no room 9"})");
    EXPECT_EQ(Ask("POST", "/api/rooms/%7/off").status, 400u);
}

TEST_F(RoutesTest, WhatTakesABodyTakesAnObject) {
    for (const Route& route : Routes()) {
        if (route.method == "GET")
            continue;
        EXPECT_EQ(Ask(std::string(route.method), AddressOf(route.pattern), "[1]").status, 400u)
            << route.pattern;
    }
}

TEST_F(RoutesTest, NoPathButItsOwnStartsAScan) {
    const std::string own = "/api/library/scan";
    std::vector<std::string> addresses;
    AddLonger("/api", Words(), 3, addresses);
    for (const std::string& address : addresses) {
        for (const char* method : {"GET", "POST", "PUT"}) {
            if (address == own && method == std::string("POST"))
                continue;
            EXPECT_NE(Ask(method, address).status, 202u) << method << " " << address;
            ASSERT_FALSE(IsScanning()) << method << " " << address;
        }
    }
    EXPECT_EQ(Ask("POST", own).status, 202u);
    EXPECT_TRUE(loop.RunUntil([this] { return scans == 2; }));
}

} // namespace
} // namespace korvel::controller

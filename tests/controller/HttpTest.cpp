// The HTTP interface on real sockets, in front of a small driver.
#include <gtest/gtest.h>

#include <filesystem>

#include "TestHouse.h"

namespace korvel::controller {
namespace {

using nlohmann::json;

class HttpTest : public testing::Test {
protected:
    void StartHouse(const std::string& web = "") {
        house = std::make_unique<TestHouse>(loop, TestPlugin("WORKING"), std::vector{server.GetPort()}, state,
                                            web);
        ASSERT_TRUE(loop.RunUntil([&] { return house->GetCore().GetBindings().WhyNotReady().empty(); }));
    }
    void SetUp() override { StartHouse(); }

    std::string ErrorOf(const RawReply& reply) { return reply.Json().value("error", "none"); }

    ScratchFolder state;
    TestLoop loop;
    ScriptedServer server{loop};
    std::unique_ptr<TestHouse> house;
};

TEST_F(HttpTest, ACommandAnswersItsText) {
    const RawReply reply = house->Command("ECHO", {{"TEXT", "a \"b\" <c>"}});
    EXPECT_EQ(reply.status, 200);
    EXPECT_EQ(reply.Json(), (json{{"return", "a \"b\" <c>"}}));
}

TEST_F(HttpTest, WholeNumbersAreParametersToo) {
    EXPECT_EQ(house->Command("ECHO", {{"TEXT", 42}}).Json(), (json{{"return", "42"}}));
}

TEST_F(HttpTest, ACommandNeedsNoParameters) {
    EXPECT_EQ(house->Post("/api/command", R"({"name":"ECHO"})").Json(), (json{{"return", ""}}));
}

TEST_F(HttpTest, DataForOneDeviceIsAnEventThatNamesIt) {
    std::vector<json> events;
    house->GetCore().GetEvents().Add([&](const auto& text) {
        if (json event = json::parse(*text); event["type"] == "data")
            events.push_back(std::move(event));
    });
    house->Command("DATA", {{"DEVICE", 4711}, {"TEXT", "a & b"}});
    EXPECT_EQ(events,
              (std::vector<json>{{{"type", "data"}, {"device", 4711}, {"xml", "<data>a &amp; b</data>"}}}));
}

TEST_F(HttpTest, AnUnknownCommandIsNotFound) {
    const RawReply reply = house->Command("DANCE", json::object());
    EXPECT_EQ(reply.status, 404);
    EXPECT_EQ(ErrorOf(reply), "unknown command 'DANCE'");
}

TEST_F(HttpTest, ARequestAnswersItsElementOrNull) {
    const RawReply info = house->Post("/api/request", R"({"name":"GET_QUEUE_INFO"})");
    EXPECT_EQ(info.Json(), (json{{"reply", "<info></info>"}}));
    EXPECT_EQ(house->Post("/api/request", R"({"name":"ECHO"})").Json(), (json{{"reply", nullptr}}));
    EXPECT_EQ(house->Post("/api/request", R"({"name":"DANCE"})").status, 404);
}

TEST_F(HttpTest, BadBodiesAreRefusedWithAReason) {
    const std::vector<std::pair<std::string, std::string>> cases = {
        {"[1]", "the body must be a JSON object"},
        {"{", "the body must be a JSON object"},
        {"{}", "\"name\" must be a text"},
        {R"({"name":1})", "\"name\" must be a text"},
        {R"({"name":"ECHO","parameter":{}})", "unknown member \"parameter\""},
        {R"({"name":"ECHO","parameters":[]})", "\"parameters\" must be an object with at most 100 members"},
        {R"({"name":"ECHO","parameters":{"A":true}})", "parameter A must be a text or a whole number"},
        {R"({"name":"ECHO","parameters":{"A":1.5}})", "parameter A must be a text or a whole number"},
        {R"({"name":"ECHO","parameters":{"":"x"}})", "a parameter's name must have 1 to 100 characters"},
    };
    for (const auto& [body, error] : cases) {
        const RawReply reply = house->Post("/api/command", body);
        EXPECT_EQ(reply.status, 400) << body;
        EXPECT_EQ(ErrorOf(reply), error) << body;
    }
}

TEST_F(HttpTest, VariablesShowWhatTheDriverSet) {
    house->Command("ECHO", {{"TEXT", "hello"}});
    EXPECT_EQ(house->Get("/api/variables").Json(),
              json::parse(R"([{"id":1,"name":"ECHOED","value":"hello"}])"));
}

TEST_F(HttpTest, StatusTellsVersionServersAndScan) {
    const json status = house->Get("/api/status").Json();
    EXPECT_EQ(status["version"], kVersion);
    EXPECT_EQ(status["ready"], true);
    EXPECT_EQ(status["servers"][0]["binding"], 3000);
    EXPECT_EQ(status["servers"][0]["connected"], true);
    EXPECT_TRUE(status["scan"].contains("phase"));
}

TEST_F(HttpTest, WithoutAnAudioServerCommandsAndSelectionsAreRefused) {
    server.Kill();
    ASSERT_TRUE(loop.RunUntil([&] { return !house->GetCore().GetBindings().WhyNotReady().empty(); }));
    const RawReply reply = house->Command("ECHO", {{"TEXT", "x"}});
    EXPECT_EQ(reply.status, 503);
    EXPECT_EQ(ErrorOf(reply), "no audio server is connected");
    EXPECT_EQ(house->Post("/api/rooms/1/select", R"({"queue":10000})").status, 503);
    EXPECT_EQ(house->Post("/api/rooms/1/select", R"({"join":2})").status, 503);
    EXPECT_EQ(house->Post("/api/request", R"({"name":"ECHO"})").status, 503);
    EXPECT_EQ(house->Post("/api/request", R"({"name":"GET_QUEUE_INFO"})").status, 200);
    EXPECT_EQ(house->Post("/api/rooms/1/deselect", "").status, 200);
}

TEST_F(HttpTest, RoomsAreChecked) {
    EXPECT_EQ(house->Get("/api/rooms").Json().size(), 2u);
    EXPECT_EQ(ErrorOf(house->Post("/api/rooms/9/off", "")), "there is no room 9");
    EXPECT_EQ(house->Post("/api/rooms/x/off", "").status, 404);
    EXPECT_EQ(house->Post("/api/rooms/1/dance", "").status, 405);
    EXPECT_EQ(house->Post("/api/rooms/1/select", R"({"queue":1,"join":2})").status, 400);
    EXPECT_EQ(house->Post("/api/rooms/1/select", R"({"queue":"1"})").status, 400);
    EXPECT_EQ(house->Post("/api/rooms/1/select", R"({"volume":1})").status, 400);
    EXPECT_EQ(house->Post("/api/rooms/1/select", R"({"join":1})").status, 400);
    const RawReply empty = house->Post("/api/rooms/1/select", "");
    EXPECT_EQ(empty.status, 409);
    EXPECT_EQ(ErrorOf(empty), "Living room has no queue: add music to it, or join a room");
}

TEST_F(HttpTest, WhatAMessageToARoomAsksForComesAfterTheDriversCall) {
    // The selection would be an entry inside an entry otherwise; here it finds no queue, and all goes on.
    EXPECT_EQ(house->Command("SELECT", json::object()).status, 200);
    EXPECT_FALSE(house->IsRouted(1));
}

TEST_F(HttpTest, AnExceptionInTheDriverIsNotTheEnd) {
    EXPECT_EQ(house->Command("THROW", json::object()).status, 200);
    EXPECT_EQ(house->Command("ECHO", {{"TEXT", "still here"}}).Json(), (json{{"return", "still here"}}));
}

TEST_F(HttpTest, TheLibraryIsBrowsed) {
    media::MediaDatabase& database = house->GetCore().GetLibrary().Database();
    media::SongRecord song;
    song.title = "Blue \xFF & Green";
    song.artist = "Ann";
    song.location = "/music/a.flac";
    const std::uint32_t id = database.PutSong(song);
    const json songs = house->Get("/api/library/songs?limit=1").Json();
    EXPECT_EQ(songs["total"], 1);
    EXPECT_EQ(songs["items"][0]["id"], id);
    EXPECT_EQ(house->Get("/api/library/songs/" + std::to_string(id)).Json()["artist"], "Ann");
    EXPECT_EQ(house->Get("/api/library/search?q=gre").Json()["songs"]["total"], 1);
    for (const char* list : {"albums", "artists", "genres", "playlists", "stations"})
        EXPECT_EQ(house->Get(std::string("/api/library/") + list).status, 200) << list;
    for (const char* missing :
         {"/api/library", "/api/library/films", "/api/library/albums/77", "/api/library/songs/x"})
        EXPECT_EQ(house->Get(missing).status, 404) << missing;
    EXPECT_EQ(house->Get("/api/library/songs?offset=-1").status, 400);
    EXPECT_EQ(house->Get("/api/library/search").status, 400);
}

TEST_F(HttpTest, AScanStartsOnRequestAndReportsItsEnd) {
    std::vector<std::string> phases;
    const std::uint32_t listener = house->GetCore().GetEvents().Add([&](const auto& text) {
        const json event = json::parse(*text);
        if (event["type"] == "scan")
            phases.push_back(event["phase"]);
    });
    ASSERT_TRUE(
        loop.RunUntil([&] { return !house->GetCore().GetLibrary().ScanStatus()["running"].get<bool>(); }));
    EXPECT_EQ(house->Post("/api/library/scan", "").status, 202);
    EXPECT_TRUE(loop.RunUntil([&] { return !phases.empty() && phases.back() == "finished"; }));
    house->GetCore().GetEvents().Remove(listener);
}

TEST_F(HttpTest, TheDriversStateSurvivesARestart) {
    house->Command("PERSIST", {{"TEXT", "kept"}});
    EXPECT_EQ(ReadFile(state.File("driver-state.xml")), "<test>kept</test>") << "without a clean end as well";
    house->Stop();
    house.reset();
    StartHouse();
    EXPECT_EQ(house->Post("/api/request", R"({"name":"GET_KEPT"})").Json()["reply"], "<kept>kept</kept>");
}

TEST_F(HttpTest, AStateFolderServesOneController) {
    EXPECT_THROW(TestHouse(loop, TestPlugin("WORKING"), {}, state), std::runtime_error);
}

TEST_F(HttpTest, WithoutAPageTheTopNamesTheInterface) {
    const RawReply top = house->Get("/");
    EXPECT_EQ(top.status, 200);
    EXPECT_NE(top.body.find("/api"), std::string::npos);
    EXPECT_EQ(house->Get("/index.html").status, 404);
}

class PageTest : public HttpTest {
protected:
    void SetUp() override {
        std::filesystem::create_directory(web.File("page"));
        web.Write("page/index.html", "<p>hello");
        web.Write("page/app.js", "1");
        web.Write("page/.hidden", "no");
        web.Write("secret", "no");
        std::filesystem::create_symlink(web.File("secret"), web.File("page/link"));
        StartHouse(web.File("page"));
    }

    ScratchFolder web;
};

TEST_F(PageTest, FilesOfThePageAreServed) {
    EXPECT_EQ(house->Get("/").body, "<p>hello");
    const RawReply script = house->Get("/app.js");
    EXPECT_EQ(script.body, "1");
    EXPECT_NE(script.head.find("text/javascript"), std::string::npos);
}

TEST_F(PageTest, FilesSayWhatTheyAre) {
    const std::pair<const char*, const char*> types[] = {{".html", "text/html; charset=utf-8"},
                                                         {".css", "text/css; charset=utf-8"},
                                                         {".js", "text/javascript; charset=utf-8"},
                                                         {".json", "application/json"},
                                                         {".svg", "image/svg+xml"},
                                                         {".png", "image/png"},
                                                         {".jpg", "image/jpeg"},
                                                         {".ico", "image/x-icon"},
                                                         {".woff2", "font/woff2"},
                                                         {".txt", "text/plain; charset=utf-8"},
                                                         {".webmanifest", "application/manifest+json"},
                                                         {".exe", "application/octet-stream"}};
    for (const auto& [extension, type] : types) {
        const std::string name = std::string("file") + extension;
        web.Write("page/" + name, "x");
        const RawReply reply = house->Get("/" + name);
        EXPECT_NE(reply.head.find("Content-Type: " + std::string(type) + "\r\n"), std::string::npos)
            << reply.head;
    }
}

TEST_F(PageTest, NothingOutsideItsFolderIs) {
    for (const char* target :
         {"/../secret", "/%2e%2e/secret", "/..%2fsecret", "/.hidden", "/link", "/missing", "//etc/passwd"})
        EXPECT_EQ(house->Get(target).status, 404) << target;
}

} // namespace
} // namespace korvel::controller

#include <gtest/gtest.h>

#include <sstream>

#include "TestHouse.h"
#include "ctl/Actions.h"

namespace korvel::ctl {
namespace {

using controller::ScratchFolder;
using controller::ScriptedServer;
using controller::TestHouse;
using controller::TestLoop;

TEST(Ctl, ParametersAreKeysAndValues) {
    EXPECT_EQ(ParseParameters({"A=1", "B=x=y", "C="}), (nlohmann::json{{"A", "1"}, {"B", "x=y"}, {"C", ""}}));
    EXPECT_THROW(ParseParameters({"A"}), Failure);
    EXPECT_THROW(ParseParameters({"=1"}), Failure);
}

TEST(Ctl, ASongListIsEscaped) {
    EXPECT_EQ(SongListXml({"1050", "1051"}),
              "<MEDIA><MEDIA_ID>1050</MEDIA_ID><MEDIA_ID>1051</MEDIA_ID></MEDIA>");
    EXPECT_EQ(SongListXml({"<&"}), "<MEDIA><MEDIA_ID>&lt;&amp;</MEDIA_ID></MEDIA>");
}

TEST(Ctl, QueriesArePercentEncoded) {
    EXPECT_EQ(PercentEncode("a b&\xC3\xA4"), "a%20b%26%C3%A4");
}

TEST(Ctl, ABadAddressIsRefused) {
    for (const char* url : {"", "localhost", "https://localhost", "http://", "http://a:b", "http://a/b"})
        EXPECT_THROW(Client{url}, Failure) << url;
}

TEST(Ctl, AControllerThatIsNotThereIsOneClearLine) {
    const tests::HeldPort port;
    Client client("http://127.0.0.1:" + std::to_string(port.Number()));
    try {
        client.Get("/api/rooms");
        FAIL();
    } catch (const Failure& failure) {
        EXPECT_EQ(std::string(failure.what()), "no answer from the controller at 127.0.0.1:" +
                                                   std::to_string(port.Number()) + ": Connection refused");
    }
}

class CtlHouseTest : public testing::Test {
protected:
    CtlHouseTest() {
        loop.RunUntil([&] { return house.GetCore().GetBindings().WhyNotReady().empty(); });
        for (const char* title : {"Blue", "Blue Moon", "Green"}) {
            media::SongRecord song;
            song.title = title;
            song.artist = "Ann";
            song.location = std::string("/music/") + title;
            house.GetCore().GetLibrary().Database().PutSong(song);
        }
    }

    // Runs the action as another process would, and returns what it printed, or its failure.
    std::string Run(const std::function<void(Actions&)>& action) {
        std::ostringstream out;
        EXPECT_TRUE(loop.RunBeside([&] {
            try {
                Client client("http://127.0.0.1:" + std::to_string(house.GetPort()));
                Actions actions(client, out);
                action(actions);
            } catch (const std::exception& error) {
                out << "failure: " << error.what();
            }
        }));
        return out.str();
    }

    ScratchFolder state;
    TestLoop loop;
    ScriptedServer server{loop};
    TestHouse house{loop, controller::TestPlugin("WORKING"), {server.GetPort()}, state};
};

TEST_F(CtlHouseTest, ShowsTheRooms) {
    EXPECT_EQ(Run([](Actions& a) { a.Rooms(); }), "1  Living room: off\n2  Kitchen: off\n");
}

TEST_F(CtlHouseTest, ShowsTheStatus) {
    const std::string text = Run([](Actions& a) { a.Status(); });
    EXPECT_NE(text.find(": ready\n"), std::string::npos) << text;
    EXPECT_NE(text.find("connected"), std::string::npos) << text;
}

TEST_F(CtlHouseTest, SaysWhyAServerIsNotConnected) {
    server.Kill();
    ASSERT_TRUE(loop.RunUntil(
        [&] { return house.GetCore().GetBindings().ToJson()[0].at("problem") == "Connection refused"; }));
    const std::string text = Run([](Actions& a) { a.Status(); });
    EXPECT_NE(text.find("): not connected: Connection refused\n"), std::string::npos) << text;
}

TEST_F(CtlHouseTest, Searches) {
    EXPECT_EQ(Run([](Actions& a) { a.Search("moon"); }), "song   1001  Blue Moon - Ann ()\n");
}

TEST_F(CtlHouseTest, SendsAnyCommandAndRequest) {
    EXPECT_EQ(Run([](Actions& a) { a.Command("ECHO", {"TEXT=a b"}); }), "a b\n");
    EXPECT_EQ(Run([](Actions& a) { a.Request("GET_QUEUE_INFO", {"ROOM_ID=kitchen"}); }), "<info></info>\n");
}

TEST_F(CtlHouseTest, SaysWhatIsWrong) {
    EXPECT_EQ(Run([](Actions& a) { a.Command("DANCE", {}); }), "failure: unknown command 'DANCE'");
    EXPECT_EQ(Run([](Actions& a) { a.Transport("PAUSE", "Attic"); }),
              "failure: there is no room 'Attic'; the rooms are: Living room, Kitchen");
    EXPECT_EQ(Run([](Actions& a) { a.Play("1", {"Purple"}, false); }), "failure: there is no song 'Purple'");
    const std::string several = Run([](Actions& a) { a.Play("1", {"blu"}, false); });
    EXPECT_NE(several.find("'blu' may be any of these"), std::string::npos) << several;
    EXPECT_NE(several.find("1001  Blue Moon"), std::string::npos) << several;
}

} // namespace
} // namespace korvel::ctl

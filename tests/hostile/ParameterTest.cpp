// What commands and playlists bring that would be more than one line, or too much, on its way to the audio server.
#include <fstream>
#include <iterator>

#include "LyingCatalogue.h"
#include "PlayingHouse.h"

namespace korvel::tests {
namespace {

using nlohmann::json;

constexpr std::size_t kLineLimit = 64 * 1024;
// Once on a line of its own, it ends all that plays.
const std::string kLineInside = "a\"\r\n9 reset\r\n9 addmed 1 \"x";

class HostileParameters : public PlayingHouse {
protected:
    // Each is refused with one sentence, and what played plays on as if nothing had been said.
    void ExpectRefused(const std::string& name, json parameters) {
        parameters["ROOM_ID"] = 1;
        const std::string before = Queue();
        for (const char* target : {"/api/command", "/api/request"}) {
            const Reply reply = m_house->Post(target, {{"name", name}, {"parameters", parameters}});
            EXPECT_EQ(reply.status, 400) << name;
            EXPECT_NE(reply.Error(), "") << name;
            EXPECT_EQ(reply.Error().find('\n'), std::string::npos) << name;
        }
        EXPECT_EQ(Queue(), before) << name;
    }
    void ExpectUnharmed() {
        EXPECT_TRUE(m_hall->Hears(kTone, 0.5));
        EXPECT_FALSE(IsInServerLog("unusable line"));
        EXPECT_FALSE(IsInServerLog("closed"));
        EXPECT_TRUE(m_house->Status().value("ready", false));
    }
    // Adds the song before one that can be played, and waits until that plays.
    void ExpectPassedOver(std::uint32_t song, std::uint32_t next) {
        const std::string list = "<MEDIA><MEDIA_ID>" + std::to_string(song) + "</MEDIA_ID><MEDIA_ID>" +
                                 std::to_string(next) + "</MEDIA_ID></MEDIA>";
        EXPECT_EQ(
            m_house->Command("ADD_SONG_LIST", {{"ROOM_ID", 1}, {"MEDIA", list}, {"PLAY_NEXT", 1}}).status,
            200);
        EXPECT_TRUE(m_hall->Hears(kOtherTone, 0.5)) << m_house->Log();
        EXPECT_NE(m_house->Log().find("not one line"), std::string::npos);
        EXPECT_FALSE(IsInServerLog("unusable line"));
        EXPECT_FALSE(IsInServerLog("closed"));
    }
    std::string State() const {
        std::ifstream file(PathOf("state/driver-state.xml"));
        return {std::istreambuf_iterator<char>(file), {}};
    }
};

TEST_F(HostileParameters, LinesInsideTextsAreRefused) {
    OpenAndPlay();
    const std::string escaped = "a&quot;&#13;&#10;9 reset&#13;&#10;9 addmed 1 &quot;x";
    for (const char* source : {"2", "3"})
        ExpectRefused("ADD_SONG", {{"SOURCE", source}, {"MEDIA_ID", kLineInside}});
    ExpectRefused("ADD_SONG", {{"SOURCE", 2}, {"MEDIA_ID", "a\" b"}});
    ExpectRefused("ADD_SONG", {{"SOURCE", 2}, {"MEDIA_ID", std::string("a\0b", 3)}});
    ExpectRefused("ADD_IR_STREAM", {{"MEDIA", "http://127.0.0.1/\r\n9 reset"}});
    ExpectRefused("ADD_IR_STREAM", {{"MEDIA", "http://127.0.0.1/\" x"}});
    for (const char* command : {"ADD_SONG_LIST", "EDIT_QUEUE"})
        ExpectRefused(command, {{"MEDIA", "<MEDIA><SONG SOURCE=\"2\" ID=\"" + escaped + "\"/></MEDIA>"}});
    ExpectRefused("SAVE_PLAYLIST", {{"NAME", "Evening\r\n9 reset"}});
    ExpectUnharmed();
}

TEST_F(HostileParameters, AListMayBeWrittenInLines) {
    const auto other = AddTone(kOtherTone);
    OpenAndPlay();
    const std::string list = "<MEDIA>\r\n\t<MEDIA_ID>" + std::to_string(other) + "</MEDIA_ID>\n</MEDIA>\n";
    EXPECT_EQ(m_house->Command("ADD_SONG_LIST", {{"ROOM_ID", 1}, {"MEDIA", list}, {"PLAY_NEXT", 1}}).status,
              200);
    EXPECT_TRUE(m_hall->Hears(kOtherTone, 0.5));
}

TEST_F(HostileParameters, ASavedPlaylistWithALineInsideIsRefused) {
    constexpr std::uint32_t kDriverDevice = 100002;
    const auto playlist =
        Library().PutPlaylist(0, kDriverDevice, "Trap", {{2, "good", 0, 0}, {2, kLineInside, 0, 0}});
    OpenAndPlay();
    ExpectRefused("ADD_PLAYLIST", {{"MEDIA_ID", playlist}});
    ExpectUnharmed();
}

TEST_F(HostileParameters, ATrackThatTheCatalogueNamesWithALineInsideIsLeftOut) {
    const LyingCatalogue catalogue({kLineInside, std::string(3000, 'x'), "good"});
    OpenAndPlay("[catalog]\naddress = \"127.0.0.1:" + std::to_string(catalogue.Port()) + "\"\n");
    const json list = {{"ROOM_ID", 1}, {"MEDIA", "<MEDIA><SONG SOURCE=\"4\" ID=\"p\"/></MEDIA>"}};
    EXPECT_EQ(m_house->Command("ADD_SONG_LIST", list).status, 200);
    EXPECT_TRUE(WaitUntil([this] { return IsInServerLog(":good\""); })) << m_house->Log();
    EXPECT_EQ(m_house->Log().find("not one line"), std::string::npos) << "it was queued";
    EXPECT_FALSE(IsInServerLog("xxxxxxxx"));
    EXPECT_FALSE(IsInServerLog("unusable line"));
}

TEST_F(HostileParameters, ASongWhosePlaceHoldsALineIsPassedOver) {
    const auto trap = AddSong("/music/" + kLineInside);
    const auto other = AddTone(kOtherTone);
    OpenAndPlay();
    ExpectPassedOver(trap, other);
}

TEST_F(HostileParameters, AReferenceThatIsTooLongIsRefused) {
    OpenAndPlay();
    for (const std::size_t length : {std::size_t{2001}, kLineLimit + 1, 10 * kLineLimit}) {
        const std::string text(length, 'x');
        ExpectRefused("ADD_SONG", {{"SOURCE", 2}, {"MEDIA_ID", text}});
        ExpectRefused("ADD_IR_STREAM", {{"MEDIA", "http://127.0.0.1/" + text}});
        ExpectRefused("ADD_SONG_LIST",
                      {{"MEDIA", "<MEDIA><SONG SOURCE=\"2\" ID=\"" + text + "\"/></MEDIA>"}});
    }
    ExpectRefused("SAVE_PLAYLIST", {{"NAME", std::string(kLineLimit + 1, 'x')}});
    const json tooLong = {{"name", "EDIT_QUEUE"},
                          {"parameters", {{"ROOM_ID", 1}, {"MEDIA", std::string((1u << 20) + 1, ' ')}}}};
    EXPECT_EQ(m_house->Post("/api/command", tooLong).status, 413);
    ExpectUnharmed();
}

TEST_F(HostileParameters, ASongWhosePlaceIsLongerThanALineIsPassedOver) {
    const auto trap = AddSong("/music/" + std::string(kLineLimit, 'x'));
    const auto other = AddTone(kOtherTone);
    OpenAndPlay();
    ExpectPassedOver(trap, other);
}

TEST_F(HostileParameters, SettingsOfRoomsThatAreNotThereAreRefusedAndLeaveNothingBehind) {
    OpenAndPlay();
    EXPECT_EQ(m_house->Command("SHUFFLE", {{"ROOM_ID", 1}, {"SHUFFLE", 1}}).status, 200);
    const std::string before = State();
    EXPECT_NE(before.find("<roomid>1</roomid><shuffle>1</shuffle>"), std::string::npos) << before;
    for (int room = 2; room < 100; ++room) {
        for (const char* command : {"SHUFFLE", "REPEAT"}) {
            const Reply reply = m_house->Command(command, {{"ROOM_ID", room}, {command, 1}});
            EXPECT_EQ(reply.status, 404) << command << " " << room;
            EXPECT_NE(reply.Error(), "");
        }
    }
    EXPECT_EQ(m_house->Command("SHUFFLE", {{"ROOM_ID", "Hall"}, {"SHUFFLE", 1}}).status, 404);
    EXPECT_EQ(State(), before);
    ExpectUnharmed();
}

} // namespace
} // namespace korvel::tests

// A disk that is full, files that are damaged, and a real controller that plays on.
#include <gtest/gtest.h>

#include <algorithm>
#include <csignal>
#include <filesystem>
#include <fstream>

#include "ControllerProcess.h"
#include "FullDisk.h"
#include "HostileFiles.h"
#include "ctl/Client.h"
// The order matters: Asio.h comes first, through TestHouse.h.
#include <boost/asio/read.hpp>

namespace fs = std::filesystem;

namespace korvel::controller {
namespace {

using nlohmann::json;

class StorageTest : public testing::Test {
protected:
    StorageTest() {
        fs::create_directories(folder.File("music"));
        PutSong("1.mp3", 1);
        PutSong("2.mp3", 2);
    }

    void PutSong(const std::string& name, std::size_t titleLength) {
        folder.Write("music/" + name, Mp3WithTitle(titleLength));
    }
    std::string Settings() const {
        // Its log must not grow much while the disk is full.
        return "log = \"warning\"\nmusic = [\"" + folder.File("music") + "\"]\nstate = \"" +
               folder.File("state") + "\"\nplugin = \"" + KORVEL_DRIVER +
               "\"\n[http]\nport = " + std::to_string(port.Number()) +
               "\n[[server]]\nport = " + std::to_string(server.GetPort()) + "\n";
    }
    void Start(const std::string& scanEnd = "finished") {
        controller.emplace(folder, Settings());
        ASSERT_TRUE(loop.RunUntil([&] { return IsReady(); })) << controller->Errors();
        ASSERT_TRUE(loop.RunUntil([&] { return Status().at("scan").at("phase") == scanEnd; }));
    }
    bool IsReady() {
        try {
            return Status().at("ready").get<bool>();
        } catch (const ctl::Failure&) {
            return false;
        }
    }
    void Stop() {
        controller->Signal(SIGTERM);
        EXPECT_EQ(controller->Wait(), 0) << controller->Errors();
    }
    void Kill() {
        controller->Signal(SIGKILL);
        EXPECT_EQ(controller->Wait(), -1);
    }
    json Get(const std::string& target) {
        return ctl::Client("http://127.0.0.1:" + std::to_string(port.Number())).Get(target);
    }
    json Status() { return Get("/api/status"); }
    json Storage() { return Status().at("storage"); }
    RawReply Post(const std::string& target, const json& body) {
        asio::io_context own;
        tcp::socket socket(own);
        socket.connect({asio::ip::address_v4::loopback(), port.Number()});
        asio::write(socket, asio::buffer(PostText(target, body.dump())));
        std::string answer;
        boost::system::error_code end;
        asio::read(socket, asio::dynamic_buffer(answer), end);
        return ParseReply(answer);
    }
    RawReply Command(const std::string& name, const json& parameters) {
        return Post("/api/command", {{"name", name}, {"parameters", parameters}});
    }
    std::uint32_t SongOf(std::size_t titleLength) {
        return Get("/api/library/songs?title=" + std::string(titleLength, 't')).at("items").at(0).at("id");
    }
    // Plays the song in room 1, at once and alone.
    RawReply Play(std::size_t titleLength) {
        return Command("ADD_SONG", {{"ROOM_ID", 1},
                                    {"MEDIA_ID", SongOf(titleLength)},
                                    {"CLEAR", 1},
                                    {"PLAY_NOW", 0},
                                    {"PLAY_NEXT", 1}});
    }
    bool IsPlayed(const std::string& name) {
        return loop.RunUntil([&] {
            return std::ranges::any_of(server.GetLines(), [&](const std::string& line) {
                return line.find("addmed") != std::string::npos && line.find(name) != std::string::npos;
            });
        });
    }
    RawReply SavePlaylist(const std::string& name) {
        return Command("SAVE_PLAYLIST", {{"ROOM_ID", 1}, {"NAME", name}});
    }
    std::string Playlists() {
        std::string titles;
        const json list = Get("/api/library/playlists");
        for (const json& playlist : list.at("items"))
            titles += playlist.at("title").get<std::string>() + " ";
        return titles;
    }
    std::string Library() const { return folder.File("state/media.db"); }
    std::string StateOnDisk() const { return ReadFile(folder.File("state/driver-state.xml")); }
    bool HasCopy() {
        return loop.RunUntil([&] { return !Storage().at("copies").empty(); });
    }

    ScratchFolder folder;
    TestLoop loop;
    ScriptedServer server{loop};
    tests::HeldPort port;
    std::optional<ControllerProcess> controller;
};

TEST_F(StorageTest, OnAFullDiskTheHousePlaysOnAndSaysWhatIsNotWritten) {
    Start();
    EXPECT_EQ(Play(1).status, 200);
    EXPECT_TRUE(IsPlayed("1.mp3"));
    EXPECT_EQ(SavePlaylist("Before").status, 200);

    controller->LimitFiles(4096);
    const RawReply refused = SavePlaylist("Evening");
    const std::string why = "the library could not be written: media database: no room is left on the disk";
    EXPECT_EQ(refused.status, 507);
    EXPECT_EQ(refused.Json()["error"], why);
    EXPECT_NE(controller->Errors().find(why), std::string::npos) << controller->Errors();
    EXPECT_EQ(Storage().at("notWritten"),
              json::parse(R"([{"what":"library","reason":"media database: no room is left on the disk"}])"));
    EXPECT_EQ(Playlists(), "Before ");
    // Whoever writes nothing is not concerned.
    EXPECT_EQ(Play(2).status, 200);
    EXPECT_TRUE(IsPlayed("2.mp3"));
    PutSong("3.mp3", 3);
    EXPECT_EQ(Post("/api/library/scan", json::object()).status, 202);
    EXPECT_TRUE(loop.RunUntil([&] { return Status().at("scan").at("phase") == "failed"; }));
    EXPECT_EQ(Status().at("scan").at("message"), "media database: no room is left on the disk");
    EXPECT_EQ(Get("/api/library/songs").at("total"), 2);

    controller->LimitFiles(RLIM_INFINITY);
    EXPECT_EQ(SavePlaylist("Evening").status, 200);
    EXPECT_EQ(Playlists(), "Before Evening ");
    EXPECT_TRUE(Storage().at("notWritten").empty());
    EXPECT_EQ(Post("/api/library/scan", json::object()).status, 202);
    EXPECT_TRUE(loop.RunUntil([&] { return Get("/api/library/songs").at("total") == 3; }));
    Stop();
}

TEST_F(StorageTest, StartsOnAFullDiskWithWhatIsThere) {
    Start();
    EXPECT_EQ(Play(1).status, 200);
    EXPECT_TRUE(IsPlayed("1.mp3"));
    EXPECT_EQ(SavePlaylist("Before").status, 200);
    Kill();
    // A clean end, or a library that was brought here, leaves none: it must be made.
    fs::remove(Library() + "-shm");
    {
        const FullDisk full(8192); // for the programs that are started, too
        Start("failed");
        EXPECT_EQ(Status().at("scan").at("message"),
                  "no room was left on the disk when the library was opened: this waits for the next start");
        EXPECT_TRUE(
            loop.RunUntil([&] { return Storage().at("copyFailure") == Status().at("scan").at("message"); }));
        EXPECT_TRUE(Storage().at("keptAside").empty());
        EXPECT_EQ(Playlists(), "Before ");
        EXPECT_EQ(Play(2).status, 200);
        EXPECT_TRUE(IsPlayed("2.mp3"));
        EXPECT_EQ(SavePlaylist("Evening").status, 507);
        Stop();
    }
    Start();
    EXPECT_EQ(Playlists(), "Before ");
    EXPECT_EQ(Play(1).status, 200);
    EXPECT_TRUE(IsPlayed("1.mp3"));
    EXPECT_EQ(SavePlaylist("Evening").status, 200);
    Stop();
}

TEST_F(StorageTest, SettingsThatCannotBeWrittenAreToldAndStayAsTheyWereOnDisk) {
    Start();
    // The settings of a room are kept from its first queue on.
    EXPECT_EQ(Play(1).status, 200);
    EXPECT_TRUE(IsPlayed("1.mp3"));
    EXPECT_EQ(Command("SET_PLAY_PREFERENCE", {{"PLAY_PREF", 2}}).status, 200);
    const std::string before = StateOnDisk();
    // Where the next text goes first is a disk without room.
    fs::create_symlink("/dev/full", folder.File("state/driver-state.xml.tmp"));
    const RawReply refused = Command("SET_PLAY_PREFERENCE", {{"PLAY_PREF", 3}});
    EXPECT_EQ(refused.status, 507);
    EXPECT_EQ(refused.Json()["error"], "the settings could not be written: write: No space left on device");
    EXPECT_EQ(
        Post("/api/request", {{"name", "SET_PLAY_PREFERENCE"}, {"parameters", {{"PLAY_PREF", 1}}}}).status,
        507);
    EXPECT_EQ(Storage().at("notWritten").at(0).at("what"), "settings");
    EXPECT_EQ(StateOnDisk(), before);
    EXPECT_EQ(Play(2).status, 200);
    EXPECT_TRUE(IsPlayed("2.mp3"));
    Kill();
    EXPECT_EQ(StateOnDisk(), before);

    fs::remove(folder.File("state/driver-state.xml.tmp"));
    Start();
    EXPECT_NE(StateOnDisk().find("<PlayPreference>2</PlayPreference>"), std::string::npos) << StateOnDisk();
    EXPECT_EQ(Command("SET_PLAY_PREFERENCE", {{"PLAY_PREF", 3}}).status, 200);
    Stop();
}

TEST_F(StorageTest, WhoeverPlaysInARoomForTheFirstTimeIsToldWhatIsNotWritten) {
    Start();
    fs::create_symlink("/dev/full", folder.File("state/driver-state.xml.tmp"));
    const RawReply refused = Play(1);
    EXPECT_EQ(refused.status, 507);
    EXPECT_EQ(refused.Json()["error"], "the settings could not be written: write: No space left on device");
    EXPECT_TRUE(IsPlayed("1.mp3"));
    EXPECT_EQ(Play(2).status, 200) << "it changes no settings";
    EXPECT_TRUE(IsPlayed("2.mp3"));
    Stop();
}

TEST_F(StorageTest, ADamagedLibraryIsKeptAsideAndBroughtBack) {
    Start();
    EXPECT_EQ(Play(1).status, 200);
    EXPECT_TRUE(IsPlayed("1.mp3"));
    EXPECT_EQ(SavePlaylist("Evening").status, 200);
    const std::uint32_t song = SongOf(2);
    Stop();
    // A day later: the copy of the first start is not of today.
    for (const std::string& name : folder.Names("state/copies", ""))
        fs::remove(folder.File("state/copies/" + name));
    Start();
    ASSERT_TRUE(HasCopy());
    ControllerProcess beneath(folder, Settings(), {"--restore"});
    EXPECT_EQ(beneath.Wait(), 1);
    EXPECT_NE(beneath.Errors().find("in use by another controller"), std::string::npos);
    Stop();

    folder.Write("state/media.db", std::string(5000, 'x'));
    Start();
    const json aside = Storage().at("keptAside").at(0);
    EXPECT_EQ(aside.at("file"), Library());
    EXPECT_EQ(ReadFile(aside.at("as")), std::string(5000, 'x'));
    EXPECT_EQ(Playlists(), "");
    EXPECT_EQ(Play(2).status, 200) << "the songs have been found again";
    Stop();

    ControllerProcess restore(folder, Settings(), {"--restore"});
    EXPECT_EQ(restore.Wait(), 0) << restore.Errors();
    EXPECT_NE(restore.Output().find("(2 songs, 1 playlists)"), std::string::npos) << restore.Output();
    Start();
    EXPECT_EQ(Playlists(), "Evening ");
    EXPECT_EQ(SongOf(2), song);
    EXPECT_TRUE(Storage().at("keptAside").empty());
    Stop();
}

TEST_F(StorageTest, AfterAnUncleanEndALibraryIsLookedThrough) {
    Start();
    Stop();
    Start();
    Kill();
    const auto size = fs::file_size(Library());
    std::fstream file(Library(), std::ios::in | std::ios::out | std::ios::binary);
    file.seekp(static_cast<std::streamoff>(size) - 2 * 4096);
    file << std::string(2 * 4096, '\xA5');
    file.close();
    Start();
    ASSERT_EQ(Storage().at("keptAside").size(), 1u);
    EXPECT_EQ(fs::file_size(Storage().at("keptAside").at(0).at("as").get<std::string>()), size);
    EXPECT_EQ(Get("/api/library/songs").at("total"), 2) << "found again";
    Stop();
}

TEST_F(StorageTest, ABadLineInTheStateDoesNotPreventTheStart) {
    Start();
    EXPECT_EQ(Command("SET_PLAY_PREFERENCE", {{"PLAY_PREF", 3}}).status, 200);
    Stop();
    const std::string damaged = StateOnDisk().substr(0, StateOnDisk().size() / 2) + "\n\x01<<&\n";
    folder.Write("state/driver-state.xml", damaged);
    Start();
    const json aside = Storage().at("keptAside").at(0);
    EXPECT_EQ(aside.at("file"), folder.File("state/driver-state.xml"));
    EXPECT_EQ(ReadFile(aside.at("as")), damaged);
    EXPECT_EQ(Play(1).status, 200);
    Stop();
}

} // namespace
} // namespace korvel::controller

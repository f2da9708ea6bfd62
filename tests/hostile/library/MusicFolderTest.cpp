// What lies in a music folder, or does not, and a real controller that scans it.
#include <gtest/gtest.h>

#include <csignal>
#include <filesystem>

#include "ControllerProcess.h"
#include "HangingFile.h"
#include "HostileFiles.h"
#include "ctl/Client.h"

namespace fs = std::filesystem;

namespace korvel::controller {
namespace {

using nlohmann::json;

class MusicFolderTest : public testing::Test {
protected:
    MusicFolderTest() { fs::create_directories(music); }

    std::string Put(const std::string& name, const std::string& bytes) const {
        fs::create_directories(fs::path(music + "/" + name).parent_path());
        return folder.Write("music/" + name, bytes);
    }
    void Start() {
        controller.emplace(folder, "music = [\"" + music + "\"]\nstate = \"" + folder.File("state") +
                                       "\"\nplugin = \"" + KORVEL_DRIVER + "\"\n[http]\nport = 0\n");
        ASSERT_TRUE(loop.RunUntil([&] { return !controller->Url().empty(); })) << controller->Errors();
        client.emplace(controller->Url());
    }
    void Stop() {
        controller->Signal(SIGTERM);
        EXPECT_EQ(controller->Wait(), 0) << controller->Errors();
    }
    bool IsScanning() { return Scan().at("running").get<bool>(); }
    json Scan() { return client->Get("/api/status").at("scan"); }
    // A file that hangs holds the scan up for 20 s.
    void WaitForScan() {
        for (int i = 0; i < 10 && IsScanning(); ++i)
            loop.RunUntil([&] { return !IsScanning(); });
        ASSERT_EQ(Scan().at("phase"), "finished") << Scan().dump();
    }
    void Rescan() {
        client->Post("/api/library/scan");
        WaitForScan();
    }
    json Songs() { return client->Get("/api/library/songs").at("items"); }
    // "title missing" or "title here" of each.
    std::string Shown() {
        std::string text;
        for (const json& song : Songs())
            text += song.at("title").get<std::string>() +
                    (song.at("missing").get<bool>() ? " missing\n" : " here\n");
        return text;
    }
    int PlaylistEntries(std::uint32_t id) {
        const json playlist = client->Get("/api/library/playlists/" + std::to_string(id));
        return playlist.at("entries").at("total").get<int>();
    }

    ScratchFolder folder;
    const std::string music = folder.File("music");
    TestLoop loop;
    std::optional<ControllerProcess> controller;
    std::optional<ctl::Client> client;
};

TEST_F(MusicFolderTest, AFileThatKillsItsReaderCostsNothingElse) {
    Put("good.mp3", Mp3WithTitle(4));
    const std::string nested = Put("nested.m4a", NestedAtoms(200000));
    Put("title.mp3", Mp3WithTitle(100u << 20));
    for (int round = 0; round < 2; ++round) {
        Start();
        WaitForScan();
        EXPECT_EQ(Scan().at("broken"), 1);
        EXPECT_EQ(Shown(), "title here\ntttt here\n");
        EXPECT_NE(controller->Errors().find("Cannot play " + nested + ": " + kNestedAtomsEnd),
                  std::string::npos)
            << controller->Errors();
        Stop();
    }
}

TEST_F(MusicFolderTest, AnAnnouncementThatKillsItsReaderIsRefused) {
    const std::string nested = Put("nested.m4a", NestedAtoms(200000));
    ScriptedServer server(loop);
    controller.emplace(
        folder, "state = \"" + folder.File("state") + "\"\nplugin = \"" + KORVEL_DRIVER +
                    "\"\n[http]\nport = 0\n[[server]]\nport = " + std::to_string(server.GetPort()) + "\n");
    ASSERT_TRUE(loop.RunUntil([&] { return !controller->Url().empty(); }));
    client.emplace(controller->Url());
    ASSERT_TRUE(loop.RunUntil([&] { return client->Get("/api/status").at("ready").get<bool>(); }));
    EXPECT_THROW(client->Post("/api/announce", {{"rooms", json::array({1})}, {"file", nested}}),
                 ctl::Failure);
    EXPECT_TRUE(client->Get("/api/status").at("ready").get<bool>());
    Stop();
}

TEST_F(MusicFolderTest, AFileThatHangsHoldsUpNeitherTheOthersNorTheEnd) {
    const HangingFile hanging(Put("a.mp3", Mp3WithTitle(1)));
    Put("b.mp3", Mp3WithTitle(2));
    Start();
    EXPECT_TRUE(IsScanning());
    Stop(); // at once
    Start();
    WaitForScan();
    EXPECT_EQ(Scan().at("broken"), 1);
    EXPECT_EQ(Shown(), "tt here\n");
    EXPECT_NE(controller->Errors().find("a.mp3: no answer in 20 s"), std::string::npos);
    Stop();
}

TEST_F(MusicFolderTest, AFolderThatIsNotMountedKeepsItsSongsAndPlaylists) {
    Put("1.mp3", Mp3WithTitle(1));
    Put("disk/2.mp3", Mp3WithTitle(2));
    Start();
    WaitForScan();
    std::vector<MediaItem> items;
    for (const json& song : Songs())
        items.push_back({1, "", song.at("id").get<std::uint32_t>(), 0});
    const std::uint32_t playlist =
        media::MediaDatabase(folder.File("state/media.db")).CreatePlaylist(100002, "Mine", items);

    // The mount point stands empty.
    fs::rename(music + "/disk", folder.File("disk"));
    fs::create_directory(music + "/disk");
    Rescan();
    EXPECT_EQ(Shown(), "t here\ntt missing\n");
    const json away = Scan().at("away");
    ASSERT_EQ(away.size(), 1u);
    EXPECT_EQ(away[0].at("path"), music + "/disk");
    EXPECT_EQ(away[0].at("reason"), "it is empty, as when a disk is not mounted");
    EXPECT_EQ(client->Post("/api/library/forget-missing"), (json{{"forgotten", 0}, {"kept", 1}}));
    EXPECT_EQ(PlaylistEntries(playlist), 2);

    // The whole folder is not there, not even at the start.
    Stop();
    fs::rename(music, folder.File("elsewhere"));
    Start();
    WaitForScan();
    EXPECT_EQ(Shown(), "t missing\ntt missing\n");
    EXPECT_EQ(Scan().at("away").at(0).at("reason"), "No such file or directory");
    EXPECT_EQ(client->Post("/api/library/forget-missing"), (json{{"forgotten", 0}, {"kept", 2}}));

    fs::rename(folder.File("elsewhere"), music);
    fs::remove(music + "/disk");
    fs::rename(folder.File("disk"), music + "/disk");
    Rescan();
    EXPECT_EQ(Shown(), "t here\ntt here\n");
    EXPECT_EQ(Scan().at("added"), 0);
    EXPECT_EQ(PlaylistEntries(playlist), 2);

    // Deleted: forgotten on request alone.
    fs::remove(music + "/1.mp3");
    Rescan();
    EXPECT_EQ(Shown(), "t missing\ntt here\n");
    EXPECT_EQ(client->Post("/api/library/forget-missing"), (json{{"forgotten", 1}, {"kept", 0}}));
    EXPECT_EQ(Shown(), "tt here\n");
    EXPECT_EQ(PlaylistEntries(playlist), 1);
    Stop();
}

} // namespace
} // namespace korvel::controller

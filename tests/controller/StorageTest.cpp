// What a house does when it cannot write, or not read, what it keeps on disk.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include "RecordingDriver.h"
#include "TestHouse.h"

namespace korvel::controller {
namespace {

namespace fs = std::filesystem;
using nlohmann::json;
using testing::HasSubstr;

class StorageTest : public testing::Test {
protected:
    void StartHouse() {
        house =
            std::make_unique<TestHouse>(loop, TestPlugin("WORKING"), std::vector{server.GetPort()}, state);
        ASSERT_TRUE(loop.RunUntil([&] { return house->GetCore().GetBindings().WhyNotReady().empty(); }));
    }
    void SetUp() override { StartHouse(); }
    void StopHouse() {
        house->Stop();
        house.reset();
    }
    json Storage() { return house->Get("/api/status").Json().at("storage"); }
    // The state's next text goes there first.
    std::string Unfinished() const { return state.File("driver-state.xml.tmp"); }
    RawReply Keep(const std::string& text) { return house->Command("PERSIST", {{"TEXT", text}}); }
    std::string Kept() { return house->Post("/api/request", R"({"name":"GET_KEPT"})").Json()["reply"]; }
    std::string OnDisk() const { return ReadFile(state.File("driver-state.xml")); }

    ScratchFolder state;
    TestLoop loop;
    ScriptedServer server{loop};
    std::unique_ptr<TestHouse> house;
};

TEST_F(StorageTest, OnAFullDiskSettingsThatCannotBeWrittenAreToldAndTheRestGoesOn) {
    EXPECT_EQ(Keep("one").status, 200);
    fs::create_symlink("/dev/full", Unfinished());
    const RawReply reply = Keep("two");
    EXPECT_EQ(reply.status, 507);
    EXPECT_EQ(reply.Json()["error"], "the settings could not be written: write: No space left on device");
    EXPECT_EQ(OnDisk(), "<test>one</test>");
    EXPECT_EQ(Storage()["notWritten"],
              json::parse(R"([{"what":"settings","reason":"write: No space left on device"}])"));
    // Who changes nothing has nothing to be told.
    EXPECT_EQ(house->Command("ECHO", {{"TEXT", "x"}}).status, 200);
    EXPECT_EQ(Kept(), "<kept>two</kept>");
    EXPECT_EQ(Keep("three").status, 507);

    fs::remove(Unfinished());
    EXPECT_EQ(house->Command("ECHO", {{"TEXT", "x"}}).status, 200);
    EXPECT_EQ(OnDisk(), "<test>three</test>");
    EXPECT_TRUE(Storage()["notWritten"].empty());
}

TEST_F(StorageTest, OtherFailuresAreToldWithTheirReason) {
    fs::create_directory(Unfinished());
    const RawReply reply = Keep("one");
    EXPECT_EQ(reply.status, 500);
    EXPECT_EQ(reply.Json()["error"], "the settings could not be written: open: Is a directory");
    EXPECT_EQ(Keep("two").status, 500);
}

TEST_F(StorageTest, AStateThatIsDamagedIsKeptAside) {
    StopHouse();
    state.Write("driver-state.xml", "<test>");
    StartHouse();
    const auto names = state.Names("", "driver-state.xml.damaged-");
    ASSERT_EQ(names.size(), 1u);
    EXPECT_EQ(ReadFile(state.File(names[0])), "<test>");
    EXPECT_EQ(Kept(), "<kept></kept>");
    EXPECT_EQ(Storage()["keptAside"][0]["as"], state.File(names[0]));
}

TEST_F(StorageTest, AStateThatTheDriverCannotRunWithIsKeptAside) {
    StopHouse();
    state.Write("driver-state.xml", "<test>refused</test>");
    StartHouse();
    EXPECT_EQ(Storage()["keptAside"][0]["reason"], "the driver cannot run with it");
    EXPECT_EQ(Kept(), "<kept></kept>");
    EXPECT_EQ(Keep("refused").status, 200) << "it is written although it is what was read";
    EXPECT_EQ(OnDisk(), "<test>refused</test>");
}

TEST_F(StorageTest, ADriverThatCannotRunAtAllLeavesTheStateAlone) {
    StopHouse();
    state.Write("driver-state.xml", "<test>kept</test>");
    EXPECT_THROW(TestHouse(loop, TestPlugin("INITIALIZE_FAILS"), {}, state), PluginError);
    EXPECT_EQ(OnDisk(), "<test>kept</test>");
}

class DamagedLibraryTest : public StorageTest {
protected:
    std::string Library() const { return state.File("media.db"); }
    // Starts with what is there instead of a library; the reason why it was kept aside.
    std::string KeptAsideBecause() {
        const std::string before = ReadFile(Library());
        StartHouse();
        const json aside = Storage()["keptAside"];
        EXPECT_EQ(aside.size(), 1u);
        EXPECT_EQ(aside[0]["file"], Library());
        EXPECT_EQ(ReadFile(aside[0]["as"]), before);
        EXPECT_EQ(house->Get("/api/library/songs").Json()["total"], 0);
        return aside[0]["reason"];
    }
    void SetUp() override {
        StorageTest::SetUp();
        house->GetCore().GetLibrary().Database().InTransaction([&] {
            for (std::uint32_t i = 0; i < 5000; ++i) {
                media::SongRecord song;
                song.title = "Song " + std::to_string(i);
                house->GetCore().GetLibrary().Database().PutSong(song);
            }
        });
    }
};

TEST_F(DamagedLibraryTest, AFileThatIsNoDatabaseIsKeptAside) {
    StopHouse();
    state.Write("media.db", std::string(5000, 'x'));
    EXPECT_THAT(KeptAsideBecause(), HasSubstr("not a database"));
}

TEST_F(DamagedLibraryTest, AFileThatIsEmptyIsKeptAside) {
    StopHouse();
    state.Write("media.db", "");
    EXPECT_EQ(KeptAsideBecause(), "it is empty");
}

TEST_F(DamagedLibraryTest, AfterAnUncleanEndItIsLookedThrough) {
    StopHouse();
    // Deep inside, where nothing is read at the start.
    std::fstream file(Library(), std::ios::in | std::ios::out | std::ios::binary);
    file.seekp(60 * 4096);
    file << std::string(20 * 4096, '\xA5');
    file.close();
    StartHouse();
    EXPECT_TRUE(Storage()["keptAside"].empty()) << "it was closed, and is taken as it is";
    StopHouse();
    // What a program that was killed leaves.
    state.Write("media.db-wal", "");
    EXPECT_NE(KeptAsideBecause(), "");
}

TEST_F(DamagedLibraryTest, OneOfANewerVersionIsNeitherKeptAsideNorUsed) {
    StopHouse();
    // The schema's version, in the file's head.
    std::fstream file(Library(), std::ios::in | std::ios::out | std::ios::binary);
    file.seekp(60);
    file << std::string("\0\0\0\x63", 4);
    file.close();
    EXPECT_THROW(TestHouse(loop, TestPlugin("WORKING"), {}, state), std::runtime_error);
    EXPECT_TRUE(state.Names("", "media.db.damaged-").empty());
}

TEST(StateKeeper, TriesAgainWhatCouldNotBeWritten) {
    const ScratchFolder folder;
    TestLoop loop;
    const common::Log log(common::LogLevel::Error);
    EventBus events;
    StorageStatus storage(events, log);
    RecordingDriver driver;
    driver.state = "one";
    DriverPort port(log);
    port.Attach(driver);
    StateFile file(folder.File("state.xml"), storage);
    const auto fetch = [&] { return std::optional(port.PersistState()->ToText()); };
    StateKeeper keeper(loop.loop, fetch, file, storage, std::chrono::milliseconds(1));
    fs::create_symlink("/dev/full", folder.File("state.xml.tmp"));
    keeper.SaveNow();
    EXPECT_EQ(storage.CountFailures(), 1u);
    EXPECT_EQ(storage.ToJson()["notWritten"].size(), 1u);
    fs::remove(folder.File("state.xml.tmp"));
    EXPECT_TRUE(loop.RunUntil([&] { return ReadFile(folder.File("state.xml")) == "<state>one</state>"; }));
    EXPECT_EQ(storage.CountFailures(), 1u) << "nobody asked again";
    EXPECT_TRUE(storage.ToJson()["notWritten"].empty());
}

} // namespace
} // namespace korvel::controller

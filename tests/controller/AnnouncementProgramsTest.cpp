// Announcements with the real programs: controller, driver, audio server, room players and the command line.
#include <csignal>

#include "Bed.h"
#include "ControllerProcess.h"
#include "ctl/Client.h"

namespace korvel::controller {
namespace {

using nlohmann::json;

class AnnouncementProgramsTest : public tests::Bed {
protected:
    AnnouncementProgramsTest() {
        std::string config = "state = \"" + folder.File("state") + "\"\nplugin = \"" + KORVEL_DRIVER +
                             "\"\n[http]\nport = 0\n[[server]]\nport = " + std::to_string(ServerPort());
        for (const auto& [id, name, port] : {std::tuple{1, "Hall", hall->Port()}, {2, "Bath", bath->Port()}})
            config += "\n[[room]]\nid = " + std::to_string(id) + "\nname = \"" + name +
                      "\"\naddress = \"127.0.0.1\"\nport = " + std::to_string(port);
        controller.emplace(folder, config + "\n");
        EXPECT_TRUE(tests::WaitUntil([&] { return !controller->Url().empty(); })) << controller->Errors();
        EXPECT_TRUE(WaitUntilReady(true));
    }

    bool WaitUntilReady(bool ready) {
        ctl::Client client(controller->Url());
        return tests::WaitUntil([&] { return client.Get("/api/status").at("ready") == ready; });
    }
    // What korvelctl says on its standard error, with its exit status before it.
    std::string Announce(const std::string& file, const std::string& room) {
        tests::Process ctl(KORVEL_CTL, {"--url", controller->Url(), "announce", file, room},
                           folder.File("ctl.log"));
        const auto status = ctl.WaitForExit();
        return (status ? std::to_string(*status) : "no end") + " " + ctl.Errors();
    }

    ScratchFolder folder;
    const std::unique_ptr<tests::Room> hall = AddRoom("hall");
    const std::unique_ptr<tests::Room> bath = AddRoom("bath");
    std::optional<ControllerProcess> controller;
};

TEST_F(AnnouncementProgramsTest, AChimeIsHeardToItsEndInItsRoomAlone) {
    EXPECT_EQ(Announce(ToneFile("chime.wav", {{500, 0.5}}), "Hall"), "0 ");
    EXPECT_TRUE(hall->Hears(0, 0.3));
    EXPECT_NEAR(hall->Heard().Seconds(500), 0.5, 0.15);
    EXPECT_EQ(bath->Heard().Seconds(500), 0.0);
}

TEST_F(AnnouncementProgramsTest, WhatCannotBePlayedIsRefusedBeforeItStarts) {
    const std::string words = folder.Write("words.wav", "words");
    EXPECT_EQ(Announce(words, "Hall"), "1 korvelctl: " + words + " holds no sound that can be played\n");
    EXPECT_EQ(Announce("/nowhere.wav", "Hall"), "1 korvelctl: /nowhere.wav is not there or cannot be read\n");
    EXPECT_EQ(Announce(ToneFile("chime.wav", {{500, 0.5}}), "Attic"),
              "1 korvelctl: there is no room 'Attic'; the rooms are: Hall, Bath\n");
    EXPECT_EQ(Server().Errors().find("stream 1"), std::string::npos);
}

// As far as its header tells, it is a song: only the audio server finds out.
TEST_F(AnnouncementProgramsTest, WhatTurnsOutToBeUnplayableFails) {
    std::string bytes = tests::WavOf({{500, 0.5}});
    bytes[20] = '\x34'; // a kind of sound that nobody knows
    bytes[21] = '\x12';
    const std::string file = folder.Write("odd.wav", bytes);
    const std::string said = Announce(file, "Hall");
    EXPECT_TRUE(said.starts_with("1 korvelctl: the announcement failed: ")) << said;
    EXPECT_EQ(Announce(ToneFile("chime.wav", {{500, 0.5}}), "Hall"), "0 ") << "and the next one is heard";
    EXPECT_TRUE(hall->Hears(0, 0.1));
    EXPECT_NEAR(hall->Heard().Seconds(500), 0.5, 0.15);
}

TEST_F(AnnouncementProgramsTest, WithoutAnAudioServerThereIsNone) {
    Server().Signal(SIGTERM);
    ASSERT_TRUE(WaitUntilReady(false));
    EXPECT_EQ(Announce(ToneFile("chime.wav", {{500, 0.5}}), "Hall"),
              "1 korvelctl: no audio server is connected\n");
}

} // namespace
} // namespace korvel::controller

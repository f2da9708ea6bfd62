// What korvelctl says when nothing has changed, with the real programs.
#include <filesystem>
#include <fstream>

#include "Bed.h"
#include "ControllerProcess.h"
#include "HeldPort.h"
#include "Sound.h"
#include "ctl/Client.h"

namespace korvel::controller {
namespace {

class CtlProgramsTest : public tests::Bed {
protected:
    CtlProgramsTest() {
        std::filesystem::create_directory(folder.File("music"));
        folder.Write("music/tone.wav", tests::WavOf({{500, 20}}));
        folder.Write("music/gone.wav", tests::WavOf({{500, 2}}));
        std::ofstream config(folder.File("settings"));
        config << "music = [\"" << folder.File("music") << "\"]\nstate = \"" << folder.File("state")
               << "\"\nplugin = \"" << KORVEL_DRIVER
               << "\"\n[http]\nport = 0\n[[server]]\nport = " << ServerPort()
               << "\n[[station]]\nname = \"Nowhere\"\nurl = \"http://127.0.0.1:" << nobody.Number()
               << "/\"\n";
        for (const auto& [id, name, port] : {std::tuple{1, "Hall", hall->Port()}, {2, "Bath", bath->Port()}})
            config << "[[room]]\nid = " << id << "\nname = \"" << name
                   << "\"\naddress = \"127.0.0.1\"\nport = " << port << "\n";
        config.close();
        controller.emplace(folder, ReadFile(folder.File("settings")));
        EXPECT_TRUE(tests::WaitUntil([&] { return !controller->Url().empty(); })) << controller->Errors();
        ctl::Client client(controller->Url());
        EXPECT_TRUE(tests::WaitUntil([&] {
            const auto status = client.Get("/api/status");
            return status.at("ready") == true && status.at("scan").at("phase") == "finished";
        }));
    }

    // What korvelctl says on its standard error, with its exit status before it.
    std::string Say(std::vector<std::string> words) {
        words.insert(words.begin(), {"--url", controller->Url()});
        tests::Process ctl(KORVEL_CTL, words, folder.File("ctl.log"));
        const auto status = ctl.WaitForExit();
        return (status ? std::to_string(*status) : "no end") + " " + ctl.Errors();
    }

    ScratchFolder folder;
    const tests::HeldPort nobody; // where nothing listens
    const std::unique_ptr<tests::Room> hall = AddRoom("hall");
    const std::unique_ptr<tests::Room> bath = AddRoom("bath");
    std::optional<ControllerProcess> controller;
};

TEST_F(CtlProgramsTest, ARoomThatIsNotThere) {
    const std::string none = "1 korvelctl: there is no room 'Attic'; the rooms are: Hall, Bath\n";
    EXPECT_EQ(Say({"pause", "Attic"}), none);
    EXPECT_EQ(Say({"play", "Attic", "tone"}), none);
    EXPECT_EQ(Say({"join", "Attic", "Hall"}), none);
    EXPECT_EQ(Say({"leave", "Attic"}), none);
    EXPECT_EQ(Say({"command", "PLAY", "ROOM_ID=9"}),
              "1 korvelctl: PLAY needs ROOM_ID, the id of a room; '9' is none\n");
}

TEST_F(CtlProgramsTest, ARoomInWhichNothingPlays) {
    EXPECT_EQ(Say({"resume", "Hall"}), "1 korvelctl: Hall has nothing to resume\n");
    EXPECT_EQ(Say({"pause", "Hall"}), "1 korvelctl: Hall plays nothing that could be paused\n");
    EXPECT_EQ(Say({"stop", "Hall"}), "1 korvelctl: Hall plays nothing that could be stopped\n");
    EXPECT_EQ(Say({"skip", "Hall"}), "1 korvelctl: Hall plays nothing\n");
    EXPECT_EQ(Say({"back", "Hall"}), "1 korvelctl: Hall plays nothing\n");
    EXPECT_EQ(Say({"leave", "Hall"}), "1 korvelctl: Hall hears nothing that it could leave\n");
    EXPECT_EQ(Say({"join", "Hall", "Bath"}), "1 korvelctl: Hall plays nothing that others could join\n");
}

TEST_F(CtlProgramsTest, WhatIsSoAlready) {
    ASSERT_EQ(Say({"play", "Hall", "tone"}), "0 ");
    EXPECT_TRUE(hall->Hears(500, 0.2));
    EXPECT_EQ(Say({"resume", "Hall"}), "1 korvelctl: Hall plays already\n");
    EXPECT_EQ(Say({"skip", "Hall"}), "1 korvelctl: there is no song after this one in the queue of Hall\n");
    EXPECT_EQ(Say({"join", "Hall", "Bath"}), "0 ");
    EXPECT_EQ(Say({"join", "Hall", "Bath"}), "1 korvelctl: that is what they hear already\n");
    EXPECT_EQ(Say({"pause", "Hall"}), "0 ");
    EXPECT_EQ(Say({"pause", "Bath"}), "1 korvelctl: Bath is paused already\n");
}

TEST_F(CtlProgramsTest, AnIndexOutOfRange) {
    ASSERT_EQ(Say({"play", "Hall", "tone"}), "0 ");
    EXPECT_EQ(Say({"command", "GO_TO_SONG", "ROOM_ID=Hall", "MEDIA_ID=1000", "MEDIA_INDEX=7"}),
              "1 korvelctl: there is no song at 7: the queue of Hall has 1, the first is 0\n");
}

TEST_F(CtlProgramsTest, WhatTheLibraryDoesNotHave) {
    EXPECT_EQ(Say({"play", "Hall", "Purple"}), "1 korvelctl: there is no song 'Purple'\n");
    EXPECT_EQ(Say({"play", "Hall", "77"}), "1 korvelctl: there is no song 77\n");
    EXPECT_EQ(Say({"radio", "Hall", "Purple"}), "1 korvelctl: there is no station 'Purple'\n");
    EXPECT_EQ(Say({"input", "Hall", "Purple"}), "1 korvelctl: there is no input 'Purple'\n");
    EXPECT_EQ(Say({"playlist", "Hall", "Purple"}), "1 korvelctl: there is no playlist 'Purple'\n");
    EXPECT_EQ(Say({"search", "Purple"}), "1 korvelctl: nothing has 'Purple' in its name\n");
}

TEST_F(CtlProgramsTest, AFileThatIsGone) {
    const std::string file = folder.File("music/gone.wav");
    std::filesystem::remove(file);
    EXPECT_EQ(Say({"play", "Hall", "gone"}), "1 korvelctl: the file of gone is not there: " + file + "\n");
    EXPECT_EQ(Say({"announce", file, "Hall"}), "1 korvelctl: " + file + " is not there or cannot be read\n");
    EXPECT_EQ(Say({"leave", "Hall"}), "1 korvelctl: Hall hears nothing that it could leave\n")
        << "nothing was begun";
}

TEST_F(CtlProgramsTest, AStationThatCannotBeReached) {
    const std::string said = Say({"radio", "Hall", "Nowhere"});
    EXPECT_TRUE(said.starts_with("1 korvelctl: the station 'Nowhere' cannot be played: ")) << said;
    EXPECT_EQ(said.find("audio server is lost"), std::string::npos) << said;
    EXPECT_EQ(Say({"resume", "Hall"}), "1 korvelctl: Hall has nothing to resume\n");
}

TEST_F(CtlProgramsTest, WithoutAController) {
    controller.reset();
    const tests::HeldPort closed;
    tests::Process ctl(KORVEL_CTL, {"--url", "http://127.0.0.1:" + std::to_string(closed.Number()), "rooms"},
                       folder.File("ctl.log"));
    EXPECT_EQ(ctl.WaitForExit(), 1);
    EXPECT_TRUE(ctl.Errors().starts_with("korvelctl: no answer from the controller at ")) << ctl.Errors();
}

} // namespace
} // namespace korvel::controller

// What is left of a controller that is killed, with the real driver.
#include <gtest/gtest.h>

#include <atomic>
#include <csignal>
#include <thread>

#include "ControllerProcess.h"
#include "ctl/Client.h"
#include "platform/XmlHelper.h"

namespace korvel::controller {
namespace {

using nlohmann::json;

class KillTest : public testing::Test {
protected:
    void Start() {
        process.emplace(folder, "state = \"" + folder.File("state") + "\"\nplugin = \"" + KORVEL_DRIVER +
                                    "\"\n[http]\nport = 0\n[[server]]\nport = " +
                                    std::to_string(server.GetPort()) + "\n");
        ASSERT_TRUE(loop.RunUntil([&] { return !process->Url().empty(); })) << process->Errors();
        client.emplace(process->Url());
        ASSERT_TRUE(loop.RunUntil([&] { return client->Get("/api/status").at("ready").get<bool>(); }));
    }
    void Kill() {
        process->Signal(SIGKILL);
        EXPECT_EQ(process->Wait(), -1);
    }
    void Command(const std::string& name, const json& parameters) {
        client->Post("/api/command", {{"name", name}, {"parameters", parameters}});
    }
    std::string Variable(const std::string& name) {
        for (const json& variable : client->Get("/api/variables")) {
            if (variable.at("name") == name)
                return variable.at("value");
        }
        return "none";
    }
    // The text of an element of the driver's state on disk.
    std::string Saved(const std::string& name) const {
        const auto document = KVXML::CreateXmlDocument(ReadFile(folder.File("state/driver-state.xml")));
        std::string text = "no document";
        if (document)
            XmlHelper::fromXml(*document->GetRoot(), name, text);
        return text;
    }

    ScratchFolder folder;
    TestLoop loop;
    ScriptedServer server{loop};
    std::optional<ControllerProcess> process;
    std::optional<ctl::Client> client;
};

TEST_F(KillTest, SettingsAreThereAgain) {
    Start();
    Command("SET_PLAYLIST_CLEAR_DELAY", {{"DELAY_VALUE", 17}});
    Command("SET_PLAYLIST_CLEAR_FLAG", {{"FLAG_VALUE", "false"}});
    Command("SET_PLAY_PREFERENCE", {{"PLAY_PREF", 3}});
    Command("SHUFFLE", {{"ROOM_ID", 2}, {"SHUFFLE", 1}});
    Command("REPEAT", {{"ROOM_ID", 2}, {"REPEAT", 1}});
    const std::string roomSettings = Variable("ROOM_QUEUE_SETTINGS");
    EXPECT_NE(roomSettings.find("<roomid>2</roomid><shuffle>1</shuffle><repeat>1</repeat>"),
              std::string::npos)
        << roomSettings;
    Kill();

    Start();
    EXPECT_EQ(Variable("ROOM_QUEUE_SETTINGS"), roomSettings);
    EXPECT_EQ(Variable("PLAY_PREFERENCE"), "3");
    // What the driver itself took over shows in what it saves at its end.
    process->Signal(SIGTERM);
    EXPECT_EQ(process->Wait(), 0);
    EXPECT_EQ(Saved("ClearPlayListDelay"), "17");
    EXPECT_EQ(Saved("ClearPlayList"), "false");
}

TEST_F(KillTest, AtAnyMomentTheStateIsWholeAndHasWhatWasAnswered) {
    for (int round = 1; round <= 5; ++round) {
        Start();
        std::atomic<int> answered = 0;
        std::thread person([&] {
            try {
                for (int delay = 1000 * round;; ++delay) {
                    Command("SET_PLAYLIST_CLEAR_DELAY", {{"DELAY_VALUE", delay}});
                    answered = delay;
                }
            } catch (const ctl::Failure&) { // the controller is gone
            }
        });
        EXPECT_TRUE(loop.RunUntil([&] { return answered >= 1000 * round + 3 * round; }));
        Kill();
        person.join();
        const std::string saved = Saved("ClearPlayListDelay");
        EXPECT_TRUE(saved == std::to_string(answered) || saved == std::to_string(answered + 1))
            << saved << " after " << answered;
    }
}

} // namespace
} // namespace korvel::controller

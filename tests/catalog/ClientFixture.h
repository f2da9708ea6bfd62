#pragma once

#include <cstdio>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "Gateway.h"
#include "RecordingDriver.h"
#include "TestHouse.h"
#include "driver/services/RhapsodyService.h"

namespace korvel::controller {

using std::chrono::milliseconds;
using Calls = std::vector<std::string>;

// Writes down what it is told.
class Listener final : public IRhapsodyCallback {
public:
    void RC_ErrorHandler(RC_Error code) override { Note("error " + std::to_string(code)); }
    void RC_Completed(std::vector<DataPlaylistLite>& playlists) override {
        std::string text = "playlists";
        for (const DataPlaylistLite& playlist : playlists)
            text += " " + playlist.id + "=" + playlist.name;
        Note(text);
    }
    void RC_Completed(unsigned int total, std::vector<DataTrackInfo>& tracks) override {
        std::string text = "tracks " + std::to_string(total) + ":";
        for (const DataTrackInfo& track : tracks)
            text += " " + track.id;
        Note(text);
    }
    void RC_Completed(std::vector<DataTrackFull>& tracks) override {
        const DataTrackFull& track = tracks.at(0);
        Note("track " + track.id + "|" + track.context + "|" + track.name + "|" + track.artist + "|" +
             track.album + "|" + track.image);
    }
    void RC_ConnectionChanged(bool connected) override { Note(connected ? "connected" : "lost"); }

    Calls calls;
    std::function<void()> onCall; // inside each call

private:
    void Note(const std::string& call) {
        calls.push_back(call);
        if (onCall)
            onCall();
    }
};

// Clients of the streaming service, the gateway's catalogue, and who hears of it all.
class ClientTest : public testing::Test {
protected:
    ClientTest() { driverPort.Attach(driver); }
    // Milliseconds for a whole answer.
    std::unique_ptr<KVRhapsodyClient::RhapsodyClient> MakeClient(int patience = 5000,
                                                                 const std::string& address = "") {
        RhapsodyService service(loop.loop, log, driverPort, address,
                                {milliseconds(patience), common::BackOff(milliseconds(1), milliseconds(20))});
        return service.CreateClient(KVRhapsodyClient::RhapsodyBranding::Standard, timers, &general);
    }
    // A client that is connecting.
    std::unique_ptr<KVRhapsodyClient::RhapsodyClient> Connect(const std::string& address,
                                                              int patience = 5000) {
        auto client = MakeClient(patience);
        client->Connect(address);
        client->DisableOfflineMode();
        return client;
    }
    static std::string At(const ScriptedServer& server) {
        return "127.0.0.1:" + std::to_string(server.GetPort());
    }
    bool Answered(std::size_t times = 1) {
        return loop.RunUntil([&] { return listener.calls.size() >= times; });
    }
    // Answers the next request, when it has come, with this rest of an object.
    void AnswerWith(ScriptedServer& server, const std::string& rest) {
        const std::size_t seen = answered++;
        ASSERT_TRUE(loop.RunUntil([&] { return server.GetLines().size() > seen; }));
        const auto id = nlohmann::json::parse(server.GetLines()[seen]).at("id");
        server.Send("{\"id\":" + id.dump() + rest + "}\n");
    }

    tests::Folder folder;
    const std::string catalogue =
        folder.Write("c.toml", tests::TrackEntry("a") + tests::TrackEntry("b") +
                                   tests::ListEntry("playlist", "p", "[\"a\", \"b\", \"a\"]") +
                                   tests::ListEntry("playlist", "q", "[]"));
    TestLoop loop;
    common::Log log{common::LogLevel::Error, std::fopen("/dev/null", "w")};
    RecordingDriver driver;
    DriverPort driverPort{log};
    TimerService timers{loop.loop, driverPort};
    Listener general;  // hears of the connection
    Listener listener; // hears the answers
    std::size_t answered = 0;
};

} // namespace korvel::controller

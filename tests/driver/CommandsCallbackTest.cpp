// Rooms and devices that answer a command before the call that told them returns.
#include <gtest/gtest.h>

#include "Outputs.h"
#include "TestCore.h"

namespace {

class CommandsCallback : public ::testing::Test {
protected:
    CommandsCallback() {
        core.Run({"song 1 location=/media/1.flac", "station 5 location=http://radio.example/5", "engine 3000",
                  "start", "online 3000 127.0.0.1"});
    }
    // Rooms 7, 8 and 9 hear song 1.
    void PlayInThreeRooms() {
        core.Run("command ADD_SONG ROOM_ID=7 MEDIA_ID=1");
        for (const char* room : {"7", "8", "9"})
            core.Run(std::string("select ") + room + " queue=10000 kind=QUEUE ip=10.0.0." + room +
                     " port=6200 channel=1 target=" + room);
    }
    // A room that is sent `message` switches itself off at once.
    void RoomsLeaveOn(const std::string& message) {
        core.SetHook([this, message](const ServiceCall& call) {
            if (call.name == "SendCommand" && call.arguments[1] == message)
                core.Driver().OnAVRoomOff(static_cast<std::uint32_t>(std::stoul(call.arguments[0])));
        });
    }
    bool InSession(const std::string& room) {
        return Has(core.Run("test InSession ROOM_ID=" + room), "< result true");
    }

    TestCore core;
};

TEST_F(CommandsCallback, EveryRoomOfAQueueIsAskedThoughEachLeavesAtOnce) {
    PlayInThreeRooms();
    RoomsLeaveOn("DESELECT_AUDIO_PATH");
    const auto out = core.Run("command REMOVE_QUEUE ROOM_ID=8");
    EXPECT_EQ(Only(out, "< message "),
              (std::vector<std::string>{"< message 7 DESELECT_AUDIO_PATH", "< message 8 DESELECT_AUDIO_PATH",
                                        "< message 9 DESELECT_AUDIO_PATH"}));
    EXPECT_FALSE(InSession("7"));
}

TEST_F(CommandsCallback, RoomsTakenOutOfASessionMayLeaveAtOnce) {
    PlayInThreeRooms();
    RoomsLeaveOn("DESELECT_AUDIO_PATH");
    const auto out = core.Run("command REMOVE_ROOMS_FROM_SESSION ROOM_ID=7 ROOM_ID_LIST=7,8,9");
    EXPECT_EQ(Only(out, "< message ").size(), 3u);
    EXPECT_FALSE(InSession("9"));
    core.Run("command REMOVE ROOM_ID=7");
}

TEST_F(CommandsCallback, SessionMayEndWhileRoomsAreAddedToIt) {
    core.Run("command ADD_SONG ROOM_ID=7 MEDIA_ID=1");
    core.SetHook([this](const ServiceCall& call) {
        if (call.name == "SendCommand" && call.arguments[1] == "SELECT_AUDIO_DEVICE")
            core.Driver().OnAVRoomOff(7);
    });
    const auto out = core.Run("command ADD_ROOMS_TO_SESSION ROOM_ID=7 ROOM_ID_LIST=8,9");
    EXPECT_EQ(Only(out, "< message ").size(), 2u);
    EXPECT_TRUE(Has(out, "< return <queueid>10000</queueid>"));
    EXPECT_FALSE(InSession("7"));
}

// The transport command finds no queue any more and says nothing.
TEST_F(CommandsCallback, DeviceMayEndTheQueueThatItIsAskedAbout) {
    core.Run("command ADD_IR_STREAM ROOM_ID=7 MEDIA_ID=5 DEVICE_ID=200");
    for (const char* command : {"PLAY", "PAUSE", "STOP", "SKIP_FWD", "SKIP_REV"}) {
        core.Run("command ADD_IR_STREAM ROOM_ID=7 MEDIA_ID=5 DEVICE_ID=200");
        core.SetHook([this, command](const ServiceCall& call) {
            if (call.name == "SendMessage" && call.arguments[1] == command)
                core.Driver().OnAVRoomOff(7);
        });
        const auto out = core.Run(std::string("command ") + command + " ROOM_ID=7");
        EXPECT_TRUE(Has(out, std::string("< message 200 ") + command + " ROOM_ID:INT=7"));
        const std::string noQueues = outputs::Set(variables::kQueueStatusV2, "<queues></queues>");
        EXPECT_EQ(Only(out, outputs::Set(variables::kQueueStatusV2, "")), std::vector<std::string>{noQueues});
        EXPECT_FALSE(InSession("7"));
    }
}

// The song was added and starts; the room leaves when it hears so.
TEST_F(CommandsCallback, RoomMayLeaveWhileItsSongIsStarted) {
    PlayInThreeRooms();
    core.Run("command STOP ROOM_ID=7");
    core.SetHook([this](const ServiceCall& call) {
        if (call.name == "SendMessage")
            core.Driver().OnAVRoomOff(static_cast<std::uint32_t>(std::stoul(call.arguments[0])));
    });
    const auto out = core.Run("command ADD_SONG ROOM_ID=7 MEDIA_ID=1");
    EXPECT_EQ(Only(out, "< message ").size(), 3u);
    EXPECT_TRUE(Has(out, "< return <queueid>10000</queueid>"));
    EXPECT_FALSE(InSession("7"));
    EXPECT_FALSE(InSession("8"));
}

} // namespace

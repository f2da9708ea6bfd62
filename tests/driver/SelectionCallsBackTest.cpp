// A core that ends queues and servers inside the calls of a selection: what is left is confirmed, and nothing
// is done or told for what is gone.
#include <gtest/gtest.h>

#include "Outputs.h"
#include "TestCore.h"
#include "platform/Services.h"

namespace {

using Lines = std::vector<std::string>;

// What a line begins with that sets the room map.
const std::string kRoomMap = outputs::Set(variables::kRoomMapInfo, "");

class SelectionCallsBack : public testing::Test {
protected:
    SelectionCallsBack() {
        m_core.Run({"song 1 location=/media/a.flac", "engine 3000", "engine 3001", "start",
                    "online 3000 127.0.0.1", "online 3001 10.0.0.9"});
    }
    // A hook may refer to what a test has on its stack.
    ~SelectionCallsBack() override { m_core.ClearHook(); }

    // Runs `line`; at the first call of a service that begins with `call` the core does `inside`.
    Lines Run(const std::string& line, const std::string& call, const std::string& inside) {
        bool done = false;
        m_core.SetHook([&](const ServiceCall& made) {
            if (!done && made.ToText().starts_with(call)) {
                done = true;
                m_core.Session().Execute(inside);
            }
        });
        const Lines lines = m_core.Run(line);
        m_core.ClearHook();
        EXPECT_TRUE(done) << call;
        EXPECT_EQ(Only(lines, "< fault"), Lines{});
        return lines;
    }
    // Room 7 with a queue that it does not hear yet.
    void AddSong() { m_core.Run("command ADD_SONG ROOM_ID=7 MEDIA_ID=1"); }
    // Room ROOM selects the input `name` of a server.
    static std::string Input(const std::string& room, const std::string& name, const std::string& rest = "") {
        return "select " + room + " ip=10.0.0." + room +
               " port=6200 channel=1 kind=QUEUE queue=1 input=" + name + " target=" + room + " " + rest;
    }
    static constexpr const char* kSelect =
        "select 7 queue=10000 kind=QUEUE ip=10.0.0.7 port=6200 channel=1 target=7";

    TestCore m_core;
};

// Counts what it is told.
class CallingAnalog final : public IAnalogSource {
public:
    void TakeSourceDevice(std::uint32_t) override { Told(taken); }
    void SelectDevice(std::uint32_t) override { Told(selected); }
    std::vector<std::uint32_t> GetDevicesInAnalogSource() override {
        Told(asked);
        return {500, 600};
    }
    std::function<void()> onCall;
    int taken = 0, selected = 0, asked = 0;

private:
    void Told(int& count) {
        ++count;
        if (onCall)
            onCall();
    }
};

TEST_F(SelectionCallsBack, TheServerMayGoWhileTheRoomLeavesAnotherOne) {
    m_core.Run(Input("7", "line", "binding=3001"));
    const Lines lines = Run("select 7 ip=10.0.0.7 port=6200 channel=1 kind=SONGS queue=1 media=1 target=7",
                            "FireEvent 2", "offline 3000");
    EXPECT_TRUE(HasStart(lines, "< message 7 MEDIA_SELECTED"));
    EXPECT_FALSE(HasStart(lines, "< event 1"));
    EXPECT_FALSE(HasStart(lines, "< selected"));
}

TEST_F(SelectionCallsBack, TheServerMayGoWhileTheRoomLeavesItsPresentQueue) {
    AddSong();
    m_core.Run({kSelect, "command ADD_SONG ROOM_ID=8 MEDIA_ID=1"});
    const Lines lines = Run("select 7 queue=10001 kind=QUEUE ip=10.0.0.7 port=6200 channel=1 target=7",
                            "FireEvent 2", "offline 3000");
    EXPECT_TRUE(HasStart(lines, "< message 7 MEDIA_SELECTED"));
    EXPECT_FALSE(HasStart(lines, "< event 1"));
    EXPECT_FALSE(HasStart(lines, "< selected"));
}

TEST_F(SelectionCallsBack, TheQueueMayGoWhileItsRoomComesIn) {
    AddSong();
    const Lines lines = Run(kSelect, "FireEvent 1", "off 7");
    EXPECT_TRUE(HasStart(lines, "< message 7 MEDIA_SELECTED"));
    EXPECT_FALSE(HasStart(lines, "< selected"));
}

TEST_F(SelectionCallsBack, TheQueueMayGoWhileTheRoomTakesItsDevice) {
    CallingAnalog room;
    m_core.OfferToDevice<IAnalogSource>(8, room);
    CallingAnalog first;
    m_core.OfferToDevice<IAnalogSource>(7, first);
    m_core.Run(Input("7", "line", "source=600"));
    ASSERT_EQ(first.asked, 1);
    room.onCall = [&] { m_core.Session().Execute("offline 3000"); };
    const Lines lines =
        m_core.Run("select 8 queue=10000 kind=QUEUE source=700 ip=10.0.0.8 port=6200 channel=1 target=8");
    EXPECT_EQ(room.taken, 1);
    EXPECT_EQ(room.selected, 0);
    EXPECT_TRUE(HasStart(lines, "< message 8 MEDIA_SELECTED"));
    EXPECT_FALSE(HasStart(lines, "< selected"));
}

TEST_F(SelectionCallsBack, TheRoomIsInTheQueueWhenItTakesTheDevice) {
    CallingAnalog room;
    m_core.OfferToDevice<IAnalogSource>(8, room);
    m_core.Run(Input("7", "line", "source=600"));
    room.onCall = [&] { m_core.Session().Execute("test InSession ROOM_ID=8"); };
    const Lines lines =
        m_core.Run("select 8 queue=10000 kind=QUEUE source=700 ip=10.0.0.8 port=6200 channel=1");
    EXPECT_EQ(room.taken, 1);
    EXPECT_TRUE(Has(lines, "< result true"));
    EXPECT_FALSE(Has(lines, "< result false"));
}

TEST_F(SelectionCallsBack, ARoomTakesNoDeviceOfAQueueThatWent) {
    CallingAnalog room;
    m_core.OfferToDevice<IAnalogSource>(8, room);
    m_core.Run(Input("7", "line", "source=600"));
    Run("select 8 queue=10000 kind=QUEUE source=700 ip=10.0.0.8 port=6200 channel=1 target=8", "FireEvent 1",
        "offline 3000");
    EXPECT_EQ(room.taken, 0);
}

TEST_F(SelectionCallsBack, AnInputIsNotInUseWhenItsQueueWentMeanwhile) {
    CallingAnalog room;
    m_core.OfferToDevice<IAnalogSource>(7, room);
    room.onCall = [&] { m_core.Session().Execute("off 7"); };
    const Lines lines = m_core.Run(Input("7", "line"));
    EXPECT_EQ(room.asked, 1);
    EXPECT_FALSE(HasStart(lines, "< send"));
    EXPECT_FALSE(HasStart(lines, "< selected"));
    EXPECT_FALSE(HasStart(m_core.Run(Input("8", "aux")), "< assert"));
}

TEST_F(SelectionCallsBack, TheQueueThatARoomMovesToMayGo) {
    m_core.Run(Input("7", "line"));
    const Lines lines = Run(Input("8", "line"), "FireEvent 2", "off 7");
    EXPECT_EQ(Only(lines, "< event 1").size(), 1u); // into its own queue, and into no other
    EXPECT_TRUE(HasStart(lines, "< message 8 MEDIA_SELECTED"));
    EXPECT_FALSE(HasStart(lines, "< selected"));
}

TEST_F(SelectionCallsBack, TheQueueMayGoWhileItsStreamIsAskedFor) {
    AddSong();
    const Lines lines = Run(kSelect, "SendBindMessage", "off 7");
    EXPECT_FALSE(HasStart(lines, "< selected"));
}

TEST_F(SelectionCallsBack, TheRecordNamesNoQueueThatWentWithTheConfirmation) {
    AddSong();
    const Lines lines = Run(kSelect, "SendCommand 7 MEDIA_SELECTED", "off 7");
    EXPECT_FALSE(HasStart(lines, "< selected"));
    AddSong();
    const Lines again =
        m_core.Run("select 7 queue=10001 kind=QUEUE ip=10.0.0.7 port=6200 channel=1 target=7");
    EXPECT_TRUE(HasStart(again, "< selected queue=10001"));
}

// Another one than the server that the selection is for.
TEST_F(SelectionCallsBack, TheLastRoomTakesTheQueueWithItOnTheServerThatHasIt) {
    m_core.Run(Input("7", "far", "binding=3001"));
    Run("select 9 queue=10000 kind=SONGS ip=10.0.0.7 port=6200 channel=1 target=9", "FireEvent 1", "off 7");
    EXPECT_EQ(m_core.Run("command GET_QUEUE_STATUS"), Lines{"< return <queues></queues>"});
}

TEST_F(SelectionCallsBack, ARecordIsShownThoughTheRestFailed) {
    AddSong();
    m_core.SetHook([](const ServiceCall& call) {
        if (call.name == "SendBindMessage")
            throw std::runtime_error("no binding");
    });
    const Lines lines = m_core.Run(kSelect);
    EXPECT_TRUE(HasStart(lines, "< log 3 Exception in OnAVSelected"));
    EXPECT_TRUE(HasStart(lines, "< selected queue=10000"));
    EXPECT_FALSE(HasStart(lines, "< message 7 MEDIA_SELECTED"));
}

// The name of a queue's room is asked for while its status is put together.
class StatusCallsBack : public SelectionCallsBack {
protected:
    StatusCallsBack() {
        AddSong();
        m_core.Run({"command ADD_SONG ROOM_ID=8 MEDIA_ID=1", "announce create",
                    "select 20 kind=ANNOUNCEMENT ip=10.0.0.20 port=6200"});
    }
    static bool Shows(const std::string& line, const std::string& queueId) {
        return line.find("<id>" + queueId + "</id>") != std::string::npos;
    }
};

TEST_F(StatusCallsBack, AQueueThatWentWhileItWasNamedIsLeftOut) {
    for (const char* command : {"command GET_QUEUE_STATUS", "command GET_QUEUE_STATUSV2"}) {
        const Lines answer = Only(Run(command, "GetDeviceName 7", "off 7"), "< return");
        ASSERT_EQ(answer.size(), 1u);
        EXPECT_FALSE(Shows(answer[0], "10000")) << answer[0];
        EXPECT_FALSE(Shows(answer[0], "10002")) << answer[0];
        EXPECT_TRUE(Shows(answer[0], "10001")) << answer[0];
        AddSong(); // queue 10002
    }
    const Lines maps = Only(Run("select 9 kind=ANNOUNCEMENT_COMPLETE", "GetDeviceName 7", "off 7"), kRoomMap);
    ASSERT_FALSE(maps.empty());
    EXPECT_FALSE(Shows(maps.back(), "10003")) << maps.back();
    EXPECT_TRUE(Shows(maps.back(), "10001")) << maps.back();
}

TEST_F(StatusCallsBack, NothingOfAServerThatWentIsShown) {
    const Lines maps =
        Only(Run("select 9 kind=ANNOUNCEMENT_COMPLETE", "GetDeviceName 7", "offline 3000"), kRoomMap);
    ASSERT_FALSE(maps.empty());
    EXPECT_EQ(maps.back(), kRoomMap + "<info></info>");
}

} // namespace

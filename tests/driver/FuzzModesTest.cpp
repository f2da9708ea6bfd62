// A queue is a radio, a channel of the streaming service, or neither, whoever calls back while it changes.
#include <gtest/gtest.h>

#include "TestCore.h"
#include "platform/CmdMessage.h"

namespace {

void MakeChannel(IDriver& driver) {
    const auto message = kv::CreateCmdMessage("ADD_SONG");
    message->AddParam("ROOM_ID", "INT", "7");
    message->AddParam("MEDIA_ID", "STRING", "ps.1");
    message->AddParam("SOURCE", "INT", "3");
    driver.ExecuteCommand(*message, nullptr, 0);
}

void MakeRadio(IDriver& driver) {
    const auto message = kv::CreateCmdMessage("ADD_IR_STREAM");
    message->AddParam("ROOM_ID", "INT", "7");
    message->AddParam("MEDIA", "STRING", "http://radio/1");
    driver.ExecuteCommand(*message, nullptr, 0);
}

// Runs `change`; at the first change of a variable in it the core calls back with `inside`. Further changes
// of mode must end.
void ChangeWithin(void (*change)(IDriver&), void (*inside)(IDriver&)) {
    TestCore core;
    core.Run({"start", "online 3000 127.0.0.1", "command ADD_SONG ROOM_ID=7 MEDIA_ID=1"});
    bool called = false;
    core.SetHook([&](const ServiceCall& call) {
        if (called || call.name != "SetVariable")
            return;
        called = true;
        inside(core.Driver());
    });
    change(core.Driver());
    core.ClearHook();
    EXPECT_TRUE(called);
    MakeRadio(core.Driver());
    MakeChannel(core.Driver());
    MakeRadio(core.Driver());
    const auto lines = core.TakeLines();
    EXPECT_EQ(Only(lines, "< fault"), std::vector<std::string>{});
}

TEST(FuzzModes, AChannelMadeWhileARadioIsMade) {
    ChangeWithin(MakeRadio, MakeChannel);
}

TEST(FuzzModes, ARadioMadeWhileAChannelIsMade) {
    ChangeWithin(MakeChannel, MakeRadio);
}

} // namespace

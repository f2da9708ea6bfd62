#include <gtest/gtest.h>

#include <boost/bind/bind.hpp>
#include <stdexcept>

#include "platform/CmdDispatcher.h"

namespace {

class Player {
public:
    void OnPlay(const ICmdMessage& message, ICmdReturn* ret) {
        rooms.push_back(message.GetNumber("ROOM_ID"));
        if (ret)
            ret->SetValue("played");
    }
    std::vector<std::uint32_t> rooms;
};

kv::auto_com<ICmdMessage> Play(const std::string& room) {
    auto message = kv::CreateCmdMessage("PLAY");
    message->AddParam("ROOM_ID", "INT", room);
    return message;
}

TEST(CmdDispatcher, RunsTheHandlerOfTheName) {
    using namespace boost::placeholders;
    Player player;
    CmdDispatcher dispatcher;
    dispatcher.RegisterCmd("PLAY", boost::bind(&Player::OnPlay, &player, _1, _2));
    CR_String ret;
    EXPECT_TRUE(dispatcher.Dispatch(*Play("7"), &ret));
    EXPECT_TRUE(dispatcher.Dispatch(*Play("8"), nullptr));
    EXPECT_EQ(player.rooms, (std::vector<std::uint32_t>{7, 8}));
    EXPECT_EQ(ret.GetText(), "played");
}

TEST(CmdDispatcher, TellsWhenThereIsNoHandler) {
    CmdDispatcher dispatcher;
    dispatcher.RegisterCmd("STOP", [](const ICmdMessage&, ICmdReturn*) { FAIL(); });
    EXPECT_FALSE(dispatcher.Dispatch(*Play("7"), nullptr));
    EXPECT_FALSE(dispatcher.Dispatch(*kv::CreateCmdMessage("stop"), nullptr));
    EXPECT_FALSE(dispatcher.Dispatch(*kv::CreateCmdMessage(""), nullptr));
}

TEST(CmdDispatcher, ASecondRegistrationReplacesTheFirst) {
    CmdDispatcher dispatcher;
    dispatcher.RegisterCmd("PLAY", [](const ICmdMessage&, ICmdReturn* ret) { ret->SetValue("first"); });
    dispatcher.RegisterCmd("PLAY", [](const ICmdMessage&, ICmdReturn* ret) { ret->SetValue("second"); });
    CR_String ret;
    EXPECT_TRUE(dispatcher.Dispatch(*Play("7"), &ret));
    EXPECT_EQ(ret.GetText(), "second");
}

TEST(CmdDispatcher, LetsAHandlersExceptionThrough) {
    CmdDispatcher dispatcher;
    dispatcher.RegisterCmd("PLAY", [](const ICmdMessage&, ICmdReturn*) { throw std::runtime_error("no"); });
    EXPECT_THROW(dispatcher.Dispatch(*Play("7"), nullptr), std::runtime_error);
}

TEST(UICmdDispatcher, AnswersWithTheHandlersElement) {
    UICmdDispatcher dispatcher;
    dispatcher.RegisterUICmd("INFO", [](const ICmdMessage& message) {
        return KVXML::CreateXmlNode("info", message.GetParam("ROOM_ID"));
    });
    dispatcher.RegisterUICmd("NOTHING", [](const ICmdMessage&) { return kv::auto_com<KVXML::INode>(); });
    auto message = kv::CreateCmdMessage("INFO");
    message->AddParam("ROOM_ID", "INT", "7");
    EXPECT_EQ(dispatcher.Dispatch(*message)->ToText(), "<info>7</info>");
    EXPECT_FALSE(dispatcher.Dispatch(*kv::CreateCmdMessage("NOTHING")));
    EXPECT_FALSE(dispatcher.Dispatch(*kv::CreateCmdMessage("OTHER")));
}

} // namespace

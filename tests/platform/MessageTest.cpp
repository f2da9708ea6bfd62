#include <gtest/gtest.h>

#include "platform/CmdMessage.h"

namespace {

using kv::CmdMessageFromXml;
using kv::CmdMessageToXml;
using kv::CreateCmdMessage;

kv::auto_com<ICmdMessage> FromText(const std::string& text) {
    return CmdMessageFromXml(*KVXML::CreateXmlDocument(text)->GetRoot());
}

TEST(Message, KeepsParametersInTheirOrder) {
    const auto message = CreateCmdMessage("PLAY");
    message->AddParam("ROOM_ID", "INT", "7");
    message->AddParam("A", "STRING", "x");
    message->AddParam("FLAG", "BOOLEAN", "true");
    EXPECT_EQ(message->GetName(), "PLAY");
    ASSERT_EQ(message->GetParamCount(), 3u);
    EXPECT_EQ(message->GetParamAt(0).name, "ROOM_ID");
    EXPECT_EQ(message->GetParamAt(1).type, "STRING");
    EXPECT_EQ(message->GetParamAt(2).value, "true");
    EXPECT_THROW(message->GetParamAt(3), std::out_of_range);
}

TEST(Message, OverwritesAParameterInItsPlace) {
    const auto message = CreateCmdMessage("PLAY");
    message->AddParam("A", "INT", "1");
    message->AddParam("B", "INT", "2");
    message->AddParam("A", "STRING", "changed");
    ASSERT_EQ(message->GetParamCount(), 2u);
    EXPECT_EQ(message->GetParamAt(0).name, "A");
    EXPECT_EQ(message->GetParamAt(0).type, "STRING");
    EXPECT_EQ(message->GetParamAt(0).value, "changed");
}

TEST(Message, AnAbsentParameterIsEmptyAndZero) {
    const auto message = CreateCmdMessage("PLAY");
    message->AddParam("EMPTY", "STRING", "");
    EXPECT_TRUE(message->HasParam("EMPTY"));
    EXPECT_FALSE(message->HasParam("ABSENT"));
    EXPECT_EQ(message->GetParam("ABSENT"), "");
    EXPECT_EQ(message->GetNumber("ABSENT"), 0u);
    EXPECT_EQ(message->GetNumber("EMPTY"), 0u);
}

TEST(Message, ReadsNumbersAsIds) {
    const auto message = CreateCmdMessage("PLAY");
    message->AddParam("A", "STRING", " 12x");
    message->AddParam("B", "INT", "-1");
    message->AddParam("C", "INT", "4294967303");
    EXPECT_EQ(message->GetNumber("A"), 12u);
    EXPECT_EQ(message->GetNumber("B"), 4294967295u);
    EXPECT_EQ(message->GetNumber("C"), 2147483647u);
}

TEST(Message, IsWrittenAsAnElement) {
    const auto message = CreateCmdMessage("SAVE<&>");
    message->AddParam("NAME", "STRING", "Rock & Roll");
    message->AddParam("EMPTY", "INT", "");
    EXPECT_EQ(CmdMessageToXml(*message)->ToText(),
              R"(<command name="SAVE&lt;&amp;&gt;"><param name="NAME" type="STRING">Rock &amp; Roll</param>)"
              R"(<param name="EMPTY" type="INT"></param></command>)");
}

TEST(Message, IsReadBackFromItsText) {
    const auto message = CreateCmdMessage("SAVE");
    message->AddParam("A", "STRING", " ");
    message->AddParam("B", "STRING", "<x y=\"1\">\r\n&amp;</x>");
    message->AddParam("", "", "");
    const auto copy = FromText(CmdMessageToXml(*message)->ToText());
    ASSERT_TRUE(copy);
    EXPECT_EQ(copy->GetName(), "SAVE");
    ASSERT_EQ(copy->GetParamCount(), 3u);
    for (std::size_t i = 0; i < 3; ++i) {
        EXPECT_EQ(copy->GetParamAt(i).name, message->GetParamAt(i).name);
        EXPECT_EQ(copy->GetParamAt(i).type, message->GetParamAt(i).type);
        EXPECT_EQ(copy->GetParamAt(i).value, message->GetParamAt(i).value);
    }
}

TEST(Message, IsReadWithoutWhatIsNoParameter) {
    const auto message =
        FromText(R"(<command name="PLAY"><x name="A">1</x><param name="B">2</param></command>)");
    ASSERT_TRUE(message);
    ASSERT_EQ(message->GetParamCount(), 1u);
    EXPECT_EQ(message->GetParam("B"), "2");
    EXPECT_EQ(message->GetParamAt(0).type, "");
}

TEST(Message, OtherElementsAreNoCommand) {
    EXPECT_FALSE(FromText("<command/>"));
    EXPECT_FALSE(FromText("<command name=''/>"));
    EXPECT_FALSE(FromText("<Command name='PLAY'/>"));
    EXPECT_FALSE(FromText("<message name='PLAY'/>"));
}

TEST(Message, TheNumberOfParametersReadIsLimited) {
    const auto message = CreateCmdMessage("PLAY");
    for (std::size_t i = 0; i < kv::kMaxCommandParams; ++i)
        message->AddParam(std::to_string(i), "INT", "1");
    EXPECT_TRUE(CmdMessageFromXml(*CmdMessageToXml(*message)));
    message->AddParam("ONE_MORE", "INT", "1");
    EXPECT_FALSE(CmdMessageFromXml(*CmdMessageToXml(*message)));
}

TEST(Message, AReturnKeepsTheLastText) {
    CR_String ret;
    EXPECT_EQ(ret.GetText(), "");
    ret.SetValue("first");
    ret.SetValue("last");
    EXPECT_EQ(ret.GetText(), "last");
}

TEST(Message, AnOutboundMessageCarriesItsData) {
    const auto message = kv::CreateOutboundBindMessage(6, "SEND", "0 reset\r\n");
    EXPECT_EQ(message->GetKind(), 6u);
    EXPECT_EQ(message->GetName(), "SEND");
    EXPECT_EQ(message->GetData(), "0 reset\r\n");
}

TEST(Message, ABoundMessageTakesItsNameAndParametersFromACommand) {
    auto params = CreateCmdMessage("SERVER_ONLINE");
    params->AddParam("ALLOW_MULT_INPUT", "BOOLEAN", "true");
    const kv::BindMessage plain("EVENT", params, "10.0.0.1");
    EXPECT_EQ(plain.GetMessageType(), "EVENT");
    EXPECT_EQ(plain.GetName(), "SERVER_ONLINE");
    EXPECT_EQ(plain.GetData(), "10.0.0.1");
    EXPECT_EQ(plain.GetParam("ALLOW_MULT_INPUT"), "true");
    EXPECT_EQ(plain.GetParam("ABSENT"), "");
    EXPECT_EQ(plain.GetXml(), nullptr);

    const auto xml = CmdMessageToXml(*CreateCmdMessage("PLAY"));
    const kv::BindMessage protocol("PROTOCOL_COMMAND", params, "", xml);
    EXPECT_EQ(protocol.GetXml(), xml.get());
}

TEST(Message, AConditionOutlivesTheMessageItWasMadeFrom) {
    auto params = CreateCmdMessage("InSession");
    params->AddParam("ROOM_ID", "INT", "7");
    const kv::CondMessage condition(params);
    params.reset();
    EXPECT_EQ(condition.GetName(), "InSession");
    EXPECT_EQ(condition.GetParam("ROOM_ID"), "7");
}

} // namespace

#include <gtest/gtest.h>

#include "TestSystem.h"
#include "platform/Utilities.h"
#include "platform/rhapsody/RhapsodyClient.h"

namespace {

using namespace std::string_literals;
using KVRhapsodyClient::GetRhapsodyBranding;
using KVRhapsodyClient::RhapsodyBranding;

TEST(StringX, MakesOneLineOfAText) {
    const auto strings = CreateStandardStringX();
    EXPECT_EQ(strings->OneLine("plain"), "plain");
    EXPECT_EQ(strings->OneLine("a\r\nb\tc\x7f\0d"s), "a  b c  d");
    EXPECT_EQ(strings->OneLine("Grüße"), "Grüße");
    EXPECT_EQ(strings->OneLine(""), "");
}

TEST(KVMessage, DescribesAMessage) {
    const auto describer = CreateStandardKVMessage();
    const auto message = kv::CreateCmdMessage("PLAY");
    EXPECT_EQ(describer->Describe(*message), "PLAY");
    message->AddParam("ROOM_ID", "INT", "7");
    message->AddParam("EMPTY", "STRING", "");
    EXPECT_EQ(describer->Describe(*message), "PLAY ROOM_ID=7 EMPTY=");
}

TEST(Utilities, AreSharedWithTheCore) {
    TestInstances instances;
    const auto ofTheCore = CreateStandardStringX();
    instances.RegisterInstance(IStringX::kInterfaceId, ofTheCore.get());
    {
        const auto shared = StringX::Create(instances);
        EXPECT_EQ(shared.get(), ofTheCore.get());
    }
    EXPECT_EQ(ofTheCore->OneLine("still\nthere"), "still there");
}

TEST(Utilities, AreNullInACoreWithoutThem) {
    TestInstances instances;
    EXPECT_FALSE(StringX::Create(instances));
    EXPECT_FALSE(KVMessage::Create(instances));
    instances.RegisterInstance(IKVMessage::kInterfaceId, nullptr);
    EXPECT_FALSE(KVMessage::Create(instances));
}

TEST(Branding, IsThePartnersInAnyCase) {
    EXPECT_EQ(GetRhapsodyBranding("partner"), RhapsodyBranding::PartnerBrand);
    EXPECT_EQ(GetRhapsodyBranding("Partner"), RhapsodyBranding::PartnerBrand);
    EXPECT_EQ(GetRhapsodyBranding("PARTNER"), RhapsodyBranding::PartnerBrand);
}

TEST(Branding, IsStandardOtherwise) {
    for (const char* text : {"", "standard", "partners", " partner", "part"})
        EXPECT_EQ(GetRhapsodyBranding(text), RhapsodyBranding::Standard) << text;
}

} // namespace

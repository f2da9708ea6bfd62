#include <gtest/gtest.h>

#include "platform/XmlHelper.h"

namespace {

kv::auto_com<KVXML::INode> Read(const std::string& text) {
    return KVXML::CreateXmlDocument(text)->GetRoot();
}

TEST(XmlHelper, AddsChildrenWithTexts) {
    const auto root = KVXML::CreateXmlNode("a");
    const auto child = XmlHelper::AddChild(*root, "b", "text");
    XmlHelper::AddChild(*root, "c");
    child->SetAttribute("late", "1");
    EXPECT_EQ(root->ToText(), "<a><b late=\"1\">text</b><c></c></a>");
}

TEST(XmlHelper, WritesValuesOfEveryType) {
    const auto root = KVXML::CreateXmlNode("a");
    XmlHelper::toXml(4294967295u, *root, "number");
    XmlHelper::toXml(true, *root, "yes");
    XmlHelper::toXml(false, *root, "no");
    XmlHelper::toXml(std::string("Blue"), *root, "string");
    XmlHelper::toXml("Green", *root, "literal");
    EXPECT_EQ(root->ToText(),
              "<a><number>4294967295</number><yes>true</yes><no>false</no><string>Blue</string>"
              "<literal>Green</literal></a>");
}

TEST(XmlHelper, ReadsTheTextOfAChild) {
    const auto root = Read("<a><n>12</n><s>Blue</s><n>13</n></a>");
    std::uint32_t number = 0;
    std::string text;
    EXPECT_TRUE(XmlHelper::fromXml(*root, "n", number));
    EXPECT_TRUE(XmlHelper::fromXml(*root, "s", text));
    EXPECT_EQ(number, 12u);
    EXPECT_EQ(text, "Blue");
}

TEST(XmlHelper, LeavesAValueAloneWithoutAChild) {
    const auto root = Read("<a n=\"1\"><b><n>2</n></b></a>");
    std::uint32_t number = 77;
    std::string text = "as it was";
    EXPECT_FALSE(XmlHelper::fromXml(*root, "n", number));
    EXPECT_FALSE(XmlHelper::fromXml(*root, "n", text));
    EXPECT_EQ(number, 77u);
    EXPECT_EQ(text, "as it was");
}

TEST(XmlHelper, AnEmptyChildIsAValue) {
    const auto root = Read("<a><n/><s/></a>");
    std::uint32_t number = 77;
    std::string text = "x";
    EXPECT_TRUE(XmlHelper::fromXml(*root, "n", number));
    EXPECT_TRUE(XmlHelper::fromXml(*root, "s", text));
    EXPECT_EQ(number, 0u);
    EXPECT_EQ(text, "");
}

TEST(XmlHelper, ReadsEveryChildAsANumber) {
    const auto root = Read("<rooms><room>7</room><x>-1</x><y/><z>4294967303</z></rooms>");
    std::vector<std::uint32_t> values = {1};
    XmlHelper::fromXml(*root, values);
    EXPECT_EQ(values, (std::vector<std::uint32_t>{1, 7, 4294967295u, 0, 2147483647}));
}

TEST(XmlHelper, ReadsFlagsInAnyCase) {
    EXPECT_TRUE(XmlHelper::GetBool(*Read("<a f='true'/>"), "f"));
    EXPECT_TRUE(XmlHelper::GetBool(*Read("<a f='True'/>"), "f"));
    EXPECT_TRUE(XmlHelper::GetBool(*Read("<a><f>TRUE</f></a>"), "f"));
    for (const char* other : {"<a/>", "<a f=''/>", "<a f='1'/>", "<a f='yes'/>", "<a f=' true'/>",
                              "<a><f>false</f></a>", "<a><f/></a>"})
        EXPECT_FALSE(XmlHelper::GetBool(*Read(other), "f")) << other;
}

TEST(XmlHelper, AnAttributeGoesBeforeAChild) {
    EXPECT_FALSE(XmlHelper::GetBool(*Read("<a f='false'><f>true</f></a>"), "f"));
}

} // namespace

#include <gtest/gtest.h>

#include <stdexcept>

#include "platform/Xml.h"

namespace {

using KVXML::CreateXmlNode;
using namespace std::string_literals;

TEST(XmlNode, AnEmptyElementHasAnOpenAndACloseTag) {
    EXPECT_EQ(CreateXmlNode("info")->ToText(), "<info></info>");
}

TEST(XmlNode, PrintsCompactlyAndWithoutDeclaration) {
    const auto root = CreateXmlNode("list");
    const auto first = CreateXmlNode("song", "Blue");
    const auto second = CreateXmlNode("song");
    first->SetAttribute("id", 7u);
    root->AppendChild(*first);
    root->AppendChild(*second);
    EXPECT_EQ(root->ToText(), "<list><song id=\"7\">Blue</song><song></song></list>");
}

TEST(XmlNode, PrintsItsTextBeforeItsChildren) {
    const auto root = CreateXmlNode("a", "text");
    root->AppendChild(*CreateXmlNode("b"));
    EXPECT_EQ(root->ToText(), "<a>text<b></b></a>");
}

TEST(XmlNode, AppendsToWhatIsThere) {
    std::string out = "before ";
    CreateXmlNode("a")->AppendText(out);
    EXPECT_EQ(out, "before <a></a>");
}

TEST(XmlNode, KeepsAttributesInTheOrderSet) {
    const auto node = CreateXmlNode("a");
    node->SetAttribute("z", "1");
    node->SetAttribute("b", "2");
    node->SetAttribute("m", "3");
    EXPECT_EQ(node->ToText(), R"(<a z="1" b="2" m="3"></a>)");
}

TEST(XmlNode, OverwritesAnAttributeInItsPlace) {
    const auto node = CreateXmlNode("a");
    node->SetAttribute("first", "1");
    node->SetAttribute("second", "2");
    node->SetAttribute("first", "changed");
    EXPECT_EQ(node->ToText(), R"(<a first="changed" second="2"></a>)");
}

TEST(XmlNode, WritesNumbersUnsigned) {
    const auto node = CreateXmlNode("a");
    node->SetAttribute("n", 4294967295u);
    node->SetAttribute("zero", 0u);
    EXPECT_EQ(node->ToText(), R"(<a n="4294967295" zero="0"></a>)");
}

TEST(XmlNode, TellsAnEmptyAttributeFromAnAbsentOne) {
    const auto node = CreateXmlNode("a");
    node->SetAttribute("empty", "");
    EXPECT_TRUE(node->HasAttribute("empty"));
    EXPECT_FALSE(node->HasAttribute("absent"));
    EXPECT_EQ(node->GetAttribute("empty"), "");
    EXPECT_EQ(node->GetAttribute("absent"), "");
}

TEST(XmlNode, CanBeRenamedAndRewritten) {
    const auto node = CreateXmlNode("old", "old text");
    node->SetName("new");
    node->SetText("new text");
    EXPECT_EQ(node->GetName(), "new");
    EXPECT_EQ(node->GetText(), "new text");
    EXPECT_EQ(node->ToText(), "<new>new text</new>");
}

TEST(XmlNode, FindsItsFirstChildOfAName) {
    const auto root = CreateXmlNode("a");
    root->AppendChild(*CreateXmlNode("x", "1"));
    root->AppendChild(*CreateXmlNode("y", "2"));
    root->AppendChild(*CreateXmlNode("y", "3"));
    ASSERT_NE(root->FindChild("y"), nullptr);
    EXPECT_EQ(root->FindChild("y")->GetText(), "2");
    EXPECT_EQ(root->FindChild("z"), nullptr);
    EXPECT_EQ(root->GetChildCount(), 3u);
    EXPECT_EQ(root->GetChild(2).GetText(), "3");
    EXPECT_THROW(root->GetChild(3), std::out_of_range);
}

TEST(XmlNode, EscapesTexts) {
    EXPECT_EQ(CreateXmlNode("a", "1 < 2 & 3 > 2 \"q\" 'p'")->ToText(),
              "<a>1 &lt; 2 &amp; 3 &gt; 2 \"q\" 'p'</a>");
    EXPECT_EQ(CreateXmlNode("a", "]]>")->ToText(), "<a>]]&gt;</a>");
    EXPECT_EQ(CreateXmlNode("a", "x\ty\nz\r\x01\x1f")->ToText(), "<a>x\ty\nz&#13;&#1;&#31;</a>");
}

TEST(XmlNode, EscapesAttributes) {
    const auto node = CreateXmlNode("a");
    node->SetAttribute("b", "<\"&'>\t\r\n\x02");
    EXPECT_EQ(node->ToText(), R"(<a b="&lt;&quot;&amp;'&gt;&#9;&#13;&#10;&#2;"></a>)");
}

TEST(XmlNode, LeavesZeroBytesOut) {
    const auto node = CreateXmlNode("a", "x\0y"s);
    node->SetAttribute("b", "\0z"s);
    EXPECT_EQ(node->ToText(), R"(<a b="z">xy</a>)");
}

TEST(XmlNode, PrintsOtherBytesAsTheyAre) {
    EXPECT_EQ(CreateXmlNode("a", "Grüße \xff\xfe\x7f")->ToText(), "<a>Grüße \xff\xfe\x7f</a>");
}

TEST(XmlNode, ASubtreeCanHaveSeveralParents) {
    auto shared = CreateXmlNode("song", "Blue");
    {
        const auto first = CreateXmlNode("first");
        auto second = CreateXmlNode("second");
        first->AppendChild(*shared);
        second->AppendChild(*shared);
        second->AppendChild(*shared);
        EXPECT_EQ(second->ToText(), "<second><song>Blue</song><song>Blue</song></second>");
        second.reset();
        EXPECT_EQ(first->ToText(), "<first><song>Blue</song></first>");
        KVXML::INode& inFirst = first->GetChild(0);
        EXPECT_EQ(&inFirst, shared.get());
        shared.reset();
        EXPECT_EQ(first->ToText(), "<first><song>Blue</song></first>");
    }
}

TEST(XmlNode, APrintedElementIsItsText) {
    const std::string text = "<songs><song id=\"7\">Blue &amp; &lt;Green&gt;</song><song></song></songs>";
    const auto songs = KVXML::CreatePrintedNode(text);
    EXPECT_EQ(songs->ToText(), text);
    const auto list = CreateXmlNode("list");
    list->AppendChild(*songs);
    EXPECT_EQ(list->ToText(), "<list>" + text + "</list>");
}

TEST(XmlNode, APrintedElementCanBeLookedInto) {
    const auto songs =
        KVXML::CreatePrintedNode("<songs n=\"2\">two<song id=\"7\">Blue</song><song></song></songs>");
    EXPECT_EQ(songs->GetName(), "songs");
    EXPECT_EQ(songs->GetText(), "two");
    EXPECT_EQ(songs->GetAttribute("n"), "2");
    EXPECT_TRUE(songs->HasAttribute("n"));
    EXPECT_FALSE(songs->HasAttribute("m"));
    EXPECT_EQ(songs->GetChildCount(), 2u);
    EXPECT_EQ(songs->GetChild(0).GetText(), "Blue");
    EXPECT_EQ(songs->FindChild("song")->GetAttribute("id"), "7");
    EXPECT_EQ(songs->FindChild("sung"), nullptr);
}

TEST(XmlNode, APrintedElementPastTheLimitsOfADocumentCanBeLookedInto) {
    const std::size_t depth = 2 * KVXML::kMaxDocumentDepth;
    std::string text;
    for (std::size_t i = 0; i < depth; ++i)
        text = "<a>" + text + "</a>";
    const auto printed = KVXML::CreatePrintedNode(text);
    std::size_t found = 1;
    for (const KVXML::INode* node = printed.get(); (node = node->FindChild("a")); ++found) {
    }
    EXPECT_EQ(found, depth);
}

TEST(XmlNode, AFinishedElementRefusesChanges) {
    const auto document = KVXML::CreateXmlDocument("<a b='1'><c/></a>");
    for (const auto& finished : {document->GetRoot(), KVXML::CreatePrintedNode("<a b=\"1\"><c></c></a>")}) {
        EXPECT_THROW(finished->SetName("d"), std::logic_error);
        EXPECT_THROW(finished->SetText("d"), std::logic_error);
        EXPECT_THROW(finished->SetAttribute("b", "d"), std::logic_error);
        EXPECT_THROW(finished->SetAttribute("b", 2u), std::logic_error);
        EXPECT_THROW(finished->AppendChild(*CreateXmlNode("d")), std::logic_error);
        EXPECT_EQ(finished->ToText(), "<a b=\"1\"><c></c></a>");
    }
}

TEST(XmlNode, AChildOutlivesItsParent) {
    const auto child = CreateXmlNode("b", "text");
    {
        const auto parent = CreateXmlNode("a");
        parent->AppendChild(*child);
    }
    EXPECT_EQ(child->ToText(), "<b>text</b>");
}

} // namespace

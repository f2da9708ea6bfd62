#include <gtest/gtest.h>

#include <new>
#include <random>
#include <stdexcept>

#include "platform/XmlPieces.h"

namespace {

using KVXML::Pieces;
using KVXML::Printer;

void Append(Pieces& pieces, const std::string& piece) {
    pieces.Append(1, [&](Printer& printer, std::size_t) { printer.Finished(piece); });
}

TEST(XmlPieces, PrintsSeveralAtOnce) {
    Pieces pieces;
    Append(pieces, "<a></a>");
    pieces.Append(3, [](Printer& printer, std::size_t index) { printer.Value("b", index); });
    EXPECT_EQ(pieces.GetCount(), 4u);
    EXPECT_EQ(pieces.GetText(), "<a></a><b>1</b><b>2</b><b>3</b>");
    EXPECT_EQ(pieces.GetText(0), "");
    EXPECT_EQ(pieces.GetText(2), "<a></a><b>1</b>");
}

// Whatever is done to them, the text is that of the pieces.
TEST(XmlPieces, EachCanBeExchangedAndTakenOut) {
    std::mt19937 random(1);
    Pieces pieces;
    std::vector<std::string> expected;
    for (int i = 0; i < 5000; ++i) {
        const std::string piece(random() % 40, static_cast<char>('a' + i % 26));
        const std::size_t place = expected.empty() ? 0 : random() % expected.size();
        const auto action = random() % 10;
        if (expected.empty() || action < 5) {
            Append(pieces, piece);
            expected.push_back(piece);
        } else if (action < 7) {
            pieces.Replace(place, piece);
            expected[place] = piece;
        } else if (action < 9 || expected.size() < 200) {
            pieces.Remove(place);
            expected.erase(expected.begin() + static_cast<std::ptrdiff_t>(place));
        } else {
            pieces.Truncate(place);
            expected.resize(place);
        }
        std::string text;
        for (const std::string& each : expected)
            text += each;
        ASSERT_EQ(pieces.GetText(), text);
        ASSERT_EQ(pieces.GetCount(), expected.size());
    }
}

// Printing it fails, as when memory is short.
class Unprintable final : public kv::RefCounted<KVXML::INode> {
public:
    std::string_view GetName() const override { return {}; }
    void SetName(std::string_view) override {}
    std::string_view GetText() const override { return {}; }
    void SetText(std::string_view) override {}
    void SetAttribute(std::string_view, std::string_view) override {}
    void SetAttribute(std::string_view, std::uint32_t) override {}
    std::string_view GetAttribute(std::string_view) const override { return {}; }
    bool HasAttribute(std::string_view) const override { return false; }
    void AppendChild(INode&) override {}
    std::size_t GetChildCount() const override { return 0; }
    INode& GetChild(std::size_t) const override { throw std::out_of_range("no such child"); }
    INode* FindChild(std::string_view) const override { return nullptr; }
    void AppendText(std::string&) const override { throw std::bad_alloc(); }
};

class XmlAssembly : public testing::Test {
protected:
    static kv::auto_com<KVXML::INode> Child(const std::string& text) {
        return KVXML::CreatePrintedNode("<" + text + "></" + text + ">");
    }
    std::string Filled(const std::vector<kv::auto_com<KVXML::INode>>& children) {
        m_list->Restart();
        for (const auto& child : children)
            m_list->AppendChild(*child);
        return m_list->ToText();
    }

    kv::auto_com<KVXML::IAssembly> m_list = KVXML::CreateAssembly("list");
};

TEST_F(XmlAssembly, HoldsTheChildrenOfTheLastFilling) {
    const auto a = Child("a");
    const auto b = Child("longer");
    const auto c = Child("c");
    EXPECT_EQ(Filled({}), "<list></list>");
    EXPECT_EQ(Filled({a, b}), "<list><a></a><longer></longer></list>");
    EXPECT_EQ(Filled({a, b}), "<list><a></a><longer></longer></list>");
    EXPECT_EQ(Filled({a, c, b}), "<list><a></a><c></c><longer></longer></list>");
    EXPECT_EQ(Filled({b}), "<list><longer></longer></list>");
    EXPECT_EQ(Filled({b, b}), "<list><longer></longer><longer></longer></list>");
    EXPECT_EQ(Filled({c, a, b, a}), "<list><c></c><a></a><longer></longer><a></a></list>");
    EXPECT_EQ(Filled({}), "<list></list>");
}

// A place of another child must not be taken for the child's.
TEST_F(XmlAssembly, HoldsWhatItHasPrinted) {
    for (char letter = 'a'; letter <= 'z'; ++letter) {
        const std::string name(1, letter);
        EXPECT_EQ(Filled({Child(name)}), "<list><" + name + "></" + name + "></list>");
    }
}

TEST_F(XmlAssembly, ChildThatCannotBePrintedIsLeftOut) {
    const auto a = Child("a");
    const auto b = Child("b");
    const auto unprintable = kv::auto_com<KVXML::INode>::adopt(new Unprintable);
    EXPECT_THROW(Filled({a, unprintable}), std::bad_alloc);
    EXPECT_EQ(m_list->ToText(), "<list><a></a></list>");
    EXPECT_EQ(Filled({a, b, a}), "<list><a></a><b></b><a></a></list>");
    EXPECT_THROW(Filled({a, unprintable}), std::bad_alloc);
    EXPECT_EQ(Filled({a, b, a}), "<list><a></a><b></b><a></a></list>");
}

TEST_F(XmlAssembly, IsAnElementLikeAnyOther) {
    Filled({Child("a"), Child("b"), Child("c")});
    Filled({Child("d"), Child("b")});
    EXPECT_EQ(m_list->GetName(), "list");
    EXPECT_EQ(m_list->GetText(), "");
    EXPECT_EQ(m_list->GetAttribute("a"), "");
    EXPECT_FALSE(m_list->HasAttribute("a"));
    EXPECT_EQ(m_list->GetChildCount(), 2u);
    EXPECT_EQ(m_list->GetChild(0).GetName(), "d");
    EXPECT_THROW(m_list->GetChild(2), std::out_of_range);
    EXPECT_EQ(m_list->FindChild("b"), &m_list->GetChild(1));
    EXPECT_EQ(m_list->FindChild("c"), nullptr);
    EXPECT_THROW(m_list->SetText("text"), std::logic_error);
}

} // namespace

#include <gtest/gtest.h>

#include "platform/XmlPrinter.h"

namespace {

using KVXML::Printer;

TEST(XmlPrinter, PrintsAsATreeDoes) {
    const std::string odd = "<\"&'>\t\r\n\x02";
    const auto tree = KVXML::CreateXmlNode("list");
    const auto song = KVXML::CreateXmlNode("song", odd);
    song->SetAttribute("id", 7u);
    song->SetAttribute("title", odd);
    tree->AppendChild(*song);
    tree->AppendChild(*KVXML::CreateXmlNode("count", "4294967295"));

    Printer printer;
    printer.Element("list", [&] {
        printer.Element("song", [&] {
            printer.Attribute("id", 7u);
            printer.Attribute("title", odd);
            printer.Text(odd);
        });
        printer.Value("count", 4294967295u);
    });
    EXPECT_EQ(printer.GetText(), tree->ToText());
}

TEST(XmlPrinter, PrintsSignedNumbers) {
    Printer printer;
    printer.Element("a", [&] {
        printer.Attribute("least", std::int32_t{-2147483647 - 1});
        printer.Value("b", std::int32_t{-1});
    });
    EXPECT_EQ(printer.GetText(), "<a least=\"-2147483648\"><b>-1</b></a>");
}

TEST(XmlPrinter, AnEmptyElementHasAnOpenAndACloseTag) {
    Printer printer;
    printer.Element("a", [] {});
    printer.Value("b", "");
    EXPECT_EQ(printer.GetText(), "<a></a><b></b>");
}

TEST(XmlPrinter, TakesWhatIsPrintedAlready) {
    const auto tree = KVXML::CreateXmlNode("b", "<");
    Printer printer;
    printer.Element("a", [&] {
        printer.Attribute("n", 1);
        printer.Finished(*tree);
        printer.Finished("<c></c>");
    });
    EXPECT_EQ(printer.GetText(), "<a n=\"1\"><b>&lt;</b><c></c></a>");
}

TEST(XmlPrinter, IsEmptyOnceItsTextWasTaken) {
    Printer printer;
    printer.Value("a", 1);
    EXPECT_EQ(printer.Take(), "<a>1</a>");
    printer.Value("b", 2);
    EXPECT_EQ(printer.Take(), "<b>2</b>");
    EXPECT_EQ(printer.Take(), "");
}

} // namespace

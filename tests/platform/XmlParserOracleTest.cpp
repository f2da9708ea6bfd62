// What is a document, and what is in it, is what pugixml says: documents of the field were written for it.
#include <gtest/gtest.h>

#include <iterator>
#include <pugixml.hpp>
#include <random>

#include "platform/Xml.h"

namespace {

bool IsText(const pugi::xml_node& node) {
    return node.type() == pugi::node_pcdata || node.type() == pugi::node_cdata;
}

kv::auto_com<KVXML::INode> Copy(const pugi::xml_node& element) {
    auto node = KVXML::CreateXmlNode(element.name());
    for (const auto& attribute : element.attributes())
        node->SetAttribute(attribute.name(), attribute.value());
    std::string text;
    for (const auto& child : element.children()) {
        if (IsText(child))
            text += child.value();
        else if (child.type() == pugi::node_element)
            node->AppendChild(*Copy(child));
    }
    node->SetText(text);
    return node;
}

std::string ReadByPugixml(const std::string& text) {
    constexpr unsigned int kOptions =
        pugi::parse_default | pugi::parse_ws_pcdata_single | pugi::parse_fragment;
    pugi::xml_document parsed;
    if (!parsed.load_buffer(text.data(), text.size(), kOptions, pugi::encoding_utf8))
        return "none";
    pugi::xml_node root;
    for (const auto& node : parsed.children()) {
        if (IsText(node) || (root && node.type() == pugi::node_element))
            return "none";
        if (node.type() == pugi::node_element)
            root = node;
    }
    return root ? Copy(root)->ToText() : "none";
}

std::string ReadByUs(const std::string& text) {
    const auto document = KVXML::CreateXmlDocument(text);
    return document ? document->GetRoot()->ToText() : "none";
}

// Texts that are documents, nearly documents, and not at all.
class Texts {
public:
    std::string Next() {
        std::string text;
        if (Pick(4) == 0) {
            for (std::size_t left = Pick(12); left > 0; --left)
                text += AnyOf(kPieces);
            return text;
        }
        if (Pick(4) == 0)
            text += "<?xml version='1.0'?>";
        if (Pick(6) == 0)
            text += "<!DOCTYPE a [ <!-- ' --> \"q>\" <![ x <![ ]]> ]]> <!E <!F > > <?p > ?> ]>";
        text += Element(0);
        for (std::size_t left = Pick(3); left > 0; --left)
            Damage(text);
        return text;
    }

private:
    static constexpr const char* kPieces[] = {"<a>",
                                              "</a>",
                                              "<a/>",
                                              "<b x='1'/>",
                                              "<c y=\"2\" x='3' y='4'>",
                                              "</c>",
                                              "<",
                                              "/",
                                              ">",
                                              "'",
                                              "\"",
                                              "=",
                                              "&",
                                              "&amp;",
                                              "&#65;",
                                              "&#x41;",
                                              "&#0;",
                                              "&#;",
                                              "&#x;",
                                              "&#99999999999;",
                                              "&#xFFFFFFFF;",
                                              "&foo;",
                                              "&am",
                                              "&ap;",
                                              "<!--",
                                              "-->",
                                              "--",
                                              "<![CDATA[",
                                              "]]>",
                                              "]]",
                                              "<!DOCTYPE",
                                              "<!DOCTYPE a>",
                                              "[",
                                              "<![",
                                              "<?",
                                              "?>",
                                              "<?x",
                                              "?",
                                              " ",
                                              "\t",
                                              "\r",
                                              "\r\n",
                                              "x",
                                              "-",
                                              ":",
                                              "\xc3\xbc",
                                              "\xff",
                                              "\xEF\xBB\xBF",
                                              "<!",
                                              "<!-",
                                              "<!ENTITY x>",
                                              "<a b",
                                              "<a b='",
                                              "b = '3'",
                                              "</",
                                              "/>",
                                              "</a >"};
    static constexpr const char* kNames[] = {"a", "b", "song", "x:y", "_z", "\xc3\xbc"};
    static constexpr const char* kValues[] = {"1",  "abc", "&amp;", "&#10;", "&#0;x", "\t",       "\r\n",
                                              "\r", " ",   "<",     ">",     "&bad;", "&#x1F600;"};

    std::size_t Pick(std::size_t count) { return m_random() % count; }
    template <std::size_t Count>
    const char* AnyOf(const char* const (&choices)[Count]) {
        return choices[Pick(Count)];
    }

    std::string Element(int depth) {
        const std::string name = AnyOf(kNames);
        std::string text = "<" + name;
        for (std::size_t left = Pick(4); left > 0; --left) {
            text.append(Pick(3) ? " " : "\n\t").append(AnyOf(kNames)).append(Pick(5) ? "=" : " = ");
            const char* quote = Pick(2) ? "\"" : "'";
            text.append(quote).append(AnyOf(kValues)).append(AnyOf(kValues)).append(quote);
        }
        if (Pick(4) == 0)
            return text + (Pick(2) ? "/>" : " />");
        text += ">";
        for (std::size_t left = depth < 5 ? Pick(5) : 0; left > 0; --left) {
            const std::string contents[] = {
                "<!-- x -->", "<![CDATA[ a\r\n<b>]]>", " \n ", "\r", "te&lt;xt\r", "<?pi x?>",
                "&#0;zz",     Element(depth + 1)};
            text += contents[Pick(std::size(contents))];
        }
        return text + "</" + name + (Pick(4) ? ">" : " >");
    }

    void Damage(std::string& text) {
        const std::size_t place = Pick(text.size() + 1);
        switch (Pick(4)) {
            case 0:
                text.insert(place, AnyOf(kPieces));
                break;
            case 1:
                text.insert(place, 1, static_cast<char>(Pick(256)));
                break;
            case 2:
                text.erase(place, 1 + Pick(3));
                break;
            default:
                text.resize(place);
        }
    }

    std::mt19937 m_random;
};

TEST(XmlParserOracle, PugixmlReadsTheSame) {
    Texts texts;
    std::size_t documents = 0;
    for (int i = 0; i < 50000; ++i) {
        const std::string text = texts.Next();
        const std::string expected = ReadByPugixml(text);
        ASSERT_EQ(ReadByUs(text), expected) << text;
        documents += expected != "none";
    }
    EXPECT_GT(documents, 10000u);
    EXPECT_LT(documents, 40000u);
}

} // namespace

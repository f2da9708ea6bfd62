// Short ways to write values into a tree and read them back.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "platform/Xml.h"

class XmlHelper {
public:
    // Appends a child named `tag`, with `text`, to `parent` and returns it.
    static kv::auto_com<KVXML::INode> AddChild(KVXML::INode& parent, std::string_view tag,
                                               std::string_view text = "");

    // Appends a child named `tag` that holds the value: numbers in decimal, booleans as "true" and "false".
    static void toXml(std::uint32_t value, KVXML::INode& parent, std::string_view tag);
    static void toXml(bool value, KVXML::INode& parent, std::string_view tag);
    static void toXml(std::string_view value, KVXML::INode& parent, std::string_view tag);
    static void toXml(const char* value, KVXML::INode& parent, std::string_view tag);

    // Reads the text of the child named `tag`. False, with `value` unchanged, when there is no such child.
    static bool fromXml(const KVXML::INode& parent, std::string_view tag, std::uint32_t& value);
    static bool fromXml(const KVXML::INode& parent, std::string_view tag, std::string& value);

    // Appends the texts of all child elements of `parent`, whatever their names, as numbers.
    static void fromXml(const KVXML::INode& parent, std::vector<std::uint32_t>& values);

    // The flag `name` of an element: an attribute or else a child, true in any case of letters.
    static bool GetBool(const KVXML::INode& node, std::string_view name);
};

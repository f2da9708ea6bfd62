#include "config/TomlTable.h"

#include <utility>

#include "common/Text.h"
#include "config/Config.h"

namespace korvel::controller {

TomlTable::TomlTable(const toml::table& table, std::string source, std::string where)
    : m_table(table), m_source(std::move(source)), m_where(std::move(where)) {}

std::string TomlTable::Name(std::string_view key) const {
    std::string name = "'";
    name.append(key).append("'");
    return m_where.empty() ? name : name + " in " + m_where;
}

void TomlTable::Fail(std::string_view key, const std::string& what) const {
    const toml::node* node = m_table.get(key);
    const auto line = (node ? *node : static_cast<const toml::node&>(m_table)).source().begin.line;
    throw ConfigError(m_source + ":" + std::to_string(line == 0 ? 1 : line) + ": " + Name(key) + " " + what);
}

const toml::node* TomlTable::Find(std::string_view key) {
    m_known.emplace(key);
    return m_table.get(key);
}

void TomlTable::Text(std::string_view key, std::string& value) {
    const toml::node* node = Find(key);
    if (!node)
        return;
    const auto* text = node->as_string();
    if (!text)
        Fail(key, "must be a text");
    if (common::HasControl(text->get()))
        Fail(key, "holds a control character");
    value = text->get();
}

void TomlTable::TextList(std::string_view key, std::vector<std::string>& values) {
    const toml::node* node = Find(key);
    if (!node)
        return;
    const toml::array* list = node->as_array();
    if (!list)
        Fail(key, "must be a list of texts");
    values.clear();
    for (const toml::node& item : *list) {
        const auto* text = item.as_string();
        if (!text)
            Fail(key, "must be a list of texts");
        if (common::HasControl(text->get()))
            Fail(key, "holds a control character");
        values.push_back(text->get());
    }
}

bool TomlTable::ReadInteger(std::string_view key, std::int64_t& value, std::int64_t least,
                            std::int64_t most) {
    const toml::node* node = Find(key);
    if (!node)
        return false;
    const auto* number = node->as_integer();
    if (!number)
        Fail(key, "must be a whole number");
    if (number->get() < least || number->get() > most)
        Fail(key, "must be from " + std::to_string(least) + " to " + std::to_string(most));
    value = number->get();
    return true;
}

const toml::table* TomlTable::Table(std::string_view key) {
    const toml::node* node = Find(key);
    if (node && !node->is_table())
        Fail(key, "must be a table");
    return node ? node->as_table() : nullptr;
}

std::vector<const toml::table*> TomlTable::Tables(std::string_view key) {
    std::vector<const toml::table*> tables;
    const toml::node* node = Find(key);
    if (!node)
        return tables;
    const toml::array* list = node->as_array();
    if (!list)
        Fail(key, "must be written as [[" + std::string(key) + "]]");
    for (const toml::node& item : *list) {
        if (!item.is_table())
            Fail(key, "must be written as [[" + std::string(key) + "]]");
        tables.push_back(item.as_table());
    }
    return tables;
}

void TomlTable::RefuseOtherKeys() const {
    for (const auto& [key, node] : m_table) {
        if (!m_known.contains(key.str()))
            Fail(key.str(), "is not a setting");
    }
}

} // namespace korvel::controller

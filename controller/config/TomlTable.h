// Reading one table of a TOML document strictly: every key must be asked for, every value must have its type.
#pragma once

#include <toml++/toml.h>

#include <cstdint>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace korvel::controller {

class TomlTable {
public:
    // `where` is how errors call the table: "[http]", or "" for the top of the file. Both arguments after
    // `table` are kept as copies; the table must outlive the reader.
    TomlTable(const toml::table& table, std::string source, std::string where);

    bool Has(std::string_view key) const { return m_table.contains(key); }

    // Each leaves `value` alone when the key is absent and throws ConfigError when it holds something else.
    void Text(std::string_view key, std::string& value);
    void TextList(std::string_view key, std::vector<std::string>& values);
    template <class Number>
    void Integer(std::string_view key, Number& value, std::int64_t least, std::int64_t most) {
        std::int64_t wide = static_cast<std::int64_t>(value);
        if (ReadInteger(key, wide, least, most))
            value = static_cast<Number>(wide);
    }
    // The table under `key`; null when absent.
    const toml::table* Table(std::string_view key);
    // The tables of the array under `key`.
    std::vector<const toml::table*> Tables(std::string_view key);

    // Throws ConfigError for a key that none of the calls above asked for.
    void RefuseOtherKeys() const;
    // Throws ConfigError with the place of `key`, or of the table when it has no such key.
    [[noreturn]] void Fail(std::string_view key, const std::string& what) const;

private:
    const toml::node* Find(std::string_view key);
    bool ReadInteger(std::string_view key, std::int64_t& value, std::int64_t least, std::int64_t most);
    std::string Name(std::string_view key) const;

    const toml::table& m_table;
    std::string m_source;
    std::string m_where;
    std::set<std::string, std::less<>> m_known;
};

} // namespace korvel::controller

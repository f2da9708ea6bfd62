// What the documents of an operation cost at the least: the yardstick beside each measurement.
#pragma once

#include <pugixml.hpp>
#include <string>
#include <vector>

namespace bench {

class Floor {
public:
    // Throws std::runtime_error for a text that is no document, or that pugixml would print otherwise.
    explicit Floor(const std::vector<std::string>& documents);

    // Builds each document from its values and prints it, with pugixml, once.
    void BuildAndPrint();
    // Copies the bytes of each document once.
    void Copy();

    std::size_t GetBytes() const { return m_bytes; }

private:
    std::vector<std::string> m_texts;
    std::vector<pugi::xml_document> m_values;
    std::size_t m_bytes = 0;
    std::string m_out;
};

} // namespace bench

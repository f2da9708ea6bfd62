#include "Floor.h"

#include <benchmark/benchmark.h>

#include <stdexcept>

namespace bench {

namespace {

class Appender final : public pugi::xml_writer {
public:
    explicit Appender(std::string& out) : m_out(out) {}
    void write(const void* data, std::size_t size) override {
        m_out.append(static_cast<const char*>(data), size);
    }

private:
    std::string& m_out;
};

void Build(pugi::xml_node parent, const pugi::xml_node& values) {
    for (const auto& value : values.children()) {
        if (value.type() == pugi::node_pcdata) {
            parent.append_child(pugi::node_pcdata).set_value(value.value());
            continue;
        }
        auto child = parent.append_child(value.name());
        for (const auto& attribute : value.attributes())
            child.append_attribute(attribute.name()).set_value(attribute.value());
        Build(child, value);
    }
}

void Print(const pugi::xml_node& values, std::string& out) {
    pugi::xml_document document;
    Build(document, values);
    Appender appender(out);
    constexpr unsigned int kOptions =
        pugi::format_raw | pugi::format_no_declaration | pugi::format_no_empty_element_tags;
    document.save(appender, "", kOptions, pugi::encoding_utf8);
}

} // namespace

Floor::Floor(const std::vector<std::string>& documents) : m_texts(documents), m_values(documents.size()) {
    for (std::size_t i = 0; i < m_texts.size(); ++i) {
        const std::string& text = m_texts[i];
        std::string printed;
        if (m_values[i].load_buffer(text.data(), text.size()))
            Print(m_values[i], printed);
        if (printed != text)
            throw std::runtime_error("the floor stands elsewhere: " + text);
        m_bytes += text.size();
    }
}

void Floor::BuildAndPrint() {
    for (const auto& values : m_values) {
        m_out.clear();
        Print(values, m_out);
        benchmark::DoNotOptimize(m_out.data());
    }
}

void Floor::Copy() {
    for (const std::string& text : m_texts) {
        m_out = text;
        benchmark::DoNotOptimize(m_out.data());
        benchmark::ClobberMemory();
    }
}

} // namespace bench

#include "platform/XmlPrinter.h"

#include "platform/src/XmlText.h"

namespace KVXML {

void Printer::Attribute(std::string_view name, std::string_view value) {
    Put(' ', name, '=', '"');
    AppendEscaped(m_text, value, true);
    m_text += '"';
}

void Printer::Text(std::string_view text) {
    EndStartTag();
    AppendEscaped(m_text, text, false);
}

} // namespace KVXML

#include "front/http/RequestReader.h"

#include <boost/beast/http/error.hpp>
#include <iterator>

namespace korvel::controller {
namespace {

namespace http = beast::http;

} // namespace

RequestReader::RequestReader(std::uint32_t maxHeader, std::uint64_t maxBody)
    : m_maxHeader(maxHeader), m_maxBody(maxBody), m_buffer(maxHeader + static_cast<std::size_t>(maxBody)) {}

void RequestReader::Start() {
    m_parser.emplace();
    m_parser->header_limit(m_maxHeader);
    m_parser->body_limit(m_maxBody);
    m_headBytes = 0;
}

bool RequestReader::OnRead(boost::system::error_code& error, std::size_t bytes) {
    if (!error && !m_parser->eager())
        OnHead(error, bytes);
    // What follows a body in pieces would be a header that is said when all is over.
    if (!error && m_parser->is_done() && CountFields() != m_headFields)
        error = http::error::bad_field;
    return error || m_parser->is_done();
}

// The parser bounds each field, not how many there are.
void RequestReader::OnHead(boost::system::error_code& error, std::size_t bytes) {
    m_headBytes += bytes;
    if (m_headBytes > m_maxHeader) {
        error = http::error::header_limit;
    } else if (m_parser->is_header_done()) {
        m_headFields = CountFields();
        m_parser->eager(true); // the body in one go
    }
}

std::ptrdiff_t RequestReader::CountFields() const {
    return std::distance(m_parser->get().begin(), m_parser->get().end());
}

} // namespace korvel::controller

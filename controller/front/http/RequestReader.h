#pragma once

#include <boost/beast/core/flat_buffer.hpp>
#include <boost/beast/http/message.hpp>
#include <boost/beast/http/parser.hpp>
#include <boost/beast/http/string_body.hpp>
#include <cstdint>
#include <optional>

namespace korvel::controller {

namespace beast = boost::beast;

// Requests out of the bytes of a connection, one after the other, with their limits. Knows no connection: whoever
// has one reads some with the parser and the buffer that are here, tells OnRead(), and reads on until it is true.
class RequestReader {
public:
    using Request = beast::http::request<beast::http::string_body>;
    using Parser = beast::http::request_parser<beast::http::string_body>;

    static constexpr std::uint64_t kMaxBody = 1u << 20;
    static constexpr std::uint32_t kMaxHeader = 16 * 1024;

    explicit RequestReader(std::uint32_t maxHeader = kMaxHeader, std::uint64_t maxBody = kMaxBody);

    // The next request begins. What came after the last one is its beginning.
    void Start();

    Parser& GetParser() { return *m_parser; }
    beast::flat_buffer& GetBuffer() { return m_buffer; }

    // After each time of reading, with its error and how many bytes it took from the buffer. True when the request
    // is whole, or will never be: then `error` says why.
    bool OnRead(boost::system::error_code& error, std::size_t bytes);

    // Once it is whole.
    const Request& Get() const { return m_parser->get(); }
    Request Release() { return m_parser->release(); }

private:
    void OnHead(boost::system::error_code& error, std::size_t bytes);
    std::ptrdiff_t CountFields() const;

    const std::uint32_t m_maxHeader;
    const std::uint64_t m_maxBody;
    beast::flat_buffer m_buffer;
    std::optional<Parser> m_parser;
    std::size_t m_headBytes = 0;
    std::ptrdiff_t m_headFields = 0;
};

} // namespace korvel::controller

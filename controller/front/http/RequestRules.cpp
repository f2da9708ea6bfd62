#include "front/http/RequestRules.h"

#include <array>
#include <boost/beast/core/error.hpp>
#include <boost/beast/core/string.hpp>
#include <boost/beast/http/error.hpp>
#include <boost/beast/http/field.hpp>
#include <boost/beast/websocket/rfc6455.hpp>
#include <string>
#include <utility>

#include "common/Address.h"

namespace korvel::controller {
namespace {

namespace http = beast::http;
using http::field;

constexpr std::uint16_t kStandardPort = 80;

std::string_view View(beast::string_view text) {
    return {text.data(), text.size()};
}

// Whoever passed the request on may have gone by the other one, or may have seen its end elsewhere.
std::optional<std::string> WhyAmbiguous(const http::fields& header) {
    static constexpr std::array kOnce = {field::host, field::origin, field::content_type,
                                         field::content_length, field::transfer_encoding};
    for (const field name : kOnce) {
        if (header.count(name) > 1)
            return std::string(View(http::to_string(name))) + " may be there once only";
    }
    if (View(header[field::content_length]).find(',') != std::string_view::npos)
        return "Content-Length is one number";
    if (header.count(field::transfer_encoding) != 0 &&
        !beast::iequals(header[field::transfer_encoding], "chunked"))
        return "Transfer-Encoding must be chunked";
    return std::nullopt;
}

Verdict Refusal(unsigned status, const std::string& why, bool keepAlive = false) {
    return {Verdict::Kind::Refuse, ErrorReply(status, why), keepAlive};
}

} // namespace

bool IsOwnHost(std::string_view host, std::string_view address) {
    const auto named = common::ParseHost(host, kStandardPort);
    return named && (common::IsSameHost(named->host, "localhost") || named->host == "127.0.0.1" ||
                     named->host == address);
}

bool IsOwnOrigin(std::string_view origin, std::string_view host) {
    static constexpr std::string_view kScheme = "http://";
    if (origin.empty())
        return true;
    if (!origin.starts_with(kScheme))
        return false;
    const auto page = common::ParseHost(origin.substr(kScheme.size()), kStandardPort);
    const auto own = common::ParseHost(host, kStandardPort);
    return page && own && common::IsSameHost(page->host, own->host) && page->port == own->port;
}

Verdict Judge(const RequestReader::Request& request, std::string_view address) {
    if (const auto why = WhyAmbiguous(request))
        return Refusal(400, *why);
    const std::string_view host = View(request[field::host]);
    const bool isOwnHost = IsOwnHost(host, address);
    const bool isOwnOrigin = IsOwnOrigin(View(request[field::origin]), host);
    const bool keepAlive = request.keep_alive();
    if (beast::websocket::is_upgrade(request)) {
        if (!isOwnHost || !isOwnOrigin)
            return Refusal(403, "pages of other origins may not listen");
        if (request.target() != "/api/events")
            return Refusal(404, "the events are at /api/events");
        return {Verdict::Kind::Listen, {}, false};
    }
    if (!isOwnHost)
        return Refusal(403, "the Host header must name this machine: localhost or 127.0.0.1", keepAlive);
    if (request.method() != http::verb::get && !isOwnOrigin)
        return Refusal(403, "pages of other origins may not do this", keepAlive);
    return {Verdict::Kind::Serve, {}, keepAlive};
}

HttpRequest PlainRequest(const RequestReader::Request& request) {
    return {std::string(View(request.method_string())), std::string(View(request.target())),
            std::string(View(request[field::content_type])), request.body()};
}

std::optional<HttpReply> ReplyToUnreadable(const boost::system::error_code& error) {
    if (error == http::error::body_limit)
        return ErrorReply(413, "the body is longer than 1 MiB");
    if (error == http::error::header_limit)
        return ErrorReply(431, "the header is too long");
    if (error == http::error::end_of_stream || error == beast::error::timeout ||
        error.category() == boost::system::system_category())
        return std::nullopt;
    return ErrorReply(400, "not a request: " + error.message());
}

} // namespace korvel::controller

// What becomes of a request that was read, before anybody looks at what it asks for. All functions are pure.
#pragma once

#include <boost/system/error_code.hpp>
#include <optional>
#include <string_view>

#include "front/http/Message.h"
#include "front/http/RequestReader.h"

namespace korvel::controller {

// True for the names under which a browser on this machine knows it ("localhost", "127.0.0.1", or `address`),
// with or without a port. Any other name may have been made to lead here by the page of a stranger.
bool IsOwnHost(std::string_view host, std::string_view address);

// True for a request that no page of another origin made: without an origin, or with the one that `host`
// names.
bool IsOwnOrigin(std::string_view origin, std::string_view host);

struct Verdict {
    enum class Kind {
        Serve,  // the interface answers it
        Listen, // the connection becomes one of events
        Refuse, // with `refusal`
    };

    Kind kind = Kind::Serve;
    HttpReply refusal;
    bool keepAlive = false; // whether the next request may follow the answer
};

// `address`: the one that the server listens on.
Verdict Judge(const RequestReader::Request& request, std::string_view address);

// What the interface looks at.
HttpRequest PlainRequest(const RequestReader::Request& request);

// The answer to what cannot be read as a request; none when the connection has ended or has been silent for too
// long.
std::optional<HttpReply> ReplyToUnreadable(const boost::system::error_code& error);

} // namespace korvel::controller

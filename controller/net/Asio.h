// The way in to Boost.Asio, which is compiled once in AsioImpl.cpp.
#pragma once

#include <boost/asio/io_context.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/post.hpp>
#include <boost/asio/steady_timer.hpp>
#include <boost/asio/write.hpp>
#include <utility> // used by the headers below, which do not include it

namespace korvel::controller {

namespace asio = boost::asio;
using tcp = asio::ip::tcp;

} // namespace korvel::controller

// The way in to Boost.Asio, which is compiled once in AsioImpl.cpp.
#pragma once

#include <boost/asio/any_io_executor.hpp>
#include <boost/asio/io_context.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/post.hpp>
#include <boost/asio/steady_timer.hpp>

namespace korvel::common {

namespace asio = boost::asio;
using asio::ip::tcp;
using boost::system::error_code;

} // namespace korvel::common

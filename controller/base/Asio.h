// Boost.Asio as this program uses it.
#pragma once

#include <boost/asio/write.hpp>

#include "common/Asio.h"

namespace korvel::controller {

namespace asio = boost::asio;
using common::tcp;

} // namespace korvel::controller

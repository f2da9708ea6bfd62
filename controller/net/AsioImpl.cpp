// The bodies of Boost.Asio and Boost.Beast: every other file sees declarations only, which keeps builds
// short.
#include <boost/asio/impl/src.hpp>
#include <boost/beast/src.hpp>
#include <utility>

// The bodies of Boost.Asio: every other file sees declarations only, which keeps builds short.
#include <boost/asio/impl/src.hpp>

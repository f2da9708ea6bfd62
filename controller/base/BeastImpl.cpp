// The bodies of Boost.Beast: every other file sees declarations only, which keeps builds short.
#include <boost/beast/src.hpp>

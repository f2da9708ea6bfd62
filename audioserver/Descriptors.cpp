#include "audioserver/Descriptors.h"

#include <algorithm>
#include <filesystem>
#include <iterator>

namespace korvel::audioserver {
namespace {

// Enough for every stream of every connection with a media in each. More costs the libraries time where they
// walk over all possible ones.
constexpr rlim_t kEnough = 131072;

std::size_t OpenDescriptors() {
    std::error_code error;
    const std::filesystem::directory_iterator open("/proc/self/fd", error);
    // Counting takes one itself: when it fails, all are taken.
    return error ? kEnough : static_cast<std::size_t>(std::distance(begin(open), end(open)));
}

} // namespace

rlimit RaisedLimit(rlimit limit) {
    limit.rlim_cur = std::max(limit.rlim_cur, std::min(limit.rlim_max, kEnough));
    return limit;
}

void RaiseDescriptorLimit() {
    rlimit limit{};
    if (::getrlimit(RLIMIT_NOFILE, &limit) != 0)
        return;
    limit = RaisedLimit(limit);
    ::setrlimit(RLIMIT_NOFILE, &limit);
}

bool HasDescriptors(std::size_t wanted) {
    rlimit limit{};
    return ::getrlimit(RLIMIT_NOFILE, &limit) != 0 ||
           OpenDescriptors() + wanted + kDescriptorReserve <= limit.rlim_cur;
}

} // namespace korvel::audioserver

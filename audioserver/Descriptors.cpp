#include "audioserver/Descriptors.h"

#include <algorithm>
#include <atomic>
#include <filesystem>

namespace korvel::audioserver {
namespace {

// Enough for every stream of every connection with a media in each. More costs the libraries time where they
// walk over all possible ones.
constexpr rlim_t kEnough = 131072;

std::atomic<std::size_t> g_shared = 0;

std::size_t OpenDescriptors() {
    std::error_code error;
    std::size_t count = 0;
    for (std::filesystem::directory_iterator open("/proc/self/fd", error), end; !error && open != end;
         open.increment(error))
        ++count;
    // Counting takes one itself: when it fails, all are taken.
    return error ? kEnough : count;
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

DescriptorShare::DescriptorShare(std::size_t count) : m_count(count) {
    g_shared += m_count;
}

DescriptorShare::~DescriptorShare() {
    g_shared -= m_count;
}

bool HasDescriptors(std::size_t wanted) {
    rlimit limit{};
    return ::getrlimit(RLIMIT_NOFILE, &limit) != 0 ||
           std::max(OpenDescriptors(), g_shared.load()) + wanted + kDescriptorReserve <= limit.rlim_cur;
}

} // namespace korvel::audioserver

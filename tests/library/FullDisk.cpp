#include "FullDisk.h"

#include <gtest/gtest.h>

#include <csignal>

namespace {

// Returns the limit that there was.
rlim_t SetLimit(rlim_t bytes) {
    rlimit limit{};
    EXPECT_EQ(::getrlimit(RLIMIT_FSIZE, &limit), 0);
    const rlim_t before = limit.rlim_cur;
    limit.rlim_cur = bytes;
    EXPECT_EQ(::setrlimit(RLIMIT_FSIZE, &limit), 0);
    return before;
}

} // namespace

FullDisk::FullDisk(rlim_t bytes) : m_signalBefore(std::signal(SIGXFSZ, SIG_IGN)), m_before(SetLimit(bytes)) {}

FullDisk::~FullDisk() {
    SetLimit(m_before);
    std::signal(SIGXFSZ, m_signalBefore);
}

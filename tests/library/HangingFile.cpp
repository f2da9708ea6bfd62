#include "HangingFile.h"

#include <fcntl.h>
#include <unistd.h>

#include <csignal>
#include <stdexcept>

HangingFile::HangingFile(const std::string& path) : m_file(::open(path.c_str(), O_RDWR | O_CLOEXEC)) {
    // Whoever opens the file waits for the holder of the lease, who is told by a signal and never gives way.
    std::signal(SIGIO, SIG_IGN);
    if (m_file < 0 || ::fcntl(m_file, F_SETLEASE, F_WRLCK) != 0)
        throw std::runtime_error("no lease on " + path);
}

HangingFile::~HangingFile() {
    ::close(m_file);
}

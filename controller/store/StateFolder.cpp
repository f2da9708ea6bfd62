#include "store/StateFolder.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <stdexcept>

namespace korvel::controller {

StateFolder::StateFolder(const std::string& path) {
    std::error_code failed;
    std::filesystem::create_directories(path, failed);
    if (failed)
        throw std::runtime_error("the state folder " + path + " cannot be made: " + failed.message());
    m_lock = open((path + "/lock").c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
    if (m_lock < 0)
        throw std::runtime_error("the state folder " + path + " cannot be written: " + std::strerror(errno));
    if (flock(m_lock, LOCK_EX | LOCK_NB) != 0) {
        close(m_lock);
        throw std::runtime_error("the state folder " + path + " is in use by another controller");
    }
}

StateFolder::~StateFolder() {
    close(m_lock);
}

} // namespace korvel::controller

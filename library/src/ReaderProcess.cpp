#include "ReaderProcess.h"

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <stdexcept>

namespace korvel::media {

namespace {

// Whether the process ended in time. The wait is on a descriptor: waitpid() knows no limit.
bool WaitForEnd(pid_t process, std::chrono::milliseconds patience) {
    const int handle = static_cast<int>(::syscall(SYS_pidfd_open, process, 0));
    if (handle < 0)
        return false;
    pollfd end{handle, POLLIN, 0};
    const int ready = ::poll(&end, 1, static_cast<int>(patience.count()));
    ::close(handle);
    return ready > 0;
}

std::string Describe(int status) {
    if (WIFEXITED(status))
        return "ended with status " + std::to_string(WEXITSTATUS(status));
    if (WTERMSIG(status) == SIGXCPU)
        return "took too much processor time";
    if (WTERMSIG(status) == SIGKILL)
        return "was killed";
    const char* name = ::sigabbrev_np(WTERMSIG(status));
    return std::string("was killed by SIG") + (name ? name : "?");
}

int Spawn(const std::string& program, int socket, pid_t& process) {
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, socket, STDIN_FILENO);
    posix_spawn_file_actions_adddup2(&actions, socket, STDOUT_FILENO);
    posix_spawn_file_actions_addclosefrom_np(&actions, STDERR_FILENO + 1);
    posix_spawnattr_t attributes;
    posix_spawnattr_init(&attributes);
    sigset_t none;
    sigemptyset(&none);
    posix_spawnattr_setsigmask(&attributes, &none);
    posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGMASK);
    const char* arguments[] = {program.c_str(), nullptr};
    const int failed = ::posix_spawn(&process, program.c_str(), &actions, &attributes,
                                     const_cast<char**>(arguments), environ);
    posix_spawnattr_destroy(&attributes);
    posix_spawn_file_actions_destroy(&actions);
    return failed;
}

} // namespace

void ReaderProcess::Start(const std::string& program) {
    End();
    ReapAbandoned();
    if (m_abandoned.size() >= kMaxAbandoned)
        throw std::runtime_error("too many readers wait for disks that do not answer");
    int ends[2];
    if (::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends) != 0)
        throw std::runtime_error("cannot start " + program + ": " + std::strerror(errno));
    const int failed = Spawn(program, ends[1], m_process);
    ::close(ends[1]);
    m_socket = ends[0];
    if (failed == 0)
        return;
    m_process = 0;
    End();
    throw std::runtime_error("cannot start " + program + ": " + std::strerror(failed));
}

std::string ReaderProcess::End() {
    if (m_socket >= 0)
        ::close(m_socket);
    m_socket = -1;
    if (m_process <= 0)
        return "";
    const pid_t process = m_process;
    m_process = 0;
    ::kill(process, SIGKILL);
    int status = 0;
    if (WaitForEnd(process, kEndPatience) && ::waitpid(process, &status, WNOHANG) == process)
        return Describe(status);
    m_abandoned.push_back(process);
    return "does not answer";
}

void ReaderProcess::ReapAbandoned() {
    std::erase_if(m_abandoned, [](pid_t process) { return ::waitpid(process, nullptr, WNOHANG) != 0; });
}

} // namespace korvel::media

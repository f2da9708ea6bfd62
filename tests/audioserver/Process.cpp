#include "Process.h"

#include <fcntl.h>
#include <sched.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>

namespace korvel::tests {

Process::Process(const std::string& program, const std::vector<std::string>& arguments, std::string errorPath)
    : m_errorPath(std::move(errorPath)) {
    std::vector<char*> argv{const_cast<char*>(program.c_str())};
    for (const std::string& argument : arguments)
        argv.push_back(const_cast<char*>(argument.c_str()));
    argv.push_back(nullptr);
    std::array<int, 2> pipe{};
    if (::pipe2(pipe.data(), O_CLOEXEC) != 0)
        throw std::runtime_error("no pipe");
    m_pid = ::fork();
    if (m_pid == 0) {
        const int errors = ::open(m_errorPath.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
        ::dup2(pipe[1], STDOUT_FILENO);
        ::dup2(errors, STDERR_FILENO);
        ::execv(program.c_str(), argv.data());
        ::_exit(127);
    }
    ::close(pipe[1]);
    m_output = pipe[0];
}

Process::~Process() {
    if (!m_exit && m_pid > 0) {
        ::kill(m_pid, SIGKILL);
        ::waitpid(m_pid, nullptr, 0);
    }
    ::close(m_output);
}

std::optional<std::string> Process::ReadLine() {
    for (;;) {
        if (const auto end = m_pending.find('\n'); end != std::string::npos) {
            std::string line = m_pending.substr(0, end);
            m_pending.erase(0, end + 1);
            return line;
        }
        std::array<char, 512> chunk{};
        if (!WaitReadable(m_output))
            return std::nullopt;
        const ssize_t count = ::read(m_output, chunk.data(), chunk.size());
        if (count <= 0)
            return std::nullopt;
        m_pending.append(chunk.data(), static_cast<std::size_t>(count));
    }
}

std::string Process::Errors() const {
    std::ifstream file(m_errorPath, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

void Process::Signal(int number) const {
    if (!m_exit) // else the number may be another's
        ::kill(m_pid, number);
}

bool Process::HasOpen(const std::string& path) const {
    std::error_code error;
    for (const auto& entry :
         std::filesystem::directory_iterator("/proc/" + std::to_string(m_pid) + "/fd", error))
        if (std::filesystem::read_symlink(entry, error) == path)
            return true;
    return false;
}

unsigned Process::Threads() const {
    std::ifstream status("/proc/" + std::to_string(m_pid) + "/status");
    const std::string key = "Threads:";
    for (std::string line; std::getline(status, line);)
        if (line.starts_with(key))
            return static_cast<unsigned>(std::stoul(line.substr(key.size())));
    return 0;
}

unsigned Process::RealTimeThreads() const {
    unsigned count = 0;
    std::error_code gone;
    for (const auto& thread :
         std::filesystem::directory_iterator("/proc/" + std::to_string(m_pid) + "/task", gone))
        count += ::sched_getscheduler(std::stoi(thread.path().filename())) == SCHED_RR ? 1 : 0;
    return count;
}

std::optional<int> Process::WaitForExit(std::chrono::milliseconds patience) {
    WaitUntil(
        [this] {
            int status = 0;
            if (!m_exit && ::waitpid(m_pid, &status, WNOHANG) == m_pid)
                m_exit = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
            return m_exit.has_value();
        },
        patience);
    return m_exit;
}

} // namespace korvel::tests

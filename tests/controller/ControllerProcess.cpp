#include "ControllerProcess.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>

namespace korvel::controller {

ControllerProcess::ControllerProcess(const ScratchFolder& folder, const std::string& config,
                                     const std::vector<std::string>& options)
    : m_errors(folder.File("errors")), m_output(folder.File("output")) {
    const std::string file = folder.Write("house.toml", config);
    const std::string program = KORVEL_CONTROLLER;
    std::vector<const char*> arguments = {program.c_str(), "--config", file.c_str()};
    for (const std::string& option : options)
        arguments.push_back(option.c_str());
    arguments.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    const int flags = O_WRONLY | O_CREAT | O_TRUNC;
    posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, m_output.c_str(), flags, 0600);
    posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, m_errors.c_str(), flags, 0600);
    EXPECT_EQ(posix_spawn(&m_process, program.c_str(), &actions, nullptr,
                          const_cast<char**>(arguments.data()), environ),
              0);
    posix_spawn_file_actions_destroy(&actions);
}

ControllerProcess::~ControllerProcess() {
    if (m_process == 0)
        return;
    Signal(SIGKILL);
    Wait();
}

void ControllerProcess::Signal(int signal) const {
    EXPECT_EQ(kill(m_process, signal), 0);
}

void ControllerProcess::LimitFiles(rlim_t bytes) const {
    rlimit limit{};
    EXPECT_EQ(prlimit(m_process, RLIMIT_FSIZE, nullptr, &limit), 0);
    limit.rlim_cur = bytes;
    EXPECT_EQ(prlimit(m_process, RLIMIT_FSIZE, &limit, nullptr), 0);
}

int ControllerProcess::Wait() {
    int status = 0;
    EXPECT_EQ(waitpid(m_process, &status, 0), m_process);
    m_process = 0;
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

std::string ControllerProcess::Url() const {
    const std::string text = Errors();
    const std::size_t start = text.find("http://");
    const std::size_t end = text.find('\n', start);
    return start == std::string::npos || end == std::string::npos ? "" : text.substr(start, end - start);
}

} // namespace korvel::controller

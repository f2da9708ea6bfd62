#include "ControllerProcess.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>

namespace korvel::controller {

ControllerProcess::ControllerProcess(const ScratchFolder& folder, const std::string& config)
    : m_errors(folder.File("errors")) {
    const std::string file = folder.Write("house.toml", config);
    const std::string program = KORVEL_CONTROLLER;
    const char* arguments[] = {program.c_str(), "--config", file.c_str(), nullptr};
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, m_errors.c_str(), O_WRONLY | O_CREAT | O_TRUNC,
                                     0600);
    EXPECT_EQ(
        posix_spawn(&m_process, program.c_str(), &actions, nullptr, const_cast<char**>(arguments), environ),
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
